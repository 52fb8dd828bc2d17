#include "support/Assertions.h"
#include "support/EscapingModel.h"
#include "support/RecordingFormatter.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>
#include <kesplatform/DataValue.h>
#include <kesplatform/QualifiedName.h>

#include <QByteArray>
#include <QString>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

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

// Indenter

/// Writes the names of the operations that an Indenter calls, and fails where it is told to.
class IndenterTarget : public RecordingFormatter
{
public:
    void Indent() override { Call(u"Indent"); }
    void Undent() override { Call(u"Undent"); }
    void OutputOpenTag(const TString& name, const Attributes& attributes) override
    {
        Call(u"Open " + name + TString::number(static_cast<int>(attributes.size())));
    }
    void OutputCloseTag(const TString& name) override { Call(u"Close " + name); }

    TString failing;

private:
    void Call(const TString& call)
    {
        OutputString(call);
        if (!failing.IsEmpty() && call.startsWith(failing))
            throw std::runtime_error("told to fail");
    }
};

TEST(XMLFormatterIndenter, OpensIndentsUndentsAndCloses)
{
    IndenterTarget target;
    {
        TString name(u"a");
        const XMLFormatter::Indenter indenter(target, name, {{u"k", u"v"}});
        name = u"changed";
        const XMLFormatter::Indenter inner(target, u"b");
    }
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a1", u"Indent", u"Open b0", u"Indent",
                                                u"Undent", u"Close b", u"Undent", u"Close a"));
}

TEST(XMLFormatterIndenter, SwallowsAnErrorOfUndentAndDropsTheCloseTag)
{
    IndenterTarget target;
    target.failing = u"Undent";
    EXPECT_NO_THROW(XMLFormatter::Indenter(target, u"a"));
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a0", u"Indent", u"Undent"));
}

TEST(XMLFormatterIndenter, SwallowsAnErrorOfTheCloseTag)
{
    IndenterTarget target;
    target.failing = u"Close";
    EXPECT_NO_THROW(XMLFormatter::Indenter(target, u"a"));
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a0", u"Indent", u"Undent", u"Close a"));
}

TEST(XMLFormatterIndenter, LetsAnErrorOfTheOpenTagOutAndWritesNoMore)
{
    IndenterTarget target;
    target.failing = u"Open";
    EXPECT_THROW(XMLFormatter::Indenter(target, u"a"), std::runtime_error);
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a0"));
}

TEST(XMLFormatterIndenter, LeavesTheTagOpenWhenItCannotIndent)
{
    IndenterTarget target;
    target.failing = u"Indent";
    EXPECT_THROW(XMLFormatter::Indenter(target, u"a"), std::runtime_error);
    EXPECT_THAT(target.GetPieces(), ElementsAre(u"Open a0", u"Indent"));
}

