#pragma once

// World packages dropped on any window of the application, outside the editor's own drop targets,
// are opened as documents; a plain folder may be offered to a handler that makes worlds from
// folders. The shell installs the handler; the windows only collect the paths.

#include <QStringList>
#include <functional>

class QMimeData;

namespace sylvora::app {

// A folder whose name ends in ".sylvora", compared without regard to case.
bool isWorldPackagePath(const QString& path);

// The local folders among a drag's URLs, in order; a URL that is not a local file ends the scan.
QStringList droppedFolders(const QMimeData& data);

using FolderDropHandler = std::function<void(const QStringList& folders)>;
void setFolderDropHandler(FolderDropHandler handler);
const FolderDropHandler& folderDropHandler();

}  // namespace sylvora::app
