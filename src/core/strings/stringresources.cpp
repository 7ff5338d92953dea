#include "core/strings/stringresources.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>
#include <memory>

namespace sylvora {

namespace {

constexpr const char* kTranslationsFolder = ":/i18n";
constexpr const char* kTranslationBaseName = "sylvora";
// English is the language every table is complete in, so it lies under every other language and
// stands in for a language without tables: the keys themselves are not meant to be read.
constexpr const char* kEnglishTables = ":/i18n/sylvora_en";
// Every translator installed here carries this name, so installing again replaces them.
constexpr const char* kTranslatorName = "sylvoraStringTables";

bool install(std::unique_ptr<QTranslator> translator, QCoreApplication* app) {
    if (!QCoreApplication::installTranslator(translator.get()))
        return false;
    translator->setObjectName(QString::fromLatin1(kTranslatorName));
    translator.release()->setParent(app);  // the application owns it from here on
    return true;
}

}  // namespace

QString copyLocalizedString(const char* key, const char* table) {
    if (!key)
        return QString();
    return QCoreApplication::translate(table ? table : "", key);
}

QString copyStatusExplanation(OSStatus status) {
    const QByteArray key = QString::fromLatin1(STATUS_EXPLANATION_KEY_FORMAT).arg(status).toLatin1();
    const QString text = copyLocalizedString(key.constData(), ERRORS_STRINGS_FILE);
    return text == QLatin1String(key) ? QString() : text;  // no entry: nothing better than the number
}

QString copyStatusDescription(OSStatus status) {
    const QString words = copyStatusExplanation(status);
    if (words.isEmpty())
        return copyLocalizedString(UNEXPLAINED_STATUS_KEY, ERRORS_STRINGS_FILE).arg(status);
    return QStringLiteral("%1 (%2)").arg(words).arg(status);
}

QString capitalizedFirstLetter(const QString& text) {
    return text.isEmpty() ? text : text.left(1).toUpper() + text.mid(1);
}

QString percentText(int value) {
    return copyLocalizedString(PERCENT_FORMAT_KEY, MISC_STRINGS_FILE).arg(QLocale().toString(value));
}

bool installStringTables(const QLocale& locale) {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return false;
    // A translator takes itself out of the application when it is deleted.
    qDeleteAll(app->findChildren<QTranslator*>(QString::fromLatin1(kTranslatorName), Qt::FindDirectChildrenOnly));

    auto english = std::make_unique<QTranslator>();
    if (!english->load(QString::fromLatin1(kEnglishTables)) || !install(std::move(english), app))
        return false;
    // Installed later means asked first: the language's own texts, then English for what it lacks.
    auto own = std::make_unique<QTranslator>();
    if (!own->load(locale, QString::fromLatin1(kTranslationBaseName), QStringLiteral("_"),
                   QString::fromLatin1(kTranslationsFolder)) ||
        own->language().startsWith(QLatin1String("en")))
        return true;  // English is the first language the person reads that has tables
    const QLocale language(own->language());
    install(std::move(own), app);
    auto qt = std::make_unique<QTranslator>();
    if (qt->load(language, QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        install(std::move(qt), app);
    return true;
}

}  // namespace sylvora