TEST(XMLFormatterIndenter, ClosesTheTagWhileAnExceptionPasses)
{
    RecordingFormatter target;
    const auto fail = [&] {
        const XMLFormatter::Indenter indenter(target, u"a");
        throw std::runtime_error("passing");
    };
    EXPECT_THROW(fail(), std::runtime_error);
    EXPECT_EQ(target.GetText(), TString(u"<a>\n</a>\n"));
    EXPECT_EQ(target.GetIndent(), c_empty);
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

// Element trees

TEST(XMLFormatter, WritesAnElementWithoutContentAsOneTag)
{
    DOMElement element(u"a");
    element.SetAttribute(u"k", u"v");
    RecordingFormatter formatter;
    formatter.OutputDOMElement(element);
    EXPECT_THAT(formatter.GetPieces(), ElementsAre(c_empty, u"<", u"a", u" k='v'", u" />", u"\n"));
}

TEST(XMLFormatter, WritesAnElementWithTextOnOneLine)
{
    DOMElement element(u"a");
    element.SetText(u"x&y");
    RecordingFormatter formatter;
    formatter.OutputDOMElement(element);
    EXPECT_THAT(formatter.GetPieces(),
                ElementsAre(c_empty, u"<", u"a", u">", u"x&amp;y", u"</", u"a", u">", u"\n"));
}

TEST(XMLFormatter, WritesEncodedTextRaw)
{
    DOMElement element(u"a");
    element.SetText(u"<b/>", true);
    RecordingFormatter formatter;
    formatter.OutputDOMElement(element);
    EXPECT_EQ(formatter.GetText(), TString(u"<a>\n<b/>\n</a>\n"));
}

TEST(XMLFormatter, WritesTheTextOfAParentAfterItsChildren)
{
    DOMElement element(u"a");
    element.SetText(u"x&");
    element.AddNewChild(u"b", nullptr)->SetText(u"t");
    element.AddNewChild(u"c", nullptr);
    RecordingFormatter formatter;
    formatter.OutputDOMElement(element);
    EXPECT_THAT(formatter.GetPieces(),
                ElementsAre(c_empty, u"<", u"a", u">", u"\n",                        //
                            u"  ", u"<", u"b", u">", u"t", u"</", u"b", u">", u"\n", //
                            u"  ", u"<", u"c", u" />", u"\n",                        //
                            u"  ", u"x&amp;",                                        //
                            c_empty, u"</", u"a", u">", u"\n"));
}

TEST(XMLFormatter, WritesTheUsualSetupAsDocumented)
{
    DOMElement element(u"a");
    element.SetAttribute(u"y", u"2");
    element.SetAttribute(u"x", u"1&");
    element.AddNewChild(u"b", nullptr)->SetText(u"t");
    RecordingFormatter formatter;
    formatter.SetFormatMode(FormatMode::Content);
    formatter.OutputDOMElement(element);
    EXPECT_EQ(formatter.GetText(), TString(u"<a x='1&amp;' y='2'>\n  <b>t</b>\n</a>\n"));
}

TEST(XMLFormatter, WritesTheChildrenOfAnElement)
{
    DOMElement element(u"a");
    element.AddNewChild(u"b", nullptr);
    element.AddNewChild(u"c", nullptr);
    RecordingFormatter formatter;
    formatter.OutputDOMElements(element.GetChildren());
    EXPECT_EQ(formatter.GetText(), TString(u"<b />\n<c />\n"));
}

/// Names every call of an operation that the base class makes on itself.
class CallNamingFormatter : public RecordingFormatter
{
public:
    using RecordingFormatter::RecordingFormatter;
    const TString& GetIndent() const override { return m_ownIndent; }
    void OutputAttributes(const Attributes&) override { OutputString(u"[attributes]"); }
    void OutputDOMElement(const DOMElement& element) override
    {
        OutputString(u"[element " + element.GetName() + u"]");
        RecordingFormatter::OutputDOMElement(element);
    }
    void OutputContent(const TString& text, bool raw) override
    {
        OutputString((raw ? u"[raw " : u"[content ") + text + u"]");
    }
    using XMLFormatter::OutputContent;
    using XMLFormatter::OutputContentTag;
    void OutputContentTag(const TString& name, const Attributes& attributes, const TString& text,
                          bool encode) override
    {
        OutputString(encode ? u"[tag encode]" : u"[tag]");
        RecordingFormatter::OutputContentTag(name, attributes, text, encode);
    }
    void OutputLine(const TString& text) override { OutputString(u"[line " + text + u"]"); }

private:
    TString m_ownIndent = u"[indent]";
};

TEST(XMLFormatter, GoesThroughTheOperationsThatASubclassMayReplace)
{
    DOMElement element(u"a");
    element.SetText(u"x", true);
    element.AddNewChild(u"b", nullptr)->SetText(u"t");
    CallNamingFormatter formatter;
    formatter.OutputDOMElement(element);
    EXPECT_THAT(formatter.TakePieces(),
                ElementsAre(u"[element a]", c_empty, u"<", u"a", u"[attributes]", u"[line >]",
                            u"[element b]", u"[tag encode]", u"[indent]", u"<", u"b",
                            u"[attributes]", u">", u"[content t]", u"</", u"b", u"[line >]",
                            u"[indent]", u"[raw x]", c_empty, u"</", u"a", u"[line >]"));
    formatter.OutputContent(u"c");
    formatter.OutputContentTag(u"n", {}, u"c");
    EXPECT_THAT(formatter.TakePieces(),
                ElementsAre(u"[content c]", u"[tag encode]", u"[indent]", u"<", u"n",
                            u"[attributes]", u">", u"[content c]", u"</", u"n", u"[line >]"));
    formatter.OutputComment(u"c");
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"[indent]", u"<!--", u" c ", u"[line -->]"));
    formatter.OutputDOMElements(element.GetChildren());
    EXPECT_EQ(formatter.GetPieces().front(), TString(u"[element b]"));
}

