#include <gtest/gtest.h>

#include "core/package/plist.h"
#include "packagetestfixture.h"

namespace sylvora {
namespace {

TEST(PlistAccess, NumbersOfEitherKindServeIntegerAndRealFieldsAndNothingElseDoes) {
    const PlistPtr root = plistParse(test::xmlPlist(QStringLiteral(
        "<key>i</key><integer>-7</integer><key>r</key><real>12.9</real><key>n</key><real>-12.9</real>"
        "<key>b</key><true/><key>s</key><string>5</string><key>e</key><string></string>")));
    const auto node = static_cast<plist_t>(root.get());
    ASSERT_TRUE(plistIsDict(node));
    EXPECT_EQ(plistGetInt32(node, "i"), -7);
    EXPECT_EQ(plistGetDouble(node, "i"), -7.0);
    EXPECT_EQ(plistGetInt32(node, "r"), 12);  // truncated toward zero
    EXPECT_EQ(plistGetInt32(node, "n"), -12);
    EXPECT_FALSE(plistGetInt32(node, "b"));
    EXPECT_FALSE(plistGetDouble(node, "s"));
    EXPECT_FALSE(plistGetInt32(node, "missing"));
    EXPECT_FALSE(plistGetString(node, "i"));
    // An empty string is a present name, not a missing one.
    ASSERT_TRUE(plistGetString(node, "e"));
    EXPECT_FALSE(plistGetString(node, "e")->isNull());
}

TEST(PlistAccess, WrittenValuesKeepTheirKindThroughXmlAndBinary) {
    PlistPtr root = plistNewDict();
    const auto node = static_cast<plist_t>(root.get());
    plistSetInt32(node, "neg", -1);
    plistSetDouble(node, "whole", 12.0);
    plistSetDouble(node, "vol", 0.8);
    plistSetString(node, "name", QStringLiteral("Wald & Bäche <am> Abend"));

    for (const QByteArray& bytes : {plistToXml(node), plistToBinary(node)}) {
        const PlistPtr back = plistParse(bytes);
        const auto backNode = static_cast<plist_t>(back.get());
        ASSERT_TRUE(plistIsDict(backNode));
        EXPECT_EQ(plist_get_node_type(plist_dict_get_item(backNode, "neg")), PLIST_UINT);
        EXPECT_EQ(plist_get_node_type(plist_dict_get_item(backNode, "whole")), PLIST_REAL);
        EXPECT_EQ(plistGetInt32(backNode, "neg"), -1);
        EXPECT_EQ(plistGetDouble(backNode, "vol"), 0.8);
        EXPECT_EQ(plistGetString(backNode, "name"), QStringLiteral("Wald & Bäche <am> Abend"));
    }
    EXPECT_TRUE(plistToXml(node).contains("<integer>-1</integer>"));

    EXPECT_FALSE(plistParse(QByteArray()));
    EXPECT_FALSE(plistParse(QByteArray("just some text")));
    EXPECT_FALSE(plistParse(QByteArray("bplist00\x01\x02", 10)));
}

}  // namespace
}  // namespace sylvora
