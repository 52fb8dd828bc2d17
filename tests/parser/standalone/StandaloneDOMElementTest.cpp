#include <kescorexml/StandaloneDOMElement.h>
#include <kesplatform/LogicException.h>

#include "support/SmallStack.h"

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <random>
#include <string>

namespace {

using ElementPtr = std::unique_ptr<StandaloneDOMElement>;

constexpr int c_deepLevels = 1'000'000;

ElementPtr MakeElement(const char16_t* name)
{
    return std::make_unique<StandaloneDOMElement>(TString(name));
}

StandaloneDOMElement& AddChild(StandaloneDOMElement& parent, const TString& name)
{
    auto child = std::make_unique<StandaloneDOMElement>(name);
    StandaloneDOMElement& added = *child;
    parent.AppendChild(std::move(child));
    return added;
}

/// The content of one level: texts in quotes, children by name.
std::string Content(const StandaloneDOMElement& element)
{
    std::string content;
    element.WalkNodes(
        [&content](const StandaloneDOMElement& child) {
            content += "<" + child.GetName().toStdString() + ">";
        },
        [&content](const TString& text) { content += "'" + text.toStdString() + "'"; });
    return content;
}

/// Everything that equality looks at, as text: two trees are equal exactly when these are.
std::string Describe(const StandaloneDOMElement& element)
{
    std::map<std::string, std::string> attributes;
    for (const auto& [name, value] : element.GetAttributes())
        attributes[name.toStdString()] = value.toStdString();
    std::string description = "<" + element.GetName().toStdString();
    for (const auto& [name, value] : attributes)
        description += " " + name + "='" + value + "'";
    description += ">";
    element.WalkNodes(
        [&description](const StandaloneDOMElement& child) { description += Describe(child); },
        [&description](const TString& text) { description += "[" + text.toStdString() + "]"; });
    return description + "</>";
}

class RandomTree
{
public:
    explicit RandomTree(unsigned seed) : m_random(seed) {}

    ElementPtr Make(int depth)
    {
        auto element = std::make_unique<StandaloneDOMElement>(Pick({u"a", u"b"}));
        for (int count = Below(3); count > 0; --count)
            element->SetAttribute(Pick({u"k", u"l", u"m"}), Pick({u"", u"1"}));
        for (int count = depth == 0 ? 0 : Below(4); count > 0; --count) {
            if (Below(2) == 0)
                element->AppendText(Pick({u"x", u"y"}), Below(2) == 0);
            else
                element->AppendChild(Make(depth - 1));
        }
        return element;
    }

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

private:
    TString Pick(std::initializer_list<const char16_t*> choices)
    {
        return TString(*(choices.begin() + Below(static_cast<int>(choices.size()))));
    }

    std::mt19937 m_random;
};

ElementPtr MakeChain(int levels)
{
    ElementPtr root = MakeElement(u"e");
    StandaloneDOMElement* deepest = root.get();
    for (int level = 1; level < levels; ++level) {
        deepest->AppendText(u"before");
        deepest = &AddChild(*deepest, u"e");
    }
    return root;
}

const StandaloneDOMElement& Deepest(const StandaloneDOMElement& root, int* levels)
{
    const StandaloneDOMElement* element = &root;
    *levels = 1;
    for (; element->GetChild(u"e") != nullptr; element = element->GetChild(u"e"))
        ++*levels;
    return *element;
}

void ExpectAssertion(const std::function<void()>& call, int line, const char16_t* text,
                     std::uint32_t code, const char16_t* identifier)
{
    try {
        call();
        FAIL() << "no assertion";
    } catch (const LogicException& e) {
        EXPECT_EQ(e.GetFile(), u"modules/platform/kescorexml/main/parser/StandaloneDOMElement");
        EXPECT_EQ(e.GetLine(), line);
        EXPECT_EQ(e.GetText(), text);
        EXPECT_EQ(e.GetErrorInfo().GetError(), CorvinaError(code, identifier));
    }
}

} // namespace

