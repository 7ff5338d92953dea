#include "app/mixer/mixermodel.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <algorithm>
#include <cmath>

#include "audio/engine/soundinstance.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

namespace {

double secondsNow() {
    static QElapsedTimer clock;
    if (!clock.isValid()) clock.start();
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

QString soundName(const QString& fileName) {
    const QString base = QFileInfo(fileName).completeBaseName();
    return base.isEmpty() ? fileName : base;
}

}  // namespace

MixerModel::MixerModel(World& world, QObject* parent) : QAbstractItemModel(parent), world_(world) {
    nodes_ = buildNodes();
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        if (nodes_[i].parent < 0) topLevel_.push_back(static_cast<int>(i));
    }
}

std::vector<MixerModel::Node> MixerModel::buildNodes() const {
    std::vector<Node> nodes;
    const auto add = [&nodes](Kind kind, quint32 id, int parent, QString name) {
        const int row = parent < 0 ? (kind == Kind::LoopHeader ? 0 : 1)
                                   : static_cast<int>(nodes[static_cast<std::size_t>(parent)].children.size());
        nodes.push_back(Node{kind, id, parent, row, {}, std::move(name)});
        const int added = static_cast<int>(nodes.size()) - 1;
        if (parent >= 0) nodes[static_cast<std::size_t>(parent)].children.push_back(added);
        return added;
    };
    const int loops = add(Kind::LoopHeader, 0, -1, tr("Loop Sounds"));
    for (int i = 0; i < world_.getNumLoopSounds(); ++i) {
        const SoundID id = world_.getIndLoopSoundID(i);
        add(Kind::Loop, id, loops, soundName(world_.getLoopSoundFilename(id)));
    }
    const int environment = add(Kind::EnvironmentHeader, 0, -1, tr("Environment Sounds"));
    for (int g = 0; g < world_.getNumGroups(); ++g) {
        const GroupID group = world_.getIndGroupID(g);
        const int groupNode = add(Kind::Group, group, environment, world_.getGroupName(group));
        for (int i = 0; i < world_.getNumEnvironmentSounds(); ++i) {
            const SoundID id = world_.getIndEnvironmentSoundID(i);
            if (world_.getEnvironmentSoundGroupID(id) == group) {
                add(Kind::Environment, id, groupNode, soundName(world_.getEnvironmentSoundFilename(id)));
            }
        }
    }
    for (int i = 0; i < world_.getNumEnvironmentSounds(); ++i) {
        const SoundID id = world_.getIndEnvironmentSoundID(i);
        if (world_.getEnvironmentSoundGroupID(id) == 0) {
            add(Kind::Environment, id, environment, soundName(world_.getEnvironmentSoundFilename(id)));
        }
    }
    return nodes;
}

void MixerModel::refresh() {
    const double now = secondsNow();
    for (int i = 0; i < world_.getNumMovies(); ++i) {
        const MovieEntry& entry = world_.getMovieEntry(i);
        if (!entry.isLoopSound && entry.movie && entry.startTime > 0.0 && entry.movie->rate() != 0.0 &&
            !entry.movie->isDone()) {
            lastHeard_[entry.soundID] = now;
        }
    }
    std::vector<Node> fresh = buildNodes();
    if (fresh != nodes_) {
        beginResetModel();
        nodes_ = std::move(fresh);
        topLevel_.clear();
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            if (nodes_[i].parent < 0) topLevel_.push_back(static_cast<int>(i));
        }
        endResetModel();
        return;
    }
    // The same sounds: only what is shown of them may differ.
    for (std::size_t i = 0; i < nodes_.size(); ++i) nodes_[i].name = fresh[i].name;
    for (int top : topLevel_) {
        const Node& heading = nodes_[static_cast<std::size_t>(top)];
        if (heading.children.empty()) continue;
        const QModelIndex parent = index(heading.row, 0);
        Q_EMIT dataChanged(index(0, 0, parent), index(static_cast<int>(heading.children.size()) - 1, COLUMN_COUNT - 1, parent));
        for (int child : heading.children) {
            const Node& group = nodes_[static_cast<std::size_t>(child)];
            if (group.children.empty()) continue;
            const QModelIndex groupIndex = index(group.row, 0, parent);
            Q_EMIT dataChanged(index(0, 0, groupIndex),
                               index(static_cast<int>(group.children.size()) - 1, COLUMN_COUNT - 1, groupIndex));
        }
    }
}

bool MixerModel::isSounding(const Node& node) const {
    if (node.kind == Kind::Environment) {
        const auto heard = lastHeard_.constFind(node.id);
        return heard != lastHeard_.cend() && secondsNow() - heard.value() < JUST_HEARD_SECONDS;
    }
    if (node.kind != Kind::Loop) return false;
    for (int i = 0; i < world_.getNumMovies(); ++i) {
        const MovieEntry& entry = world_.getMovieEntry(i);
        if (entry.soundID == node.id && entry.movie && entry.startTime > 0.0 && entry.movie->rate() != 0.0 &&
            !entry.movie->isDone()) {
            return true;
        }
    }
    return false;
}

