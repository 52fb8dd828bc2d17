#include "support/EscapingModel.h"
#include "support/RandomTree.h"
#include "support/RecordingFormatter.h"
#include "support/SmallStack.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementChildren.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

std::unique_ptr<DOMElement> MakeChain(std::size_t levels, const TString& name)
{
    auto root = std::make_unique<DOMElement>(name);
    DOMElement* last = root.get();
    for (std::size_t i = 1; i < levels; ++i)
        last = last->AddNewChild(name, nullptr);
    return root;
}

TEST(XMLStringFormatter, AppendsEveryPiece)
{
    XMLStringFormatter formatter(u"  ", false);
    EXPECT_TRUE(formatter.GetOutput().IsEmpty());
    formatter.OutputString(u"a");
    formatter.OutputLine(u"b");
    formatter.OutputTag(u"t", {});
    EXPECT_EQ(formatter.GetOutput(), u"ab\n<t />\n");
}

TEST(XMLStringFormatter, ReturnsACopyOfItsOutput)
{
    XMLStringFormatter formatter(u"  ", false);
    formatter.OutputDOMElement(DOMElement(u"a"));
    const TString before = formatter.GetOutput();
    formatter.OutputDOMElement(DOMElement(u"b"));
    EXPECT_EQ(before, u"<a />\n");
    EXPECT_EQ(formatter.GetOutput(), u"<a />\n<b />\n");
}

TEST(XMLStringFormatter, WritesADocumentOnOneLineWithoutLineFeeds)
{
    DOMElement element(u"a");
    element.AddNewChild(u"b", nullptr)->SetText(u"t");
    element.AddNewChild(u"c", nullptr)->SetText(u"<x/>", true);
    TString comment(u"note");
    XMLStringFormatter formatter(u"", true);
    XMLFormatter::FormatDOM(formatter, element, &comment, true);
    EXPECT_EQ(formatter.GetOutput(), u"<?xml version='1.0' encoding='utf-8' ?><!-- note --><a>"
                                     u"<b>t</b><c><x/></c></a>");
}

// Trees are written another way than by the pieces that the base class defines; the text must be
// the same.
TEST(XMLStringFormatter, WritesTreesAsThePiecesOfTheBaseClassWould)
{
    RandomTree random(4711);
    for (int i = 0; i < 100; ++i) {
        const std::unique_ptr<DOMElement> tree = random.Tree(1 + random.Below(60));
        for (const TString& unit : {TString(u"  "), TString(), TString(u"\t--")}) {
            for (const bool suppressNewlines : {false, true}) {
                for (const FormatMode mode : {FormatMode::EscapeAll, FormatMode::Content}) {
                    RecordingFormatter pieces(unit, suppressNewlines);
                    XMLStringFormatter text(unit, suppressNewlines);
                    for (XMLFormatter* formatter :
                         std::initializer_list<XMLFormatter*>{&pieces, &text}) {
                        formatter->SetFormatMode(mode);
                        const XMLFormatter::Indenter outer(*formatter, u"outer");
                        formatter->OutputDOMElement(*tree);
                        formatter->OutputString(u"between");
                        formatter->OutputDOMElements(std::as_const(*tree).GetChildren());
                    }
                    ASSERT_EQ(text.GetOutput(), pieces.GetText()) << "tree " << i;
                    ASSERT_EQ(text.GetIndent(), pieces.GetIndent());
                }
            }
        }
    }
}

// What a parse leaves in an element is kept, and written, another way than what callers set.
TEST(XMLStringFormatter, WritesParsedTreesAsThePiecesOfTheBaseClassWould)
{
    const auto write = [](XMLFormatter& formatter, const DOMElement& element) {
        formatter.SetFormatMode(FormatMode::Content);
        formatter.OutputDOMElement(element);
    };
    RandomTree random(815);
    for (int i = 0; i < 100; ++i) {
        // A copy has no encoded text, which would not be well formed.
        const DOMElement tree(*random.Tree(1 + random.Below(60)));
        XMLStringFormatter source(u" ", false);
        source.OutputDOMElement(tree);
        const std::unique_ptr<DOM> document =
            DOMParser().ParseXmlString(source.GetOutput().toStdString(), TString());
        ASSERT_FALSE(document->HasErrors()) << document->GetConcatenatedErrors();

        const DOMElement& parsed = *document->GetDocumentRoot();
        XMLStringFormatter asParsed(u"  ", false);
        write(asParsed, parsed);
        RecordingFormatter pieces;
        write(pieces, parsed);
        ASSERT_EQ(asParsed.GetOutput(), pieces.GetText());
        // By now somebody has looked at the attributes.
        XMLStringFormatter asLookedAt(u"  ", false);
        write(asLookedAt, parsed);
        ASSERT_EQ(asLookedAt.GetOutput(), pieces.GetText());
    }
}

