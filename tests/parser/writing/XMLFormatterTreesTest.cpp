#include "support/Assertions.h"
#include "support/RecordingFormatter.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLFormatter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Attributes = XMLFormatter::AttributeMap;

const TString c_empty;

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
        // As many as before, and the last one where it was.
        [&](DOMElement& e) {
            removed.push_back(e.RemoveChild(e.GetChildren()[1]));
            e.AddNewChild(u"new", &e.GetChildren().back());
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

} // namespace
