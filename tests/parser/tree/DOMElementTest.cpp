#include <kescorexml/DOMElement.h>

#include "support/ExpectMissing.h"
#include "support/FailingAllocations.h"
#include "support/TreeTesting.h"

#include <array>
#include <memory>
#include <new>
#include <type_traits>

TEST(DOMElement, StartsDetachedAndEmpty)
{
    const TString name(u"a");
    const DOMElement copied(name);
    const DOMElement moved(TString(u"b"));
    EXPECT_EQ(copied.GetName(), name);
    EXPECT_EQ(moved.GetName(), TString(u"b"));
    for (const DOMElement* element : {&copied, &moved}) {
        EXPECT_EQ(element->GetDOMManager(), nullptr);
        EXPECT_EQ(element->GetParent(), nullptr);
        EXPECT_TRUE(element->IsRootNode());
        EXPECT_TRUE(element->GetText().IsEmpty());
        EXPECT_TRUE(element->GetAttributes().empty());
        EXPECT_TRUE(element->GetChildren().empty());
        EXPECT_EQ(element->GetStartLine(), 0);
        EXPECT_EQ(element->GetStartColumn(), 0);
        EXPECT_EQ(element->GetEndLine(), 0);
        EXPECT_EQ(element->GetEndColumn(), 0);
        EXPECT_FALSE(element->IsEncoded());
        EXPECT_TRUE(element->IsEmpty());
    }
}

TEST(DOMElement, ConvertsFromItsName)
{
    static_assert(std::is_convertible_v<const TString&, DOMElement>);
    static_assert(std::is_convertible_v<TString, DOMElement>);
    const TString name(u"a");
    const DOMElement copied = name;
    EXPECT_EQ(copied.GetName(), name);
    const DOMElement moved = TString(u"b");
    EXPECT_EQ(moved.GetName(), TString(u"b"));
}

TEST(DOMElement, MayBeMadeWithoutThrowing)
{
    const std::unique_ptr<DOMElement> element(new (std::nothrow) DOMElement(u"a"));
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(element->GetName(), TString(u"a"));
    const TString name(u"b");
    std::unique_ptr<DOMElement> failed;
    {
        const FailingAllocations failing(0);
        failed.reset(new (std::nothrow) DOMElement(name));
    }
    // Sanitizers do not let this kind of allocation fail.
    EXPECT_EQ(failed == nullptr, FailingAllocations::HasFailed());
}

TEST(DOMElement, HasNoVirtualFunctions)
{
    EXPECT_FALSE(std::is_polymorphic_v<DOMElement>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<DOMElement>);
}

TEST(DOMElement, SetNameReplacesTheName)
{
    DOMElement element(TString(u"a"));
    element.SetName(u"b");
    EXPECT_EQ(element.GetName(), TString(u"b"));
}

TEST(DOMElement, SetTextClearsOrSetsTheEncodedFlag)
{
    DOMElement element(TString(u"a"));
    element.SetText(u"x", true);
    EXPECT_EQ(element.GetText(), TString(u"x"));
    EXPECT_TRUE(element.IsEncoded());
    element.SetText(u"y");
    EXPECT_EQ(element.GetText(), TString(u"y"));
    EXPECT_FALSE(element.IsEncoded());
    element.SetEncoded(true);
    element.SetText(u"z", false);
    EXPECT_FALSE(element.IsEncoded());
}

TEST(DOMElement, SetEncodedLeavesTheText)
{
    DOMElement element(TString(u"a"));
    element.SetText(u"x");
    element.SetEncoded(true);
    EXPECT_TRUE(element.IsEncoded());
    EXPECT_EQ(element.GetText(), TString(u"x"));
    element.SetEncoded(false);
    EXPECT_FALSE(element.IsEncoded());
}

TEST(DOMElement, AppendTextWithoutFlagClearsIt)
{
    DOMElement element(TString(u"a"));
    element.SetText(u"x", true);
    element.AppendText(u"y");
    EXPECT_EQ(element.GetText(), TString(u"xy"));
    EXPECT_FALSE(element.IsEncoded());
}

TEST(DOMElement, AppendTextKeepsTheFlagOnlyIfBothTextsAreEncoded)
{
    for (const bool old : {false, true}) {
        for (const bool added : {false, true}) {
            DOMElement element(TString(u"a"));
            element.SetText(u"x", old);
            element.AppendText(u"y", added);
            EXPECT_EQ(element.IsEncoded(), old && added) << old << added;
        }
    }
}

TEST(DOMElement, AppendEncodedTextToANewElementDoesNotSetTheFlag)
{
    DOMElement element(TString(u"a"));
    element.AppendText(u"x", true);
    EXPECT_FALSE(element.IsEncoded());
}

