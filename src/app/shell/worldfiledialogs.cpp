#include "app/shell/worldfiledialogs.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageBox>

#include "app/windows/packagedrops.h"
#include "core/world/world.h"

namespace sylvora::app {

namespace {
QString& lastOpenFolder() {
    static QString folder = QDir::homePath();
    return folder;
}
QString& lastSaveFolder() {
    static QString folder = QDir::homePath();
    return folder;
}
QString withExtension(const QString& name) {
    const QString extension = QLatin1Char('.') + QLatin1String(World::PACKAGENAME_EXTENSION);
    return name.endsWith(extension, Qt::CaseInsensitive) ? name : name + extension;
}
void configure(QFileDialog& dialog) {
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.setAttribute(Qt::WA_DeleteOnClose);
}
}  // namespace

WorldOpenDialog::WorldOpenDialog(QWidget* parent) : QFileDialog(parent, tr("Open World")) {
    configure(*this);
    // Worlds are folders: listing folders only shows exactly the folders and the world packages.
    setFileMode(QFileDialog::Directory);
    setOption(QFileDialog::ShowDirsOnly);
    setLabelText(QFileDialog::Accept, tr("Open"));
    setDirectory(lastOpenFolder());
    connect(this, &QFileDialog::directoryEntered, this, &WorldOpenDialog::enteredDirectory);
}

void WorldOpenDialog::enteredDirectory(const QString& path) {
    if (!isWorldPackagePath(path)) {
        lastOpenFolder() = path;
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
        lastOpenFolder() = QFileInfo(chosen_).absolutePath();
        QDialog::accept();
    } else if (QFileInfo(path).isDir()) {
        setDirectory(path);  // a plain folder is entered, as a double-click would
    }
}

WorldSaveDialog::WorldSaveDialog(const QString& proposedName, QWidget* parent)
    : QFileDialog(parent, tr("Save World As")) {
    configure(*this);
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setOption(QFileDialog::ShowDirsOnly);
    setDirectory(lastSaveFolder());
    selectFile(proposedName);
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
            this, tr("Replace World"),
            tr("“%1” already exists. Do you want to replace it?").arg(target.fileName()),
            QMessageBox::Cancel | QMessageBox::Yes, QMessageBox::Cancel);
        if (answer != QMessageBox::Yes) return;
    }
    folder_ = target.absolutePath();
    name_ = target.fileName();
    lastSaveFolder() = folder_;
    QDialog::accept();
}

}  // namespace sylvora::app