TEST(StandaloneDOMElement, StartsWithItsNameAndNothingElse)
{
    TString name(u"first");
    StandaloneDOMElement copied(name);
    StandaloneDOMElement moved(TString(u"second"));
    EXPECT_EQ(copied.GetName(), u"first");
    EXPECT_EQ(name, u"first");
    EXPECT_EQ(moved.GetName(), u"second");
    EXPECT_TRUE(copied.IsEmpty());
    EXPECT_FALSE(copied.HasText());
    EXPECT_FALSE(copied.HasChildren());
    EXPECT_FALSE(copied.HasTextOrChildren());
    EXPECT_FALSE(copied.IsEncoded());
    EXPECT_FLOAT_EQ(copied.GetAttributes().max_load_factor(), 1.0F);
    copied.SetName(u"renamed");
    EXPECT_EQ(copied.GetName(), u"renamed");
}

TEST(StandaloneDOMElement, IsNotCopiedByAccident)
{
    EXPECT_FALSE(std::is_copy_constructible_v<StandaloneDOMElement>);
    EXPECT_FALSE(std::is_copy_assignable_v<StandaloneDOMElement>);
}

TEST(StandaloneDOMElement, AdjacentTextsMergeIntoOneNode)
{
    StandaloneDOMElement element(TString(u"e"));
    element.AppendText(u"a");
    element.AppendText(u"b");
    EXPECT_EQ(Content(element), "'ab'");
    EXPECT_EQ(element.GetTextNodes().size(), 1U);
}

TEST(StandaloneDOMElement, AChildBetweenTwoTextsKeepsThemApart)
{
    StandaloneDOMElement element(TString(u"e"));
    element.AppendText(u"a");
    AddChild(element, u"c");
    element.AppendText(u"b");
    EXPECT_EQ(Content(element), "'a'<c>'b'");
    const auto texts = element.GetTextNodes();
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].get(), u"a");
    EXPECT_EQ(texts[1].get(), u"b");
}

TEST(StandaloneDOMElement, AnEmptyTextIsATextNode)
{
    StandaloneDOMElement element(TString(u"e"));
    element.AppendText(TString());
    EXPECT_TRUE(element.HasText());
    EXPECT_FALSE(element.IsEmpty());
    EXPECT_EQ(Content(element), "''");
}

TEST(StandaloneDOMElement, TextMayBeAppendedToItself)
{
    StandaloneDOMElement element(TString(u"e"));
    element.AppendText(u"ab");
    element.AppendText(element.GetTextNodes().front());
    EXPECT_EQ(element.GetAllText(), u"abab");
    AddChild(element, u"c");
    element.AppendText(element.GetTextNodes().front());
    EXPECT_EQ(Content(element), "'abab'<c>'abab'");
}

TEST(StandaloneDOMElement, TheLastAppendDecidesTheEncodedMark)
{
    StandaloneDOMElement element(TString(u"e"));
    element.AppendText(u"a", true);
    EXPECT_TRUE(element.IsEncoded());
    element.AppendText(u"b");
    EXPECT_FALSE(element.IsEncoded());
    element.AppendText(u"c", true);
    EXPECT_TRUE(element.IsEncoded());
    element.SetEncoded(false);
    EXPECT_FALSE(element.IsEncoded());
}

TEST(StandaloneDOMElement, OnlyTextChangesTheEncodedMark)
{
    StandaloneDOMElement element(TString(u"e"));
    element.AppendText(u"a", true);
    StandaloneDOMElement& child = AddChild(element, u"c");
    element.InsertChildBefore(MakeElement(u"b"), child);
    element.SetAttribute(u"k", u"v");
    element.RemoveChild(child);
    element.RemoveChildren();
    EXPECT_TRUE(element.IsEncoded());
    element.EraseAllChildNodes();
    EXPECT_TRUE(element.IsEncoded());
    element.AppendText(TString());
    EXPECT_FALSE(element.IsEncoded()) << "an empty text counts as one";
}

TEST(StandaloneDOMElement, AllTextLeavesOutTheTextOfDescendants)
{
    StandaloneDOMElement element(TString(u"e"));
    EXPECT_TRUE(element.GetAllText().IsEmpty());
    element.AppendText(u"a");
    AddChild(element, u"c").AppendText(u"inner");
    element.AppendText(u"b");
    EXPECT_EQ(element.GetAllText(), u"ab");
}