TEST(XMLFormatter, EndsTagsHeaderAndBytesByLinesThatASubclassMayReplace)
{
    CallNamingFormatter formatter(u"  ");
    formatter.Indent();
    formatter.OutputTag(u"t", {});
    EXPECT_THAT(formatter.TakePieces(),
                ElementsAre(u"  ", u"<", u"t", u"[attributes]", u"[line  />]"));
    formatter.OutputHeader();
    EXPECT_THAT(formatter.TakePieces(),
                ElementsAre(u"[line <?xml version='1.0' encoding='utf-8' ?>]", u"[line ]"));
    const unsigned char bytes[] = {0, 0, 0};
    formatter.OutputBinary(bytes, 3);
    EXPECT_THAT(formatter.TakePieces(), ElementsAre(u"  ", u"[line AAAA]"));
}

/// Breaks after a number of pieces, once.
class BreakingFormatter : public RecordingFormatter
{
public:
    explicit BreakingFormatter(std::size_t pieces) : m_pieces(pieces) {}
    void OutputString(const TString& text) override
    {
        if (GetPieces().size() == m_pieces && !m_isBroken) {
            m_isBroken = true;
            throw std::runtime_error("broken sink");
        }
        RecordingFormatter::OutputString(text);
    }

private:
    std::size_t m_pieces;
    bool m_isBroken = false;
};

TEST(XMLFormatter, LetsErrorsOfTheSinkOutAndClosesWhatIsOpen)
{
    DOMElement element(u"a");
    element.AddNewChild(u"b", nullptr)->AddNewChild(u"c", nullptr);
    // Ten pieces open a and b; the eleventh would begin c.
    BreakingFormatter formatter(10);
    EXPECT_THROW(formatter.OutputDOMElement(element), std::runtime_error);
    EXPECT_EQ(formatter.GetText(), TString(u"<a>\n  <b>\n  </b>\n</a>\n"));
    EXPECT_EQ(formatter.GetIndent(), c_empty);
}

// Trees that change while they are written

/// Writes the tree of a document and changes it whenever a tag is written.
class ChangingFormatter : public RecordingFormatter
{
public:
    explicit ChangingFormatter(std::function<void()> change) : m_change(std::move(change)) {}
    void OutputTag(const TString& name, const Attributes& attributes) override
    {
        m_change();
        RecordingFormatter::OutputTag(name, attributes);
    }

private:
    std::function<void()> m_change;
};

TEST(XMLFormatter, LeavesOutChildrenThatAreAddedWhileTheyAreWritten)
{
    DOMElement element(u"r");
    for (const char16_t* name : {u"a", u"b", u"c"})
        element.AddNewChild(name);
    ChangingFormatter formatter([&] {
        for (int i = 0; i < 100; ++i)
            element.AddNewChild(u"new");
    });
    formatter.OutputDOMElement(element);
    EXPECT_EQ(formatter.GetText(), u"<r>\n  <a />\n  <b />\n  <c />\n</r>\n");
    EXPECT_EQ(element.GetChildren().size(), 303U);

    formatter.TakePieces();
    element.RemoveChildren();
    element.AddNewChild(u"a");
    element.AddNewChild(u"b");
    formatter.OutputDOMElements(element.GetChildren());
    EXPECT_EQ(formatter.GetText(), u"<a />\n<b />\n");
}

TEST(XMLFormatter, WritesAnElementAsItWasWhenItsTurnCame)
{
    DOMElement element(u"r");
    element.SetText(u"text", true);
    element.AddNewChild(u"a");
    ChangingFormatter formatter([&] {
        element.SetName(u"renamed");
        element.SetText(u"another text");
    });
    formatter.OutputDOMElement(element);
    EXPECT_EQ(formatter.GetText(), u"<r>\n  <a />\n  \ntext\n  </r>\n");

    DOMElement leaf(u"leaf");
    ChangingFormatter ofLeaf([&] { leaf.SetName(u"renamed"); });
    ofLeaf.OutputDOMElement(leaf);
    EXPECT_EQ(ofLeaf.GetText(), u"<leaf />\n");
}

TEST(XMLFormatter, SaysSoWhenChildrenChangeOtherwiseWhileTheyAreWritten)
{
    std::vector<std::unique_ptr<DOMElement>> removed;
    const std::function<void(DOMElement&)> changes[] = {
        [](DOMElement& e) { e.AddNewChild(u"new", &e.GetChildren().front()); },
        [](DOMElement& e) { e.AddNewChild(u"new", &e.GetChildren().back()); },
        [&](DOMElement& e) { removed.push_back(e.RemoveChild(e.GetChildren().front())); },
        [&](DOMElement& e) { removed.push_back(e.RemoveChild(e.GetChildren().back())); },
        [&](DOMElement& e) {
            for (auto& child : e.RemoveChildren())
                removed.push_back(std::move(child));
        },
    };
    for (const auto& change : changes) {
        for (const bool ofList : {false, true}) {
            DOMElement element(u"r");
            for (const char16_t* name : {u"a", u"b", u"c"})
                element.AddNewChild(name);
            ChangingFormatter formatter([&] { change(element); });
            ExpectAssertion(
                [&] {
                    if (ofList)
                        formatter.OutputDOMElements(element.GetChildren());
                    else
                        formatter.OutputDOMElement(element);
                },
                u"XMLFormatter", 0, u"The children of an element changed while they were written.",
                u"3B9E52D7");
            EXPECT_EQ(formatter.GetText(),
                      ofList ? TString(u"<a />\n") : TString(u"<r>\n  <a />\n</r>\n"));
        }
    }
}

