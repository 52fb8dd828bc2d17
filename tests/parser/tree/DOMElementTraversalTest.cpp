#include <kescorexml/DOMElementTraversal.h>

#include "support/FailingAllocations.h"
#include "support/TreeTesting.h"

#include <kescorexml/DOMElement.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <ranges>
#include <type_traits>

using namespace DOMElementTraversal;

namespace {

static_assert(std::forward_iterator<PreorderIterator>);
static_assert(std::forward_iterator<ConstPreorderIterator>);
static_assert(std::is_same_v<std::iter_value_t<ConstPreorderIterator>, DOMElement>);
static_assert(std::is_same_v<std::iterator_traits<ConstPreorderIterator>::value_type, DOMElement>);
static_assert(std::is_base_of_v<std::forward_iterator_tag,
                                std::iterator_traits<PreorderIterator>::iterator_category>);

template <typename Range>
constexpr bool c_isBorrowedRange = std::ranges::forward_range<Range>&&
    std::ranges::forward_range<const Range>&& std::ranges::borrowed_range<Range>&&
        std::ranges::viewable_range<Range>&& std::ranges::common_range<Range>;

static_assert(c_isBorrowedRange<PreorderTraversal>);
static_assert(c_isBorrowedRange<ConstPreorderTraversal>);
// A copy takes time for what waits in it.
static_assert(!std::ranges::view<PreorderTraversal>);

template <typename Generator>
std::string Drain(Generator&& generator)
{
    std::string names;
    while (const DOMElement* element = generator.Next())
        names += (names.empty() ? "" : " ") + element->GetName().toStdString();
    return names;
}

std::string Names(PreorderIterator position)
{
    std::string names;
    for (; position != PreorderIterator(); ++position)
        names += (names.empty() ? "" : " ") + position->GetName().toStdString();
    return names;
}

/// The order by its definition, with recursion.
void CollectBackwards(const DOMElement& element, std::vector<const DOMElement*>& out)
{
    out.push_back(&element);
    const auto children = element.GetChildren();
    for (auto child = children.rbegin(); child != children.rend(); ++child)
        CollectBackwards(**child, out);
}

} // namespace

TEST(DOMElementTraversal, OfALeafYieldsTheLeaf)
{
    DOMElement leaf(TString(u"a"));
    PreorderGenerator generator(leaf);
    EXPECT_EQ(generator.Next(), &leaf);
    EXPECT_EQ(generator.Next(), nullptr);
    EXPECT_EQ(generator.Next(), nullptr);
}

TEST(DOMElementTraversal, TakesChildrenFromTheLastToTheFirst)
{
    const auto root = MakeTree("R(A(A1),B(B1))");
    EXPECT_EQ(Drain(PreorderGenerator(*root)), "R B B1 A A1");
    EXPECT_EQ(Drain(ConstPreorderGenerator(*root)), "R B B1 A A1");
}

TEST(DOMElementTraversal, StaysInTheSubtree)
{
    const auto root = MakeTree("R(A(A1,A2),B)");
    EXPECT_EQ(Drain(PreorderGenerator(Find(*root, "A"))), "A A2 A1");
}

TEST(DOMElementTraversal, IteratorStartsAtTheElementAndEndsEqualToTheEnd)
{
    const auto root = MakeTree("R(A)");
    PreorderIterator position(*root);
    EXPECT_EQ(&*position, root.get());
    EXPECT_EQ(position->GetName(), TString(u"R"));
    EXPECT_NE(position, PreorderIterator());
    EXPECT_EQ(&*++position, &Find(*root, "A"));
    EXPECT_EQ(++position, PreorderIterator());
    EXPECT_EQ(++position, PreorderIterator()) << "going on at the end does nothing";
    EXPECT_EQ(position++, PreorderIterator());
}

TEST(DOMElementTraversal, PostIncrementGivesThePositionBefore)
{
    const auto root = MakeTree("R(A,B)");
    PreorderIterator position(*root);
    PreorderIterator before = position++;
    EXPECT_EQ(Names(before), "R B A");
    EXPECT_EQ(Names(position), "B A");
}

TEST(DOMElementTraversal, CopiesContinueIndependently)
{
    const auto root = MakeTree("R(A(A1),B(B1),C)");
    PreorderIterator position(*root);
    ++position;
    const PreorderIterator copy(position);
    PreorderIterator assigned;
    assigned = position;
    EXPECT_EQ(Names(position), "C B B1 A A1");
    EXPECT_EQ(Names(copy), "C B B1 A A1");
    ++assigned;
    EXPECT_EQ(Names(assigned), "B B1 A A1");
    EXPECT_EQ(Names(position), "C B B1 A A1");
    PreorderIterator& self = assigned;
    assigned = self;
    EXPECT_EQ(Names(assigned), "B B1 A A1");
    assigned = PreorderIterator();
    EXPECT_EQ(assigned, PreorderIterator());
}

