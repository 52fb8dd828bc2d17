#include "support/RandomTree.h"
#include "support/RecordingFormatter.h"
#include "support/SmallStack.h"
#include "support/TreeTesting.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using Attributes = XMLFormatter::AttributeMap;

/// The first element that was written, which must be there.
const DOMElement& First(const XMLDomFormatter& formatter)
{
    const DOMElement* first = formatter.GetDocumentRoot();
    if (first == nullptr)
        throw std::runtime_error("nothing was written");
    return *first;
}

// Text from the tree

TEST(XMLDomFormatter, PutsHeaderAndCommentsBeforeTheDocumentElement)
{
    XMLDomFormatter formatter;
    formatter.OutputOpenTag(u"a", {});
    formatter.OutputComment(u"one");
    formatter.OutputOpenTag(u"b", {});
    formatter.OutputComment(u"two--");
    formatter.OutputCloseTag(u"b");
    formatter.OutputHeader();
    formatter.OutputCloseTag(u"a");
    const TString expected = u"<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- one -->\n"
                             u"<!-- two-&45; -->\n<a>\n  <b />\n</a>\n";
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), expected);
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), expected);
}

TEST(XMLDomFormatter, RendersWithoutAnyChangeToTheTree)
{
    RandomTree random(34);
    XMLDomFormatter formatter;
    formatter.OutputDOMElement(*random.Tree(50));
    AddError(First(formatter), "error");
    formatter.OutputOpenTag(u"open", {});
    const DOMElement before(*formatter.GetRoot());
    const std::string errors = JoinErrors(*formatter.GetDocument());
    const TString output = formatter.GetOutput(FormatMode::Content);
    static_cast<void>(formatter.GetOutput(FormatMode::EscapeAll));
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), output);
    EXPECT_TRUE(*formatter.GetRoot() == before);
    EXPECT_EQ(JoinErrors(*formatter.GetDocument()), errors);
    formatter.OutputCloseTag(u"open");
}

TEST(XMLDomFormatter, RendersOnlyTheFirstOfSeveralElements)
{
    XMLDomFormatter formatter;
    formatter.OutputTag(u"a", {});
    formatter.OutputTag(u"b", {});
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), u"<a />\n");
}

TEST(XMLDomFormatter, RendersInTheModeThatIsAskedFor)
{
    XMLDomFormatter formatter;
    formatter.OutputContentTag(u"a", {}, TString(32, u'\n'));
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), u"<a>" + TString(32, u'\n') + u"</a>\n");
    TString references;
    for (int i = 0; i < 32; ++i)
        references += u"&#10;";
    EXPECT_EQ(formatter.GetOutput(FormatMode::EscapeAll), u"<a>" + references + u"</a>\n");
}

TEST(XMLDomFormatter, IndentsTrailingTextAsItStandsItself)
{
    DOMElement element(u"a");
    element.SetText(u"x");
    element.AddNewChild(u"b", nullptr);
    XMLDomFormatter formatter;
    RecordingFormatter balanced;
    formatter.Format(balanced, element);
    EXPECT_THAT(balanced.GetPieces(),
                ElementsAre(TString(), u"<", u"a", u">", u"\n", u"  ", u"<", u"b", u" />", u"\n",
                            TString(), u"x", TString(), u"</", u"a", u">", u"\n"));
    formatter.Indent();
    formatter.Indent();
    RecordingFormatter indented;
    formatter.Format(indented, element);
    EXPECT_EQ(indented.GetText(), u"<a>\n  <b />\n    x</a>\n");
}

/// Has another indentation each time that it is asked.
class RestlessFormatter : public XMLDomFormatter
{
public:
    const TString& GetIndent() const override
    {
        m_indent = u"[" + TString::number(m_asked++) + u"]";
        return m_indent;
    }

private:
    mutable int m_asked = 0;
    mutable TString m_indent;
};

