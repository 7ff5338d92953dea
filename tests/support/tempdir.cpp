#include "support/tempdir.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <stdexcept>

namespace sylvora::test {

TempDir::TempDir() : dir_(QDir::tempPath() + QStringLiteral("/sylvora-test-XXXXXX")) {
    if (!dir_.isValid()) throw std::runtime_error("cannot create a temporary folder");
}

FSRef TempDir::ref() const { return refOf(path()); }

QString TempDir::makeDir(const QString& relative) const {
    const QString full = filePath(relative);
    if (!QDir().mkpath(full)) throw std::runtime_error("cannot create " + full.toStdString());
    return full;
}

QString TempDir::writeFile(const QString& relative, const QByteArray& bytes) const {
    const QString full = filePath(relative);
    QDir().mkpath(QFileInfo(full).absolutePath());
    QFile file(full);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write " + full.toStdString());
    return full;
}

FSRef refOf(const QString& path) {
    FSRef ref;
    if (FSPathMakeRef(path, ref) != noErr) throw std::runtime_error("no such object: " + path.toStdString());
    return ref;
}

}  // namespace sylvora::test
