// Files dropped on the two lists and the picture well, and environment rows dragged from one
// group to another.

#include <QMimeData>

#include "app/editor/editordrags.h"
#include "app/editor/editorsoundlist.h"
#include "app/editor/environmentsoundmodel.h"
#include "app/editor/worldeditorwindow.h"
#include "app/shell/globals.h"

namespace sylvora::app {

namespace {
// The alias of a dropped item that holds an acceptable file of the kind asked, or none.
AliasHandle aliasOfDroppedFile(const QString& path, bool picture) {
    FSRef file;
    AliasHandle alias;
    if (path.isEmpty() || FSPathMakeRef(path, file) != noErr) return nullptr;
    const bool acceptable = picture ? WorldEditorWindow::isAcceptablePictureFile(file)
                                    : WorldEditorWindow::isAcceptableSoundFile(file);
    if (!acceptable || FSNewAlias(file, alias) != noErr) return nullptr;
    return alias;
}
}  // namespace

bool WorldEditorWindow::DBAcceptDragCallback(const EditorSoundList& list, const QMimeData& drag, ItemID item) const {
    // A row that is not a group refuses, so loop files land on the list's background only.
    if (item != 0 && (&list == c.loopList || gCurrentWorld->getGroupIndex(item) < 0)) return false;
    return doesDragContainFiles(drag);
}

bool WorldEditorWindow::DBReceiveDragCallback(EditorSoundList& list, const QMimeData& drag, ItemID item) {
    const bool loopList = &list == c.loopList;
    std::vector<ItemID> collected;
    for (const QString& path : dragItemFiles(drag)) {
        const AliasHandle alias = aliasOfDroppedFile(path, false);
        if (!alias) continue;
        SoundID id = 0;
        if (loopList) {
            id = gCurrentWorld->addLoopSound(*alias);
        } else {
            id = gCurrentWorld->getEnvironmentSoundIDWithAlias(*alias);
            if (id != 0) {
                // Already one of the world's sounds (its own row dragged, or its file dropped again):
                // it moves rather than coming in twice.
                environmentModel->removeItems({id});
            } else {
                id = gCurrentWorld->addEnvironmentSound(*alias);
            }
            if (id != 0) gCurrentWorld->setEnvironmentSoundGroupID(id, item);
        }
        if (id != 0) collected.push_back(id);
    }
    if (collected.empty()) return false;
    addCollected(list, item, collected);
    return true;
}

QMimeData* WorldEditorWindow::DBAddDragItemCallback(const EditorSoundList& list, const std::vector<ItemID>& items) const {
    if (&list != c.environmentList) return nullptr;
    std::vector<DraggedRow> rows;
    for (ItemID item : items) {
        if (item == 0 || gCurrentWorld->getGroupIndex(item) >= 0) continue;
        const Alias* alias = gCurrentWorld->getEnvironmentSound(item);
        FSRef file;
        if (alias == nullptr || FSResolveAlias(*alias, file) != noErr) continue;
        rows.push_back(DraggedRow{item, file.path});
    }
    return rows.empty() ? nullptr : makeEnvironmentRowsMimeData(rows);
}

bool WorldEditorWindow::receivePictureDrop(const QMimeData& drag) {
    bool taken = false;
    for (const QString& path : dragItemFiles(drag)) {
        const AliasHandle alias = aliasOfDroppedFile(path, true);
        if (!alias) continue;
        gCurrentWorld->setPictureFileAlias(alias.get());  // of several, the last one stays
        taken = true;
    }
    if (taken) updatePicture();
    return taken;
}

}  // namespace sylvora::app
