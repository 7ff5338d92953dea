#include "app/windows/packagedrops.h"

#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include "core/world/world.h"

namespace sylvora::app {

bool isWorldPackagePath(const QString& path) {
    const QFileInfo info(path);
    return info.isDir() &&
           info.suffix().compare(QLatin1String(World::PACKAGENAME_EXTENSION), Qt::CaseInsensitive) == 0;
}

QStringList droppedFolders(const QMimeData& data) {
    QStringList folders;
    for (const QUrl& url : data.urls()) {
        if (!url.isLocalFile()) break;
        const QString path = url.toLocalFile();
        if (QFileInfo(path).isDir()) folders << QFileInfo(path).absoluteFilePath();
    }
    return folders;
}

namespace {
FolderDropHandler& handlerSlot() {
    static FolderDropHandler handler;
    return handler;
}
}  // namespace

void setFolderDropHandler(FolderDropHandler handler) { handlerSlot() = std::move(handler); }
const FolderDropHandler& folderDropHandler() { return handlerSlot(); }

}  // namespace sylvora::app
