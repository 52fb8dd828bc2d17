#include <kescorexml/DOMElement.h>

#include "support/AllOrNothing.h"
#include "support/FailingAllocations.h"
#include "support/SmallStack.h"
#include "support/TreeTesting.h"

#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

static_assert(std::is_nothrow_move_constructible_v<DOMElement>);
static_assert(std::is_move_assignable_v<DOMElement>);

DOMElement MakeList()
{
    DOMElement list(u"list");
    list.AddNewChild(u"item")->SetText(u"tea");
    list.SetAttribute(u"sorted", u"yes");
    list.SetText(u"text", true);
    list.SetElementStartLocation(1, 2);
    list.SetElementEndLocation(3, 4);
    return list;
}

void ExpectList(const DOMElement& list)
{
    EXPECT_EQ(Outline(list), "list(item)");
    EXPECT_EQ(list.GetChildText(u"item"), u"tea");
    EXPECT_EQ(list.GetChildren()[0].GetParent(), &list);
    EXPECT_EQ(list.GetAttribute(u"sorted"), u"yes");
    EXPECT_EQ(list.GetText(), u"text");
}

/// What is left of an element whose content was taken.
void ExpectEmpty(const DOMElement& element, const char16_t* name)
{
    EXPECT_TRUE(element.IsEmpty());
    EXPECT_FALSE(element.IsEncoded());
    EXPECT_EQ(element.GetName(), name);
}

std::string OwnErrors(const DOMElement& element)
{
    std::list<TString> errors;
    element.GetErrors(errors);
    return JoinMessages(errors);
}

} // namespace

// Construction

TEST(DOMElementMoving, TakesEverythingAndCopiesNothing)
{
    DOMElement list = MakeList();
    const DOMElement* item = list.GetChild(u"item");
    const DOMElement moved(std::move(list));
    ExpectList(moved);
    EXPECT_EQ(moved.GetChild(u"item"), item);
    EXPECT_TRUE(moved.IsEncoded());
    EXPECT_EQ(moved.GetStartLine(), 1);
    EXPECT_EQ(moved.GetStartColumn(), 2);
    EXPECT_EQ(moved.GetEndLine(), 3);
    EXPECT_EQ(moved.GetEndColumn(), 4);
    ExpectEmpty(list, u"list");
    EXPECT_EQ(list.GetStartLine() + list.GetStartColumn() + list.GetEndLine() + list.GetEndColumn(),
              0);
}

TEST(DOMElementMoving, AllocatesNothing)
{
    DOMElement list = MakeList();
    std::optional<DOMElement> moved;
    {
        const FailingAllocations failing(0);
        moved.emplace(std::move(list));
    }
    EXPECT_FALSE(FailingAllocations::HasFailed());
    ExpectList(*moved);
}

TEST(DOMElementMoving, AVectorOfElementsGrowsWithoutCopies)
{
    std::vector<DOMElement> lists;
    lists.push_back(MakeList());
    const DOMElement* item = lists[0].GetChild(u"item");
    for (int i = 0; i < 100; ++i)
        lists.push_back(MakeList());
    ExpectList(lists[0]);
    EXPECT_EQ(lists[0].GetChild(u"item"), item);
}

TEST(DOMElementMoving, AnAttachedElementTakesItsDiagnosticsAlong)
{
    DOM document;
    AddChildren(*document.GetRoot(), "a(b)");
    AddError(Find(document, "a"), "wrong");
    AddError(Find(document, "b"), "worse");
    {
        const auto removed = document.GetRoot()->RemoveChild(u"a");
        DOMElement moved(std::move(*removed));
        EXPECT_EQ(moved.GetDOMManager(), &document);
        EXPECT_EQ(moved.GetParent(), document.GetRoot()) << "still names its former parent";
        EXPECT_EQ(OwnErrors(moved), "wrong worse");
        EXPECT_EQ(removed->GetDOMManager(), nullptr);
        EXPECT_EQ(removed->GetParent(), nullptr);
        document.GetRoot()->AppendChild(std::make_unique<DOMElement>(std::move(moved)));
    }
    EXPECT_EQ(Outline(*document.GetRoot()), "Document(a(b))");
    EXPECT_EQ(JoinErrors(document), "wrong worse");
}