TEST(DOMElementTraversal, IteratorsCompareTheElementsStoodAt)
{
    const auto root = MakeTree("R(A)");
    PreorderIterator one(*root);
    const PreorderIterator two(*root);
    EXPECT_EQ(one, two);
    ++one;
    EXPECT_NE(one, two);
    // Another walk that has just come to the same element.
    EXPECT_EQ(one, PreorderIterator(Find(*root, "A")));
}

TEST(DOMElementTraversal, ARangeMayBeWalkedMoreThanOnce)
{
    const auto root = MakeTree("R(A(A1),B)");
    const ConstPreorderTraversal range(*root);
    for (int i = 0; i < 2; ++i) {
        std::string names;
        for (const DOMElement& element : range)
            names += element.GetName().toStdString();
        EXPECT_EQ(names, "RBAA1");
    }
    for (DOMElement& element : PreorderTraversal(*root))
        element.SetText(u"seen");
    EXPECT_EQ(Find(*root, "A1").GetText(), TString(u"seen"));
}

TEST(DOMElementTraversal, AgreesWithTheRecursiveDefinitionOnRandomTrees)
{
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        DOMElement root(TString(u"r"));
        std::vector<DOMElement*> all{&root};
        for (int i = 0; i < 300; ++i)
            all.push_back(all[random() % all.size()]->AddNewChild(TString::number(i)));
        std::vector<const DOMElement*> expected;
        CollectBackwards(root, expected);
        std::vector<const DOMElement*> walked;
        for (const DOMElement& element : ConstPreorderTraversal(root))
            walked.push_back(&element);
        EXPECT_EQ(walked, expected);
    }
}

TEST(DOMElementTraversal, HasRoomFor128ElementsFromTheBeginning)
{
    DOMElement root(TString(u"r"));
    for (int i = 0; i < 128; ++i)
        root.AddNewChild(u"a");
    PreorderGenerator generator(root);
    const FailingAllocations failing(0);
    for (int i = 0; i < 129; ++i)
        EXPECT_NE(generator.Next(), nullptr);
    EXPECT_EQ(generator.Next(), nullptr);
    EXPECT_FALSE(FailingAllocations::HasFailed());
}

TEST(DOMElementTraversal, ConvertsFromAnElement)
{
    DOMElement root(TString(u"r"));
    const DOMElement& constant = root;
    PreorderGenerator generator = root;
    EXPECT_EQ(generator.Next(), &root);
    const PreorderIterator iterator = root;
    EXPECT_EQ(&*iterator, &root);
    const DOMElementTraversal::ConstPreorderTraversal traversal = constant;
    EXPECT_EQ(&*traversal.begin(), &root);
}

TEST(DOMElementTraversal, GrowsBeyondItsFirstRoom)
{
    DOMElement root(TString(u"r"));
    for (int i = 0; i < 1000; ++i)
        root.AddNewChild(TString::number(i));
    PreorderIterator position(root);
    for (int i = 999; i >= 0; --i)
        EXPECT_EQ((++position)->GetName(), TString::number(i));
    EXPECT_EQ(++position, PreorderIterator());
}

TEST(DOMElementTraversal, IsFoundByAlgorithmsWhoseResultsOutliveTheRange)
{
    const auto root = MakeTree("R(A(A1),B(B1))");
    auto found = std::ranges::find(PreorderTraversal(*root), TString(u"B1"), &DOMElement::GetName);
    EXPECT_EQ(&*found, &Find(*root, "B1"));
    EXPECT_EQ((++found)->GetName(), u"A");
    EXPECT_EQ(std::ranges::distance(ConstPreorderTraversal(*root)), 5);
}

TEST(DOMElementTraversal, AlgorithmsMayGoOverItMoreThanOnce)
{
    const auto root = MakeTree("R(aa,bbbb,ccc,bbbb)");
    const auto lengthOf = [](const DOMElement& element) { return element.GetName().length(); };
    const ConstPreorderTraversal elements(*root);
    const auto longest = std::ranges::max_element(elements, {}, lengthOf);
    EXPECT_EQ(&*longest, &root->GetChildren()[3]);
    const auto same =
        std::ranges::adjacent_find(elements, [](const DOMElement& a, const DOMElement& b) {
            return a.GetName().length() == b.GetName().length() + 2;
        });
    EXPECT_EQ(&*same, &root->GetChildren()[1]);
    // The algorithms of the other kind, too.
    EXPECT_EQ(&*std::max_element(elements.begin(), elements.end(),
                                 [&](const DOMElement& a, const DOMElement& b) {
                                     return lengthOf(a) < lengthOf(b);
                                 }),
              &*longest);
}

// Earlier versions of clang cannot read what the standard library of GCC has for adaptors.
#if !defined(__clang__) || __clang_major__ >= 16

TEST(DOMElementTraversal, IsPipedIntoAdaptors)
{
    const auto root = MakeTree("R(A(A1),B(B1),C)");
    std::string names;
    for (const DOMElement& element : ConstPreorderTraversal(*root) |
                                         std::views::filter(&DOMElement::HasChildren) |
                                         std::views::drop(1))
        names += element.GetName().toStdString();
    EXPECT_EQ(names, "BA");
}

#endif
