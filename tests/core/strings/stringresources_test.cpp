#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QTranslator>
#include <QXmlStreamReader>

#include "core/strings/stringresources.h"

namespace sylvora {
namespace {

QString misc(const char* key) { return copyLocalizedString(key, MISC_STRINGS_FILE); }
QString errors(const char* key) { return copyLocalizedString(key, ERRORS_STRINGS_FILE); }

// A key without an entry would show the key itself to the user.
TEST(StringTables, EveryKeyHasATextAndFormatsTakeTheirArguments) {
    EXPECT_TRUE(installStringTables(QLocale(QLocale::English))) << "a second call replaces the tables";
    EXPECT_EQ(QCoreApplication::instance()->findChildren<QTranslator*>().size(), 1) << "English lies under nothing";
    for (const char* key : {UNKNOWN_ERROR_OPENING_WORLD, UNKNOWN_ERROR_SAVING_WORLD})
        EXPECT_NE(errors(key), QString::fromLatin1(key)) << key;
    for (const char* key : {UNTITLED_SAVE_AS_FILENAME_KEY, DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY,
                            GET_INFO_WINDOW_TITLE_FORMAT_STRING_KEY})
        EXPECT_NE(misc(key), QString::fromLatin1(key)) << key;
    // Texts quoted word for word are their own keys, in the English table too.
    for (const char* key : {NO_PICTURE_FILE_SELECTED_KEY, SELECT_PICTURE_FILE_PROMPT_KEY, SELECT_LOOPING_SOUND_FILES_PROMPT_KEY,
                            SELECT_ENVIRONMENT_SOUND_FILES_PROMPT_KEY, GET_INFO_WINDOW_UNTITLED_TITLE_STRING_KEY})
        EXPECT_EQ(misc(key), QString::fromLatin1(key)) << key;
    EXPECT_EQ(misc(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY).arg(3), "Group 3");
    EXPECT_EQ(misc(GET_INFO_WINDOW_TITLE_FORMAT_STRING_KEY).arg(QStringLiteral("Rainforest")), "Rainforest Info");
}

// Every status a person can meet is said in words, the number after them.
TEST(StringTables, StatusesAreSaidInWordsThenTheirNumber) {
    for (const OSStatus status : {unreadablePropertyListErr, dskFulErr, nsvErr, ioErr, fnfErr, wPrErr, dupFNErr, paramErr,
                                  permErr, dirNFErr, movieListFullErr}) {
        const QString words = copyStatusExplanation(status);
        EXPECT_FALSE(words.isEmpty()) << status;
        EXPECT_EQ(copyStatusDescription(status), QStringLiteral("%1 (%2)").arg(words).arg(status));
    }
    EXPECT_EQ(copyStatusDescription(dskFulErr), "the disk is full (-34)");
    EXPECT_EQ(copyStatusDescription(-12345), "error -12345");
    EXPECT_EQ(capitalizedFirstLetter(QStringLiteral("the disk")), "The disk");
    EXPECT_EQ(capitalizedFirstLetter(QString()), "");
}

TEST(StringTables, MissingEntriesAndTablesFallBackToTheKey) {
    EXPECT_EQ(misc("No Such Key"), "No Such Key");
    EXPECT_EQ(misc(UNKNOWN_ERROR_OPENING_WORLD), UNKNOWN_ERROR_OPENING_WORLD) << "a key of the other table";
    EXPECT_EQ(copyLocalizedString(UNTITLED_SAVE_AS_FILENAME_KEY, "NoSuchTable"), UNTITLED_SAVE_AS_FILENAME_KEY);
    EXPECT_EQ(misc(EMPTY_STRING), "");

    for (QTranslator* translator : QCoreApplication::instance()->findChildren<QTranslator*>()) {
        QCoreApplication::removeTranslator(translator);
        delete translator;
    }
    EXPECT_EQ(misc(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY), "Environment Sound Group Name");
    EXPECT_EQ(errors(UNKNOWN_ERROR_SAVING_WORLD), "Error Saving World");
    ASSERT_TRUE(installStringTables(QLocale(QLocale::English)));
    EXPECT_EQ(misc(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY).arg(12), "Group 12");
}

// A language's table lies over the English one: what it has reads in that language, what it lacks
// in English rather than as the key, and a language without a table reads wholly in English.
TEST(StringTables, ALanguageFallsBackToEnglishForWhatItLacks) {
    ASSERT_TRUE(installStringTables(QLocale(QLocale::Esperanto)));
    EXPECT_EQ(misc(UNTITLED_SAVE_AS_FILENAME_KEY), "Sentitola");
    EXPECT_EQ(misc(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY).arg(2), "Group 2");
    EXPECT_EQ(copyStatusDescription(dskFulErr), "the disk is full (-34)");
    ASSERT_TRUE(installStringTables(QLocale(QLocale::French)));
    EXPECT_EQ(QCoreApplication::instance()->findChildren<QTranslator*>().size(), 1);
    EXPECT_EQ(misc(UNTITLED_SAVE_AS_FILENAME_KEY), "Untitled");
    ASSERT_TRUE(installStringTables(QLocale(QLocale::English)));
}

// Every key of the English tables has German words of its own; only the help page's file name is
// the same in both.
TEST(StringTables, TheGermanTablesHoldEveryEnglishKey) {
    QFile file(QStringLiteral(SYLVORA_TRANSLATIONS_DIR "/sylvora_en.ts"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&file);
    QList<std::pair<QByteArray, QByteArray>> keys;  // table, key
    QByteArray table;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement) continue;
        if (xml.name() == u"name") table = xml.readElementText().toUtf8();
        if (xml.name() == u"source") keys.append({table, xml.readElementText().toUtf8()});
    }
    ASSERT_GT(keys.size(), 40);
    QStringList english;
    for (const auto& [t, key] : keys) english << copyLocalizedString(key.constData(), t.constData());
    ASSERT_TRUE(installStringTables(QLocale(QLocale::German, QLocale::Austria)));
    for (qsizetype i = 0; i < keys.size(); ++i) {
        const auto& [t, key] = keys.at(i);
        if (key == HELP_PAGE_CREATING_A_WORLD_KEY) continue;
        const QString german = copyLocalizedString(key.constData(), t.constData());
        EXPECT_NE(german, english.at(i)) << key.constData();
        EXPECT_EQ(german.count(QLatin1Char('%')), english.at(i).count(QLatin1Char('%'))) << key.constData();
    }
    EXPECT_EQ(misc(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY).arg(3), "Gruppe 3");
    EXPECT_GE(QCoreApplication::instance()->findChildren<QTranslator*>().size(), 2) << "German over English";
    ASSERT_TRUE(installStringTables(QLocale(QLocale::English)));
}

}  // namespace
}  // namespace sylvora
