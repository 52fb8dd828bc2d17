#include "support/EscapingModel.h"
#include "support/RecordingFormatter.h"

#include <kescorexml/XMLFormatter.h>
#include <kesplatform/DataValue.h>
#include <kesplatform/QualifiedName.h>

#include <QByteArray>
#include <QString>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Attributes = XMLFormatter::AttributeMap;

const TString c_empty;

// Pieces

TEST(XMLFormatter, EndsLinesWithALineFeed)
{
    RecordingFormatter formatter;
    formatter.OutputLine(u"x");
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(u"x", u"\n"));
}

TEST(XMLFormatter, LeavesLineFeedsOutWhenTheyAreSuppressed)
{
    RecordingFormatter formatter(u"  ", true);
    formatter.OutputLine(u"x");
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(u"x"));
}

TEST(XMLFormatter, FollowsTheHeaderByAnEmptyLine)
{
    RecordingFormatter formatter;
    formatter.OutputHeader();
    EXPECT_THAT(formatter.GetPieces(),
                ElementsAre(u"<?xml version='1.0' encoding='utf-8' ?>", u"\n", c_empty, u"\n"));
}

TEST(XMLFormatter, WritesTheHeaderAloneWithoutLineFeeds)
{
    RecordingFormatter formatter(u"  ", true);
    formatter.OutputHeader();
    EXPECT_EQ(formatter.GetText(), TString(u"<?xml version='1.0' encoding='utf-8' ?>"));
}

TEST(XMLFormatter, WritesTagsPieceByPiece)
{
    RecordingFormatter formatter;
    formatter.Indent();
    const Attributes attributes{{u"k", u"<"}};
    formatter.OutputTag(u"t", attributes);
    EXPECT_THAT(formatter.TakePieces(),
                ElementsAre(u"  ", u"<", u"t", u" k='&lt;'", u" />", u"\n"));
    formatter.OutputOpenTag(u"t", attributes);
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"  ", u"<", u"t", u" k='&lt;'", u">", u"\n"));
    formatter.OutputCloseTag(u"t");
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"  ", u"</", u"t", u">", u"\n"));
}

TEST(XMLFormatter, WritesTheIndentationEvenWhenItIsEmpty)
{
    RecordingFormatter formatter;
    formatter.OutputTag(u"t", {});
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(c_empty, u"<", u"t", u" />", u"\n"));
}

TEST(XMLFormatter, WritesContentTagsPieceByPiece)
{
    RecordingFormatter formatter;
    formatter.Indent();
    formatter.OutputContentTag(u"t", {{u"k", u"v"}}, u"a&b");
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"  ", u"<", u"t", u" k='v'", u">", u"a&amp;b",
                                                    u"</", u"t", u">", u"\n"));
    formatter.OutputContentTag(u"t", {}, u"a&b", true);
    EXPECT_THAT(formatter.TakePieces(),
                ElementsAre(u"  ", u"<", u"t", u">", u"a&amp;b", u"</", u"t", u">", u"\n"));
}

TEST(XMLFormatter, WritesEncodedContentTagsOnLinesOfTheirOwn)
{
    RecordingFormatter formatter;
    formatter.Indent();
    formatter.OutputContentTag(u"t", {}, u"<x/>", false);
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(u"  ", u"<", u"t", u">", u"\n", u"<x/>", u"\n",
                                                   u"  ", u"</", u"t", u">", u"\n"));
}

TEST(XMLFormatter, WritesNamesAsGiven)
{
    RecordingFormatter formatter;
    formatter.OutputTag(u"a<&b", {{u"k'&", u"v"}});
    EXPECT_THAT(formatter.GetPieces(),
                ElementsAre(c_empty, u"<", u"a<&b", u" k'&='v'", u" />", u"\n"));
}

TEST(XMLFormatter, HasItsTagPartsAsConstants)
{
    EXPECT_EQ(XMLFormatter::prefixOpen, u"<");
    EXPECT_EQ(XMLFormatter::prefixClose, u"</");
    EXPECT_EQ(XMLFormatter::suffixOpenClose, u">");
    EXPECT_EQ(XMLFormatter::suffixEmpty, u" />");
    EXPECT_EQ(XMLFormatter::commentOpen, u"<!--");
    EXPECT_EQ(XMLFormatter::commentClose, u"-->");
}

// Attributes

TEST(XMLFormatter, SortsAttributesByName)
{
    RecordingFormatter formatter;
    formatter.OutputAttributes({{u"b", u"1"}, {u"a", u"2"}, {u"B", u"3"}, {u"aa", u"4"}});
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(u" B='3'", u" a='2'", u" aa='4'", u" b='1'"));
}

