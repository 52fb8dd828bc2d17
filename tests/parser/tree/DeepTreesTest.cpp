#include "support/Repeat.h"
#include "support/SmallStack.h"
#include "support/TemporaryFile.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementSearch.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/DOMPathCanopy.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/VersionSniffer.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// What every public operation on trees does with a million levels on a stack of 256 KiB, beside
// what the tests of each class look at.

namespace {

using testing::SizeIs;

constexpr std::size_t c_levels = 1000000;

std::string MakeDeepText()
{
    return Repeat("<e>", c_levels) + Repeat("</e>", c_levels);
}

std::unique_ptr<DOM> MakeDeepDocument()
{
    return DOMParser().ParseXmlString(MakeDeepText(), u"deep");
}

DOMElement& GetDeepest(DOM& dom)
{
    DOMElement* element = dom.GetRoot();
    while (element->HasChildren())
        element = &element->GetChildren().front();
    return *element;
}

std::size_t CountLevels(const DOM& dom)
{
    std::size_t levels = 0;
    for (const DOMElement* element = dom.GetRoot(); element->HasChildren();
         element = &element->GetChildren().front())
        ++levels;
    return levels;
}

} // namespace

TEST(DeepTrees, AreParsedWithPositionsFromFilesAndSources)
{
    const TemporaryFolder folder;
    const std::string text = MakeDeepText();
    const TString path = folder.Write("deep.xml", text);
    RunOnSmallStack([&] {
        DOMParser parser;
        parser.SetEnableLineNumbersOnElements(true);
        EXPECT_EQ(CountLevels(*parser.ParseXmlFile(path)), c_levels);
        Utf8InputSource source(text, u"id", false);
        EXPECT_EQ(CountLevels(*parser.ParseXmlInputSource(source, true)), c_levels);
    });
}

TEST(DeepTrees, OfParsesThatFailAreCompleteUpToThere)
{
    RunOnSmallStack([] {
        DOMParser parser;
        const auto cut = parser.ParseXmlString(Repeat("<e>", c_levels), u"id");
        EXPECT_THAT(cut->GetErrors(), SizeIs(1));
        EXPECT_EQ(CountLevels(*cut), c_levels);
        parser.SetAmplificationLimit(0, 2 * c_levels - 2);
        const auto limited = parser.ParseXmlString(MakeDeepText(), u"id");
        EXPECT_THAT(limited->GetErrors(), SizeIs(1));
        EXPECT_EQ(CountLevels(*limited), c_levels - 1);
        const auto standalone =
            StandaloneDOMParser().ParseXmlString(Repeat("<e>", c_levels), u"id");
        EXPECT_THAT(standalone.errors, SizeIs(1));
    });
}

TEST(DeepTrees, AreWalkedAndSearched)
{
    RunOnSmallStack([] {
        const auto dom = MakeDeepDocument();
        DOMElement& deepest = GetDeepest(*dom);
        deepest.SetName(u"last");
        const DOM& constant = *dom;

        std::size_t count = 0;
        for ([[maybe_unused]] DOMElement& element :
             DOMElementTraversal::PreorderTraversal(*dom->GetRoot()))
            ++count;
        for ([[maybe_unused]] const DOMElement& element :
             DOMElementTraversal::ConstPreorderTraversal(*constant.GetRoot()))
            ++count;
        DOMElementTraversal::PreorderGenerator generator(*dom->GetRoot());
        while (generator.Next() != nullptr)
            ++count;
        EXPECT_EQ(count, 3 * (c_levels + 1));

        constexpr int c_depth = static_cast<int>(c_levels);
        EXPECT_EQ(
            DOMElementSearch::FindElement(*dom->GetRoot(), u"last", c_depth, TString(), TString()),
            &deepest);
        EXPECT_EQ(DOMElementSearch::FindElement(*constant.GetRoot(), u"last", c_depth - 1,
                                                TString(), TString()),
                  nullptr);
        EXPECT_EQ(dom->GetElement(u"last"), nullptr);

        EXPECT_EQ(DOMPath::GetFirst(*dom->GetRoot(), u"//last"), &deepest);
        std::size_t matches = 0;
        DOMPath::Foreach(*dom->GetRoot(), u"//e", [&](DOMElement&) { ++matches; });
        for ([[maybe_unused]] const DOMElement& element :
             DOMPath::Walk(*constant.GetRoot(), TString(u"//e/e")))
            ++matches;
        EXPECT_EQ(matches, (c_levels - 1) + (c_levels - 2));
        EXPECT_THAT(DOMPathCanopy::WithinCanopy(*dom->GetDocumentRoot(), u"e", u"e"), SizeIs(1024));
        EXPECT_THAT(DOMPathCanopy::UnderneathCanopy(*dom->GetDocumentRoot(), u"e", u"e"),
                    SizeIs(0));

        EXPECT_TRUE(deepest.IsChildOf(*dom->GetRoot()));
        EXPECT_EQ(deepest.GetParentAttr(u"none"), TString());
        EXPECT_EQ(deepest.RenameDataSource(u"name"), u"name");
    });
}

