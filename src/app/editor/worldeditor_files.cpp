// Sound files and the picture by the choose-file dialog, and the picture well's display.

#include <QDir>
#include <QFileInfo>
#include <QFileDialog>
#include <QLabel>

#include "app/editor/editorsoundlist.h"
#include "app/editor/filekindfilter.h"
#include "app/editor/picturewell.h"
#include "app/editor/worldeditorwindow.h"
#include "app/shell/globals.h"
#include "core/files/utils.h"
#include "core/platform/beep.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

bool WorldEditorWindow::isAcceptableSoundFile(const FSRef& file) { return isAcceptableFile(file.path, FileKind::Sound); }

bool WorldEditorWindow::isAcceptablePictureFile(const FSRef& file) {
    return isAcceptableFile(file.path, FileKind::Picture);
}

namespace {
// A choose-file sheet on the editor: Qt's own dialog, so that the proxy can hide what the world
// would not take. The choice arrives through filesSelected; `navDialog` clears when it closes.
QFileDialog* makeChooseFileDialog(QWidget* parent, FileKind kind, const QString& message) {
    // The sound and picture dialogs remember their folders apart, from one run to the next.
    const auto kept = kind == FileKind::Sound ? Preferences::DialogFolder::Sounds : Preferences::DialogFolder::Picture;
    const QString folder = gPrefs->getDialogFolder(kept);
    auto* dialog = new QFileDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QFileDialog::DontUseNativeDialog, true);
    dialog->setWindowModality(Qt::WindowModal);
    const QString application = copyApplicationNameCFString();
    dialog->setWindowTitle(message.isEmpty() ? application : message);
    dialog->setFileMode(kind == FileKind::Sound ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    dialog->setProxyModel(new FileKindFilter(kind, dialog));
    dialog->setDirectory(folder.isEmpty() || !QFileInfo(folder).isDir() ? QDir::homePath() : folder);
    QObject::connect(dialog, &QFileDialog::finished, dialog,
                     [dialog, kept] { gPrefs->setDialogFolder(kept, dialog->directory().absolutePath()); });
    dialog->setLabelText(QFileDialog::Accept, QFileDialog::tr("Choose"));
    return dialog;
}
}  // namespace

QFileDialog* WorldEditorWindow::openDialog() const { return navDialog.data(); }

void WorldEditorWindow::promptForSoundFiles() {
    if (navDialog) {
        SysBeep(1);
        return;
    }
    QString message;
    if (c.loopList->isVisible()) message = copyLocalizedString(SELECT_LOOPING_SOUND_FILES_PROMPT_KEY, MISC_STRINGS_FILE);
    else if (c.environmentList->isVisible())
        message = copyLocalizedString(SELECT_ENVIRONMENT_SOUND_FILES_PROMPT_KEY, MISC_STRINGS_FILE);
    QFileDialog* dialog = makeChooseFileDialog(window, FileKind::Sound, message);
    QObject::connect(dialog, &QFileDialog::filesSelected, window, [this](const QStringList& files) { chooseFiles(files); });
    QObject::connect(dialog, &QFileDialog::finished, window, [this] { navDialog = nullptr; });
    navDialog = dialog;
    dialog->open();
}

void WorldEditorWindow::promptForPictureFile() {
    if (navDialog) {
        SysBeep(1);
        return;
    }
    const QString message = copyLocalizedString(SELECT_PICTURE_FILE_PROMPT_KEY, MISC_STRINGS_FILE);
    QFileDialog* dialog = makeChooseFileDialog(window, FileKind::Picture, message);
    QObject::connect(dialog, &QFileDialog::filesSelected, window, [this](const QStringList& files) { chooseFiles(files); });
    QObject::connect(dialog, &QFileDialog::finished, window, [this] { navDialog = nullptr; });
    navDialog = dialog;
    dialog->open();
}

void WorldEditorWindow::chooseFiles(const QStringList& files) {
    // The files go to the tab shown now, the one the dialog was opened from.
    const GroupID targetGroup = getSelectedEnvironmentGroupID();
    const bool loopTab = c.loopList->isVisible();
    const bool environmentTab = !loopTab && c.environmentList->isVisible();
    const bool pictureTab = !loopTab && !environmentTab && c.pictureWell->isVisible();
    std::vector<ItemID> collected;
    for (const QString& path : files) {
        FSRef file;
        AliasHandle alias;
        if (FSPathMakeRef(path, file) != noErr || FSNewAlias(file, alias) != noErr) continue;
        if (loopTab && isAcceptableSoundFile(file)) {
            if (const SoundID id = gCurrentWorld->addLoopSound(*alias)) collected.push_back(id);
        } else if (environmentTab && isAcceptableSoundFile(file)) {
            if (const SoundID id = gCurrentWorld->addEnvironmentSound(*alias)) {
                gCurrentWorld->setEnvironmentSoundGroupID(id, targetGroup);
                collected.push_back(id);
            }
        } else if (pictureTab && isAcceptablePictureFile(file)) {
            gCurrentWorld->setPictureFileAlias(alias.get());
        }
    }
    if (!collected.empty() && loopTab) addCollected(*c.loopList, 0, collected);
    if (!collected.empty() && environmentTab) addCollected(*c.environmentList, targetGroup, collected);
    if (collected.empty() && pictureTab) updatePicture();
}

void WorldEditorWindow::addCollected(EditorSoundList& list, ItemID container, const std::vector<ItemID>& ids) {
    EditorListModel& model = *list.listModel();
    if (container != 0 && !model.isOpen(container)) {
        // Opening the group brings in its members from the world, the new ones among them.
        list.expand(model.indexOf(container));
    }
    model.addItems(container, ids);
    list.selectOnly(ids.front());
}

void WorldEditorWindow::updatePicture() {
    if (c.pictureWell->hasContent()) c.pictureWell->setPicture(QImage());
    const QImage picture = gCurrentWorld->getPicture();
    if (!picture.isNull()) c.pictureWell->setPicture(picture);
    c.pictureName->setText(gCurrentWorld->copyPictureDisplayFilename());
    c.pictureName->setEnabled(gCurrentWorld->getPictureFileAlias() != nullptr);
    updateGetInfoWindow();
}

}  // namespace sylvora::app
