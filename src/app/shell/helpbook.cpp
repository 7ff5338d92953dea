#include "app/shell/helpbook.h"

#include <QDesktopServices>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QStandardPaths>
#include <QUrl>

#include "core/platform/beep.h"

namespace sylvora::app {

namespace {
constexpr int MAX_URL_LENGTH = 255;

// Copies every file of the book afresh, so an updated application never shows an older page.
bool copyBook(const QString& from, const QString& to) {
    QDirIterator files(from, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString source = files.next();
        const QString target = to + source.mid(from.size());
        QDir().mkpath(QFileInfo(target).absolutePath());
        QFile::remove(target);
        if (!QFile::copy(source, target)) return false;
        QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    }
    return true;
}
}  // namespace

OSStatus myGotoHelpPage(const QString& pagePath, const QString& anchor) {
    const QString root = QString::fromLatin1(HELP_BOOK_RESOURCE_ROOT);
    if (!QDir(root).exists() || !QFile::exists(root + QLatin1Char('/') + pagePath)) return fnfErr;
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + QStringLiteral("/help");
    if (!copyBook(root, cache)) return ioErr;
    QUrl page = QUrl::fromLocalFile(cache + QLatin1Char('/') + pagePath);
    if (!anchor.isEmpty()) page.setFragment(anchor);
    return QDesktopServices::openUrl(page) ? noErr : ioErr;
}

void openURL(const QString& url) {
    bool ascii = true;
    for (QChar c : url) ascii &= c.unicode() < 0x80;
    if (!ascii || url.size() > MAX_URL_LENGTH || !QDesktopServices::openUrl(QUrl(url, QUrl::StrictMode))) {
        SysBeep(1);
    }
}

}  // namespace sylvora::app
