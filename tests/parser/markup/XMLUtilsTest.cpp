#include <kescorexml/XMLUtils.h>

#include "support/Assertions.h"
#include "support/RandomBytes.h"
#include "support/Repeat.h"
#include "support/ScannerModel.h"

#include <xercesc/util/XMLChar.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

using XmlUtils::StringRange;
constexpr std::size_t c_npos = std::string::npos;
constexpr std::string_view c_hostileBytes = "<>!-[]?'\":=/a \n&";

StringRange Whole(const std::string& text)
{
    return {0, text.size()};
}

TEST(XMLUtils, ClassifiesEveryUnitAsTheParserDoes)
{
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const auto c = static_cast<char16_t>(unit);
        ASSERT_EQ(XmlUtils::IsWhitespace(c), xercesc::XMLChar1_0::isWhitespace(c)) << unit;
        ASSERT_EQ(XmlUtils::IsFirstNameChar(c), xercesc::XMLChar1_0::isFirstNameChar(c)) << unit;
        ASSERT_EQ(XmlUtils::IsNameChar(c), xercesc::XMLChar1_0::isNameChar(c)) << unit;
    }
}

TEST(XMLUtils, KnowsNamesAndWhitespaceOfAscii)
{
    for (const char c : {' ', '\t', '\n', '\r'})
        EXPECT_TRUE(XmlUtils::IsWhitespace(c));
    for (const char c : {'\v', '\f', 'a', '\0'})
        EXPECT_FALSE(XmlUtils::IsWhitespace(c));
    for (const char c : {'a', 'Z', '_', ':'})
        EXPECT_TRUE(XmlUtils::IsFirstNameChar(c) && XmlUtils::IsNameChar(c)) << c;
    for (const char c : {'0', '-', '.'})
        EXPECT_TRUE(!XmlUtils::IsFirstNameChar(c) && XmlUtils::IsNameChar(c)) << c;
    for (const char c : {'=', '>', '/', ' ', '"'})
        EXPECT_FALSE(XmlUtils::IsFirstNameChar(c) || XmlUtils::IsNameChar(c)) << c;
}

TEST(XMLUtils, KnowsNamesAndWhitespaceBeyondAscii)
{
    // Next line, no-break space, line separator and ideographic space.
    for (const char16_t c : {u'\x85', u'\xA0', u'\u2028', u'\u3000'})
        EXPECT_FALSE(XmlUtils::IsWhitespace(c)) << static_cast<unsigned>(c);
    for (const char16_t c : {u'\u00C0', u'\u0100', u'\u0660', u'\u20AC', u'\u4E00', u'\uAC00'})
        EXPECT_TRUE(XmlUtils::IsFirstNameChar(c) && XmlUtils::IsNameChar(c))
            << static_cast<unsigned>(c);
    for (const char16_t c : {u'\u00B7', u'\u0300', u'\u203F'})
        EXPECT_TRUE(!XmlUtils::IsFirstNameChar(c) && XmlUtils::IsNameChar(c))
            << static_cast<unsigned>(c);
    for (const char16_t c : {u'\u00D7', u'\u00F7', u'\u037E', u'\u2000', u'\uFFFE'})
        EXPECT_FALSE(XmlUtils::IsFirstNameChar(c) || XmlUtils::IsNameChar(c))
            << static_cast<unsigned>(c);
}

TEST(XMLUtils, WidensBytesAsSignedValues)
{
    for (unsigned byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        const auto unit = static_cast<char16_t>(byte < 0x80 ? byte : 0xFF00 + byte);
        ASSERT_EQ(XmlUtils::IsWhitespace(c), XmlUtils::IsWhitespace(unit)) << byte;
        ASSERT_EQ(XmlUtils::IsFirstNameChar(c), XmlUtils::IsFirstNameChar(unit)) << byte;
        ASSERT_EQ(XmlUtils::IsNameChar(c), XmlUtils::IsNameChar(unit)) << byte;
    }
    // U+00B7 may continue a name, U+FFB7 is a letter to the table, U+FFFE is nothing.
    EXPECT_TRUE(XmlUtils::IsNameChar('\xB7'));
    EXPECT_FALSE(XmlUtils::IsFirstNameChar(u'\u00B7'));
    EXPECT_FALSE(XmlUtils::IsNameChar('\xFE'));
}