TEST(DeepTrees, KeepTheirDiagnostics)
{
    RunOnSmallStack([] {
        const auto dom = MakeDeepDocument();
        DOMElement& deepest = GetDeepest(*dom);
        DOMElement& top = *dom->GetDocumentRoot();
        const auto info = TError::ErrorInfo::NoError();
        deepest.Error(u"error", info, false, true);
        deepest.Warning(u"warning", info);
        EXPECT_TRUE(top.HasErrors());
        EXPECT_TRUE(top.HasUnreportedErrors());
        EXPECT_TRUE(top.HasCancelErrors());
        EXPECT_TRUE(top.HasOnlyCancelErrors());
        EXPECT_TRUE(top.HasWarnings());
        std::list<TString> messages;
        std::list<TError::ErrorInfo> infos;
        top.GetErrors(messages);
        top.GetWarnings(messages);
        top.GetMetadataForErrors(infos);
        top.GetMetadataForWarnings(infos);
        EXPECT_THAT(messages, testing::ElementsAre(u"error", u"warning"));
        EXPECT_THAT(infos, SizeIs(2));
        EXPECT_EQ(dom->GetConcatenatedErrors(), u"error");
        EXPECT_EQ(dom->GetConcatenatedWarnings(), u"warning");

        DOM other;
        DOMElement* const target = other.GetRoot()->AddNewChild(u"target");
        other.CopyErrorsAndWarningsForNode(deepest, target);
        other.AdoptErrorsAndWarningsForNode(deepest, target);
        EXPECT_THAT(other.GetErrors(), SizeIs(1));
        dom->MoveErrorsAndWarningsTo(other);
        deepest.Error(u"again", info, false, false);
        deepest.Warning(u"again", info);
        top.ClearErrors();
        top.ClearWarnings();
        EXPECT_FALSE(dom->HasErrors());
        EXPECT_FALSE(dom->HasWarnings());
    });
}

TEST(DeepTrees, AreEditedMovedAndCompared)
{
    RunOnSmallStack([] {
        const auto dom = MakeDeepDocument();
        const auto equal = MakeDeepDocument();
        EXPECT_TRUE(*dom == *equal);
        GetDeepest(*dom).SetAttribute(u"a", u"b");
        EXPECT_TRUE(*dom != *equal);

        DOMElement& root = *dom->GetRoot();
        DOMElement* const first = root.AddNewChild(u"first");
        first->MoveToFront();
        EXPECT_EQ(root.RemoveIfEmpty(*first)->GetName(), u"first");
        EXPECT_EQ(root.RemoveIfEmpty(u"e"), nullptr);
        auto children = root.RemoveChildren();
        ASSERT_THAT(children, SizeIs(1));
        root.AddNewChild(u"before");
        root.InsertChild(std::move(children.front()), &root.GetChildren().front());
        EXPECT_EQ(CountLevels(*dom), c_levels);
        DOMElement& inner = dom->GetDocumentRoot()->GetChildren().front();
        root.AdoptChildren(inner, nullptr);
        EXPECT_FALSE(inner.HasChildren());
        EXPECT_EQ(root.GetChildren().back().GetName(), u"e");

        DOM other;
        *other.GetRoot() = *equal->GetDocumentRoot();
        other.DeepCopy(*equal);
        EXPECT_TRUE(other == *equal);
        // From a part of itself, which is copied before the rest ends.
        DOMElement& part = *other.GetDocumentRoot();
        part = part.GetChildren().front();
        EXPECT_EQ(CountLevels(other), c_levels - 1);
    });
}