TEST(XMLStringFormatter, TreatsAnyOtherModeAsContentInTreesToo)
{
    DOMElement element(u"a");
    element.SetText(TString(32, u'\n'));
    XMLStringFormatter formatter(u"  ", false);
    formatter.SetFormatMode(static_cast<FormatMode>(7));
    formatter.OutputDOMElement(element);
    EXPECT_EQ(formatter.GetOutput(), u"<a>" + TString(32, u'\n') + u"</a>\n");
}

TEST(XMLStringFormatter, SortsAttributesByTheCodeUnitsOfTheirNames)
{
    // A character beyond the basic plane sorts by the first half of its pair.
    const std::vector<TString> names = {
        u"A",       u"A1",     u"Aa",         u"B",          u"Z",      u"_",
        u"a",       u"a-",     u"a.",         u"a0",         u"a1",     u"a10",
        u"a2",      u"aB",     u"ab",         u"z",          u"\u00C9", u"\u00E9",
        u"\u00E9a", u"\u3042", u"\U00010000", u"\U000EFFFF", u"\uF900", u"\uFFFD"};
    TString expected = u"<e";
    TString shuffled = u"<?xml version='1.1'?><e";
    DOMElement element(u"e");
    for (std::size_t i = 0; i < names.size(); ++i) {
        expected += u" " + names[i] + u"='v'";
        const TString& other = names[i * 7 % names.size()];
        shuffled += u" " + other + u"='v'";
        element.SetAttribute(other, u"v");
    }
    expected += u" />\n";
    shuffled += u"/>";

    XMLStringFormatter formatter(u"  ", false);
    formatter.OutputDOMElement(element);
    EXPECT_EQ(formatter.GetOutput(), expected);

    const std::unique_ptr<DOM> document = DOMParser().ParseXmlString(shuffled, TString());
    ASSERT_FALSE(document->HasErrors()) << document->GetConcatenatedErrors();
    XMLStringFormatter asParsed(u"  ", false);
    asParsed.OutputDOMElement(*document->GetDocumentRoot());
    EXPECT_EQ(asParsed.GetOutput(), expected);
}

