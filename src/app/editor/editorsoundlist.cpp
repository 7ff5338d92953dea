#include "app/editor/editorsoundlist.h"

#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPainter>

#include <algorithm>

namespace sylvora::app {

namespace {
// Every row in display order: top-level rows with the children of open groups after each.
std::vector<QModelIndex> displayRows(const QTreeView& view) {
    std::vector<QModelIndex> rows;
    if (view.model() == nullptr) return rows;
    for (QModelIndex row = view.model()->index(0, 0); row.isValid(); row = view.indexBelow(row)) rows.push_back(row);
    return rows;
}
}  // namespace

EditorSoundList::EditorSoundList(QWidget* parent) : QTreeView(parent) {
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setExpandsOnDoubleClick(false);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setDefaultDropAction(Qt::CopyAction);
}

ItemID EditorSoundList::dropTargetAt(const QPoint& position) const {
    return listModel() == nullptr ? 0 : listModel()->itemOf(indexAt(position));
}

std::vector<ItemID> EditorSoundList::selectedItems() const {
    std::vector<ItemID> items;
    if (selectionModel() == nullptr || listModel() == nullptr) return items;
    for (const QModelIndex& row : displayRows(*this)) {
        if (selectionModel()->isSelected(row)) items.push_back(listModel()->itemOf(row));
    }
    return items;
}

ItemID EditorSoundList::firstSelectedItem() const {
    if (selectionModel() == nullptr || !selectionModel()->hasSelection()) return 0;
    const std::vector<ItemID> items = selectedItems();
    return items.empty() ? 0 : items.front();
}

void EditorSoundList::selectOnly(ItemID item) {
    const QModelIndex index = listModel() == nullptr ? QModelIndex() : listModel()->indexOf(item);
    if (!index.isValid()) {
        selectionModel()->clearSelection();
        return;
    }
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    scrollTo(index, QAbstractItemView::EnsureVisible);
}

void EditorSoundList::editItem(ItemID item) {
    const QModelIndex index = listModel()->indexOf(item);
    if (!index.isValid()) return;
    editing_ = index;
    edit(index);
}

ItemID EditorSoundList::editItemID() const {
    return state() == QAbstractItemView::EditingState && editing_.isValid() ? listModel()->itemOf(editing_) : 0;
}

void EditorSoundList::commitEditing() {
    if (state() != QAbstractItemView::EditingState || !editing_.isValid()) return;
    if (QWidget* editor = indexWidget(editing_)) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

void EditorSoundList::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    QTreeView::closeEditor(editor, hint);
    Q_EMIT editingEnded();
}

void EditorSoundList::dragEnterEvent(QDragEnterEvent* event) {
    // Accepting the enter only lets the moves come; each move decides for the row under it.
    const ItemID target = dropTargetAt(event->position().toPoint());
    if (acceptDrag && (acceptDrag(*event->mimeData(), target) || acceptDrag(*event->mimeData(), 0))) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void EditorSoundList::dragMoveEvent(QDragMoveEvent* event) {
    const QPoint position = event->position().toPoint();
    const ItemID target = dropTargetAt(position);
    const bool accepted = acceptDrag && acceptDrag(*event->mimeData(), target);
    if (accepted) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
    highlightDropTarget(accepted ? target : 0);
    // Near an edge the list scrolls, so that a row out of sight can be reached.
    const QRect inner = viewport()->rect().adjusted(autoScrollMargin(), autoScrollMargin(), -autoScrollMargin(),
                                                    -autoScrollMargin());
    if (hasAutoScroll() && !inner.contains(position)) startAutoScroll();
    else stopAutoScroll();
}

void EditorSoundList::dragLeaveEvent(QDragLeaveEvent* event) {
    highlightDropTarget(0);
    stopAutoScroll();
    event->accept();
}

void EditorSoundList::dropEvent(QDropEvent* event) {
    highlightDropTarget(0);
    stopAutoScroll();
    const ItemID target = dropTargetAt(event->position().toPoint());
    // Refused unless something was taken: the source then knows nothing moved.
    if (acceptDrag && acceptDrag(*event->mimeData(), target) && receiveDrag && receiveDrag(*event->mimeData(), target)) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->setDropAction(Qt::IgnoreAction);
        event->ignore();
    }
}

ItemID EditorSoundList::dropHighlight() const {
    return dropHighlight_.isValid() ? listModel()->itemOf(dropHighlight_) : 0;
}

void EditorSoundList::highlightDropTarget(ItemID item) {
    const QModelIndex index = item == 0 ? QModelIndex() : listModel()->indexOf(item);
    if (QPersistentModelIndex(index) == dropHighlight_) return;
    dropHighlight_ = index;
    viewport()->update();
}

void EditorSoundList::drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QTreeView::drawRow(painter, option, index);
    if (!dropHighlight_.isValid() || index != dropHighlight_) return;
    painter->save();
    painter->setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), 3, 3);
    painter->restore();
}

void EditorSoundList::startDrag(Qt::DropActions /*supportedActions*/) {
    if (!addDragItems) return;
    QMimeData* rows = addDragItems(selectedItems());
    if (rows == nullptr) return;
    auto* drag = new QDrag(this);
    drag->setMimeData(rows);
    drag->exec(Qt::CopyAction, Qt::CopyAction);
}

void myRemoveSelectedDataBrowserItems(EditorSoundList& list) {
    EditorListModel* model = list.listModel();
    if (model == nullptr) return;
    const std::vector<QModelIndex> rows = displayRows(list);
    const std::vector<ItemID> selected = list.selectedItems();
    if (selected.empty()) return;

    std::vector<bool> flags(rows.size(), false);
    for (ItemID item : selected) {
        const auto at = std::find_if(rows.begin(), rows.end(), [&](const QModelIndex& row) { return model->itemOf(row) == item; });
        if (at != rows.end()) flags[static_cast<std::size_t>(at - rows.begin())] = true;
    }
    std::size_t last = rows.size();
    while (last > 0 && !flags[last - 1]) --last;
    if (last == 0) return;
    --last;

    std::size_t chosen = 0;
    if (last + 1 < rows.size()) {
        chosen = last + 1;
    } else {
        chosen = last;
        while (chosen > 0 && flags[chosen]) --chosen;
    }
    const ItemID noted = model->itemOf(rows[chosen]);
    list.selectionModel()->clearSelection();
    model->removeItems(selected);
    // When the noted row went with the others (every row from the first down), nothing is selected.
    list.selectOnly(model->contains(noted) ? noted : 0);
}

}  // namespace sylvora::app