int MixerModel::levelOf(const World& world, Kind kind, SoundID id) {
    const double volume = kind == Kind::Loop ? world.getLoopSoundVolume(id) : world.getEnvironmentSoundMaxVolume(id);
    return static_cast<int>(std::lround(std::clamp(volume, 0.0, 1.0) * LEVEL_STEPS));
}

void MixerModel::setLevel(World& world, Kind kind, SoundID id, int level) {
    const double volume = std::clamp(level, 0, LEVEL_STEPS) / static_cast<double>(LEVEL_STEPS);
    if (kind == Kind::Loop) {
        world.setLoopSoundVolume(id, volume);
        return;
    }
    if (kind != Kind::Environment) return;
    const double minimum = world.getEnvironmentSoundMinVolume(id);
    const double maximum = world.getEnvironmentSoundMaxVolume(id);
    // The range moves as one: its minimum keeps its share of the maximum, and a silent range
    // (nothing to keep) becomes a fixed level.
    const double ratio = maximum > 0.0 ? minimum / maximum : 1.0;
    world.setEnvironmentSoundMaxVolume(id, volume);
    world.setEnvironmentSoundMinVolume(id, volume * ratio);
}

const MixerModel::Node* MixerModel::nodeOf(const QModelIndex& index) const {
    if (!index.isValid() || index.internalId() >= nodes_.size()) return nullptr;
    return &nodes_[static_cast<std::size_t>(index.internalId())];
}

MixerModel::Kind MixerModel::kindOf(const QModelIndex& index) const {
    const Node* node = nodeOf(index);
    return node ? node->kind : Kind::LoopHeader;
}

quint32 MixerModel::idOf(const QModelIndex& index) const {
    const Node* node = nodeOf(index);
    return node ? node->id : 0;
}

bool MixerModel::hasLevel(const QModelIndex& index) const {
    const Kind kind = kindOf(index);
    return nodeOf(index) != nullptr && (kind == Kind::Loop || kind == Kind::Environment);
}

QModelIndex MixerModel::indexOfSound(SoundID id, int column) const {
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
        const Node& node = nodes_[i];
        if ((node.kind == Kind::Loop || node.kind == Kind::Environment) && node.id == id) {
            return createIndex(node.row, column, static_cast<quintptr>(i));
        }
    }
    return {};
}

QModelIndex MixerModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column < 0 || column >= COLUMN_COUNT) return {};
    const std::vector<int>* rows = &topLevel_;
    if (parent.isValid()) {
        const Node* node = nodeOf(parent);
        if (node == nullptr) return {};
        rows = &node->children;
    }
    if (row >= static_cast<int>(rows->size())) return {};
    return createIndex(row, column, static_cast<quintptr>((*rows)[static_cast<std::size_t>(row)]));
}

QModelIndex MixerModel::parent(const QModelIndex& child) const {
    const Node* node = nodeOf(child);
    if (node == nullptr || node->parent < 0) return {};
    return createIndex(nodes_[static_cast<std::size_t>(node->parent)].row, 0, static_cast<quintptr>(node->parent));
}

int MixerModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) return static_cast<int>(topLevel_.size());
    if (parent.column() != 0) return 0;
    const Node* node = nodeOf(parent);
    return node ? static_cast<int>(node->children.size()) : 0;
}

int MixerModel::columnCount(const QModelIndex&) const { return COLUMN_COUNT; }

QVariant MixerModel::data(const QModelIndex& index, int role) const {
    const Node* node = nodeOf(index);
    if (node == nullptr) return {};
    const bool sound = node->kind == Kind::Loop || node->kind == Kind::Environment;
    if (role == SOUNDING_ROLE) return isSounding(*node);
    switch (index.column()) {
        case NAME_COLUMN:
            if (role == Qt::DisplayRole) return node->name;
            break;
        case LEVEL_COLUMN:
            // The slider drawn over the cell shows the level; painted text would show through it.
            if (!sound) break;
            if (role == Qt::EditRole) return levelOf(world_, node->kind, node->id);
            if (role == Qt::ToolTipRole) return percentText(levelOf(world_, node->kind, node->id));
            break;
        case SOUNDING_COLUMN:
            if (!sound || !isSounding(*node)) break;
            if (role == Qt::DisplayRole) return QStringLiteral("\u266A");
            if (role == Qt::ToolTipRole) return node->kind == Kind::Loop ? tr("Playing now") : tr("Just heard");
            break;
        default: break;
    }
    return {};
}

bool MixerModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    const Node* node = nodeOf(index);
    if (node == nullptr || role != Qt::EditRole || index.column() != LEVEL_COLUMN || !hasLevel(index)) return false;
    bool ok = false;
    const int level = value.toInt(&ok);
    if (!ok) return false;
    setLevel(world_, node->kind, node->id, level);
    Q_EMIT dataChanged(index, index);
    return true;
}

Qt::ItemFlags MixerModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == LEVEL_COLUMN && hasLevel(index)) flags |= Qt::ItemIsEditable;
    return flags;
}

QVariant MixerModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
        case NAME_COLUMN: return tr("Sound");
        case LEVEL_COLUMN: return tr("Level");
        default: return QString();
    }
}

}  // namespace sylvora::app
