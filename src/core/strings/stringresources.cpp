#include "core/strings/stringresources.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>
#include <memory>

namespace sylvora {

namespace {

constexpr const char* kTranslationsFolder = ":/i18n";
constexpr const char* kTranslationBaseName = "sylvora";
// English is the language every table is complete in; it stands in for a language without tables,
// since the keys themselves are not meant to be read.
constexpr const char* kFallbackTranslation = ":/i18n/sylvora_en";

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
    return words.isEmpty() ? QStringLiteral("error %1").arg(status) : QStringLiteral("%1 (%2)").arg(words).arg(status);
}

QString capitalizedFirstLetter(const QString& text) {
    return text.isEmpty() ? text : text.left(1).toUpper() + text.mid(1);
}

bool installStringTables() {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return false;
    // Installing twice would only stack a second copy of the same tables in front of the first.
    if (app->findChild<QTranslator*>(QStringLiteral("sylvoraStringTables"), Qt::FindDirectChildrenOnly))
        return true;

    auto translator = std::make_unique<QTranslator>();
    translator->setObjectName(QStringLiteral("sylvoraStringTables"));
    const bool loaded = translator->load(QLocale(), QString::fromLatin1(kTranslationBaseName),
                                         QStringLiteral("_"), QString::fromLatin1(kTranslationsFolder)) ||
                        translator->load(QString::fromLatin1(kFallbackTranslation));
    if (!loaded || !QCoreApplication::installTranslator(translator.get()))
        return false;
    translator.release()->setParent(app);  // the application owns it from here on
    return true;
}

}  // namespace sylvora
