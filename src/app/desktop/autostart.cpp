#include "app/desktop/autostart.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>

namespace sylvora::app {

namespace {

// The desktop entry's quoting: a program path with spaces or quotes is written in double quotes.
QString quotedProgram(const QString& path) {
    if (!path.contains(QRegularExpression(QStringLiteral("[\\s\"'\\\\$`]")))) return path;
    QString escaped = path;
    for (const char* special : {"\\", "\"", "`", "$"}) {
        escaped.replace(QLatin1String(special), QLatin1String("\\") + QLatin1String(special));
    }
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

}  // namespace

QString autostartEntryPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/autostart/sylvora.desktop");
}

bool isAutostartEnabled() { return QFile::exists(autostartEntryPath()); }

bool setAutostartEnabled(bool enabled) {
    const QString path = autostartEntryPath();
    if (!enabled) return !QFile::exists(path) || QFile::remove(path);
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) return false;
    QSaveFile entry(path);
    if (!entry.open(QIODevice::WriteOnly | QIODevice::Text)) return false;
    // A desktop entry carries its translations itself, as the installed one does.
    const QString text = QStringLiteral(
                             "[Desktop Entry]\n"
                             "Type=Application\n"
                             "Name=Sylvora\n"
                             "Comment=Plays the last ambient sound world from the tray\n"
                             "Comment[de]=Spielt die zuletzt gehörte Klangwelt aus dem Infobereich\n"
                             "Exec=%1 --background\n"
                             "Icon=sylvora\n"
                             "Terminal=false\n"
                             "X-GNOME-Autostart-enabled=true\n")
                             .arg(quotedProgram(QCoreApplication::applicationFilePath()));
    entry.write(text.toUtf8());
    return entry.commit();
}

}  // namespace sylvora::app