TEST(XMLFormatter, WritesNothingForNoAttributes)
{
    RecordingFormatter formatter;
    formatter.OutputAttributes({});
    EXPECT_THAT(formatter.GetPieces(), IsEmpty());
}

TEST(XMLFormatter, EscapesAttributeValuesInEveryMode)
{
    const TString value = TString(40, u'x') + u"<'\n";
    for (const FormatMode mode : {FormatMode::EscapeAll, FormatMode::Content}) {
        RecordingFormatter formatter;
        formatter.SetFormatMode(mode);
        formatter.OutputAttributes({{u"k", value}});
        EXPECT_THAT(formatter.GetPieces(),
                    ElementsAre(u" k='" + EscapingModel::EscapeAttribute(value) + u"'"));
    }
}

// Content

TEST(XMLFormatter, EscapesContentLikeAttributesUnlessToldOtherwise)
{
    RecordingFormatter formatter;
    const TString text = TString(40, u'x') + u"<\n";
    formatter.OutputContent(text);
    formatter.OutputContent(text, false);
    const TString expected = TString(40, u'x') + u"&lt;&#10;";
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(expected, expected));
}

TEST(XMLFormatter, EscapesContentAsContentInThatMode)
{
    RecordingFormatter formatter;
    formatter.SetFormatMode(FormatMode::Content);
    const TString text = TString(40, u'x') + u"<\n";
    formatter.OutputContent(text);
    formatter.OutputContent(TString(31, u'\n'));
    formatter.OutputContent(TString(32, u'\n'));
    formatter.SetFormatMode(FormatMode::EscapeAll);
    formatter.OutputContent(u"<");
    EXPECT_THAT(formatter.GetPieces(),
                ElementsAre(u"<![CDATA[" + text + u"]]>",
                            EscapingModel::EscapeAttribute(TString(31, u'\n')), TString(32, u'\n'),
                            u"&lt;"));
}

TEST(XMLFormatter, TreatsAnyOtherModeAsContent)
{
    RecordingFormatter formatter;
    formatter.SetFormatMode(static_cast<FormatMode>(7));
    formatter.OutputContent(TString(32, u'\n'));
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(TString(32, u'\n')));
}

TEST(XMLFormatter, PutsRawContentOnLinesOfItsOwn)
{
    RecordingFormatter formatter;
    formatter.Indent();
    formatter.OutputContent(u"<&>", true);
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"\n", u"<&>", u"\n", u"  "));
    formatter.OutputContent(u"\nx", true);
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"\nx", u"\n", u"  "));
    formatter.OutputContent(u"x\n", true);
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"\n", u"x\n", u"  "));
    formatter.OutputContent(u"\n", true);
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"\n", u"  "));
    formatter.OutputContent(c_empty, true);
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"\n", c_empty, u"\n", u"  "));
}

TEST(XMLFormatter, AddsNoLineFeedsToRawContentWhenTheyAreSuppressed)
{
    RecordingFormatter formatter(u"  ", true);
    formatter.Indent();
    formatter.OutputContent(u"x", true);
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(u"x", u"  "));
}

// Comments

TEST(XMLFormatter, WritesCommentsBetweenBlanks)
{
    RecordingFormatter formatter;
    formatter.Indent();
    formatter.OutputComment(u"a--b");
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(u"  ", u"<!--", u" a-&45;b ", u"-->", u"\n"));
}

TEST(XMLFormatter, ReplacesHyphensInCommentsFromTheLeftWithoutOverlap)
{
    RecordingFormatter formatter;
    formatter.OutputComment(u"---");
    formatter.OutputComment(u"----");
    formatter.OutputComment(u"-");
    EXPECT_EQ(formatter.GetText(), TString(u"<!-- -&45;- -->\n<!-- -&45;-&45; -->\n<!-- - -->\n"));
}

// Bytes

TEST(XMLFormatter, WritesBytesInIndentedLines)
{
    std::string bytes(100, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 37);
    const QString encoded = QString::fromLatin1(QByteArray::fromStdString(bytes).toBase64());
    RecordingFormatter formatter;
    formatter.Indent();
    formatter.OutputBinary(reinterpret_cast<const unsigned char*>(bytes.data()), 100);
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(u"  ", TString(encoded.left(72)), u"\n", u"  ",
                                                   TString(encoded.mid(72)), u"\n"));
}

TEST(XMLFormatter, WritesNoLineForNoBytes)
{
    RecordingFormatter formatter;
    formatter.OutputBinary(nullptr, 0);
    EXPECT_THAT(formatter.GetPieces(), IsEmpty());
}

// Indentation