TEST(DOMElementMoving, AChildKeepsItsPlace)
{
    DOM document;
    AddChildren(*document.GetRoot(), "a(b),c");
    DOMElement& a = Find(document, "a");
    AddError(a, "wrong");
    {
        const DOMElement moved(std::move(a));
        EXPECT_EQ(Outline(moved), "a(b)");
        EXPECT_TRUE(moved.IsRootNode());
        EXPECT_EQ(moved.GetDOMManager(), &document);
        EXPECT_EQ(Outline(*document.GetRoot()), "Document(a,c)");
        ExpectEmpty(a, u"a");
        EXPECT_EQ(a.GetParent(), document.GetRoot());
        EXPECT_FALSE(a.HasErrors());
        EXPECT_EQ(OwnErrors(moved), "wrong");
    }
    EXPECT_FALSE(document.HasErrors()) << "gone with the element that they were moved to";
}

TEST(DOMElementMoving, AChildOfADetachedElementKeepsItsPlaceToo)
{
    const auto root = MakeTree("r(a(b),c)");
    const DOMElement moved(std::move(Find(*root, "a")));
    EXPECT_EQ(Outline(moved), "a(b)");
    EXPECT_EQ(moved.GetParent(), nullptr);
    EXPECT_EQ(Outline(*root), "r(a,c)");
}

TEST(DOMElementMoving, ADocumentKeepsItsRoot)
{
    DOM document;
    AddChildren(*document.GetRoot(), "a");
    const DOMElement moved(std::move(*document.GetRoot()));
    EXPECT_EQ(Outline(moved), "Document(a)");
    EXPECT_EQ(Outline(*document.GetRoot()), "Document");
    EXPECT_EQ(document.GetRoot()->GetDOMManager(), &document);
}

TEST(DOMElementMoving, BecomesDetachedWhenItsDocumentEnds)
{
    auto document = std::make_unique<DOM>();
    AddChildren(*document->GetRoot(), "a(b)");
    const DOMElement moved(std::move(Find(*document, "a")));
    document.reset();
    EXPECT_EQ(moved.GetDOMManager(), nullptr);
    EXPECT_EQ(moved.GetChildren()[0].GetDOMManager(), nullptr);
    EXPECT_EQ(Outline(moved), "a(b)");
}

TEST(DOMElementMoving, OutOfATreeWithoutMemoryGivesADetachedElement)
{
    DOM document;
    AddChildren(*document.GetRoot(), "a(b)");
    DOMElement& a = Find(document, "a");
    const FailingAllocations failing(0);
    const DOMElement moved(std::move(a));
    EXPECT_TRUE(FailingAllocations::HasFailed());
    EXPECT_EQ(moved.GetDOMManager(), nullptr);
    EXPECT_EQ(moved.GetChildren()[0].GetDOMManager(), nullptr);
    EXPECT_EQ(a.GetDOMManager(), &document);
}

TEST(DOMElementMoving, WhatWasRemovedFromAnElementNamesTheOneItMovedTo)
{
    auto parent = MakeTree("r(a)");
    const auto removed = parent->RemoveChild(u"a");
    const DOMElement moved(std::move(*parent));
    EXPECT_EQ(removed->GetParent(), &moved);
    parent.reset();
    EXPECT_EQ(removed->GetParent(), &moved);
}

// Assignment

TEST(DOMElementMoving, AssignmentTakesTheContentAndKeepsThePlace)
{
    const auto root = MakeTree("r(a(x),b)");
    DOMElement& a = Find(*root, "a");
    a.SetElementStartLocation(7, 8);
    a.SetEncoded(true);
    DOMElement list = MakeList();
    const DOMElement* item = list.GetChild(u"item");
    a = std::move(list);
    ExpectList(a);
    EXPECT_EQ(a.GetChild(u"item"), item);
    EXPECT_FALSE(a.IsEncoded());
    EXPECT_EQ(a.GetStartLine(), 7);
    EXPECT_EQ(a.GetParent(), root.get());
    EXPECT_EQ(Outline(*root), "r(list(item),b)");
    ExpectEmpty(list, u"list");
}

TEST(DOMElementMoving, AssignmentAttachesWhatWasDetached)
{
    DOM document;
    AddChildren(*document.GetRoot(), "a");
    Find(document, "a") = MakeList();
    EXPECT_EQ(Find(document, "item").GetDOMManager(), &document);
    ExpectList(Find(document, "list"));
}

TEST(DOMElementMoving, AssignmentWithinADocumentMovesTheDiagnostics)
{
    DOM document;
    AddChildren(*document.GetRoot(), "a(x),b(y)");
    AddError(Find(document, "b"), "wrong");
    AddError(Find(document, "y"), "worse");
    AddError(Find(document, "x"), "gone");
    DOMElement& b = Find(document, "b");
    Find(document, "a") = std::move(b);
    EXPECT_EQ(Outline(*document.GetRoot()), "Document(b(y),b)");
    EXPECT_EQ(OwnErrors(document.GetRoot()->GetChildren()[0]), "wrong worse");
    EXPECT_EQ(JoinErrors(document), "wrong worse");
}