TEST(XMLUtils, ComparesASubstringInPlace)
{
    const std::string text = "abcabc";
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(text, std::string("abc"), 3));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(text, std::string("abc"), 1));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(text, std::string("abc"), 4));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(text, std::string("abc"), c_npos));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(text, text + "d", 0));
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(text, std::string(), 6));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(text, std::string(), 7));
}

TEST(XMLUtils, ComparesASubstringOfUtf16InPlace)
{
    const TString text(u"abcabc");
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(text, TString(u"abc"), 3));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(text, TString(u"abc"), 1));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(text, TString(u"abc"), c_npos));
    EXPECT_TRUE(XmlUtils::ContainsSubstringAt(text, TString(), 6));
    EXPECT_FALSE(XmlUtils::ContainsSubstringAt(text, TString(), 7));
}

TEST(XMLUtils, FindsNothingPastTheEnd)
{
    EXPECT_EQ(XmlUtils::Find(std::string("abc"), 'c', 3), c_npos);
    EXPECT_EQ(XmlUtils::Find(std::string("abc"), 'c', c_npos), c_npos);
    EXPECT_EQ(XmlUtils::Find(std::string("abc"), std::string("c"), 3), c_npos);
    EXPECT_EQ(XmlUtils::Find(std::string("abc"), std::string("bc"), c_npos), c_npos);
    EXPECT_EQ(XmlUtils::Find(TString(u"abc"), u'c', c_npos), c_npos);
    EXPECT_EQ(XmlUtils::Find(TString(u"abc"), TString(u"c"), c_npos), c_npos);
}

TEST(XMLUtils, FindsTheEmptyTextUpToTheEnd)
{
    EXPECT_EQ(XmlUtils::Find(std::string("abc"), std::string(), 2), 2U);
    EXPECT_EQ(XmlUtils::Find(std::string("abc"), std::string(), 3), 3U);
    EXPECT_EQ(XmlUtils::Find(std::string("abc"), std::string(), 4), c_npos);
    EXPECT_EQ(XmlUtils::Find(std::string(), std::string(), 0), 0U);
    EXPECT_EQ(XmlUtils::Find(TString(u"abc"), TString(), 3), 3U);
    EXPECT_EQ(XmlUtils::Find(TString(u"abc"), TString(), 4), c_npos);
}

TEST(XMLUtils, FindsWhatTheStandardLibraryFinds)
{
    RandomBytes random(1);
    for (int round = 0; round < 20000; ++round) {
        const std::string text = random.Of("aab", 200);
        const std::string sub = random.Of("aab", 1 + random.Below(12));
        const std::size_t from = random.Below(text.size() + 3);
        ASSERT_EQ(XmlUtils::Find(text, sub, from), text.find(sub, from)) << text << '|' << sub;
        ASSERT_EQ(XmlUtils::Find(text, 'b', from), text.find('b', from)) << text;
        const TString text16 = TString::fromStdString(text);
        ASSERT_EQ(XmlUtils::Find(text16, TString::fromStdString(sub), from), text.find(sub, from));
        ASSERT_EQ(XmlUtils::Find(text16, u'b', from), text.find('b', from));
    }
}

TEST(XMLUtils, FindsEveryByteEverywhere)
{
    for (std::size_t size = 1; size < 200; ++size) {
        for (std::size_t pos = 0; pos < size; ++pos) {
            std::string text(size, '\xFF');
            text[pos] = '\0';
            ASSERT_EQ(XmlUtils::Find(text, '\0', 0), pos);
            ASSERT_EQ(XmlUtils::Find(text, std::string("\0\xFF", 2), 0),
                      pos + 1 < size ? pos : c_npos);
        }
    }
}