TEST(XMLStringFormatter, WritesOneDocumentFromSeveralThreads)
{
    RandomTree random(1009);
    const DOMElement tree(*random.Tree(300));
    XMLStringFormatter source(u" ", false);
    source.OutputDOMElement(tree);
    const std::unique_ptr<DOM> document =
        DOMParser().ParseXmlString(source.GetOutput().toStdString(), TString());
    const std::unique_ptr<DOM> other =
        DOMParser().ParseXmlString(source.GetOutput().toStdString(), TString());
    ASSERT_FALSE(document->HasErrors()) << document->GetConcatenatedErrors();
    const TString expected = XMLDomFormatter::RenderAsXMLString(*other, nullptr, true);
    const TString text = source.GetOutput();
    const TString attribute = EscapingModel::EscapeAttribute(text);
    const TString content = EscapingModel::EscapeContent(text);

    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 5; ++round) {
                // Half of the threads make the elements build their attribute maps meanwhile.
                if ((i + round) % 2 == 0) {
                    RecordingFormatter pieces;
                    pieces.SetFormatMode(FormatMode::Content);
                    TString* const noComment = nullptr;
                    XMLFormatter::FormatDOM(pieces, *document, noComment, true);
                    wrong += pieces.GetText() == expected ? 0 : 1;
                }
                wrong += XMLDomFormatter::RenderAsXMLString(*document, nullptr, true) == expected
                             ? 0
                             : 1;
                wrong += XMLFormatter::EncodeAttributeString(text) == attribute ? 0 : 1;
                wrong += XMLFormatter::EncodeContentString(text) == content ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

/// A string formatter in all but its type.
class DerivedStringFormatter : public XMLStringFormatter
{
public:
    using XMLStringFormatter::XMLStringFormatter;
    void OutputString(const TString& text) override
    {
        ++pieces;
        XMLStringFormatter::OutputString(text);
    }
    int pieces = 0;
};

TEST(XMLStringFormatter, HandsSubclassesEveryPieceOfATree)
{
    DOMElement element(u"a");
    element.AddNewChild(u"b", nullptr);
    DerivedStringFormatter formatter(u"  ", false);
    formatter.OutputDOMElement(element);
    EXPECT_EQ(formatter.GetOutput(), u"<a>\n  <b />\n</a>\n");
    EXPECT_EQ(formatter.pieces, 15);
}

TEST(XMLStringFormatter, WritesAMillionLevelsOnASmallStack)
{
    constexpr std::size_t c_levels = 1000000;
    RunOnSmallStack([] {
        const std::unique_ptr<DOMElement> chain = MakeChain(c_levels, u"e");
        XMLStringFormatter formatter(TString(), true);
        formatter.OutputDOMElement(*chain);
        const TString output = formatter.GetOutput();
        ASSERT_EQ(output.length(), static_cast<TString::size_type>((c_levels - 1) * 7 + 5));
        EXPECT_EQ(output.left(6), u"<e><e>");
        EXPECT_EQ(output.mid(static_cast<TString::size_type>((c_levels - 1) * 3), 9), u"<e /></e>");
        EXPECT_EQ(output.right(8), u"</e></e>");
    });
}

TEST(XMLStringFormatter, WritesTenThousandIndentedLevels)
{
    constexpr TString::size_type c_levels = 10000;
    const std::unique_ptr<DOMElement> chain = MakeChain(c_levels, u"e");
    XMLStringFormatter formatter(u"  ", false);
    formatter.OutputDOMElement(*chain);
    // Open and close tags at each depth but the last, with the indentation of that depth.
    EXPECT_EQ(formatter.GetOutput().length(), (c_levels - 1) * (4 + 5) +
                                                  2 * (c_levels - 1) * (c_levels - 2) + 6 +
                                                  2 * (c_levels - 1));
}

TEST(XMLStringFormatter, RefusesATreeBeyondTheIndentationAndKeepsItsOutput)
{
    const std::unique_ptr<DOMElement> chain = MakeChain(12, u"e");
    XMLStringFormatter formatter(u"  ", false);
    for (TString::size_type i = 20; i < XMLFormatter::c_maxIndentLength; i += 2)
        formatter.Indent();
    const TString indent = formatter.GetIndent();
    formatter.OutputLine(u"before");
    EXPECT_THROW(formatter.OutputDOMElement(*chain), std::length_error);
    EXPECT_EQ(formatter.GetOutput(), u"before\n");
    EXPECT_EQ(formatter.GetIndent(), indent);
    // One level less is all right: the indentation is needed for the children of an element.
    formatter.OutputDOMElement(*MakeChain(11, u"e"));
    EXPECT_GT(formatter.GetOutput().length(), 20 * indent.length());
}

TEST(XMLStringFormatter, RefusesToKeepAnIndentationBeyondTheLimit)
{
    XMLStringFormatter formatter(u"  ", false);
    for (TString::size_type i = 0; i < XMLFormatter::c_maxIndentLength; i += 2)
        formatter.Indent();
    formatter.OutputTag(u"t", {});
    const TString output = formatter.GetOutput();
    EXPECT_EQ(output.length(), XMLFormatter::c_maxIndentLength + 6);

    formatter.Indent();
    EXPECT_THROW(formatter.OutputTag(u"t", {}), std::length_error);
    EXPECT_THROW(formatter.OutputOpenTag(u"t", {}), std::length_error);
    EXPECT_THROW(formatter.OutputCloseTag(u"t"), std::length_error);
    EXPECT_THROW(formatter.OutputContentTag(u"t", {}, u"x"), std::length_error);
    EXPECT_THROW(formatter.OutputComment(u"x"), std::length_error);
    EXPECT_EQ(formatter.GetOutput(), output);
    // A text that happens to be blanks is none.
    const TString blanks(formatter.GetIndent().length(), u' ');
    formatter.OutputString(blanks);
    EXPECT_EQ(formatter.GetOutput(), output + blanks);
    formatter.Undent();
    EXPECT_NO_THROW(formatter.OutputTag(u"t", {}));
}

TEST(XMLFormatter, RefusesATreeThatIsTooDeepForTheStackAndClosesWhatIsOpen)
{
    // Room for the data of the thread itself, of which sanitizers have a lot.
    constexpr std::size_t c_stackBytes = 4 * c_smallStackBytes;
    const auto work = [] {
        const std::unique_ptr<DOMElement> chain = MakeChain(1000000, u"e");
        RecordingFormatter formatter(TString(), true);
        EXPECT_THROW(formatter.OutputDOMElement(*chain), std::length_error);
        const std::vector<TString>& pieces = formatter.GetPieces();
        const auto opened = std::count(pieces.begin(), pieces.end(), u"<");
        EXPECT_GT(opened, 100);
        EXPECT_EQ(std::count(pieces.begin(), pieces.end(), u"</"), opened);
        formatter.TakePieces();
        formatter.OutputDOMElement(DOMElement(u"after"));
        EXPECT_EQ(formatter.GetText(), u"<after />");
    };
    RunOnSmallStack(work, c_stackBytes);
}

} // namespace
