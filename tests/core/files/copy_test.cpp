#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QFile>
#include <QRandomGenerator>

#include "core/files/morefilesx.h"
#include "core/files/uniquefd.h"
#include "core/files/utils.h"
#include "support/ordinaryuser.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

using test::refOf;
using test::TempDir;

QByteArray patternBytes(qsizetype size, quint32 seed) {
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator random(seed);
    for (char& c : bytes)
        c = static_cast<char>(random.generate() & 0xFF);
    return bytes;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

// Empty, and one byte more than the copy's buffer so that it takes a second pass.
TEST(CopyFile, EveryByteIsCopiedWhateverTheLength) {
    TempDir dir;
    const QString target = dir.makeDir("dst");
    for (const QByteArray& bytes : {QByteArray(), patternBytes(static_cast<qsizetype>(COPY_BUFFER_SIZE) + 1, 7)}) {
        const QString name = QStringLiteral("Rain %1.wav").arg(bytes.size());
        ASSERT_EQ(myCopyFileDataForkAndType(refOf(dir.writeFile("src/" + name, bytes)), refOf(target)), noErr);
        ASSERT_TRUE(QFile::exists(target + "/" + name));
        EXPECT_TRUE(contentOf(target + "/" + name) == bytes) << bytes.size() << " bytes";
    }
}

TEST(CopyFile, ExistingDestinationIsLeftAlone) {
    TempDir dir;
    const QString source = dir.writeFile("src/rain.wav", "new content");
    const QString target = dir.makeDir("dst");
    dir.writeFile("dst/rain.wav", "precious");
    EXPECT_EQ(myCopyFileDataForkAndType(refOf(source), refOf(target)), dupFNErr);
    EXPECT_EQ(contentOf(target + "/rain.wav"), "precious");
}

TEST(CopyFile, FailuresGiveAStatusAndNoStrayFile) {
    TempDir dir;
    const QString source = dir.writeFile("src/rain.wav", "rain");
    EXPECT_EQ(myCopyFileDataForkAndType(refOf(source), FSRef{dir.filePath("no-such-folder")}), fnfErr);
    EXPECT_EQ(myCopyFileDataForkAndType(FSRef{dir.filePath("src/missing.wav")}, dir.ref()), fnfErr);
    EXPECT_EQ(myCopyFileDataForkAndType(refOf(dir.filePath("src")), refOf(dir.makeDir("dst"))), paramErr);
    EXPECT_FALSE(QFile::exists(dir.filePath("dst/src")));
}

TEST(CopyFile, ReadOnlyFolderGivesAStatus) {
    TempDir dir;
    const QString source = dir.filePath("rain.wav");
    const QString target = dir.filePath("locked");
    test::runAsOrdinaryUser(dir, [&]() -> std::string {
        QFile file(source);
        if (!file.open(QIODevice::WriteOnly) || file.write("rain") != 4)
            return "cannot write the source";
        file.close();
        if (::mkdir(QFile::encodeName(target).constData(), 0555) != 0)
            return "cannot make the folder";
        const OSStatus status = myCopyFileDataForkAndType(FSRef{source}, FSRef{target});
        const bool created = QFile::exists(target + "/rain.wav");
        ::chmod(QFile::encodeName(target).constData(), 0755);
        if (status != permErr)
            return "expected permErr, got " + std::to_string(status);
        if (created)
            return "a file appeared in the read-only folder";
        return {};
    });
}

class CopyForkTest : public ::testing::Test {
  protected:
    // Copies `bytes` through FSCopyFork with the given buffer size; returns the status.
    OSStatus copyThrough(const QByteArray& bytes, std::size_t bufferSize, const QByteArray& oldTarget = {}) {
        const QString source = dir_.writeFile("source", bytes);
        target_ = dir_.writeFile("target", oldTarget);
        UniqueFd in(::open(QFile::encodeName(source).constData(), O_RDONLY));
        UniqueFd out(::open(QFile::encodeName(target_).constData(), O_WRONLY));
        std::vector<char> buffer(bufferSize);
        return FSCopyFork(in.get(), out.get(), buffer.data(), buffer.size());
    }
    TempDir dir_;
    QString target_;
};

TEST_F(CopyForkTest, BuffersOfAnySizeCopyExactly) {
    const QByteArray bytes = patternBytes(20000, 3);
    for (const std::size_t size : {std::size_t{1}, std::size_t{1000}, std::size_t{4096}, std::size_t{5000},
                                   std::size_t{8191}, std::size_t{65536}}) {
        ASSERT_EQ(copyThrough(bytes, size), noErr) << size;
        EXPECT_TRUE(contentOf(target_) == bytes) << "buffer of " << size;
    }
}

TEST_F(CopyForkTest, LongerDestinationIsCutToTheSourceLength) {
    ASSERT_EQ(copyThrough("short", 4096, QByteArray(10000, 'z')), noErr);
    EXPECT_EQ(contentOf(target_), "short");
}

TEST_F(CopyForkTest, MissingBufferIsAParameterError) {
    EXPECT_EQ(FSCopyFork(0, 1, nullptr, 4096), paramErr);
    char byte = 0;
    EXPECT_EQ(FSCopyFork(0, 1, &byte, 0), paramErr);
}

}  // namespace
}  // namespace sylvora
