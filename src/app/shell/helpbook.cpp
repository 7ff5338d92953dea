#include "app/shell/helpbook.h"

#include <QDesktopServices>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QPointer>
#include <QStandardPaths>
#include <QTextBrowser>
#include <QUrl>

#include "core/platform/beep.h"

namespace sylvora::app {

namespace {
constexpr int MAX_URL_LENGTH = 255;
constexpr QSize HELP_WINDOW_SIZE{760, 600};

// Where no browser opens the book, it is read in a window of Sylvora's own, from the same pages.
OSStatus showInHelpWindow(const QString& pagePath, const QString& anchor) {
    static QPointer<QTextBrowser> viewer;
    if (viewer.isNull()) {
        viewer = new QTextBrowser();
        viewer->setAttribute(Qt::WA_DeleteOnClose);
        viewer->setAttribute(Qt::WA_QuitOnClose, false);
        viewer->setWindowTitle(QObject::tr("Sylvora Help"));
        viewer->setOpenExternalLinks(true);
        viewer->resize(HELP_WINDOW_SIZE);
    }
    QUrl page(QStringLiteral("qrc") + QString::fromLatin1(HELP_BOOK_RESOURCE_ROOT) + QLatin1Char('/') + pagePath);
    if (!anchor.isEmpty()) page.setFragment(anchor);
    viewer->setSource(page);
    viewer->show();
    viewer->raise();
    viewer->activateWindow();
    return noErr;
}

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
    if (!copyBook(root, cache)) return showInHelpWindow(pagePath, anchor);
    QUrl page = QUrl::fromLocalFile(cache + QLatin1Char('/') + pagePath);
    if (!anchor.isEmpty()) page.setFragment(anchor);
    if (QStandardPaths::findExecutable(QStringLiteral("xdg-open")).isEmpty() || !QDesktopServices::openUrl(page)) {
        return showInHelpWindow(pagePath, anchor);
    }
    return noErr;
}

void openURL(const QString& url) {
    bool ascii = true;
    for (QChar c : url) ascii &= c.unicode() < 0x80;
    if (!ascii || url.size() > MAX_URL_LENGTH || !QDesktopServices::openUrl(QUrl(url, QUrl::StrictMode))) {
        SysBeep(1);
    }
}

}  // namespace sylvora::app