TEST(XMLUtils, FindsInRepetitiveTextInLinearTime)
{
    const std::string text = Repeat("a", 4'000'000);
    const std::string sub = Repeat("a", 100'000) + "b";
    EXPECT_EQ(XmlUtils::Find(text, sub, 0), c_npos);
    EXPECT_EQ(XmlUtils::Find(text + 'b', sub, 0), text.size() - 100'000);
    const TString text16(4'000'000, u'a');
    const TString sub16 = TString(100'000, u'a') + u"b";
    EXPECT_EQ(XmlUtils::Find(text16, sub16, 0), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(text16 + u"b", sub16, 1, 3'999'999), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(text16 + u"b", sub16, 1, 4'000'000), text.size() - 100'000);
}

TEST(XMLUtils, TakesARangeOfOneCharacterForEmpty)
{
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abc"), 'b', 1, 1), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abc"), std::string("b"), 1, 1), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(TString(u"abc"), u'b', 1, 1), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(TString(u"abc"), TString(u"b"), 1, 1), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(std::string(), std::string(), 0, 0), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abc"), std::string(), 0, 0), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(TString(), TString(), 0, 0), c_npos);
}

TEST(XMLUtils, FindsNothingInARangeThatLeavesTheText)
{
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abc"), 'b', 0, 3), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abc"), std::string("b"), 0, c_npos), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(TString(u"abc"), u'b', 0, 3), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(TString(u"abc"), TString(u"b"), 0, c_npos), c_npos);
}

TEST(XMLUtils, ClosesRangesAtBothEnds)
{
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abcd"), 'a', 0, 1), 0U);
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abcd"), 'd', 1, 3), 3U);
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abcd"), 'd', 1, 2), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abcd"), std::string("cd"), 1, 3), 2U);
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abcd"), std::string("cd"), 1, 2), c_npos);
    EXPECT_EQ(XmlUtils::FindInRange(std::string("abcd"), std::string("abc"), 1, 2), c_npos);
}

TEST(XMLUtils, SearchesRangesAsAModelDoes)
{
    RandomBytes random(2);
    for (int round = 0; round < 20000; ++round) {
        const std::size_t scale = round % 2 == 0 ? 1 : 20;
        const std::string text = random.Of("aaaab", 12 * scale);
        const std::string sub = random.Of("aaaaaaab", 3 * scale);
        const std::size_t from = random.Below(14 * scale);
        const std::size_t to = random.Below(14 * scale);
        std::size_t expected = c_npos;
        std::size_t expectedByte = c_npos;
        if (to > from && to < text.size()) {
            expected = text.substr(0, to + 1).find(sub, from);
            expectedByte = text.substr(0, to + 1).find('b', from);
        }
        ASSERT_EQ(XmlUtils::FindInRange(text, sub, from, to), expected) << text << '|' << sub;
        ASSERT_EQ(XmlUtils::FindInRange(text, 'b', from, to), expectedByte) << text;
        const TString text16 = TString::fromStdString(text);
        ASSERT_EQ(XmlUtils::FindInRange(text16, TString::fromStdString(sub), from, to), expected);
        ASSERT_EQ(XmlUtils::FindInRange(text16, u'b', from, to), expectedByte);
    }
}

TEST(XMLUtils, FindsTheBraceThatCloses)
{
    for (const std::string text :
         {"<a b=\">\">", "<a b='>\">'>", "<!-- a > b -->", "<![CDATA[ > ]]>",
          "<?xml version=\"1.0\" > ?>", "<!DOCTYPE r>", "</a>", "<!-->", "<?>", "<a>"}) {
        const std::string more = text + " ?> --> ]]> >";
        EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace(more, 0), text.size() - 1) << text;
        EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace("<x" + more, 2), text.size() + 1) << text;
    }
}

TEST(XMLUtils, TestsQuotesInTagsOnly)
{
    EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace("<!ENTITY a '>'>", 0), 12U);
    EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace("<?pi '?>'?>", 0), 7U);
    EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace("<!-- ' -->", 0), 9U);
}

TEST(XMLUtils, FindsNoBraceForWhatIsNotClosed)
{
    for (const std::string text :
         {"", "<", "<a", "<>", "<a b=\">", "<!-- -- >", "<![CDATA[]>", "<?xml >", "<!DOCTYPE"})
        EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace(text, 0), c_npos) << text;
    EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace("<a>", 1), c_npos);
    EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace("ab", 0), c_npos);
    EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace("<a>", c_npos), c_npos);
}

