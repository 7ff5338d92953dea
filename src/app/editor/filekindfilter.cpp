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
}  // namespace

bool isAcceptableFile(const QString& path, FileKind kind) {
    const QFileInfo info(path);
    if (!info.exists() || !info.isFile()) return false;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(info, QMimeDatabase::MatchDefault);
    if (!type.isValid()) return false;
    return conformsTo(type, kind == FileKind::Sound ? QStringLiteral("audio/") : QStringLiteral("image/"));
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