TEST(DOMElementMoving, AssignmentBetweenDocumentsGivesWhatACopyGives)
{
    DOM from;
    DOM to;
    AddChildren(*from.GetRoot(), "a(x)");
    AddChildren(*to.GetRoot(), "b");
    AddError(Find(from, "a"), "wrong");
    AddError(Find(from, "x"), "worse");
    DOMElement& a = Find(from, "a");
    Find(to, "b") = std::move(a);
    EXPECT_EQ(Outline(*to.GetRoot()), "Document(a(x))");
    EXPECT_EQ(JoinErrors(to), "wrong worse");
    EXPECT_EQ(Outline(*from.GetRoot()), "Document(a)");
    EXPECT_FALSE(from.HasErrors());
}

TEST(DOMElementMoving, AssignmentOfItselfChangesNothing)
{
    DOMElement list = MakeList();
    DOMElement& same = list;
    list = std::move(same);
    ExpectList(list);
}

TEST(DOMElementMoving, AssignmentFromADescendantLeavesItsContent)
{
    const auto root = MakeTree("r(a(b(c,d)),e)");
    *root = std::move(Find(*root, "b"));
    EXPECT_EQ(Outline(*root), "b(c,d)");
    EXPECT_EQ(root->GetChildren()[1].GetParent(), root.get());
}

TEST(DOMElementMoving, AssignmentFromAnAncestorCopiesIt)
{
    const auto root = MakeTree("r(a(b),c)");
    Find(*root, "b") = std::move(*root);
    EXPECT_EQ(Outline(*root), "r(a(r(a(b),c)),c)");
}

TEST(DOMElementMoving, AssignmentMakesNoCircleOfFormerParents)
{
    const auto root = MakeTree("r(a(b(c)))");
    const auto removed = Find(*root, "a").RemoveChild(u"b");
    Find(*removed, "c") = std::move(*root);
    EXPECT_EQ(Outline(*removed), "b(r(a))");
    const DOMElement& a = Find(*removed, "a");
    EXPECT_TRUE(a.IsChildOf(*removed));
    EXPECT_FALSE(removed->IsChildOf(a));
}

TEST(DOMElementMoving, ReferencesToTheAttributesOfBothStayValid)
{
    DOMElement list = MakeList();
    DOMElement other(u"other");
    DOMElement::AttributeMap& own = list.GetAttributes();
    DOMElement::AttributeMap& others = other.GetAttributes();
    other = std::move(list);
    EXPECT_TRUE(own.empty());
    EXPECT_EQ(&own, &list.GetAttributes());
    EXPECT_EQ(&others, &other.GetAttributes());
    EXPECT_EQ(others.size(), 1U);
}

namespace {

struct MovingWorld
{
    MovingWorld()
    {
        AddChildren(*from.GetRoot(), "a(x),b(y)");
        AddChildren(*to.GetRoot(), "c(z)");
        for (const char* name : {"a", "x", "b", "y"})
            AddError(Find(from, name), name);
    }
    std::string Describe() const
    {
        return Outline(*from.GetRoot()) + Outline(*to.GetRoot()) + JoinErrors(from) + "/" +
               JoinErrors(to);
    }

    DOM from;
    DOM to;
};

} // namespace

TEST(DOMElementMoving, AssignmentHappensWholeOrNotAtAll)
{
    ExpectAllOrNothing<MovingWorld>([](MovingWorld& world) {
        DOMElement& b = world.from.GetRoot()->GetChildren()[1];
        world.from.GetRoot()->GetChildren()[0] = std::move(b);
    });
    ExpectAllOrNothing<MovingWorld>([](MovingWorld& world) {
        world.to.GetRoot()->GetChildren()[0] = std::move(world.from.GetRoot()->GetChildren()[1]);
    });
}

TEST(DOMElementMoving, AMillionLevelsNeedNoStack)
{
    DOMElement top(u"e");
    DOMElement* last = &top;
    for (int i = 0; i < 1'000'000; ++i)
        last = last->AddNewChild(u"e");
    RunOnSmallStack([&top, last] {
        DOMElement moved(std::move(top));
        top = std::move(moved);
        EXPECT_TRUE(last->IsChildOf(top));
    });
}
