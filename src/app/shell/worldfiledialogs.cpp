#include "app/shell/worldfiledialogs.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QUrl>

#include "app/shell/appstrings.h"
#include "app/shell/bundledworlds.h"
#include "app/windows/packagedrops.h"
#include "core/strings/stringresources.h"
#include "core/prefs/preferences.h"
#include "core/world/world.h"

namespace sylvora::app {

namespace {
// Each dialog comes back where the person left it, in this run and the next.
QString lastFolder(Preferences::DialogFolder dialog) {
    const QString folder = gPrefs != nullptr ? gPrefs->getDialogFolder(dialog) : QString();
    return folder.isEmpty() || !QFileInfo(folder).isDir() ? QDir::homePath() : folder;
}
void rememberFolder(Preferences::DialogFolder dialog, const QString& folder) {
    if (gPrefs != nullptr) gPrefs->setDialogFolder(dialog, folder);
}
QString withExtension(const QString& name) {
    const QString extension = QLatin1Char('.') + QLatin1String(World::PACKAGENAME_EXTENSION);
    return name.endsWith(extension, Qt::CaseInsensitive) ? name : name + extension;
}
void configure(QFileDialog& dialog) {
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    // Shown with show(): open() would make it window-modal, and without a parent that holds nothing.
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.setAttribute(Qt::WA_DeleteOnClose);
    // Where worlds are: those that come with Sylvora and the person's own.
    QList<QUrl> places = dialog.sidebarUrls();
    for (const QString& folder : {bundledWorldsFolder(), userWorldsFolder()}) {
        const QUrl place = QUrl::fromLocalFile(folder);
        if (!folder.isEmpty() && QFileInfo(folder).isDir() && !places.contains(place)) places << place;
    }
    dialog.setSidebarUrls(places);
}
}  // namespace

WorldOpenDialog::WorldOpenDialog(QWidget* parent) : QFileDialog(parent, copyLocalizedString(OPEN_WORLD_TITLE_KEY, MISC_STRINGS_FILE)) {
    configure(*this);
    // Worlds are folders: listing folders only shows exactly the folders and the world packages.
    setFileMode(QFileDialog::Directory);
    setOption(QFileDialog::ShowDirsOnly);
    setLabelText(QFileDialog::Accept, tr("Open"));
    setDirectory(lastFolder(Preferences::DialogFolder::Open));
    connect(this, &QFileDialog::directoryEntered, this, &WorldOpenDialog::enteredDirectory);
}

void WorldOpenDialog::enteredDirectory(const QString& path) {
    if (!isWorldPackagePath(path)) {
        rememberFolder(Preferences::DialogFolder::Open, path);
        return;
    }
    // A double-click on a package: step back out and choose it.
    chosen_ = QFileInfo(path).absoluteFilePath();
    QMetaObject::invokeMethod(this, [this] {
        setDirectory(QFileInfo(chosen_).absolutePath());
        QDialog::accept();
    }, Qt::QueuedConnection);
}

void WorldOpenDialog::accept() {
    const QStringList selected = selectedFiles();
    const QString path = selected.isEmpty() ? directory().absolutePath() : selected.first();
    if (isWorldPackagePath(path)) {
        chosen_ = QFileInfo(path).absoluteFilePath();
        rememberFolder(Preferences::DialogFolder::Open, QFileInfo(chosen_).absolutePath());
        QDialog::accept();
    } else if (QFileInfo(path).isDir() && QFileInfo(path) == QFileInfo(directory().absolutePath())) {
        // Open on the folder the dialog is in, nothing chosen in it: a folder of sounds, to make a
        // world from.
        folder_ = QFileInfo(path).absoluteFilePath();
        QDialog::accept();
    } else if (QFileInfo(path).isDir()) {
        setDirectory(path);  // a plain folder is entered, as a double-click would
    }
}

WorldSaveDialog::WorldSaveDialog(const QString& proposedName, QWidget* parent)
    : QFileDialog(parent, copyLocalizedString(SAVE_WORLD_AS_TITLE_KEY, MISC_STRINGS_FILE)) {
    configure(*this);
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setOption(QFileDialog::ShowDirsOnly);
    // Until a world is saved somewhere, the person's own worlds folder is proposed, made for it.
    const QString remembered = gPrefs != nullptr ? gPrefs->getDialogFolder(Preferences::DialogFolder::SaveAs) : QString();
    if ((remembered.isEmpty() || !QFileInfo(remembered).isDir()) && QDir().mkpath(userWorldsFolder())) {
        setSidebarUrls(sidebarUrls() << QUrl::fromLocalFile(userWorldsFolder()));
        setDirectory(userWorldsFolder());
    } else {
        setDirectory(lastFolder(Preferences::DialogFolder::SaveAs));
    }
    selectFile(proposedName);
    connect(this, &QFileDialog::directoryEntered, this, &WorldSaveDialog::enteredDirectory);
    // Qt's dialog leaves the name alone when a folder is selected; a package is a document, and
    // selecting it names the destination.
    connect(this, &QFileDialog::currentChanged, this, [this](const QString& path) {
        auto* name = findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        if (name != nullptr && isWorldPackagePath(path)) name->setText(QFileInfo(path).fileName());
    });
}

void WorldSaveDialog::enteredDirectory(const QString& path) {
    if (!isWorldPackagePath(path)) return;
    // A double-click on a package chooses it to be replaced, as choosing its name would: a world
    // is never saved inside another.
    const QFileInfo package(path);
    QMetaObject::invokeMethod(this, [this, package] {
        setDirectory(package.absolutePath());
        selectFile(package.fileName());
        accept();
    }, Qt::QueuedConnection);
}

void WorldSaveDialog::accept() {
    const QStringList selected = selectedFiles();
    if (selected.isEmpty()) return;
    const QFileInfo typed(selected.first());
    if (typed.fileName().isEmpty()) return;
    if (typed.isDir() && !isWorldPackagePath(typed.absoluteFilePath())) {
        setDirectory(typed.absoluteFilePath());
        return;
    }
    const QFileInfo target(typed.absoluteDir(), withExtension(typed.fileName()));
    if (target.exists()) {
        const auto answer = QMessageBox::question(
            this, copyLocalizedString(REPLACE_WORLD_TITLE_KEY, MISC_STRINGS_FILE),
            copyLocalizedString(REPLACE_WORLD_QUESTION_KEY, MISC_STRINGS_FILE).arg(target.fileName()),
            QMessageBox::Cancel | QMessageBox::Yes, QMessageBox::Cancel);
        if (answer != QMessageBox::Yes) return;
    }
    folder_ = target.absolutePath();
    name_ = target.fileName();
    rememberFolder(Preferences::DialogFolder::SaveAs, folder_);
    QDialog::accept();
}

}  // namespace sylvora::app
