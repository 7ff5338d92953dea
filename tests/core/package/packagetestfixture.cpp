#include "packagetestfixture.h"

#include <sys/stat.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QImage>

#include "support/soundfiles.h"

namespace sylvora::test {

QByteArray xmlPlistWithRoot(const QString& rootElement) {
    return QStringLiteral(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n%1\n</plist>\n")
        .arg(rootElement)
        .toUtf8();
}

QByteArray xmlPlist(const QString& dictEntries) {
    return xmlPlistWithRoot(QStringLiteral("<dict>\n%1\n</dict>").arg(dictEntries));
}

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

QStringList entriesOf(const QString& folder) {
    QStringList names = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    names.sort();
    return names;
}

quint64 inodeOf(const QString& path) {
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0) return 0;
    return info.st_ino;
}

PackageTest::PackageTest() : prefs(std::make_unique<Preferences>(dir.filePath(QStringLiteral("prefs.ini")))) {
    gPrefs = prefs.get();
}

PackageTest::~PackageTest() { gPrefs = nullptr; }

QString PackageTest::writeSound(const QString& relative, double seconds, double frequency) {
    const QString path = dir.filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    ToneSpec tone;
    tone.seconds = seconds;
    tone.frequency = frequency;
    tone.sampleRate = SAMPLE_RATE;
    EXPECT_TRUE(writeSoundFile(path, tone)) << path.toStdString();
    return path;
}

QString PackageTest::writePicture(const QString& relative) {
    const QString path = dir.filePath(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QImage image(8, 6, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    EXPECT_TRUE(image.save(path, "PNG")) << path.toStdString();
    return path;
}

AliasHandle PackageTest::aliasOf(const QString& path) {
    AliasHandle alias;
    EXPECT_EQ(FSNewAlias(ref(path), alias), noErr) << path.toStdString();
    return alias;
}

FSRef PackageTest::ref(const QString& path) {
    FSRef out;
    EXPECT_EQ(FSPathMakeRef(path, out), noErr) << path.toStdString();
    return out;
}

QString PackageTest::makePackage(const QString& name, const QByteArray& plistBytes, const QStringList& loopFiles,
                                 const QStringList& environmentFiles) {
    const QString package = dir.makeDir(name);
    dir.writeFile(name + QStringLiteral("/data.plist"), plistBytes);
    double frequency = 300.0;
    for (const QString& file : loopFiles) writeSound(name + QStringLiteral("/Loop Sounds/") + file, 0.1, frequency += 20);
    for (const QString& file : environmentFiles)
        writeSound(name + QStringLiteral("/Environment Sounds/") + file, 0.1, frequency += 20);
    return package;
}

OSStatus PackageTest::load(const QString& packagePath) { return world.loadFromPackage(ref(packagePath)); }

}  // namespace sylvora::test
