#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QTranslator>

#include "core/strings/stringresources.h"

namespace sylvora {
namespace {

QString misc(const char* key) {
    return copyLocalizedString(key, MISC_STRINGS_FILE);
}
QString errors(const char* key) {
    return copyLocalizedString(key, ERRORS_STRINGS_FILE);
}

TEST(StringTables, AreCompiledIntoTheExecutable) {
    EXPECT_TRUE(QFile::exists(QStringLiteral(":/i18n/sylvora_en.qm")));
    EXPECT_TRUE(installStringTables()) << "a second call keeps the tables installed";
    EXPECT_EQ(QCoreApplication::instance()->findChildren<QTranslator*>().size(), 1);
}

TEST(StringTables, FormatsTakeTheirArguments) {
    EXPECT_EQ(misc(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY).arg(3), "Group 3");
    EXPECT_EQ(misc(GET_INFO_WINDOW_TITLE_FORMAT_STRING_KEY).arg(QStringLiteral("Rainforest")),
              "Rainforest Info");
}

TEST(StringTables, EveryKeyHasReadableEnglish) {
    EXPECT_EQ(errors(UNKNOWN_ERROR_OPENING_WORLD), "The world could not be opened.");
    EXPECT_EQ(errors(UNKNOWN_ERROR_SAVING_WORLD), "The world could not be saved.");
    EXPECT_EQ(misc(UNTITLED_SAVE_AS_FILENAME_KEY), "Untitled");
    EXPECT_EQ(misc(NO_PICTURE_FILE_SELECTED_KEY), "No picture selected");
    EXPECT_EQ(misc(GET_INFO_WINDOW_UNTITLED_TITLE_STRING_KEY), "Untitled World");
    EXPECT_EQ(misc(HELP_PAGE_CREATING_A_WORLD_KEY), "CreatingAWorld.html");
    for (const char* prompt : {SELECT_PICTURE_FILE_PROMPT_KEY, SELECT_LOOPING_SOUND_FILES_PROMPT_KEY,
                               SELECT_ENVIRONMENT_SOUND_FILES_PROMPT_KEY}) {
        EXPECT_NE(misc(prompt), QString::fromLatin1(prompt)) << prompt;
        EXPECT_FALSE(misc(prompt).isEmpty()) << prompt;
    }
}

TEST(StringTables, MissingEntriesFallBackToTheKey) {
    EXPECT_EQ(misc("No Such Key"), "No Such Key");
    EXPECT_EQ(misc(UNKNOWN_ERROR_OPENING_WORLD), UNKNOWN_ERROR_OPENING_WORLD) << "a key of the other table";
    EXPECT_EQ(copyLocalizedString(UNTITLED_SAVE_AS_FILENAME_KEY, "NoSuchTable"),
              UNTITLED_SAVE_AS_FILENAME_KEY);
    EXPECT_EQ(misc(EMPTY_STRING), "");
}

TEST(StringTables, WithoutTablesEveryTextIsItsKey) {
    auto* translator = QCoreApplication::instance()->findChild<QTranslator*>();
    ASSERT_NE(translator, nullptr);
    QCoreApplication::removeTranslator(translator);
    delete translator;

    EXPECT_EQ(misc(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY), "Environment Sound Group Name");
    EXPECT_EQ(misc(GET_INFO_WINDOW_TITLE_FORMAT_STRING_KEY), "World Info");
    EXPECT_EQ(errors(UNKNOWN_ERROR_SAVING_WORLD), "Error Saving World");

    ASSERT_TRUE(installStringTables());
    EXPECT_EQ(misc(DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY).arg(12), "Group 12");
}

}  // namespace
}  // namespace sylvora
