#pragma once

// One of the editor's two sound lists: a tree view over an EditorListModel that leaves every
// decision about drags, drops, double-clicks and edits to its window. Drops are the list's own:
// the target is the row under the pointer alone (or the background), never a place between rows,
// and the copy action is used so that Qt never removes rows after a drop.

#include <QPersistentModelIndex>
#include <QTreeView>
#include <functional>

#include "app/editor/editorlistmodel.h"

class QMimeData;

namespace sylvora::app {

class EditorSoundList : public QTreeView {
    Q_OBJECT
public:
    explicit EditorSoundList(QWidget* parent = nullptr);

    EditorListModel* listModel() const { return qobject_cast<EditorListModel*>(model()); }

    // Whether a drag may be dropped on `item` (0: the list's background), and taking the drop.
    std::function<bool(const QMimeData& data, ItemID item)> acceptDrag;
    std::function<bool(const QMimeData& data, ItemID item)> receiveDrag;
    // The drag data for rows dragged out of the list; null refuses the drag.
    std::function<QMimeData*(const std::vector<ItemID>& items)> addDragItems;

    // The drop target under a point of the viewport: a row, or 0 for the background.
    ItemID dropTargetAt(const QPoint& position) const;

    // Selection in display order (children of open groups included).
    std::vector<ItemID> selectedItems() const;
    ItemID firstSelectedItem() const;
    void selectOnly(ItemID item);  // 0 clears the selection

    // In-place editing of a row's text; the edit commits when it ends.
    void editItem(ItemID item);
    ItemID editItemID() const;
    void commitEditing();

    // The group that would receive the drag over the list now (0: none, or the background).
    ItemID dropHighlight() const;

Q_SIGNALS:
    // An in-place edit ended, however it ended (Return, Escape, the focus leaving, commitEditing).
    void editingEnded();

protected:
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    void highlightDropTarget(ItemID item);
    QPersistentModelIndex dropHighlight_;
    QPersistentModelIndex editing_;
};

// Takes the selected rows out of `list` and selects the row that moves into their place (or the
// nearest unselected row above, at the bottom), scrolling it into view.
void myRemoveSelectedDataBrowserItems(EditorSoundList& list);

}  // namespace sylvora::app
