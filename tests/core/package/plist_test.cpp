#include <gtest/gtest.h>

#include <limits>

#include "core/package/plist.h"
#include "packagetestfixture.h"

namespace sylvora {
namespace {

using test::xmlPlist;

PlistPtr parse(const QString& entries) {
    PlistPtr root = plistParse(xmlPlist(entries));
    EXPECT_TRUE(plistIsDict(static_cast<plist_t>(root.get())));
    return root;
}

TEST(PlistAccess, NumbersOfEitherKindServeIntegerAndRealFields) {
    const PlistPtr root = parse(QStringLiteral(
        "<key>i</key><integer>-7</integer><key>r</key><real>12.9</real><key>n</key><real>-12.9</real>"
        "<key>big</key><integer>9000000000</integer><key>small</key><integer>-9000000000</integer>"
        "<key>huge</key><real>1e300</real><key>b</key><true/><key>s</key><string>5</string>"));
    const auto node = static_cast<plist_t>(root.get());
    EXPECT_EQ(plistGetInt32(node, "i"), -7);
    EXPECT_EQ(plistGetDouble(node, "i"), -7.0);
    EXPECT_EQ(plistGetInt32(node, "r"), 12);  // truncated toward zero
    EXPECT_EQ(plistGetInt32(node, "n"), -12);
    EXPECT_EQ(plistGetInt32(node, "big"), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(plistGetInt32(node, "small"), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(plistGetInt32(node, "huge"), std::numeric_limits<std::int32_t>::max());
    // Booleans and numeric-looking strings are not numbers.
    EXPECT_FALSE(plistGetInt32(node, "b"));
    EXPECT_FALSE(plistGetDouble(node, "s"));
    EXPECT_FALSE(plistGetInt32(node, "missing"));
    EXPECT_FALSE(plistGetString(node, "i"));
}

TEST(PlistAccess, EmptyStringIsPresentAndNotNull) {
    const PlistPtr root = parse(QStringLiteral("<key>e</key><string></string><key>u</key><string>Wald &amp; Bäche</string>"));
    const auto node = static_cast<plist_t>(root.get());
    const auto empty = plistGetString(node, "e");
    ASSERT_TRUE(empty);
    EXPECT_TRUE(empty->isEmpty());
    EXPECT_FALSE(empty->isNull());
    EXPECT_EQ(plistGetString(node, "u"), QStringLiteral("Wald & Bäche"));
}

TEST(PlistAccess, WrittenValuesKeepTheirKindThroughXmlAndBinary) {
    PlistPtr root = plistNewDict();
    const auto node = static_cast<plist_t>(root.get());
    plistSetInt32(node, "neg", -1);
    plistSetDouble(node, "whole", 12.0);
    plistSetDouble(node, "vol", 0.8);
    plistSetString(node, "name", QStringLiteral("Regen <am> Abend"));

    for (const QByteArray& bytes : {plistToXml(node), plistToBinary(node)}) {
        const PlistPtr back = plistParse(bytes);
        const auto backNode = static_cast<plist_t>(back.get());
        ASSERT_TRUE(plistIsDict(backNode));
        EXPECT_EQ(plist_get_node_type(plist_dict_get_item(backNode, "neg")), PLIST_UINT);
        EXPECT_EQ(plist_get_node_type(plist_dict_get_item(backNode, "whole")), PLIST_REAL);
        EXPECT_EQ(plistGetInt32(backNode, "neg"), -1);
        EXPECT_EQ(plistGetDouble(backNode, "vol"), 0.8);
        EXPECT_EQ(plistGetString(backNode, "name"), QStringLiteral("Regen <am> Abend"));
    }
    EXPECT_TRUE(plistToXml(node).contains("<integer>-1</integer>"));
}

TEST(PlistAccess, BytesThatAreNoPropertyListGiveNothing) {
    EXPECT_FALSE(plistParse(QByteArray()));
    EXPECT_FALSE(plistParse(QByteArray("just some text")));
    EXPECT_FALSE(plistParse(QByteArray("bplist00\x01\x02", 10)));
}

}  // namespace
}  // namespace sylvora
