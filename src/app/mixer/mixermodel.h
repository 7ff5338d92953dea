#pragma once

// The mixer's item model: every loop sound and environment sound of the world, grouped sounds
// under their group, each with one level and whether it is sounding. A level is a loop sound's
// volume, or an environment sound's maximum volume with its minimum kept in proportion; setting one
// goes through the World's setters as the editor's sliders do, so the playing schedule follows and
// the world becomes modified.
//
// Lifecycle: made with the mixer window -> refresh() whenever the world may have changed (it keeps
// its rows, and with them the views' widgets, while the world's sounds stay the same ones) ->
// destroyed at shut-down. Main thread only.

#include <QAbstractItemModel>
#include <QHash>
#include <vector>

#include "core/world/world.h"

namespace sylvora::app {

class MixerModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { NAME_COLUMN, LEVEL_COLUMN, SOUNDING_COLUMN, COLUMN_COUNT };
    enum class Kind { LoopHeader, EnvironmentHeader, Loop, Group, Environment };
    static constexpr int LEVEL_STEPS = 100;
    static constexpr double JUST_HEARD_SECONDS = 3.0;  // an environment sound stays marked this long
    static constexpr int SOUNDING_ROLE = Qt::UserRole + 1;

    explicit MixerModel(World& world, QObject* parent = nullptr);

    // [main] Reads the world again: names, levels and what sounds; the rows are rebuilt only when
    // the sounds or groups themselves changed.
    void refresh();

    Kind kindOf(const QModelIndex& index) const;
    quint32 idOf(const QModelIndex& index) const;  // the SoundID or GroupID; 0 for a heading
    bool hasLevel(const QModelIndex& index) const;
    QModelIndex indexOfSound(SoundID id, int column = NAME_COLUMN) const;

    // The level of a sound, 0 to LEVEL_STEPS, and setting it.
    static int levelOf(const World& world, Kind kind, SoundID id);
    static void setLevel(World& world, Kind kind, SoundID id, int level);

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    struct Node {
        Kind kind;
        quint32 id;
        int parent;  // index into nodes_, -1 for the top level
        int row;
        std::vector<int> children;
        QString name;
        bool operator==(const Node& other) const {
            return kind == other.kind && id == other.id && parent == other.parent && row == other.row;
        }
    };
    std::vector<Node> buildNodes() const;
    bool isSounding(const Node& node) const;
    const Node* nodeOf(const QModelIndex& index) const;

    World& world_;
    std::vector<Node> nodes_;
    std::vector<int> topLevel_;
    QHash<SoundID, double> lastHeard_;  // event-clock time an environment sound was last heard
};

}  // namespace sylvora::app