TEST(DOMElement, TextMayBeAppendedToItself)
{
    DOMElement element(TString(u"a"));
    element.SetText(u"xy");
    element.AppendText(element.GetText());
    EXPECT_EQ(element.GetText(), TString(u"xyxy"));
    element.SetText(element.GetText());
    EXPECT_EQ(element.GetText(), TString(u"xyxy"));
}

TEST(DOMElement, IsEmptyOnlyWithoutTextChildrenAndAttributes)
{
    for (unsigned mask = 0; mask < 8; ++mask) {
        DOMElement element(TString(u"a"));
        if ((mask & 1) != 0)
            element.SetText(u" ");
        if ((mask & 2) != 0)
            element.AddNewChild(u"c");
        if ((mask & 4) != 0)
            element.SetAttribute(u"k", TString());
        EXPECT_EQ(element.HasText(), (mask & 1) != 0);
        EXPECT_EQ(element.HasChildren(), (mask & 2) != 0);
        EXPECT_EQ(element.HasAttributes(), (mask & 4) != 0);
        EXPECT_EQ(element.IsEmpty(), mask == 0);
    }
}

TEST(DOMElement, HasNoAttributesAfterTheLastIsRemoved)
{
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"k", u"v");
    element.RemoveAttribute(u"k");
    EXPECT_FALSE(element.HasAttributes());
    EXPECT_TRUE(element.IsEmpty());
}

// Navigation

TEST(DOMElement, ChildrenKnowTheirParentAndDocument)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b)");
    DOMElement& b = Find(dom, "b");
    EXPECT_EQ(b.GetParent(), &Find(dom, "a"));
    EXPECT_EQ(std::as_const(b).GetParent(), &Find(dom, "a"));
    EXPECT_FALSE(b.IsRootNode());
    EXPECT_TRUE(dom.GetRoot()->IsRootNode());
    EXPECT_EQ(b.GetDOMManager(), &dom);
    EXPECT_EQ(std::as_const(b).GetDOMManager(), &dom);
}

TEST(DOMElement, IsChildOfIsAProperDescendantTestAtAnyDepth)
{
    const auto root = MakeTree("r(a(b(c)),d)");
    DOMElement& a = Find(*root, "a");
    DOMElement& c = Find(*root, "c");
    EXPECT_TRUE(c.IsChildOf(a));
    EXPECT_TRUE(c.IsChildOf(*root));
    EXPECT_TRUE(a.IsChildOf(*root));
    EXPECT_FALSE(a.IsChildOf(c));
    EXPECT_FALSE(a.IsChildOf(a));
    EXPECT_FALSE(c.IsChildOf(Find(*root, "d")));
    EXPECT_FALSE(root->IsChildOf(*root));
}

TEST(DOMElement, GetChildGivesTheFirstWithExactlyThatName)
{
    const auto root = MakeTree("r(A,a,b,a)");
    EXPECT_EQ(root->GetChild(u"a"), root->GetChildren().begin()[1].get());
    EXPECT_EQ(std::as_const(*root).GetChild(u"a"), root->GetChildren().begin()[1].get());
    EXPECT_EQ(root->GetChild(u"B"), nullptr);
    EXPECT_EQ(std::as_const(*root).GetChild(u""), nullptr);
}

TEST(DOMElement, GetChildLooksAtChildrenOnly)
{
    const auto root = MakeTree("r(a(b))");
    EXPECT_EQ(root->GetChild(u"b"), nullptr);
    EXPECT_EQ(root->GetChild(u"r"), nullptr);
}

TEST(DOMElement, GetChildTextIsEmptyWithoutSuchChild)
{
    const auto root = MakeTree("r(a,a)");
    root->GetChildren()[0].SetText(u"first");
    root->GetChildren()[1].SetText(u"second");
    EXPECT_EQ(root->GetChildText(u"a"), TString(u"first"));
    EXPECT_EQ(root->GetChildText(u"b"), TString());
}

TEST(DOMElement, GetRequiredChildGivesTheFirstOrThrows)
{
    const auto root = MakeTree("r(a,b,b)");
    EXPECT_EQ(&root->GetRequiredChild(u"b"), &root->GetChildren()[1]);
    EXPECT_EQ(&std::as_const(*root).GetRequiredChild(u"b"), &root->GetChildren()[1]);
    ExpectMissing([&] { root->GetRequiredChild(u"x"); }, "x", 0x26487BC2,
                  "DOMException_RequiredChildMissing_0x26487BC2");
    ExpectMissing([&] { std::as_const(*root).GetRequiredChild(u"x"); }, "x", 0x26487BC2,
                  "DOMException_RequiredChildMissing_0x26487BC2");
}

