#pragma once

// Which files the editor takes, by what they hold rather than what they are called: the content
// type the desktop's MIME database gives a file (by content and name) must be, or descend from, an
// audio type for a sound and an image type for a picture. The choose-file dialogs show only such
// files, through a proxy over the dialog's own model, and folders to browse into; world packages
// stay hidden.

#include <QSortFilterProxyModel>

#include "core/files/fsref.h"

namespace sylvora::app {

enum class FileKind { Sound, Picture };

bool isAcceptableFile(const QString& path, FileKind kind);

class FileKindFilter : public QSortFilterProxyModel {
    Q_OBJECT
public:
    explicit FileKindFilter(FileKind kind, QObject* parent = nullptr);

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    FileKind kind_;
};

}  // namespace sylvora::app
