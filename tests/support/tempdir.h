#pragma once

#include <QString>
#include <QTemporaryDir>

#include "core/files/fsref.h"

namespace sylvora::test {

// A fresh folder under the system's temporary folder, deleted with everything in it afterwards.
class TempDir {
public:
    TempDir();
    QString path() const { return dir_.path(); }
    QString filePath(const QString& name) const { return dir_.filePath(name); }
    FSRef ref() const;
    // Creates a subfolder (and its parents) and returns its path.
    QString makeDir(const QString& relative) const;
    // Writes `bytes` into a new file and returns its path.
    QString writeFile(const QString& relative, const QByteArray& bytes) const;

private:
    QTemporaryDir dir_;
};

FSRef refOf(const QString& path);

}  // namespace sylvora::test
