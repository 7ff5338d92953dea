#include "app/editor/editorlistmodel.h"

#include <algorithm>

namespace sylvora::app {

// An index's internal ID is the item ID of the container its row lives in (0: the top level), so
// the rows themselves stay plain IDs.

EditorListModel::EditorListModel(QObject* parent) : QAbstractItemModel(parent) {}

const std::vector<ItemID>* EditorListModel::rowsOf(ItemID container) const {
    if (container == 0) return &top_;
    auto found = children_.find(container);
    return found == children_.end() ? nullptr : &found->second;
}

std::vector<ItemID>* EditorListModel::rowsOf(ItemID container) {
    return const_cast<std::vector<ItemID>*>(std::as_const(*this).rowsOf(container));
}

QModelIndex EditorListModel::containerIndex(ItemID container) const {
    return container == 0 ? QModelIndex() : indexOf(container);
}

std::size_t EditorListModel::sortedPlace(const std::vector<ItemID>& rows, ItemID item) const {
    if (!lessThan_) return rows.size();
    auto place = std::partition_point(rows.begin(), rows.end(), [&](ItemID row) { return lessThan_(row, item); });
    return static_cast<std::size_t>(place - rows.begin());
}

void EditorListModel::sortLevel(std::vector<ItemID>& rows) const {
    if (lessThan_) std::stable_sort(rows.begin(), rows.end(), lessThan_);
}

void EditorListModel::addItems(ItemID container, const std::vector<ItemID>& items) {
    for (ItemID item : items) {
        std::vector<ItemID>* rows = rowsOf(container);
        if (item == 0 || rows == nullptr || std::find(rows->begin(), rows->end(), item) != rows->end()) continue;
        const auto place = sortedPlace(*rows, item);
        beginInsertRows(containerIndex(container), static_cast<int>(place), static_cast<int>(place));
        rows->insert(rows->begin() + static_cast<std::ptrdiff_t>(place), item);
        endInsertRows();
    }
}

void EditorListModel::removeItems(const std::vector<ItemID>& items) {
    for (ItemID item : items) {
        const QModelIndex index = indexOf(item);
        if (!index.isValid()) continue;
        const ItemID container = static_cast<ItemID>(index.internalId());
        beginRemoveRows(index.parent(), index.row(), index.row());
        std::vector<ItemID>* rows = rowsOf(container);
        rows->erase(rows->begin() + index.row());
        children_.erase(item);
        endRemoveRows();
    }
}

void EditorListModel::removeAllItems() {
    beginResetModel();
    top_.clear();
    children_.clear();
    endResetModel();
}

void EditorListModel::openContainer(ItemID container) {
    if (container != 0 && isContainer(container) && indexOf(container).isValid()) children_.try_emplace(container);
}

void EditorListModel::closeContainer(ItemID container) {
    auto found = children_.find(container);
    if (found == children_.end()) return;
    if (!found->second.empty()) {
        beginRemoveRows(indexOf(container), 0, static_cast<int>(found->second.size()) - 1);
        found->second.clear();
        endRemoveRows();
    }
    children_.erase(container);
}

void EditorListModel::sort() {
    Q_EMIT layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    std::vector<ItemID> items;
    items.reserve(static_cast<std::size_t>(before.size()));
    for (const QModelIndex& index : before) items.push_back(itemOf(index));
    sortLevel(top_);
    for (auto& [container, rows] : children_) sortLevel(rows);
    QModelIndexList after;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const QModelIndex moved = indexOf(items[i]);
        after.append(moved.isValid() ? moved.siblingAtColumn(before[static_cast<qsizetype>(i)].column()) : moved);
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}

QModelIndex EditorListModel::indexOf(ItemID item) const {
    if (item == 0) return {};
    auto at = std::find(top_.begin(), top_.end(), item);
    if (at != top_.end()) return createIndex(static_cast<int>(at - top_.begin()), 0, quintptr{0});
    for (const auto& [container, rows] : children_) {
        auto child = std::find(rows.begin(), rows.end(), item);
        if (child != rows.end()) return createIndex(static_cast<int>(child - rows.begin()), 0, quintptr{container});
    }
    return {};
}

ItemID EditorListModel::itemOf(const QModelIndex& index) const {
    if (!index.isValid() || index.model() != this) return 0;
    const std::vector<ItemID>* rows = rowsOf(static_cast<ItemID>(index.internalId()));
    if (rows == nullptr || index.row() < 0 || index.row() >= static_cast<int>(rows->size())) return 0;
    return (*rows)[static_cast<std::size_t>(index.row())];
}

ItemID EditorListModel::containerOf(ItemID item) const {
    const QModelIndex index = indexOf(item);
    return index.isValid() ? static_cast<ItemID>(index.internalId()) : 0;
}

QModelIndex EditorListModel::index(int row, int column, const QModelIndex& parent) const {
    if (column != 0 || row < 0) return {};
    const ItemID container = parent.isValid() ? itemOf(parent) : 0;
    if (parent.isValid() && parent.internalId() != 0) return {};  // groups never nest
    const std::vector<ItemID>* rows = rowsOf(container);
    if (rows == nullptr || row >= static_cast<int>(rows->size())) return {};
    return createIndex(row, 0, quintptr{container});
}

QModelIndex EditorListModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == 0) return {};
    return indexOf(static_cast<ItemID>(child.internalId()));
}

int EditorListModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0) return 0;
    if (parent.isValid() && parent.internalId() != 0) return 0;
    const std::vector<ItemID>* rows = rowsOf(parent.isValid() ? itemOf(parent) : 0);
    return rows == nullptr ? 0 : static_cast<int>(rows->size());
}

int EditorListModel::columnCount(const QModelIndex& /*parent*/) const { return 1; }

bool EditorListModel::hasChildren(const QModelIndex& parent) const {
    if (!parent.isValid()) return !top_.empty();
    // A closed group still shows its disclosure triangle: its children come when it opens.
    return parent.internalId() == 0 && isContainer(itemOf(parent));
}

QVariant EditorListModel::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole && role != Qt::EditRole) return {};
    const ItemID item = itemOf(index);
    if (item == 0) return {};
    const QString name = itemName(item);
    return name.isNull() ? QVariant(QString()) : QVariant(name);
}

bool EditorListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::EditRole) return false;
    const ItemID item = itemOf(index);
    if (item == 0 || !setItemName(item, value.toString())) return false;
    Q_EMIT dataChanged(index, index);
    return true;
}

Qt::ItemFlags EditorListModel::flags(const QModelIndex& index) const {
    const ItemID item = itemOf(index);
    if (item == 0) return Qt::ItemIsDropEnabled;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (isContainer(item)) result |= Qt::ItemIsEditable | Qt::ItemIsDropEnabled;
    if (isDraggable(item)) result |= Qt::ItemIsDragEnabled;
    return result;
}

}  // namespace sylvora::app