TEST(StandaloneDOMElement, KnowsWhatKindsOfContentItHas)
{
    StandaloneDOMElement onlyText(TString(u"e"));
    onlyText.AppendText(u"a");
    EXPECT_TRUE(onlyText.HasText());
    EXPECT_FALSE(onlyText.HasChildren());
    EXPECT_TRUE(onlyText.HasTextOrChildren());
    EXPECT_FALSE(onlyText.IsEmpty());

    StandaloneDOMElement onlyChild(TString(u"e"));
    AddChild(onlyChild, u"c");
    EXPECT_FALSE(onlyChild.HasText());
    EXPECT_TRUE(onlyChild.HasChildren());
    EXPECT_TRUE(onlyChild.HasTextOrChildren());
    EXPECT_FALSE(onlyChild.IsEmpty());

    StandaloneDOMElement onlyAttribute(TString(u"e"));
    onlyAttribute.SetAttribute(u"k", u"v");
    EXPECT_FALSE(onlyAttribute.HasTextOrChildren());
    EXPECT_FALSE(onlyAttribute.IsEmpty());
}

TEST(StandaloneDOMElement, ListsItsChildrenInOrder)
{
    StandaloneDOMElement element(TString(u"e"));
    StandaloneDOMElement& first = AddChild(element, u"c");
    element.AppendText(u"text");
    StandaloneDOMElement& second = AddChild(element, u"d");
    const auto children = element.GetChildren();
    ASSERT_EQ(children.size(), 2U);
    EXPECT_EQ(&children[0].get(), &first);
    EXPECT_EQ(&children[1].get(), &second);
}

TEST(StandaloneDOMElement, FindsTheFirstChildOfAName)
{
    StandaloneDOMElement element(TString(u"e"));
    AddChild(element, u"b");
    StandaloneDOMElement& first = AddChild(element, u"c");
    AddChild(element, u"c");
    AddChild(first, u"deeper");
    EXPECT_EQ(element.GetChild(u"c"), &first);
    EXPECT_EQ(std::as_const(element).GetChild(u"c"), &first);
    EXPECT_EQ(element.GetChild(u"C"), nullptr);
    EXPECT_EQ(element.GetChild(u"deeper"), nullptr);
    EXPECT_EQ(std::as_const(element).GetChild(u"none"), nullptr);
}

TEST(StandaloneDOMElement, WalkVisitsOneLevelInOrderAndMayChangeNodes)
{
    StandaloneDOMElement element(TString(u"e"));
    element.AppendText(u"a");
    AddChild(AddChild(element, u"c"), u"grandchild");
    element.AppendText(u"b");
    element.WalkNodes([](StandaloneDOMElement& child) { child.SetName(u"changed"); },
                      [](TString& text) { text.append(u'!'); });
    EXPECT_EQ(Content(element), "'a!'<changed>'b!'");
    EXPECT_NE(element.GetChild(u"changed")->GetChild(u"grandchild"), nullptr);
}

TEST(StandaloneDOMElement, AnEmptyCallbackFailsOnlyWhenANodeOfItsKindIsReached)
{
    StandaloneDOMElement element(TString(u"e"));
    const std::function<void(const TString&)> noText;
    const std::function<void(const StandaloneDOMElement&)> noElement;
    const StandaloneDOMElement& constant = element;
    constant.WalkNodes(noElement, noText);
    element.AppendText(u"a");
    int texts = 0;
    constant.WalkNodes(noElement, [&texts](const TString&) { ++texts; });
    EXPECT_EQ(texts, 1);
    EXPECT_THROW(constant.WalkNodes(noElement, noText), std::bad_function_call);
    EXPECT_THROW(element.WalkNodes([](StandaloneDOMElement&) {}, nullptr), std::bad_function_call);
    AddChild(element, u"c");
    EXPECT_THROW(constant.WalkNodes(noElement, [&texts](const TString&) { ++texts; }),
                 std::bad_function_call);
    EXPECT_THROW(element.WalkNodes(nullptr, [](TString&) {}), std::bad_function_call);
    EXPECT_EQ(texts, 2);
}

TEST(StandaloneDOMElement, AttributesAreSetFoundAndRemoved)
{
    StandaloneDOMElement element(TString(u"e"));
    element.SetAttribute(u"k", u"1");
    element.SetAttribute(u"k", u"2");
    element.SetAttribute(u"empty", u"");
    EXPECT_EQ(element.GetAttributes().size(), 2U);
    EXPECT_TRUE(element.HasAttribute(u"k"));
    EXPECT_TRUE(element.HasAttribute(u"empty"));
    EXPECT_FALSE(element.HasAttribute(u"K"));
    EXPECT_EQ(element.GetAttribute(u"k"), u"2");
    TString value(u"untouched");
    EXPECT_FALSE(element.TryGetAttribute(u"none", value));
    EXPECT_EQ(value, u"untouched");
    EXPECT_TRUE(element.TryGetAttribute(u"empty", value));
    EXPECT_EQ(value, u"");
    element.RemoveAttribute(u"none");
    element.RemoveAttribute(u"k");
    EXPECT_FALSE(element.HasAttribute(u"k"));
    EXPECT_EQ(element.GetAttributes().size(), 1U);
}

