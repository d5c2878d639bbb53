#include "platform/sdf/XmlText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using sdf::xml::allowedLength;
using sdf::xml::asciiLength;
using sdf::xml::decode;
using sdf::xml::isName;
using sdf::xml::plainLength;
using sdf::xml::quoted;

TEST(XmlText, DecodesCharactersOfEveryLength) {
    EXPECT_EQ(decode("a").code, U'a');
    EXPECT_EQ(decode("\xC3\xA4").code, U'\u00E4');
    EXPECT_EQ(decode("\xE2\x82\xAC").code, U'\u20AC');
    EXPECT_EQ(decode("\xF0\x9F\xA4\x96").code, U'\U0001F916');
    EXPECT_EQ(decode("\xF0\x9F\xA4\x96").length, 4u);
}

TEST(XmlText, RefusesWhatIsNoUtf8) {
    for (const char* bytes :
         {"\x80", "\xC0\x80", "\xC1\xBF", "\xC3", "\xC3(", "\xE0\x80\x80", "\xED\xA0\x80",
          "\xE2\x82", "\xF0\x80\x80\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"})
        EXPECT_EQ(decode(bytes).length, 0u) << bytes;
}

TEST(XmlText, EveryCharacterIsAllowedThatXmlNames) {
    const std::string good =
        "a\t\n\r \x7F\xC2\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xF4\x8F\xBF\xBF";
    EXPECT_EQ(allowedLength(good), good.size());
}

TEST(XmlText, ControlCharactersAndNonCharactersAreNot) {
    EXPECT_EQ(allowedLength(std::string_view("ab\0", 3)), 2u);
    for (const char* text :
         {"ab\x01", "ab\x1F", "ab\x0B", "ab\xEF\xBF\xBE", "ab\xEF\xBF\xBF", "ab\xFF"})
        EXPECT_EQ(allowedLength(text), 2u);
}

TEST(XmlText, EveryByteOfALongTextIsLookedAt) {
    for (const char bad : {'\x01', '\x1F', '\xFF'})
        for (std::size_t at = 0; at != 24; ++at) {
            std::string text(24, '~');
            text[at] = bad;
            EXPECT_EQ(allowedLength(text), at);
            EXPECT_EQ(plainLength(text), at);
            EXPECT_EQ(asciiLength(text), bad == '\xFF' ? at : text.size());
        }
    EXPECT_EQ(allowedLength(std::string(24, '\t')), 24u);
    EXPECT_EQ(plainLength(std::string(19, ' ') + '\t'), 19u);
}

// Each byte beside each other one, since eight of them are looked at as one number.
TEST(XmlText, APlainByteDoesNotDependOnItsNeighbour) {
    for (int a = 0; a != 256; ++a)
        for (int b = 0; b != 256; ++b) {
            std::string text(8, ' ');
            text[3] = static_cast<char>(a);
            text[4] = static_cast<char>(b);
            const auto isPlain = [](int c) { return c == '\n' || (c >= ' ' && c < 0x80); };
            const std::size_t plain = !isPlain(a) ? 3 : !isPlain(b) ? 4 : 8;
            ASSERT_EQ(plainLength(text), plain) << a << ' ' << b;
            ASSERT_EQ(asciiLength(text), a >= 0x80 ? 3u : b >= 0x80 ? 4u : 8u) << a << ' ' << b;
        }
}

TEST(XmlText, KnowsNames) {
    for (const char* name : {"a", "_a", ":", "a-b.c:d9", "\xC3\x84", "a\xC2\xB7", "\xE2\xB0\x80"})
        EXPECT_TRUE(isName(name)) << name;
    for (const char* name :
         {"", "9", "-a", ".", "a b", "a/", "\xC2\xB7", "\xC3\x97", "\xE2\x86\x90", "a\xFF"})
        EXPECT_FALSE(isName(name)) << name;
}

TEST(XmlText, AQuotedTextStaysOnOneLineAndShort) {
    EXPECT_EQ(quoted("a b"), "\"a b\"");
    EXPECT_EQ(quoted("a\nb\x01\xFF"
                     "c"),
              "\"a?b??c\"");
    EXPECT_EQ(quoted("gr\xC3\xB6\xC3\x9F"
                     "er"),
              "\"gr\xC3\xB6\xC3\x9F"
              "er\"");
    EXPECT_LT(sdf::xml::quoted(std::string(10000, 'x')).size(), 80u);
}

}  // namespace
