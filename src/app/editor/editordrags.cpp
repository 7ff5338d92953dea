#include "app/editor/editordrags.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QIODevice>
#include <QUrl>

namespace sylvora::app {

namespace {
// Another process may see the type on the clipboard of a drag, but the rows are ours only: the
// payload names the process that made it.
qint64 thisProcess() { return QCoreApplication::applicationPid(); }
}  // namespace

std::vector<DraggedRow> draggedEnvironmentRows(const QMimeData& data) {
    std::vector<DraggedRow> rows;
    if (!data.hasFormat(QLatin1String(ENVIRONMENT_ROW_MIME_TYPE))) return rows;
    QDataStream in(data.data(QLatin1String(ENVIRONMENT_ROW_MIME_TYPE)));
    qint64 sender = 0;
    quint32 count = 0;
    in >> sender >> count;
    if (in.status() != QDataStream::Ok || sender != thisProcess()) return rows;
    for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        DraggedRow row;
        in >> row.id >> row.path;
        if (in.status() == QDataStream::Ok) rows.push_back(row);
    }
    return rows;
}

QMimeData* makeEnvironmentRowsMimeData(const std::vector<DraggedRow>& rows) {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << thisProcess() << static_cast<quint32>(rows.size());
    for (const DraggedRow& row : rows) out << row.id << row.path;
    auto* data = new QMimeData();
    data->setData(QLatin1String(ENVIRONMENT_ROW_MIME_TYPE), bytes);
    return data;
}

QStringList dragItemFiles(const QMimeData& data) {
    QStringList files;
    const std::vector<DraggedRow> rows = draggedEnvironmentRows(data);
    if (!rows.empty()) {
        for (const DraggedRow& row : rows) files.append(row.path);
        return files;
    }
    for (const QUrl& url : data.urls()) files.append(url.isLocalFile() ? url.toLocalFile() : QString());
    return files;
}

bool doesDragContainFiles(const QMimeData& data) {
    bool found = false;
    for (const QString& file : dragItemFiles(data)) {
        if (file.isEmpty()) break;
        found = true;
    }
    return found;
}

}  // namespace sylvora::app