TEST(StandaloneDOMElement, AMissingAttributeIsAnAssertion)
{
    StandaloneDOMElement element(TString(u"e"));
    ExpectAssertion([&element] { static_cast<void>(element.GetAttribute(u"k")); }, 226,
                    u"it != m_attributes.end()", 0x16A1A876,
                    u"LogicException_LogicAssert_0x16A1A876");
}

TEST(StandaloneDOMElement, TheAttributeMapIsCopiedOrMovedWhole)
{
    StandaloneDOMElement element(TString(u"e"));
    element.SetAttribute(u"old", u"gone");
    StandaloneDOMElement::AttributeMap attributes{{u"k", u"1"}, {u"l", u"2"}};
    attributes.max_load_factor(0.5F);
    element.SetAttributes(attributes);
    EXPECT_EQ(element.GetAttributes(), attributes);
    EXPECT_FLOAT_EQ(element.GetAttributes().max_load_factor(), 0.5F);

    element.SetAttributes(element.GetAttributes());
    EXPECT_EQ(element.GetAttributes(), attributes);
    element.SetAttributes(std::move(element.GetAttributes()));
    EXPECT_EQ(element.GetAttributes(), attributes);

    StandaloneDOMElement::AttributeMap other{{u"m", u"3"}};
    const TString* stored = &other.find(u"m")->second;
    element.SetAttributes(std::move(other));
    EXPECT_EQ(&element.GetAttribute(u"m"), stored) << "moved, not copied";
    EXPECT_EQ(element.GetAttributes().size(), 1U);
}

TEST(StandaloneDOMElement, NullChildrenAreAssertions)
{
    StandaloneDOMElement element(TString(u"e"));
    StandaloneDOMElement& child = AddChild(element, u"c");
    ExpectAssertion([&element] { element.AppendChild(nullptr); }, 295, u"element != nullptr",
                    0xE9519449, u"LogicException_LogicAssert_0xE9519449");
    ExpectAssertion([&] { element.InsertChildBefore(nullptr, child); }, 302, u"element != nullptr",
                    0x41228A24, u"LogicException_LogicAssert_0x41228A24");
    EXPECT_EQ(Content(element), "<c>");
}

TEST(StandaloneDOMElement, InsertsInFrontOfTheFirstEqualChild)
{
    StandaloneDOMElement element(TString(u"e"));
    AddChild(element, u"other");
    element.AppendText(u"text");
    StandaloneDOMElement& first = AddChild(element, u"c");
    StandaloneDOMElement& second = AddChild(element, u"c");
    first.SetAttribute(u"k", u"1");
    second.SetAttribute(u"k", u"1");
    first.SetEncoded(true);

    const ElementPtr copy = second.Clone();
    element.InsertChildBefore(MakeElement(u"new"), *copy);
    EXPECT_EQ(Content(element), "<other>'text'<new><c><c>");
    element.InsertChildBefore(MakeElement(u"newer"), second);
    EXPECT_EQ(Content(element), "<other>'text'<new><newer><c><c>") << "by value, not by identity";
}

TEST(StandaloneDOMElement, InsertsAtTheVeryFrontAndBetweenTexts)
{
    StandaloneDOMElement element(TString(u"e"));
    AddChild(element, u"c");
    element.InsertChildBefore(MakeElement(u"first"), StandaloneDOMElement(TString(u"c")));
    EXPECT_EQ(Content(element), "<first><c>");
    element.AppendText(u"text");
    StandaloneDOMElement& last = AddChild(element, u"last");
    ElementPtr inserted = MakeElement(u"new");
    const StandaloneDOMElement* address = inserted.get();
    element.InsertChildBefore(std::move(inserted), last);
    EXPECT_EQ(Content(element), "<first><c>'text'<new><last>");
    EXPECT_EQ(element.GetChild(u"new"), address) << "the very element that was given";
}

