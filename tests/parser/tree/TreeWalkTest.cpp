#include "tree/TreeWalk.h"

#include "support/RandomNameTree.h"
#include "support/SmallStack.h"
#include "support/TreeTesting.h"

#include <type_traits>

namespace {

/// All elements below `top` with their depth, by the definition, with recursion.
void CollectBelow(const DOMElement& top, std::size_t depth,
                  std::vector<std::pair<const DOMElement*, std::size_t>>& out)
{
    for (const auto& child : top.GetChildren()) {
        out.emplace_back(child.get(), depth);
        CollectBelow(*child, depth + 1, out);
    }
}

} // namespace

TEST(TreeWalk, GoesInDocumentOrderAndKnowsItsDepth)
{
    RandomNameTree random(11);
    for (int round = 0; round < 200; ++round) {
        const auto tree = random.Make({u"a", u"b"}, 6, 4);
        std::vector<std::pair<const DOMElement*, std::size_t>> expected;
        CollectBelow(*tree, 1, expected);
        std::vector<std::pair<const DOMElement*, std::size_t>> walked;
        TreeWalk<DOMElement> walk;
        walk.Enter(*tree);
        while (DOMElement* element = walk.Next()) {
            walked.emplace_back(element, walk.Depth());
            walk.Enter(*element);
        }
        EXPECT_EQ(walked, expected);
        EXPECT_EQ(walk.Next(), nullptr);
        EXPECT_EQ(walk.Depth(), 0U);
    }
}

TEST(TreeWalk, StaysOutOfWhatItIsNotToldToEnter)
{
    const auto root = MakeTree("r(a(b(c),d),e(f))");
    TreeWalk<const DOMElement> walk;
    walk.Enter(*root);
    std::string names;
    while (const DOMElement* element = walk.Next()) {
        names += element->GetName().toStdString();
        if (element->GetName() != u"b" && element->GetName() != u"e")
            walk.Enter(*element);
    }
    EXPECT_EQ(names, "abde");
    walk.Enter(Find(*root, "e"));
    EXPECT_EQ(walk.Next(), &Find(*root, "f")) << "it may be used again";
    static_assert(std::is_same_v<decltype(walk.Next()), const DOMElement*>);
}

TEST(TreeWalk, OfALeafIsOverAtOnce)
{
    const DOMElement leaf(u"a");
    TreeWalk<const DOMElement> walk;
    EXPECT_EQ(walk.Next(), nullptr);
    walk.Enter(leaf);
    EXPECT_EQ(walk.Depth(), 0U);
    EXPECT_EQ(walk.Next(), nullptr);
}

TEST(TreeWalk, DepthCostsNoStack)
{
    RunOnSmallStack([] {
        DOMElement top(u"top");
        DOMElement* last = &top;
        for (int i = 0; i < 1'000'000; ++i)
            last = last->AddNewChild(u"e");
        TreeWalk<const DOMElement> walk;
        walk.Enter(top);
        const DOMElement* element = nullptr;
        while (const DOMElement* next = walk.Next()) {
            element = next;
            walk.Enter(*next);
        }
        EXPECT_EQ(element, last);
    });
}