TEST(XMLDomFormatter, RendersWithTheIndentationThatItHasAtEachText)
{
    const auto build = [](XMLFormatter& formatter) {
        const XMLFormatter::Indenter a(formatter, u"a");
        for (const char16_t* name : {u"b", u"c"}) {
            const XMLFormatter::Indenter indenter(formatter, name);
            formatter.OutputTag(u"d", {});
            formatter.OutputContent(u"text", false);
        }
        formatter.OutputContent(u"raw", true);
    };
    RestlessFormatter rendered;
    build(rendered);
    RestlessFormatter formatted;
    build(formatted);
    RecordingFormatter expected;
    expected.SetFormatMode(FormatMode::Content);
    formatted.Format(expected, First(formatted));
    const TString output = rendered.GetOutput(FormatMode::Content);
    EXPECT_EQ(output, expected.GetText());
    EXPECT_TRUE(output.contains(u"[0]text") && output.contains(u"[1]text") &&
                output.contains(u"[2]"));
}

TEST(XMLDomFormatter, StoresEachLineOfBytesWithTheIndentationThatItHasThen)
{
    const std::vector<unsigned char> bytes(120, 0);
    RestlessFormatter formatter;
    formatter.OutputOpenTag(u"a", {});
    formatter.OutputBinary(bytes.data(), 120);
    EXPECT_EQ(First(formatter).GetText(), u"[0]" + TString(72, u'A') + u"\n[1]" +
                                              TString(72, u'A') + u"\n[2]" + TString(16, u'A') +
                                              u"\n");
}

TEST(XMLDomFormatter, WritesEncodedTextRaw)
{
    DOMElement element(u"a");
    element.SetText(u"<x/>", true);
    element.AddNewChild(u"b", nullptr)->SetText(u"<y/>", true);
    XMLDomFormatter formatter;
    RecordingFormatter target;
    formatter.Format(target, element);
    EXPECT_EQ(target.GetText(), u"<a>\n  <b>\n<y/>\n  </b>\n\n<x/>\n  </a>\n");
}

/// What Format is said to do, by recursion.
void FormatModel(XMLFormatter& target, const DOMElement& element)
{
    if (!element.HasChildren()) {
        if (element.HasText())
            target.OutputContentTag(element.GetName(), element.GetAttributes(), element.GetText(),
                                    !element.IsEncoded());
        else
            target.OutputTag(element.GetName(), element.GetAttributes());
        return;
    }
    const XMLFormatter::Indenter indenter(target, element.GetName(), element.GetAttributes());
    for (const auto& child : element.GetChildren())
        FormatModel(target, *child);
    if (element.HasText()) {
        target.OutputString(TString());
        target.OutputContent(element.GetText(), element.IsEncoded());
    }
}

/// Notes which operations are called, and breaks at one of the calls.
class CallTarget : public RecordingFormatter
{
public:
    using XMLFormatter::OutputContent;
    using XMLFormatter::OutputContentTag;
    void Indent() override { Call(u"Indent"); }
    void Undent() override { Call(u"Undent"); }
    void OutputDOMElement(const DOMElement&) override { Call(u"Element"); }
    void OutputContent(const TString& text, bool raw) override
    {
        Call((raw ? u"Raw " : u"Content ") + text);
    }
    void OutputContentTag(const TString& name, const Attributes&, const TString& text,
                          bool encode) override
    {
        Call((encode ? u"ContentTag " : u"RawContentTag ") + name + text);
    }
    void OutputOpenTag(const TString& name, const Attributes&) override { Call(u"Open " + name); }
    void OutputCloseTag(const TString& name) override { Call(u"Close " + name); }
    void OutputTag(const TString& name, const Attributes&) override { Call(u"Tag " + name); }

    std::size_t breakAt = static_cast<std::size_t>(-1);

private:
    void Call(const TString& call)
    {
        OutputString(call);
        if (GetPieces().size() == breakAt)
            throw std::runtime_error("told to break");
    }
};

TEST(XMLDomFormatter, CallsItsTargetAsTheRecursionWould)
{
    RandomTree random(31);
    for (int i = 0; i < 100; ++i) {
        const std::unique_ptr<DOMElement> tree = random.Tree(1 + random.Below(40));
        CallTarget expected;
        FormatModel(expected, *tree);
        CallTarget target;
        XMLDomFormatter formatter;
        formatter.Format(target, *tree);
        ASSERT_EQ(target.GetPieces(), expected.GetPieces());
    }
}