TEST(StandaloneDOMElement, AnEqualGrandchildIsNoPlaceToInsertBefore)
{
    StandaloneDOMElement element(TString(u"e"));
    StandaloneDOMElement& grandchild = AddChild(AddChild(element, u"c"), u"d");
    ExpectAssertion([&] { element.InsertChildBefore(MakeElement(u"new"), grandchild); }, 318,
                    u"Can't insert child", 0xAD7AC3BE, u"LogicException_LogicAssert_0xAD7AC3BE");
    ExpectAssertion([&] { element.RemoveChild(grandchild); }, 344, u"Can't remove child",
                    0x108BF60C, u"LogicException_LogicAssert_0x108BF60C");
    EXPECT_EQ(Content(element), "<c>");
}

TEST(StandaloneDOMElement, InsertingBeforeNoChildIsAnAssertion)
{
    StandaloneDOMElement element(TString(u"e"));
    AddChild(element, u"c").SetAttribute(u"k", u"1");
    const StandaloneDOMElement before(TString(u"c"));
    ExpectAssertion([&] { element.InsertChildBefore(MakeElement(u"new"), before); }, 318,
                    u"Can't insert child", 0xAD7AC3BE, u"LogicException_LogicAssert_0xAD7AC3BE");
    EXPECT_EQ(Content(element), "<c>");
}

TEST(StandaloneDOMElement, RemovesTheVeryChildAndLeavesTextsApart)
{
    StandaloneDOMElement element(TString(u"e"));
    StandaloneDOMElement& first = AddChild(element, u"c");
    element.AppendText(u"a");
    StandaloneDOMElement& second = AddChild(element, u"c");
    element.AppendText(u"b");
    ASSERT_EQ(first, second);
    const ElementPtr removed = element.RemoveChild(second);
    EXPECT_EQ(removed.get(), &second);
    EXPECT_EQ(Content(element), "<c>'a''b'");
    EXPECT_EQ(element.GetChild(u"c"), &first);
    element.AppendText(u"c");
    EXPECT_EQ(Content(element), "<c>'a''bc'");
}

TEST(StandaloneDOMElement, RemovingAnEqualCopyIsAnAssertion)
{
    StandaloneDOMElement element(TString(u"e"));
    const ElementPtr copy = AddChild(element, u"c").Clone();
    ExpectAssertion([&] { element.RemoveChild(*copy); }, 344, u"Can't remove child", 0x108BF60C,
                    u"LogicException_LogicAssert_0x108BF60C");
    EXPECT_EQ(Content(element), "<c>");
}

TEST(StandaloneDOMElement, RemovesAllChildrenInOrderAndKeepsTheTexts)
{
    StandaloneDOMElement element(TString(u"e"));
    element.AppendText(u"a");
    const StandaloneDOMElement* first = &AddChild(element, u"c");
    element.AppendText(u"b");
    const StandaloneDOMElement* second = &AddChild(element, u"d");
    const auto removed = element.RemoveChildren();
    ASSERT_EQ(removed.size(), 2U);
    EXPECT_EQ(removed[0].get(), first);
    EXPECT_EQ(removed[1].get(), second);
    EXPECT_FALSE(element.HasChildren());
    EXPECT_TRUE(element.HasText());
    EXPECT_EQ(Content(element), "'a''b'");
    EXPECT_TRUE(element.RemoveChildren().empty());

    StandaloneDOMElement withoutText(TString(u"e"));
    AddChild(withoutText, u"c");
    withoutText.RemoveChildren();
    EXPECT_FALSE(withoutText.HasText());
    EXPECT_TRUE(withoutText.IsEmpty());
}

TEST(StandaloneDOMElement, ErasesAllContentAndNothingElse)
{
    RandomTree random(7);
    for (int round = 0; round < 50; ++round) {
        const ElementPtr element = random.Make(5);
        element->SetAttribute(u"k", u"v");
        element->EraseAllChildNodes();
        EXPECT_FALSE(element->HasTextOrChildren());
        EXPECT_TRUE(element->HasAttribute(u"k"));
        element->AppendText(u"usable");
        EXPECT_EQ(Content(*element), "'usable'");
    }
}

