#pragma once

// What a drag over the editor carries. Files from a file manager arrive as a text/uri-list, one
// URL per item. Rows dragged out of the environment list carry a private type that only this
// running application reads: the sound's ID and its file, so a drop finds the sound by its file
// like any other dropped file.

#include <QMimeData>
#include <QStringList>
#include <vector>

#include "core/world/world.h"

namespace sylvora::app {

inline constexpr const char* ENVIRONMENT_ROW_MIME_TYPE = "application/x-sylvora-environment-sound";

// True when the drag's items, scanned from the first, hold a file before the first item that is
// not one (a URL that is not a local file ends the scan).
bool doesDragContainFiles(const QMimeData& data);

// The local file of each item, in order; an item that is not a local file gives an empty string.
QStringList dragItemFiles(const QMimeData& data);

struct DraggedRow {
    SoundID id = 0;
    QString path;
};
// The rows of a drag from this application's environment list, or none.
std::vector<DraggedRow> draggedEnvironmentRows(const QMimeData& data);
QMimeData* makeEnvironmentRowsMimeData(const std::vector<DraggedRow>& rows);

}  // namespace sylvora::app
