#include <gtest/gtest.h>

#include <QCoreApplication>

#include "core/files/utils.h"
#include "support/tempdir.h"

namespace sylvora {
namespace {

using test::TempDir;

TEST(FindNamedFile, FindsAnExistingEntryOnly) {
    TempDir dir;
    dir.writeFile("data.plist", "x");
    FSRef found;
    ASSERT_EQ(FSMakeFSRefCFString(dir.ref(), "data.plist", kTextEncodingUnknown, found), noErr);
    EXPECT_EQ(found.path, dir.filePath("data.plist"));
    EXPECT_EQ(FSMakeFSRefCFString(dir.ref(), "Data.plist", kTextEncodingUnknown, found), fnfErr);
    EXPECT_EQ(FSMakeFSRefCFString(dir.ref(), QString(255, QLatin1Char('a')), kTextEncodingUnknown, found),
              fnfErr)
        << "255 code units is still a name";
}

TEST(FindNamedFile, HostileNamesAreRefusedBeforeAnyLookup) {
    TempDir dir;
    dir.writeFile("inside/secret", "x");
    const FSRef inside = FSRef{dir.filePath("inside")};
    // Every one of these would find something if it were looked up.
    const QString hostile[] = {
        QString(),
        QStringLiteral("."),
        QStringLiteral(".."),
        QStringLiteral("../inside"),
        QStringLiteral("inside/secret"),
        QStringLiteral("/etc"),
        QStringLiteral("secret") + QChar(0) + "x",
        QString(256, QLatin1Char('a')),
    };
    for (const QString& name : hostile) {
        FSRef out{QStringLiteral("untouched")};
        EXPECT_EQ(FSMakeFSRefCFString(name.startsWith("secret") ? inside : dir.ref(), name,
                                      kTextEncodingUnknown, out),
                  paramErr)
            << name.toStdString();
        EXPECT_EQ(out.path, "untouched");
    }
}

TEST(IntegerText, AcceptsOptionallyNegativeDecimalDigitsOnly) {
    for (const char* valid : {"12", "-5", "0", "-0", "007", "99999999999999999999"})
        EXPECT_TRUE(isValidIntegerCFString(QString::fromLatin1(valid))) << valid;
    for (const char* invalid : {"", "-", "+5", "1-2", "5 ", " 5", "1.5", "--1", "1e3", "0x10"})
        EXPECT_FALSE(isValidIntegerCFString(QString::fromLatin1(invalid))) << invalid;
    EXPECT_FALSE(isValidIntegerCFString(QString::fromUtf8("١٢")));    // Arabic-Indic digits are not ASCII
    EXPECT_FALSE(isValidIntegerCFString(QString::fromUtf8("１２")));  // nor are full-width ones
    EXPECT_TRUE(isValidIntegerCFString(QString(255, QLatin1Char('7'))));
    EXPECT_FALSE(isValidIntegerCFString(QString(256, QLatin1Char('7'))));
}

}  // namespace
}  // namespace sylvora