// FormatDOM

TEST(XMLFormatter, WritesHeaderCommentAndDocumentElement)
{
    DOM dom(false);
    dom.GetRoot()->AddNewChild(u"first", nullptr);
    dom.GetRoot()->AddNewChild(u"second", nullptr);
    TString comment(u"note");
    RecordingFormatter formatter;
    XMLFormatter::FormatDOM(formatter, dom, &comment, true);
    EXPECT_EQ(formatter.GetText(),
              TString(u"<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- note -->\n<first />\n"));
}

TEST(XMLFormatter, WritesOnlyWhatIsWantedOfADocument)
{
    DOM dom(false);
    RecordingFormatter formatter;
    XMLFormatter::FormatDOM(formatter, dom, nullptr, false);
    EXPECT_THAT(formatter.GetPieces(), IsEmpty());
    TString comment(u"note");
    XMLFormatter::FormatDOM(formatter, dom, &comment, false);
    EXPECT_EQ(formatter.GetText(), TString(u"<!-- note -->\n"));
}

TEST(XMLFormatter, WritesAnElementLikeADocument)
{
    const DOMElement element(u"e");
    TString comment(u"note");
    RecordingFormatter formatter;
    XMLFormatter::FormatDOM(formatter, element, &comment, true);
    EXPECT_EQ(formatter.GetText(),
              TString(u"<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- note -->\n<e />\n"));
    RecordingFormatter bare;
    XMLFormatter::FormatDOM(bare, element, nullptr, false);
    EXPECT_EQ(bare.GetText(), TString(u"<e />\n"));
}

// The modes

static_assert(sizeof(FormatMode) == 4);
static_assert(static_cast<int>(FormatMode::EscapeAll) == 0);
static_assert(static_cast<int>(FormatMode::Content) == 1);

// The table of virtual operations, and the members

#if defined(__x86_64__) && defined(__GNUC__)

/// The place of a virtual operation in its class's table, as the Itanium C++ ABI keeps it in a
/// pointer to member.
template <typename Operation>
std::size_t SlotOf(Operation operation)
{
    std::size_t offset = 0;
    std::memcpy(&offset, &operation, sizeof(offset));
    return (offset - 1) / sizeof(void*);
}

TEST(XMLFormatter, KeepsTheOrderOfItsVirtualOperations)
{
    using F = XMLFormatter;
    using Text = const TString&;
    using Map = const Attributes&;
    // The destructor takes the first two places.
    EXPECT_EQ(SlotOf(&F::Indent), 2U);
    EXPECT_EQ(SlotOf(&F::Undent), 3U);
    EXPECT_EQ(SlotOf(&F::GetIndent), 4U);
    EXPECT_EQ(SlotOf(&F::Flush), 5U);
    EXPECT_EQ(SlotOf(&F::OutputAttributes), 6U);
    EXPECT_EQ(SlotOf(&F::OutputDOMElement), 7U);
    EXPECT_EQ(SlotOf(&F::OutputDOMElements), 8U);
    EXPECT_EQ(SlotOf(static_cast<void (F::*)(Text)>(&F::OutputContent)), 9U);
    EXPECT_EQ(SlotOf(static_cast<void (F::*)(Text, bool)>(&F::OutputContent)), 10U);
    EXPECT_EQ(SlotOf(static_cast<void (F::*)(Text, Map, Text)>(&F::OutputContentTag)), 11U);
    EXPECT_EQ(SlotOf(static_cast<void (F::*)(Text, Map, Text, bool)>(&F::OutputContentTag)), 12U);
    EXPECT_EQ(SlotOf(&F::OutputComment), 13U);
    EXPECT_EQ(SlotOf(&F::OutputCloseTag), 14U);
    EXPECT_EQ(SlotOf(&F::OutputOpenTag), 15U);
    EXPECT_EQ(SlotOf(&F::OutputTag), 16U);
    EXPECT_EQ(SlotOf(&F::OutputHeader), 17U);
    EXPECT_EQ(SlotOf(&F::OutputLine), 18U);
    EXPECT_EQ(SlotOf(&F::OutputString), 19U);
    EXPECT_EQ(SlotOf(&F::OutputBinary), 20U);
    EXPECT_EQ(SlotOf(&XMLStringFormatter::GetOutput), 21U);
}

