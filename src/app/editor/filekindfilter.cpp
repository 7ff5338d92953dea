#include "app/editor/filekindfilter.h"

#include <QFileInfo>
#include <QFileSystemModel>
#include <QMimeDatabase>

#include "app/windows/packagedrops.h"

namespace sylvora::app {

namespace {
bool conformsTo(const QMimeType& type, const QString& prefix) {
    if (type.name().startsWith(prefix)) return true;
    const QStringList ancestors = type.allAncestors();
    return std::any_of(ancestors.begin(), ancestors.end(), [&](const QString& name) { return name.startsWith(prefix); });
}

// Filed under audio/ yet not sampled sound, so the world refuses them: playlists name other files,
// MIDI and tracker-less note formats hold notes.
bool isSampledSound(const QMimeType& type) {
    static const QStringList notSampled = {
        QStringLiteral("audio/x-mpegurl"), QStringLiteral("audio/mpegurl"), QStringLiteral("audio/x-scpls"),
        QStringLiteral("audio/x-ms-asx"), QStringLiteral("audio/x-ms-wax"), QStringLiteral("audio/midi"),
        QStringLiteral("audio/x-midi"), QStringLiteral("audio/sp-midi"), QStringLiteral("audio/prs.sid")};
    if (type.inherits(QStringLiteral("text/plain"))) return false;
    for (const QString& name : notSampled) {
        if (type.inherits(name)) return false;
    }
    return true;
}
}  // namespace

bool isAcceptableFile(const QString& path, FileKind kind) {
    const QFileInfo info(path);
    if (!info.exists() || !info.isFile()) return false;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(info, QMimeDatabase::MatchDefault);
    if (!type.isValid()) return false;
    if (kind == FileKind::Picture) return conformsTo(type, QStringLiteral("image/"));
    return conformsTo(type, QStringLiteral("audio/")) && isSampledSound(type);
}

FileKindFilter::FileKindFilter(FileKind kind, QObject* parent) : QSortFilterProxyModel(parent), kind_(kind) {
    setRecursiveFilteringEnabled(false);
}

bool FileKindFilter::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const {
    const auto* files = qobject_cast<const QFileSystemModel*>(sourceModel());
    if (files == nullptr) return true;
    const QModelIndex index = files->index(sourceRow, 0, sourceParent);
    const QString path = files->filePath(index);
    if (path.isEmpty()) return true;
    const QFileInfo info(path);
    if (info.isDir()) return !isWorldPackagePath(path);  // folders to browse into, but no packages
    return isAcceptableFile(path, kind_);
}

}  // namespace sylvora::app
