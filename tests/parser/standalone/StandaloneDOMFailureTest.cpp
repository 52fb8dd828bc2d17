// What is left of a change when memory runs out in the middle of it: all of it or nothing.

#include "support/AllOrNothing.h"

#include <kescorexml/StandaloneDOMElement.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>

namespace {

using ElementPtr = std::unique_ptr<StandaloneDOMElement>;

constexpr const char16_t* c_text = u"a text that is long enough to need memory of its own";

/// An element with something to lose, and one that belongs to no tree.
class World
{
public:
    World()
    {
        element->SetAttribute(u"k", c_text);
        element->AppendText(c_text, true);
        element->AppendChild(std::make_unique<StandaloneDOMElement>(TString(u"b")));
        element->AppendText(c_text, true);
        element->AppendChild(std::make_unique<StandaloneDOMElement>(TString(u"c")));
        element->GetChild(u"c")->AppendChild(
            std::make_unique<StandaloneDOMElement>(TString(u"deep")));
        element->AppendText(c_text, true);
    }

    std::string Describe() const { return Describe(*element); }

    ElementPtr element = std::make_unique<StandaloneDOMElement>(TString(u"a"));
    ElementPtr loose = std::make_unique<StandaloneDOMElement>(TString(u"loose"));

private:
    static std::string Describe(const StandaloneDOMElement& element)
    {
        std::string text = element.GetName().toStdString() + (element.IsEncoded() ? "+" : "");
        std::map<std::string, std::string> sorted;
        for (const auto& [name, value] : element.GetAttributes())
            sorted[name.toStdString()] = value.toStdString();
        for (const auto& [name, value] : sorted)
            text += " " + name + "=" + value;
        element.WalkNodes(
            [&](const StandaloneDOMElement& child) { text += "(" + Describe(child) + ")"; },
            [&](const TString& node) { text += "[" + node.toStdString() + "]"; });
        return text;
    }
};

} // namespace

TEST(StandaloneDOMFailure, OfAppendedText)
{
    const TString text(c_text);
    ExpectAllOrNothing<World>([&](World& world) { world.element->AppendText(text, false); });
    ExpectAllOrNothing<World>(
        [&](World& world) { world.element->GetChild(u"b")->AppendText(text, true); });
}

TEST(StandaloneDOMFailure, OfAnAddedChild)
{
    ExpectAllOrNothing<World>(
        [](World& world) { world.element->GetChild(u"b")->AppendChild(world.loose->Clone()); });
    ExpectAllOrNothing<World>([](World& world) {
        StandaloneDOMElement& parent = *world.element->GetChild(u"c");
        parent.InsertChildBefore(world.loose->Clone(), *parent.GetChild(u"deep"));
    });
}

TEST(StandaloneDOMFailure, OfAttributes)
{
    const TString name(u"a name that is long enough to need memory of its own");
    const StandaloneDOMElement::AttributeMap attributes{{u"x", u"1"}, {u"y", u"2"}, {name, name}};
    ExpectAllOrNothing<World>([&](World& world) { world.element->SetAttribute(name, name); });
    ExpectAllOrNothing<World>([&](World& world) { world.element->SetAttributes(attributes); });
}

TEST(StandaloneDOMFailure, OfRemovingAChildOrAnAttribute)
{
    ExpectAllOrNothing<World>([](World& world) {
        world.loose = world.element->RemoveChild(*world.element->GetChild(u"b"));
    });
    ExpectAllOrNothing<World>([](World& world) { world.element->RemoveAttribute(u"k"); });
}

TEST(StandaloneDOMFailure, OfRemovingAllChildren)
{
    ExpectAllOrNothing<World>([](World& world) { world.element->RemoveChildren(); });
}

TEST(StandaloneDOMFailure, OfReadingChangesNothing)
{
    ExpectAllOrNothing<World>([](World& world) { static_cast<void>(world.element->Clone()); });
    ExpectAllOrNothing<World>([](World& world) { static_cast<void>(world.element->GetAllText()); });
    ExpectAllOrNothing<World>(
        [](World& world) { static_cast<void>(world.element->GetChildren()); });
    ExpectAllOrNothing<World>(
        [](World& world) { static_cast<void>(world.element->GetTextNodes()); });
    const World other;
    bool areEqual = false;
    ExpectAllOrNothing<World>([&](World& world) { areEqual = *world.element == *other.element; });
    EXPECT_TRUE(areEqual);
}

TEST(StandaloneDOMFailure, DestructionNeedsNoMemory)
{
    auto world = std::make_unique<World>();
    const FailingAllocations failing(0);
    world->element->EraseAllChildNodes();
    world.reset();
    EXPECT_FALSE(FailingAllocations::HasFailed());
}
