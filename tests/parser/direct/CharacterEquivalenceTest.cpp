// Every kind of character, written as it is and as a reference, in every place: nobody can tell
// which scanner has read it.

#include "support/BothScanners.h"
#include "support/Effort.h"
#include "support/ExpectSame.h"
#include "support/OddDocuments.h"
#include "support/RandomText.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace {

/// All in which something begins or ends for XML, and of the long blocks of the basic plane in
/// which nothing does one in `step`.
std::vector<char32_t> Characters(char32_t step = 97)
{
    std::vector<char32_t> characters;
    const auto add = [&](char32_t first, char32_t last, char32_t distance) {
        for (char32_t c = first; c <= last; c += distance)
            characters.push_back(c);
    };
    add(0, 0x33FF, 1);
    add(0x3400, 0x9FFF, step);
    add(0x9FA0, 0x9FB0, 1);
    add(0xA000, 0xABFF, 1);
    add(0xAC00, 0xD7FF, step);
    add(0xD7A0, 0xD810, 1);
    add(0xDBF0, 0xDC10, 1);
    add(0xDFF0, 0xE010, 1);
    add(0xE100, 0xF8FF, step);
    add(0xF900, 0x1000F, 1);
    add(0x10010, 0x10FFFF, 4093);
    for (char32_t plane = 0x1FFFE; plane < 0x10FFFF; plane += 0x10000)
        add(plane - 1, plane + 3, 1);
    add(0xEFFF0, 0xF0010, 1);
    return characters;
}

/// UTF-8 of any number below 0x200000, halves of surrogate pairs included.
std::string ToUtf8(char32_t c)
{
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    const auto tail = [&](int shift) { return byte(0x80 | (c >> shift & 0x3F)); };
    if (c < 0x80)
        return {byte(c)};
    if (c < 0x800)
        return {byte(0xC0 | c >> 6), tail(0)};
    if (c < 0x10000)
        return {byte(0xE0 | c >> 12), tail(6), tail(0)};
    return {byte(0xF0 | c >> 18), tail(12), tail(6), tail(0)};
}

std::string ToHexadecimal(char32_t c)
{
    std::string digits;
    for (; c != 0 || digits.empty(); c >>= 4)
        digits.insert(digits.begin(), "0123456789abCDEF"[c & 0xF]);
    return digits;
}

} // namespace

TEST(DirectEquivalence, EveryCharacterIsTheSameInNames)
{
    BothScanners both;
    for (const char32_t c : Characters(Effort::c_stride)) {
        const std::string bytes = ToUtf8(c);
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<" + bytes + "/>")));
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<a b" + bytes + "='1'></a>")));
    }
}

TEST(DirectEquivalence, EveryCharacterIsTheSameInTextsAndValues)
{
    BothScanners both;
    for (const char32_t c : Characters()) {
        const std::string bytes = ToUtf8(c);
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<a>x" + bytes + "<b/>y</a>")));
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<a b='" + bytes + "'>\n" + bytes + "</a>")));
    }
}

TEST(DirectEquivalence, EveryCharacterIsTheSameInCommentsSectionsAndInstructions)
{
    BothScanners both;
    for (const char32_t c : Characters()) {
        const std::string bytes = ToUtf8(c);
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<a><!--" + bytes + "--><![CDATA[" + bytes +
                                                  "]]><?p " + bytes + "?></a>")));
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<?" + bytes + "?><a/>")));
    }
}

TEST(DirectEquivalence, EveryCharacterIsTheSameAsAReference)
{
    BothScanners both;
    std::vector<char32_t> characters = Characters();
    for (const char32_t c :
         {0x110000U, 0x110001U, 0x1FFFFFU, 0x7FFFFFFFU, 0x80000041U, 0xFFFFFFFFU})
        characters.push_back(c);
    for (const char32_t c : characters) {
        const std::string decimal = "&#" + std::to_string(static_cast<unsigned long>(c)) + ";";
        const std::string hexadecimal = "&#x" + ToHexadecimal(c) + ";";
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<a>x" + decimal + "<b/></a>")));
        ASSERT_TRUE(ExpectSame(both.CompareEvents("<a b='" + hexadecimal + "'/>")));
    }
}

TEST(DirectEquivalence, EveryPairOfBytesIsTheSameInText)
{
    BothScanners both;
    for (std::size_t first = 0; first < 256; ++first) {
        // Other second bytes of each first one.
        std::size_t second = first % Effort::c_stride;
        for (; second < 256; second += Effort::c_stride * (first < 0x80 ? 5 : 1)) {
            const std::string pair{static_cast<char>(first), static_cast<char>(second)};
            ASSERT_TRUE(ExpectSame(both.CompareEvents("<a>" + pair + "</a>")));
        }
    }
}

TEST(DirectEquivalence, TextsThatAreNoUnicodeAreTheSame)
{
    BothScanners both;
    for (const std::u16string_view piece :
         {u"x", u"\xD800", u"\xDBFF", u"\xDC00", u"\xDFFF", u"\xD83D\xDE00", u"\xDE00\xD83D",
          u"\xD83D", u"\xD83D\xD83D\xDE00", u"\xFEFF", u"\xFFFE", u"\xFFFF", u"\x0001", u"\x0085",
          u"\x2028", u"&#xD83D;&#xDE00;", u"\r\n", u"\x20AC\xE9"}) {
        const std::u16string text(piece);
        ASSERT_TRUE(ExpectSame(both.CompareText(u"<a>" + text + u"</a>")));
        ASSERT_TRUE(ExpectSame(both.CompareText(u"<a b='" + text + u"'><b/></a>")));
        ASSERT_TRUE(ExpectSame(both.CompareText(u"<a" + text + u"/>")));
        ASSERT_TRUE(ExpectSame(both.CompareText(text + u"<a/>")));
        ASSERT_TRUE(ExpectSame(both.CompareText(u"<a/>" + text)));
        ASSERT_TRUE(
            ExpectSame(both.CompareText(u"<a><!--" + text + u"--><?p " + text + u"?></a>")));
        ASSERT_TRUE(ExpectSame(both.CompareText(u"<a><![CDATA[" + text + u"]]></a>" + text)));
    }
    ASSERT_TRUE(ExpectSame(both.CompareText(std::u16string(u"<a>\0</a>", 8))));
    for (const char16_t* encoding : {u"UTF-16", u"UTF-8", u"ISO-8859-1", u"UCS-4", u"nonsense"})
        ASSERT_TRUE(ExpectSame(both.CompareText(u"<?xml version='1.0' encoding='" +
                                                std::u16string(encoding) + u"'?><a>\x20AC</a>")));
}

TEST(DirectEquivalence, TextsOfOddDocumentsAreTheSame)
{
    BothScanners both;
    for (const OddDocuments::Document& document : OddDocuments::All()) {
        const TString text = TString::fromStdString(document.bytes);
        ASSERT_TRUE(ExpectSame(both.CompareText(std::u16string(text.view()))));
    }
    RandomText random(5);
    for (int i = 0; i < 2000; ++i)
        ASSERT_TRUE(ExpectSame(both.CompareText(u"<a>" + random.Any(60) + u"<b/></a>")));
}