TEST(DeepTrees, AreWrittenWithoutIndentationAndRefusedWithIt)
{
    RunOnSmallStack([] {
        const auto dom = MakeDeepDocument();
        XMLStringFormatter plain(TString(), true);
        plain.OutputDOMElement(*dom->GetDocumentRoot());
        EXPECT_EQ(CountLevels(*DOMParser().ParseXmlString(plain.GetOutput(), u"id")), c_levels);

        XMLDomFormatter tree;
        tree.OutputDOMElement(*dom->GetDocumentRoot());
        XMLStringFormatter indented(u"  ", false);
        EXPECT_THROW(indented.OutputDOMElement(*dom->GetDocumentRoot()), std::length_error);
        EXPECT_THROW(static_cast<void>(XMLDomFormatter::RenderAsXMLString(*dom)),
                     std::length_error);
        EXPECT_THROW(static_cast<void>(XMLDomFormatter::RenderAsXMLString(*dom->GetDocumentRoot())),
                     std::length_error);
    });
}

TEST(DeepTrees, AreMadeByFormatterCalls)
{
    RunOnSmallStack([] {
        const auto make = [](XMLFormatter& formatter) {
            for (std::size_t level = 0; level < c_levels; ++level)
                formatter.OutputOpenTag(u"e", {});
            formatter.OutputContent(u"x", false);
            for (std::size_t level = 0; level < c_levels; ++level)
                formatter.OutputCloseTag(u"e");
        };
        XMLStringFormatter plain(TString(), true);
        make(plain);
        EXPECT_EQ(CountLevels(*DOMParser().ParseXmlString(plain.GetOutput(), u"id")), c_levels);

        XMLDomFormatter tree;
        make(tree);
        DOM dom;
        *dom.GetRoot() = *tree.GetRoot();
        EXPECT_EQ(CountLevels(dom), c_levels);
        EXPECT_EQ(GetDeepest(dom).GetText(), u"x");
        XMLDomFormatter copy;
        copy.OutputDOMElement(*dom.GetDocumentRoot());
        EXPECT_TRUE(*copy.GetDocumentRoot() == *dom.GetDocumentRoot());
    });
}

TEST(DeepTrees, OfMixedContentToo)
{
    RunOnSmallStack([] {
        StandaloneDOMParser parser;
        const std::string text = Repeat("<e>x", c_levels) + Repeat("</e>", c_levels);
        const StandaloneParseResult result = parser.ParseXmlString(text, u"id");
        ASSERT_THAT(result.errors, SizeIs(0));
        const auto clone = result.root->Clone();
        EXPECT_TRUE(*clone == *result.root);
        StandaloneDOMElement* element = clone.get();
        std::size_t levels = 0;
        while (StandaloneDOMElement* const child = element->GetChild(u"e")) {
            element = child;
            ++levels;
        }
        EXPECT_EQ(levels, c_levels);
        EXPECT_EQ(element->GetAllText(), u"x");
        element->AppendText(u"y");
        EXPECT_TRUE(*clone != *result.root);
        std::size_t nodes = 0;
        clone->WalkNodes([&](StandaloneDOMElement&) { ++nodes; }, [&](TString&) { ++nodes; });
        EXPECT_GT(nodes, 0U);
        const StandaloneDOMElement* const top = clone->GetChild(u"e");
        auto removed = clone->RemoveChild(*top);
        clone->AppendChild(std::move(removed));
        EXPECT_THAT(clone->RemoveChildren(), SizeIs(1));
        result.root->EraseAllChildNodes();
    });
}

TEST(DeepTrees, TheScannersOfTextTakeNoStackEither)
{
    RunOnSmallStack([] {
        Utf8InputSource source(Repeat("<!--c-->", c_levels) + "<e version='1.2'>" + MakeDeepText(),
                               u"id", false);
        EXPECT_TRUE(VersionSniffer(source, TString()).has_value());
    });
}