TEST(XMLDomFormatter, ClosesWhatIsOpenWhereverItsTargetBreaks)
{
    RandomTree random(32);
    const std::unique_ptr<DOMElement> tree = random.Tree(40);
    CallTarget whole;
    FormatModel(whole, *tree);
    for (std::size_t breakAt = 1; breakAt <= whole.GetPieces().size(); ++breakAt) {
        bool isExpectedToThrow = false;
        CallTarget expected;
        expected.breakAt = breakAt;
        try {
            FormatModel(expected, *tree);
        } catch (const std::runtime_error&) {
            isExpectedToThrow = true;
        }
        bool throws = false;
        CallTarget target;
        target.breakAt = breakAt;
        XMLDomFormatter formatter;
        try {
            formatter.Format(target, *tree);
        } catch (const std::runtime_error&) {
            throws = true;
        }
        ASSERT_EQ(throws, isExpectedToThrow) << breakAt;
        ASSERT_EQ(target.GetPieces(), expected.GetPieces()) << breakAt;
    }
}

TEST(XMLDomFormatter, FormatsAMillionLevelsOnASmallStack)
{
    RunOnSmallStack([] {
        DOMElement root(u"e");
        DOMElement* last = &root;
        for (int i = 1; i < 1000000; ++i)
            last = last->AddNewChild(u"e", nullptr);
        XMLStringFormatter target(TString(), true);
        XMLDomFormatter formatter;
        formatter.Format(target, root);
        EXPECT_EQ(target.GetOutput().length(), 999999 * 7 + 5);
    });
}

// One-call rendering

TEST(XMLDomFormatter, RendersADocumentWithHeaderAndComment)
{
    DOM document(false);
    DOMElement* a = document.GetRoot()->AddNewChild(u"a", nullptr);
    a->AddNewChild(u"b", nullptr)->SetText(TString(32, u'x') + u"<");
    TString comment(u"note");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(document, &comment, true),
              u"<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- note -->\n<a>\n  <b><![CDATA[" +
                  TString(32, u'x') + u"<]]></b>\n</a>\n");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(*a->GetChild(u"b"), nullptr, false),
              u"<b><![CDATA[" + TString(32, u'x') + u"<]]></b>\n");
}

TEST(XMLDomFormatter, RendersAnEmptyDocumentAsWhatIsWantedAroundIt)
{
    EXPECT_TRUE(XMLDomFormatter::RenderAsXMLString(DOM(false), nullptr, false).IsEmpty());
    TString comment(u"note");
    const TString header(u"<?xml version='1.0' encoding='utf-8' ?>\n\n");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(DOM(false), nullptr, true), header);
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(DOM(false), &comment, true),
              header + u"<!-- note -->\n");
    XMLDomFormatter formatter;
    formatter.OutputHeader();
    EXPECT_EQ(formatter.GetOutput(FormatMode::Content), header);
}

TEST(XMLDomFormatter, RendersAnElementWithHeaderAndComment)
{
    DOMElement element(u"a");
    element.SetText(TString(32, u'\n'));
    TString comment(u"note");
    const TString text = u"<a>" + TString(32, u'\n') + u"</a>\n";
    const TString header(u"<?xml version='1.0' encoding='utf-8' ?>\n\n");
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(element, &comment, true),
              header + u"<!-- note -->\n" + text);
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(element, nullptr, true), header + text);
    EXPECT_EQ(XMLDomFormatter::RenderAsXMLString(element, &comment, false),
              u"<!-- note -->\n" + text);
    EXPECT_EQ(comment, u"note");
}

TEST(XMLDomFormatter, RendersWhatItBuilt)
{
    RandomTree random(33);
    for (int i = 0; i < 50; ++i) {
        XMLDomFormatter formatter;
        formatter.OutputDOMElement(*random.Tree(1 + random.Below(40)));
        for (const FormatMode mode : {FormatMode::EscapeAll, FormatMode::Content}) {
            RecordingFormatter expected;
            expected.SetFormatMode(mode);
            FormatModel(expected, First(formatter));
            ASSERT_EQ(formatter.GetOutput(mode), expected.GetText());
            // The formatter's own indentation shows in texts that follow children.
            formatter.Indent();
            RecordingFormatter indented;
            indented.SetFormatMode(mode);
            formatter.Format(indented, First(formatter));
            ASSERT_EQ(formatter.GetOutput(mode), indented.GetText());
            formatter.Undent();
        }
    }
}

} // namespace