TEST(DOMElement, GetRequiredChildByAttrComparesTheValueOfAPresentAttribute)
{
    const auto root = MakeTree("r(a,b,c,d)");
    root->GetChildren()[1].SetAttribute(u"k", u"v");
    root->GetChildren()[2].SetAttribute(u"k", TString());
    root->GetChildren()[3].SetAttribute(u"k", u"v");
    EXPECT_EQ(&root->GetRequiredChildByAttr(u"k", u"v"), &root->GetChildren()[1]);
    EXPECT_EQ(&std::as_const(*root).GetRequiredChildByAttr(u"k", u"v"), &root->GetChildren()[1]);
    // An absent attribute is not an empty one.
    EXPECT_EQ(&root->GetRequiredChildByAttr(u"k", TString()), &root->GetChildren()[2]);
    ExpectMissing([&] { root->GetRequiredChildByAttr(u"k", u"w"); }, "k", 0x21039DFE,
                  "DOMException_RequiredChildByAttribute_0x21039DFE");
    ExpectMissing([&] { std::as_const(*root).GetRequiredChildByAttr(u"z", TString()); }, "z",
                  0x21039DFE, "DOMException_RequiredChildByAttribute_0x21039DFE");
}

TEST(DOMElement, FindChildGivesThePositionByIdentity)
{
    const auto root = MakeTree("r(a,b,c,d,e)");
    const DOMElement twin(root->GetChildren()[1]);
    for (std::size_t i = 0; i < 5; ++i) {
        const DOMElement& child = root->GetChildren()[i];
        EXPECT_EQ(root->FindChild(child) - root->GetChildren().begin(),
                  static_cast<std::ptrdiff_t>(i));
        EXPECT_EQ(std::as_const(*root).FindChild(child)->get(), &child);
    }
    EXPECT_EQ(root->FindChild(twin), root->GetChildren().end());
    EXPECT_EQ(root->FindChild(*root), root->GetChildren().end());
    EXPECT_EQ(twin.FindChild(*root), twin.GetChildren().end());
}

// Location

TEST(DOMElement, KeepsBothLocations)
{
    DOMElement element(TString(u"a"));
    element.SetElementStartLocation(1, 2);
    element.SetElementEndLocation(3, 4);
    EXPECT_EQ(element.GetStartLine(), 1);
    EXPECT_EQ(element.GetStartColumn(), 2);
    EXPECT_EQ(element.GetEndLine(), 3);
    EXPECT_EQ(element.GetEndColumn(), 4);
    element.SetText(u"x");
    element.AddNewChild(u"c");
    EXPECT_EQ(element.GetStartLine(), 1);
    EXPECT_EQ(element.GetEndColumn(), 4);
}

// Destruction

TEST(DOMElement, DestroyingAChildErasesItsOwnDiagnosticsOnly)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a,b");
    AddError(Find(dom, "a"), "ea");
    AddError(Find(dom, "b"), "eb");
    AddWarning(Find(dom, "a"), "wa");
    AddWarning(Find(dom, "b"), "wb");
    dom.GetRoot()->RemoveChild(u"a").reset();
    EXPECT_EQ(JoinErrors(dom), "eb");
    EXPECT_EQ(JoinWarnings(dom), "wb");
}

TEST(DOMElement, DestroyingASubtreeErasesTheDiagnosticsOfAllOfIt)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a(b(c)),d");
    for (const char* name : {"a", "b", "c"})
        AddError(Find(dom, name), name);
    dom.GetRoot()->RemoveChild(u"a").reset();
    EXPECT_FALSE(dom.HasErrors());
    // Gone from the registry itself, not just from the tree.
    AddError(Find(dom, "d"), "d");
    EXPECT_EQ(JoinErrors(dom), "d");
}

TEST(DOMElement, DestroyingAnAttachedElementWithoutParentEmptiesTheRegistry)
{
    DOM dom;
    AddChildren(*dom.GetRoot(), "a,b");
    AddError(Find(dom, "a"), "e");
    AddWarning(Find(dom, "b"), "w");
    {
        const DOMElement copy(Find(dom, "b"));
        EXPECT_EQ(JoinErrors(dom), "e");
        EXPECT_EQ(JoinWarnings(dom), "w");
    }
    EXPECT_FALSE(dom.HasErrors());
    EXPECT_FALSE(dom.HasWarnings());
    EXPECT_EQ(JoinErrors(dom), "");
    EXPECT_EQ(JoinWarnings(dom), "");
}