TEST(StandaloneDOMElement, IsEqualExactlyWhenEverythingButTheMarkIs)
{
    RandomTree random(42);
    int equal = 0;
    for (int round = 0; round < 20000; ++round) {
        const ElementPtr a = random.Make(2);
        const ElementPtr b = random.Make(2);
        const bool areSame = Describe(*a) == Describe(*b);
        equal += areSame ? 1 : 0;
        ASSERT_EQ(*a == *b, areSame) << Describe(*a) << "\n" << Describe(*b);
        ASSERT_EQ(*a != *b, !areSame);
    }
    EXPECT_GT(equal, 10) << "the trees are too different for this test to say anything";
}

TEST(StandaloneDOMElement, OrderOfContentMattersAndOrderOfAttributesDoesNot)
{
    StandaloneDOMElement a(TString(u"e"));
    StandaloneDOMElement b(TString(u"e"));
    a.SetAttribute(u"k", u"1");
    a.SetAttribute(u"l", u"2");
    b.SetAttribute(u"l", u"2");
    b.SetAttribute(u"k", u"1");
    a.SetEncoded(true);
    EXPECT_EQ(a, b);
    AddChild(a, u"c");
    AddChild(a, u"d");
    AddChild(b, u"d");
    EXPECT_NE(a, b);
    AddChild(b, u"c");
    EXPECT_NE(a, b);
}

TEST(StandaloneDOMElement, TextAndElementAtOnePlaceDiffer)
{
    StandaloneDOMElement a(TString(u"e"));
    StandaloneDOMElement b(TString(u"e"));
    a.AppendText(TString());
    AddChild(b, u"");
    EXPECT_NE(a, b);
    EXPECT_NE(b, a);
}

TEST(StandaloneDOMElement, ACloneIsEqualIndependentAndKeepsTheMarks)
{
    RandomTree random(3);
    for (int round = 0; round < 500; ++round) {
        const ElementPtr original = random.Make(5);
        original->SetEncoded(round % 2 == 0);
        original->GetAttributes().max_load_factor(0.5F);
        const std::string before = Describe(*original);
        const ElementPtr clone = original->Clone();
        EXPECT_EQ(*clone, *original);
        EXPECT_EQ(Describe(*clone), before);
        EXPECT_EQ(clone->IsEncoded(), original->IsEncoded());
        EXPECT_FLOAT_EQ(clone->GetAttributes().max_load_factor(), 0.5F);
        const auto children = original->GetChildren();
        const auto clonedChildren = clone->GetChildren();
        ASSERT_EQ(children.size(), clonedChildren.size());
        for (std::size_t i = 0; i < children.size(); ++i) {
            EXPECT_NE(&children[i].get(), &clonedChildren[i].get());
            EXPECT_EQ(children[i].get().IsEncoded(), clonedChildren[i].get().IsEncoded());
        }
        clone->AppendText(u"more");
        clone->WalkNodes([](StandaloneDOMElement& child) { child.SetName(u"changed"); },
                         [](TString& text) { text.append(u'!'); });
        EXPECT_EQ(Describe(*original), before);
    }
}

TEST(StandaloneDOMElement, AMillionLevelsNeedNoStack)
{
    RunOnSmallStack([] {
        ElementPtr chain = MakeChain(c_deepLevels);
        ElementPtr clone = chain->Clone();
        int levels = 0;
        const StandaloneDOMElement& deepest = Deepest(*clone, &levels);
        EXPECT_EQ(levels, c_deepLevels);
        EXPECT_TRUE(deepest.IsEmpty());
        EXPECT_TRUE(*chain == *clone);
        const_cast<StandaloneDOMElement&>(deepest).SetAttribute(u"k", u"v");
        EXPECT_TRUE(*chain != *clone);
        chain.reset();
        clone->EraseAllChildNodes();
        EXPECT_TRUE(clone->IsEmpty());
    });
}

TEST(StandaloneDOMElement, AMillionChildrenAndTextsAreDestroyedInOneGo)
{
    ElementPtr root = MakeElement(u"e");
    for (int i = 0; i < 200'000; ++i) {
        AddChild(AddChild(*root, u"c"), u"d");
        root->AppendText(u"t");
    }
    const ElementPtr clone = root->Clone();
    EXPECT_EQ(*clone, *root);
    EXPECT_EQ(clone->RemoveChildren().size(), 200'000U);
    EXPECT_EQ(clone->GetAllText().length(), 200'000);
    root.reset();
}