TEST(XMLFormatter, GrowsAndShrinksTheIndentationByOneUnit)
{
    RecordingFormatter formatter(u"-+");
    EXPECT_EQ(formatter.GetIndent(), c_empty);
    formatter.Indent();
    formatter.Indent();
    EXPECT_EQ(formatter.GetIndent(), u"-+-+");
    formatter.Undent();
    EXPECT_EQ(formatter.GetIndent(), u"-+");
    formatter.Undent();
    formatter.Undent();
    EXPECT_EQ(formatter.GetIndent(), c_empty);
}

TEST(XMLFormatter, LeavesACopyOfItsIndentationAsItWas)
{
    RecordingFormatter formatter;
    formatter.Indent();
    formatter.Indent();
    const TString copy = formatter.GetIndent();
    formatter.Undent();
    EXPECT_EQ(copy, u"    ");
    EXPECT_EQ(formatter.GetIndent(), u"  ");
}

/// Keeps nothing of what it counts.
class CountingFormatter : public XMLFormatter
{
public:
    CountingFormatter() : XMLFormatter(u"  ", false) {}
    void OutputString(const TString& text) override { units += text.length(); }

    TString::size_type units = 0;
};

TEST(XMLFormatter, IndentsWithoutLimitWhereNothingIsKept)
{
    constexpr TString::size_type c_levels = XMLFormatter::c_maxIndentLength;
    CountingFormatter formatter;
    for (TString::size_type i = 0; i < c_levels; ++i)
        formatter.Indent();
    EXPECT_EQ(formatter.GetIndent().length(), 2 * c_levels);
    formatter.OutputTag(u"t", {});
    EXPECT_EQ(formatter.units, 2 * c_levels + 6);
}

TEST(XMLFormatter, AllowsAnyNumberOfEmptyUnits)
{
    RecordingFormatter formatter(c_empty);
    for (int i = 0; i < 100000; ++i)
        formatter.Indent();
    EXPECT_EQ(formatter.GetIndent(), c_empty);
}

TEST(XMLFormatter, FlushesNothing)
{
    RecordingFormatter formatter;
    formatter.OutputString(u"x");
    formatter.Flush();
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(u"x"));
}

// Attribute values

TEST(XMLFormatter, FormatsBooleansAndIntegers)
{
    EXPECT_EQ(XMLFormatter::FormatBooleanAttribute(true), u"true");
    EXPECT_EQ(XMLFormatter::FormatBooleanAttribute(false), u"false");
    EXPECT_EQ(XMLFormatter::FormatIntegerAttribute(std::numeric_limits<int>::min()),
              u"-2147483648");
    EXPECT_EQ(XMLFormatter::FormatIntegerAttribute(7), u"7");
    EXPECT_EQ(XMLFormatter::FormatInt64Attribute(std::numeric_limits<long long>::min()),
              u"-9223372036854775808");
    EXPECT_EQ(XMLFormatter::FormatUInt32Attribute(std::numeric_limits<unsigned int>::max()),
              u"4294967295");
}

TEST(XMLFormatter, FormatsFloatingPointNumbersLikePrintf)
{
    for (const double value : {0.0, 1.0, -1.5, 0.1, 1.0 / 3.0, 1e-5, 123456789.0, 1e17, 1e100,
                               5e-324, 1.7976931348623157e308, 100000.0, 1000000.0, 0.0001}) {
        char text[64];
        std::snprintf(text, sizeof(text), "%.17g", value);
        EXPECT_EQ(XMLFormatter::FormatDoubleAttribute(value), TString(text));
        EXPECT_EQ(XMLFormatter::FormatDoubleAttribute(value).toDouble(), value);
        const auto narrow = static_cast<float>(value);
        if (std::isfinite(narrow)) {
            std::snprintf(text, sizeof(text), "%.6g", static_cast<double>(narrow));
            EXPECT_EQ(XMLFormatter::FormatFloatAttribute(narrow), TString(text));
        }
    }
}

TEST(XMLFormatter, FormatsDataValuesInTheirCanonicalForm)
{
    DataValueFormatter::FormatOptions canonical;
    canonical.canonical = true;
    for (const DataValue& value : {DataValue(), DataValue(true), DataValue(1234567), DataValue(0.1),
                                   DataValue(u"a<b"), DataValue(DataDate{2024, 2, 29})})
        EXPECT_EQ(XMLFormatter::FormatDataValueAttribute(value),
                  DataValueFormatter::Format(value, canonical));
    EXPECT_EQ(XMLFormatter::FormatDataValueAttribute(DataValue(1234567)), u"1234567");
}

TEST(XMLFormatter, FormatsQualifiedNamesInFull)
{
    EXPECT_EQ(XMLFormatter::FormatQualifiedNameAttribute(QualifiedName(u"root", u"field")),
              u"root.field");
}

} // namespace
