#include "app/shell/worldfromfolderoffer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QTimer>
#include <cstdlib>

#include "app/shell/alerts.h"
#include "app/shell/applicationevents.h"
#include "app/shell/globals.h"
#include "app/shell/startup.h"
#include "core/package/worldfromfolder.h"

namespace sylvora::app {

namespace {

bool personAgrees(const QString& folderName, const QString& packageName, const FolderWorldReport& report) {
    QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(),
                    QObject::tr("Make a world from the sounds in “%1”?").arg(folderName),
                    QMessageBox::Yes | QMessageBox::No, QApplication::activeWindow());
    box.setInformativeText(
        QObject::tr("Sounds of 20 seconds or more become loop sounds, shorter ones environment sounds heard "
                    "now and then, and a picture in the folder becomes the world's picture. The world is "
                    "saved beside the folder as “%1” and opened.")
            .arg(packageName));
    QStringList skipped;
    for (const FolderWorldItem& item : report.items) {
        if (item.role == FolderWorldItem::Role::Skipped) skipped << item.fileName;
    }
    if (!skipped.isEmpty()) {
        box.setInformativeText(box.informativeText() + QStringLiteral("\n\n") +
                               QObject::tr("These files are left out: %1.").arg(QLocale().createSeparatedList(skipped)));
        QStringList reasons;
        for (const FolderWorldItem& item : report.items) {
            if (item.role == FolderWorldItem::Role::Skipped) reasons << QStringLiteral("%1: %2").arg(item.fileName, item.reason);
        }
        box.setDetailedText(reasons.join(QLatin1Char('\n')));
    }
    box.button(QMessageBox::Yes)->setText(QObject::tr("Make World"));
    box.setDefaultButton(QMessageBox::Yes);
    return box.exec() == QMessageBox::Yes;
}

void makeAndOpen(const QString& folder) {
    const QFileInfo info(folder);
    const QString name = QDir(info.absoluteFilePath()).dirName();
    const QString package = WorldFromFolder::freePackagePath(info.absolutePath(), name);

    // The world is built in a World of its own so that the open one, with whatever it has unsaved,
    // is untouched until the new package is opened the usual way. Its seed is drawn from the shared
    // generator, so the stream the open world draws from carries on unpredictable. It is filled
    // before the question, so the question can say which files stay out.
    FolderWorldReport report;
    OSStatus status = noErr;
    {
        World maker(applicationEngine(), gCurrentWorld->getEventLoop(), static_cast<unsigned>(::random()));
        status = WorldFromFolder::fillWorld(maker, info.absoluteFilePath(), name, report);
        if (status == noErr && !personAgrees(name, QFileInfo(package).fileName(), report)) return;
        FSRef parent;
        if (status == noErr) status = FSPathMakeRef(info.absolutePath(), parent);
        if (status == noErr) status = maker.doSaveAs(parent, QFileInfo(package).fileName());
        if (status != noErr && report.error.isEmpty()) {
            report.error = QObject::tr("The world could not be saved as “%1”.").arg(QFileInfo(package).fileName());
        }
    }
    if (status != noErr) {
        showErrorAlert(report.error, status);
        return;
    }
    doOpenDocsEvent({package});
}

}  // namespace

void offerWorldFromFolder(const QString& folder) {
    QTimer::singleShot(0, qApp, [folder] { makeAndOpen(folder); });
}

}  // namespace sylvora::app
