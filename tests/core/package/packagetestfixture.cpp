#include "packagetestfixture.h"

#include <sys/stat.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

namespace sylvora::test {

QMap<QString, QByteArray> snapshotTree(const QString& folder) {
    QMap<QString, QByteArray> files;
    QDirIterator it(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString relative = path.mid(folder.size() + 1);
        QFile file(path);
        if (it.fileInfo().isDir()) {
            files.insert(relative + QLatin1Char('/'), QByteArray());
        } else if (file.open(QIODevice::ReadOnly)) {
            files.insert(relative, file.readAll());
        }
    }
    return files;
}

QStringList folderEntries(const QString& folder) {
    QStringList names = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    names.sort();
    return names;
}

quint64 inodeOf(const QString& path) {
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0) return 0;
    return info.st_ino;
}

QStringList tempPackagesIn(const QString& folder) {
    return folderEntries(folder).filter(QRegularExpression(QStringLiteral("^temp -?\\d+\\.sylvora$")));
}

PackageTest::PackageTest()
    : WorldTest(11, 48000), prefs(std::make_unique<Preferences>(dir.filePath(QStringLiteral("prefs.ini")))) {
    gPrefs = prefs.get();
}

PackageTest::~PackageTest() { gPrefs = nullptr; }

}  // namespace sylvora::test