TEST(XMLUtils, AdvancesFromAnOpenBraceOnly)
{
    ExpectAssertion([] { static_cast<void>(XmlUtils::AdvanceFromOpenToCloseBrace("a<b>", 0)); },
                    u"XMLUtils", 0, u"xml[start] == c_openBrace", u"69F39DBB");
}

TEST(XMLUtils, FindsClosingBracesAsAModelDoes)
{
    RandomBytes random(3);
    for (int round = 0; round < 100000; ++round) {
        const std::string text = '<' + random.Of(c_hostileBytes, 40);
        ASSERT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace(text, 0), ScannerModel::CloseBrace(text, 0))
            << text;
    }
}

TEST(XMLUtils, PassesAMillionBracesInAValueInLinearTime)
{
    const std::string value(1'000'000, '>');
    const std::string tag = "<a b=\"" + value + "\" c='" + value + "'>";
    EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace(tag, 0), tag.size() - 1);
    EXPECT_EQ(XmlUtils::FindRootTag(tag), Whole(tag));
    EXPECT_EQ(XmlUtils::AdvanceFromOpenToCloseBrace("<a b=\"" + value, 0), c_npos);
}

TEST(XMLUtils, MatchesQuotesOfBothKinds)
{
    const auto match = [](const std::string& text) {
        return XmlUtils::AreQuotesMatchingInRange(text, 0, text.size() - 1);
    };
    EXPECT_TRUE(match("ab"));
    EXPECT_TRUE(match("a'b'"));
    EXPECT_TRUE(match("'\"'"));
    EXPECT_TRUE(match("\"'\""));
    EXPECT_TRUE(match("'\"'\"'\""));
    EXPECT_FALSE(match("'\"'\""));
    EXPECT_FALSE(match("a'"));
    EXPECT_FALSE(match("'a'\"b"));
}

TEST(XMLUtils, ClosesTheRangeOfQuotesAtBothEnds)
{
    EXPECT_FALSE(XmlUtils::AreQuotesMatchingInRange("a'b'", 0, 1));
    EXPECT_TRUE(XmlUtils::AreQuotesMatchingInRange("a'b'", 1, 3));
    EXPECT_FALSE(XmlUtils::AreQuotesMatchingInRange("a'b'", 1, 2));
    EXPECT_FALSE(XmlUtils::AreQuotesMatchingInRange("a'b'", 3, 3));
    EXPECT_TRUE(XmlUtils::AreQuotesMatchingInRange("a'b'", 2, 2));
}

TEST(XMLUtils, TakesAnEmptyRangeForBalanced)
{
    EXPECT_TRUE(XmlUtils::AreQuotesMatchingInRange("''' ", 2, 1));
    EXPECT_TRUE(XmlUtils::AreQuotesMatchingInRange("", 0, 0));
    EXPECT_TRUE(XmlUtils::AreQuotesMatchingInRange("'", 1, 5));
    EXPECT_FALSE(XmlUtils::AreQuotesMatchingInRange("'", 0, c_npos));
}

TEST(XMLUtils, MatchesQuotesAsAModelDoes)
{
    RandomBytes random(4);
    for (int round = 0; round < 100000; ++round) {
        const std::string text = random.Of("'\"a", 40);
        const std::size_t from = random.Below(42);
        const std::size_t to = random.Below(42);
        ASSERT_EQ(XmlUtils::AreQuotesMatchingInRange(text, from, to),
                  ScannerModel::AreQuotesMatching(text, from, to))
            << text << ' ' << from << ' ' << to;
    }
}

TEST(XMLUtils, SkipsWhatStandsBeforeTheRootTag)
{
    const std::string prolog = "\xEF\xBB\xBF<?xml version='1.0'?>\n<!-- <a> -->\n<!DOCTYPE r>\n";
    EXPECT_EQ(XmlUtils::FindRootTag(prolog + "<r a='>'>x</r>"),
              (StringRange{prolog.size(), std::string("<r a='>'>").size()}));
}