/// The table of virtual operations that an object has.
std::vector<const void*> TableOf(const XMLFormatter& formatter)
{
    const void* const* table = nullptr;
    std::memcpy(&table, &formatter, sizeof(table));
    return std::vector<const void*>(table, table + 21);
}

TEST(XMLFormatter, SharesTheOperationsWithItsSubclassesThatTheseDoNotReplace)
{
    // Of these two only the sink and the destructor differ from the base class.
    const RecordingFormatter recording;
    const XMLStringFormatter text(u"  ", false);
    const XMLDomFormatter tree;
    const std::vector<const void*> base = TableOf(recording);
    const std::vector<const void*> ofText = TableOf(text);
    const std::vector<const void*> ofTree = TableOf(tree);
    const std::set<std::size_t> ownOfTree{6, 7, 10, 11, 13, 14, 15, 16, 17, 18, 20};
    for (std::size_t slot = 2; slot <= 20; ++slot) {
        if (slot == 19) {
            EXPECT_NE(ofText[slot], ofTree[slot]);
            continue;
        }
        EXPECT_EQ(ofText[slot], base[slot]) << slot;
        EXPECT_EQ(ofTree[slot] != base[slot], ownOfTree.contains(slot)) << slot;
    }
}

/// What stands in an object from a place on.
template <typename T>
T ReadAt(const void* object, std::size_t offset)
{
    T value;
    std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof(value));
    return value;
}

/// A string is a pointer to its text, which copies share.
const void* TextOf(const TString& text)
{
    static_assert(sizeof(TString) == sizeof(void*));
    return ReadAt<const void*>(&text, 0);
}

constexpr std::size_t c_ownMembers = 40;

TEST(XMLFormatter, KeepsTheOrderOfItsMembers)
{
    const TString unit(u"unit");
    RecordingFormatter formatter(unit);
    formatter.SetFormatMode(FormatMode::Content);
    static_assert(sizeof(XMLFormatter) == c_ownMembers);
    EXPECT_EQ(static_cast<const void*>(&formatter.GetIndent()),
              reinterpret_cast<const char*>(&formatter) + 8);
    EXPECT_EQ(ReadAt<FormatMode>(&formatter, 16), FormatMode::Content);
    EXPECT_EQ(ReadAt<const void*>(&formatter, 24), TextOf(unit));
    EXPECT_NE(ReadAt<const void*>(&formatter, 32), nullptr);
    const RecordingFormatter onOneLine(unit, true);
    EXPECT_EQ(ReadAt<const void*>(&onOneLine, 32), nullptr);
}

TEST(XMLStringFormatter, KeepsTheOrderOfItsMembers)
{
    XMLStringFormatter formatter(u"  ", false);
    formatter.OutputString(u"text");
    static_assert(sizeof(XMLStringFormatter) == c_ownMembers + sizeof(TString));
    EXPECT_EQ(ReadAt<const void*>(&formatter, c_ownMembers), TextOf(formatter.GetOutput()));
}

TEST(XMLDomFormatter, KeepsTheOrderOfItsMembers)
{
    XMLDomFormatter formatter;
    constexpr std::size_t c_document = c_ownMembers + sizeof(std::deque<DOMElement*>);
    constexpr std::size_t c_comments = c_document + sizeof(void*);
    constexpr std::size_t c_hasHeader = c_comments + sizeof(std::vector<TString>);
    static_assert(sizeof(XMLDomFormatter) == c_hasHeader + sizeof(void*));
    EXPECT_EQ(ReadAt<const void*>(&formatter, c_document), formatter.GetDocument());
    EXPECT_EQ(ReadAt<const void*>(&formatter, c_comments), nullptr);
    formatter.OutputComment(u"note");
    EXPECT_NE(ReadAt<const void*>(&formatter, c_comments), nullptr);
    EXPECT_FALSE(ReadAt<bool>(&formatter, c_hasHeader));
    formatter.OutputHeader();
    EXPECT_TRUE(ReadAt<bool>(&formatter, c_hasHeader));
}

#endif

} // namespace
