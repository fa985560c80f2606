// SPDX-License-Identifier: MIT
#include "adapters/spy/json_line.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* kReplaced = "\"\xef\xbf\xbd\"";

} // namespace

TEST(SpyJson, TextsStandBetweenQuotesWithEscapes) {
    EXPECT_EQ("\"\"", JsonText(""));
    EXPECT_EQ(R"("a\"b\\c\n\r\t\u0001\u001f\u007f")", JsonText("a\"b\\c\n\r\t\x01\x1f\x7f"));
    EXPECT_EQ(R"("a\u0000b")", JsonText(std::string_view("a\0b", 3)));
}

TEST(SpyJson, GoodCharactersStayWhatTheyAre) {
    for (const char* const text : {"\x7e", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
                                   "\xee\x80\x80", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_EQ('"' + std::string(text) + '"', JsonText(text));
    }
}

TEST(SpyJson, EachByteThatIsNoneIsReplaced) {
    for (const char* const byte :
         {"\x80", "\xbf", "\xc0", "\xc1", "\xc2", "\xe0", "\xf5", "\xff"}) {
        EXPECT_EQ(kReplaced, JsonText(byte));
    }
    // Overlong, a surrogate, above the last character, cut off.
    for (const char* const text : {"\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80",
                                   "\xf0\x80\x80\x80", "\xe2\x82", "\xf0\x90\x80"}) {
        const std::string json = JsonText(text);
        EXPECT_EQ(2 + 3 * std::string(text).size(), json.size()) << json;
    }
    EXPECT_EQ("\"a\xef\xbf\xbd"
              "b\"",
              JsonText("a\xe2"
                       "b"));
}

TEST(SpyJson, BytesAreBase64) {
    EXPECT_EQ("", Base64("", 0));
    EXPECT_EQ("Zg==", Base64("f", 1));
    EXPECT_EQ("Zm8=", Base64("fo", 2));
    EXPECT_EQ("Zm9v", Base64("foo", 3));
    EXPECT_EQ("Zm9vYg==", Base64("foob", 4));
    EXPECT_EQ("AP/+", Base64("\x00\xff\xfe", 3));
}

TEST(SpyJson, AnObjectHasItsMembersInOrder) {
    EXPECT_EQ(
        R"({"b":-1,"a":"x","d":"eA==","e":[1]})",
        JsonObject().Number("b", -1).Text("a", "x").Bytes("d", "x", 1).Raw("e", "[1]").Done());
    EXPECT_EQ("{}", JsonObject().Done());
}
