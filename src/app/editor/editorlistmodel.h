#pragma once

// The rows of one of the editor's sound lists. A row is nothing but an ID of the current world (a
// SoundID or a GroupID); its text, its flags and its place in the sort are asked of the world each
// time the view needs them, so the list can never show a stale name. Containers (groups) hold
// their children only while they are open: opening adds them, closing drops them.
//
// Rows are kept sorted by the list's comparator: added rows are inserted at their sorted place and
// sort() puts every level in order again after a name has changed. Main thread only.

#include <QAbstractItemModel>
#include <functional>
#include <map>
#include <vector>

namespace sylvora::app {

using ItemID = quint32;  // a SoundID or a GroupID; 0 is no item and the top level

class EditorListModel : public QAbstractItemModel {
    Q_OBJECT
public:
    // True when the first item sorts before the second.
    using Comparator = std::function<bool(ItemID, ItemID)>;

    explicit EditorListModel(QObject* parent = nullptr);
    void setComparator(Comparator comparator) { lessThan_ = std::move(comparator); }

    // The world's answers for one row.
    virtual QString itemName(ItemID item) const = 0;  // null when the world has none
    virtual bool isContainer(ItemID /*item*/) const { return false; }
    virtual bool isDraggable(ItemID /*item*/) const { return false; }
    // The end of an in-place edit; false refuses it and nothing changes.
    virtual bool setItemName(ItemID /*item*/, const QString& /*name*/) { return false; }

    // Adds `items` under `container` (0: the top level), each at its sorted place; an item already
    // under that container is not added twice.
    void addItems(ItemID container, const std::vector<ItemID>& items);
    // Takes the rows of `items` out wherever they are; a container goes with its children.
    void removeItems(const std::vector<ItemID>& items);
    void removeAllItems();
    void openContainer(ItemID container);   // marks it open (its rows come through addItems)
    void closeContainer(ItemID container);  // drops its children
    bool isOpen(ItemID container) const { return children_.count(container) != 0; }
    void sort();

    QModelIndex indexOf(ItemID item) const;
    ItemID itemOf(const QModelIndex& index) const;
    bool contains(ItemID item) const { return indexOf(item).isValid(); }
    ItemID containerOf(ItemID item) const;  // 0 for the top level or an unknown item

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    const std::vector<ItemID>* rowsOf(ItemID container) const;
    std::vector<ItemID>* rowsOf(ItemID container);
    QModelIndex containerIndex(ItemID container) const;
    std::size_t sortedPlace(const std::vector<ItemID>& rows, ItemID item) const;
    void sortLevel(std::vector<ItemID>& rows) const;

    Comparator lessThan_;
    std::vector<ItemID> top_;
    std::map<ItemID, std::vector<ItemID>> children_;  // only open containers have an entry
};

}  // namespace sylvora::app