TEST(XMLUtils, FindsNoRootTagWhereNoneIsClosed)
{
    for (const std::string text : {"", "text", "<", "text<", "<r", "<r a='>", "<!-- <r>", "<? <r>",
                                   "<!DOCTYPE r", "<!-- --><?pi?>"})
        EXPECT_EQ(XmlUtils::FindRootTag(text), StringRange()) << text;
    EXPECT_EQ(StringRange().start, c_npos);
    EXPECT_EQ(StringRange().length, 0U);
}

TEST(XMLUtils, FindsRootTagsAsAModelDoes)
{
    RandomBytes random(5);
    for (int round = 0; round < 100000; ++round) {
        const std::string text = random.Of(c_hostileBytes, 40);
        ASSERT_EQ(XmlUtils::FindRootTag(text), ScannerModel::RootTag(text)) << text;
    }
    for (int round = 0; round < 50000; ++round) {
        const std::string text = random.Join(
            {"<!--", "-->", "<![CDATA[", "]]>", "<?", "?>", "<!", ">", "<r", "'", "\"", "-", " a="},
            12);
        ASSERT_EQ(XmlUtils::FindRootTag(text), ScannerModel::RootTag(text)) << text;
    }
}

TEST(XMLUtils, SkipsALongPrologInLinearTime)
{
    const std::string prolog = Repeat("<!><!----><?p?><!-- -- - -> > ' -->", 300'000);
    EXPECT_EQ(XmlUtils::FindRootTag(prolog + "<r>"), (StringRange{prolog.size(), 3}));
    EXPECT_EQ(XmlUtils::FindRootTag(Repeat("<!", 1'000'000)), StringRange());
}

TEST(XMLUtils, FindsAnAttributeBehindOneWhoseNameEndsAlike)
{
    const std::string tag = "<r xversion='1' version = \"2\">";
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "version", Whole(tag)), "2");
}

TEST(XMLUtils, TakesValuesAsTheyStand)
{
    const std::string tag = "<r a='x\"y' b=\"x'y\"\tc\n=\r' &lt;\n ' d='' e='>'/>";
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "a", Whole(tag)), "x\"y");
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "b", Whole(tag)), "x'y");
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "c", Whole(tag)), " &lt;\n ");
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "d", Whole(tag)), "");
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "e", Whole(tag)), ">");
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "f", Whole(tag)), std::nullopt);
}

TEST(XMLUtils, TakesNoValueForAName)
{
    const std::string tag = "<r a=' b=\"1\"' bb='2' c b='3'>";
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "b", Whole(tag)), "3");
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "c", Whole(tag)), std::nullopt);
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "r", Whole(tag)), std::nullopt);
}

TEST(XMLUtils, StopsAtAValueThatDoesNotClose)
{
    const std::string tag = "<r a='1 b=\"2\">";
    EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "a", Whole(tag)), std::nullopt);
    const std::string unquoted = "<r a=1 a='2'>";
    EXPECT_EQ(XmlUtils::FindAttributeValue(unquoted, "a", Whole(unquoted)), "2");
}

TEST(XMLUtils, SearchesAttributesInTheTagOnly)
{
    const std::string xml = "<p v='0'><r a='1'><s v='2'>";
    EXPECT_EQ(XmlUtils::FindAttributeValue(xml, "v", {9, 9}), std::nullopt);
    EXPECT_EQ(XmlUtils::FindAttributeValue(xml, "a", {9, 9}), "1");
    EXPECT_EQ(XmlUtils::FindAttributeValue(xml, "v", {18, 9}), "2");
    // A value must close before the tag does.
    EXPECT_EQ(XmlUtils::FindAttributeValue("<r v='1>'>", "v", {0, 8}), std::nullopt);
}

TEST(XMLUtils, FindsNoAttributeInARangeWithoutLength)
{
    EXPECT_EQ(XmlUtils::FindAttributeValue("<a><b v='1'>", "v", {3, 0}), std::nullopt);
}

TEST(XMLUtils, EndsForAnEmptyAttributeName)
{
    EXPECT_EQ(XmlUtils::FindAttributeValue(" <a>", "", {1, 3}), std::nullopt);
    EXPECT_EQ(XmlUtils::FindAttributeValue("<a  b='1' >", "", {0, 11}), std::nullopt);
}

TEST(XMLUtils, WantsATagInsideTheText)
{
    const char16_t* const text = u"idx < xml.size() && end < xml.size()";
    for (const StringRange tag : {StringRange(), StringRange{0, 0}, StringRange{0, 4},
                                  StringRange{3, 1}, StringRange{1, c_npos - 1}})
        ExpectAssertion([tag] { static_cast<void>(XmlUtils::FindAttributeValue("<a>", "a", tag)); },
                        u"XMLUtils", 0, text, u"A3E88D2C");
}

TEST(XMLUtils, WantsATagWithBothBraces)
{
    const char16_t* const text = u"xml[idx] == c_openBrace && xml[end] == c_closeBrace";
    for (const StringRange tag : {StringRange{1, 4}, StringRange{0, 3}, StringRange{1, 2}})
        ExpectAssertion(
            [tag] { static_cast<void>(XmlUtils::FindAttributeValue("<a b>", "a", tag)); },
            u"XMLUtils", 0, text, u"C2D03F8A");
}

TEST(XMLUtils, FindsAttributesAsAModelDoes)
{
    RandomBytes random(6);
    int found = 0;
    for (int round = 0; round < 200000; ++round) {
        const std::string before = random.Of("a= '", 3);
        const std::string tag =
            "<r " +
            random.Join({"a", "a=", "'", "\"", " ", " a='", "='", "ab", "\n", "=", ">"}, 12) + '>';
        const std::string xml = before + tag + random.Of("'\">a=", 3);
        const StringRange range{before.size(), tag.size()};
        for (const std::string name : {"a", "ab", "'", " a"}) {
            const auto value = XmlUtils::FindAttributeValue(xml, name, range);
            ASSERT_EQ(value, ScannerModel::AttributeValue(xml, name, range)) << xml << '|' << name;
            found += value.has_value();
        }
    }
    EXPECT_GT(found, 10000);
}

TEST(XMLUtils, FindsAnAttributeBehindAValueOfAnyLength)
{
    for (const std::size_t power : {4096U, 8192U, 16'384U, 32'768U, 65'536U}) {
        for (std::size_t length = power - 40; length < power + 40; ++length) {
            const std::string value(length, 'v');
            const std::string tag = "<r a='" + value + "' version='1'>";
            EXPECT_EQ(XmlUtils::FindAttributeValue(tag, "version", Whole(tag)), "1") << length;
            const std::string inValue = "<r a='" + value + " version=\"2\"' version='1'>";
            EXPECT_EQ(XmlUtils::FindAttributeValue(inValue, "version", Whole(inValue)), "1")
                << length;
            const std::string absent = "<r a='" + value + "' versio='1'>";
            EXPECT_EQ(XmlUtils::FindAttributeValue(absent, "version", Whole(absent)), std::nullopt)
                << length;
        }
    }
}

TEST(XMLUtils, AnswersTheSameForANameWithAQuoteHoweverLongAValueIs)
{
    const auto find = [](std::size_t length) {
        const std::string tag = "<r q='" + std::string(length, 'v') + "b' b' b='1'>";
        return XmlUtils::FindAttributeValue(tag, "b' b", Whole(tag));
    };
    for (const std::size_t length : {16'000U, 17'000U, 40'000U})
        EXPECT_EQ(find(length), find(1)) << length;
}

TEST(XMLUtils, PassesAMillionFalseNamesInLinearTime)
{
    const std::string names = Repeat(" version", 1'000'000);
    const std::string inValue = "<r a='" + names + "' version='2'>";
    EXPECT_EQ(XmlUtils::FindAttributeValue(inValue, "version", Whole(inValue)), "2");
    const std::string bare = "<r" + names + " version='2'>";
    EXPECT_EQ(XmlUtils::FindAttributeValue(bare, "version", Whole(bare)), "2");
    const std::string open = "<r a=\"'" + names + ">";
    EXPECT_EQ(XmlUtils::FindAttributeValue(open, "version", Whole(open)), std::nullopt);
}

} // namespace
