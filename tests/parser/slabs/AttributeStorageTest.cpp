#include <kescorexml/detail/AttributeStorage.h>

#include "slabs/AttributeBlock.h"
#include "support/AttributeBlocks.h"
#include "support/TreeTesting.h"
#include "tree/ParsedElements.h"

#include <array>
#include <random>
#include <thread>
#include <utility>

namespace {

AttributeStorage MakePacked(const Pairs& pairs)
{
    AttributeStorage storage;
    storage.Adopt(MakeBlock(pairs));
    return storage;
}

AttributeStorage MakeMapped(const Pairs& pairs)
{
    AttributeStorage storage;
    storage.Replace(AttributeStorage::AttributeMap(pairs.begin(), pairs.end()));
    return storage;
}

/// An element as a parse makes it.
std::unique_ptr<DOMElement> MakeParsed(DOM& dom, const Pairs& pairs)
{
    ParseArena arena;
    return ParsedElements::New(arena, TString(u"a"), MakePacked(pairs), &dom, *dom.GetRoot());
}

const Pairs c_pairs{{u"k", u"v"}, {u"empty", u""}, {u"name", u"a longer value"}};

} // namespace

TEST(AttributeStorage, WithoutAnythingIsEmpty)
{
    const AttributeStorage storage;
    EXPECT_TRUE(storage.IsEmpty());
    EXPECT_EQ(storage.Size(), 0U);
    EXPECT_EQ(storage.Get(u"k"), TString());
    std::u16string_view value = u"before";
    EXPECT_FALSE(storage.View(u"k", value));
    EXPECT_EQ(storage.GetBlock(), nullptr);
    EXPECT_TRUE(storage.Map().empty());
    EXPECT_TRUE(storage.IsEmpty()) << "an empty map is no attribute";
}

TEST(AttributeStorage, PackedAndMappedGiveTheSameAnswers)
{
    const AttributeStorage packed = MakePacked(c_pairs);
    const AttributeStorage mapped = MakeMapped(c_pairs);
    EXPECT_NE(packed.GetBlock(), nullptr);
    EXPECT_EQ(mapped.GetBlock(), nullptr);
    for (const AttributeStorage* storage : {&packed, &mapped}) {
        EXPECT_FALSE(storage->IsEmpty());
        EXPECT_EQ(storage->Size(), 3U);
        for (const auto& [name, expected] : c_pairs) {
            std::u16string_view value;
            EXPECT_TRUE(storage->View(name, value));
            EXPECT_EQ(value, expected.view());
            EXPECT_EQ(storage->Get(name), expected);
        }
        std::u16string_view value = u"before";
        EXPECT_FALSE(storage->View(u"K", value));
        EXPECT_EQ(value, u"before");
        EXPECT_EQ(storage->Get(u"none"), TString());
    }
    EXPECT_EQ(packed.Map(), mapped.Map());
    EXPECT_EQ(packed.GetBlock(), nullptr) << "from now on the map is the truth";
    EXPECT_EQ(packed.Get(u"k"), TString(u"v"));
}

TEST(AttributeStorage, EqualityDoesNotDependOnForm)
{
    Pairs reversed(c_pairs.rbegin(), c_pairs.rend());
    Pairs otherValue = c_pairs;
    otherValue[0].second = u"w";
    Pairs otherName = c_pairs;
    otherName[0].first = u"l";
    Pairs fewer(c_pairs.begin(), c_pairs.end() - 1);
    for (const auto make : {&MakePacked, &MakeMapped}) {
        for (const auto makeOther : {&MakePacked, &MakeMapped}) {
            const AttributeStorage one = make(c_pairs);
            EXPECT_TRUE(one.Equals(makeOther(c_pairs)));
            EXPECT_TRUE(one.Equals(makeOther(reversed)));
            EXPECT_FALSE(one.Equals(makeOther(otherValue)));
            EXPECT_FALSE(one.Equals(makeOther(otherName)));
            EXPECT_FALSE(one.Equals(makeOther(fewer)));
            EXPECT_FALSE(one.Equals(AttributeStorage()));
            EXPECT_FALSE(AttributeStorage().Equals(one));
        }
    }
    EXPECT_TRUE(AttributeStorage().Equals(MakeMapped({})));
}

TEST(AttributeStorage, ACopyIsIndependent)
{
    for (const auto make : {&MakePacked, &MakeMapped}) {
        AttributeStorage source = make(c_pairs);
        AttributeStorage copy(source);
        source.Map()[u"k"] = u"changed";
        EXPECT_EQ(copy.Get(u"k"), TString(u"v"));
        copy.Map().erase(u"name");
        EXPECT_EQ(source.Size(), 3U);
        const AttributeStorage moved(std::move(copy));
        EXPECT_EQ(moved.Size(), 2U);
    }
}

TEST(AttributeStorage, ValuesOutliveTheirElement)
{
    TString value;
    AttributeStorage::AttributeMap map;
    {
        const AttributeStorage packed = MakePacked(c_pairs);
        value = packed.Get(u"name");
        const AttributeStorage other = MakePacked(c_pairs);
        map = other.Map();
    }
    EXPECT_EQ(value, TString(u"a longer value"));
    EXPECT_EQ(map.at(u"name"), TString(u"a longer value"));
    value.append(u'!');
    EXPECT_EQ(value, TString(u"a longer value!"));
}

TEST(AttributeStorage, ReplaceKeepsTheMapObject)
{
    AttributeStorage storage = MakePacked(c_pairs);
    const AttributeStorage::AttributeMap* map = &std::as_const(storage).Map();
    AttributeStorage::AttributeMap next{{u"x", u"1"}};
    next.max_load_factor(0.5F);
    storage.Replace(std::move(next));
    EXPECT_EQ(&storage.Map(), map);
    EXPECT_EQ(*map, (AttributeStorage::AttributeMap{{u"x", u"1"}}));
    EXPECT_EQ(map->max_load_factor(), 0.5F);
}

TEST(AttributeStorage, TakeKeepsTheMapObjectInEveryCombination)
{
    const auto empty = [](const Pairs&) { return AttributeStorage(); };
    const std::array<std::function<AttributeStorage(const Pairs&)>, 3> forms{empty, &MakePacked,
                                                                             &MakeMapped};
    for (std::size_t own = 0; own < 3; ++own) {
        for (std::size_t other = 0; other < 3; ++other) {
            for (const bool mapSeen : {false, true}) {
                AttributeStorage storage = forms[own]({{u"old", u"1"}});
                const AttributeStorage source = forms[other](c_pairs);
                const AttributeStorage::AttributeMap* seen =
                    mapSeen ? &std::as_const(storage).Map() : nullptr;
                storage.Take(storage.PrepareReplacement(source));
                EXPECT_TRUE(storage.Equals(source)) << own << other << mapSeen;
                EXPECT_EQ(source.Size(), other == 0 ? 0U : 3U);
                if (mapSeen) {
                    EXPECT_EQ(&std::as_const(storage).Map(), seen);
                    EXPECT_EQ(seen->size(), source.Size());
                }
                EXPECT_EQ(storage.Map().size(), source.Size());
            }
        }
    }
}

TEST(AttributeStorage, ReadersOnSeveralThreadsGetTheSameMap)
{
    for (int round = 0; round < 200; ++round) {
        const AttributeStorage packed = MakePacked(c_pairs);
        std::array<const AttributeStorage::AttributeMap*, 4> maps{};
        std::array<TString, 4> values;
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < maps.size(); ++i) {
            threads.emplace_back([&, i] {
                const AttributeStorage copy(packed);
                std::u16string_view view;
                packed.View(u"name", view);
                maps[i] = &packed.Map();
                // The view is of the block that the map was built from, which is still there.
                values[i] = TString(view);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        for (std::size_t i = 0; i < maps.size(); ++i) {
            EXPECT_EQ(maps[i], maps[0]);
            EXPECT_EQ(values[i], TString(u"a longer value"));
        }
    }
}

// Elements

TEST(AttributeStorage, NobodyCanTellAParsedElementFromAnother)
{
    DOM dom;
    DOMElement* parsed = dom.GetRoot()->AppendChild(MakeParsed(dom, c_pairs));
    DOMElement plain(TString(u"a"));
    for (const auto& [name, value] : c_pairs)
        plain.SetAttribute(name, value);
    EXPECT_TRUE(*parsed == plain);
    EXPECT_TRUE(plain == *parsed);
    EXPECT_TRUE(parsed->HasAttributes());
    EXPECT_FALSE(parsed->IsEmpty());
    EXPECT_TRUE(parsed->HasAttribute(u"empty"));
    EXPECT_FALSE(parsed->HasAttribute(u"none"));
    EXPECT_EQ(parsed->GetAttribute(u"k"), TString(u"v"));
    EXPECT_EQ(parsed->GetParentAttr(u"k"), TString(u"v"));
    const DOMElement copy(*parsed);
    EXPECT_TRUE(copy == plain);
    EXPECT_EQ(parsed->RequireAttribute(u"k")->second, TString(u"v"));
    EXPECT_TRUE(copy == *parsed);
}

TEST(AttributeStorage, EveryChangeOfAParsedElementWorksAsOnAMap)
{
    DOM dom;
    const auto expect = [&](const std::function<void(DOMElement&)>& change) {
        DOMElement* parsed = dom.GetRoot()->AppendChild(MakeParsed(dom, c_pairs));
        DOMElement plain(TString(u"a"));
        for (const auto& [name, value] : c_pairs)
            plain.SetAttribute(name, value);
        const DOMElement untouched(*parsed);
        change(*parsed);
        change(plain);
        EXPECT_TRUE(*parsed == plain);
        EXPECT_EQ(parsed->GetAttributes(), plain.GetAttributes());
        EXPECT_EQ(untouched.GetAttributes().size(), 3U);
    };
    expect([](DOMElement& e) { e.SetAttribute(u"k", u"w"); });
    expect([](DOMElement& e) { e.SetAttribute(u"new", u"w"); });
    expect([](DOMElement& e) { e.RemoveAttribute(u"k"); });
    expect([](DOMElement& e) { e.RemoveAttribute(u"none"); });
    expect([](DOMElement& e) { e.GetAttributes().clear(); });
    expect([](DOMElement& e) { e.SetAttributes({{u"x", u"1"}}); });
    expect([](DOMElement& e) { e.AdoptAttribute(e, u"k"); });
    expect([](DOMElement& e) {
        DOMElement to(TString(u"t"));
        to.AdoptAttribute(e, u"k");
        EXPECT_EQ(to.GetAttribute(u"k"), TString(u"v"));
    });
    expect([](DOMElement& e) {
        DOMElement to(TString(u"t"));
        to.SetAttribute(u"k", u"own");
        to.AdoptAttributes(e, false);
        EXPECT_EQ(to.GetAttribute(u"k"), TString(u"own"));
        EXPECT_EQ(to.GetAttributes().size(), 3U);
    });
    expect([](DOMElement& e) {
        DOMElement from(TString(u"t"));
        from.SetAttribute(u"k", u"theirs");
        e.AdoptAttributes(from);
    });
    expect([](DOMElement& e) { e = DOMElement(TString(u"other")); });
}

TEST(AttributeStorage, AMapSeenThroughAConstElementFollowsLaterChanges)
{
    DOM dom;
    DOMElement* parsed = dom.GetRoot()->AppendChild(MakeParsed(dom, c_pairs));
    const DOMElement::AttributeMap& map = std::as_const(*parsed).GetAttributes();
    const TString& value = map.at(u"k");
    parsed->SetAttribute(u"k", u"w");
    EXPECT_EQ(value, TString(u"w"));
    parsed->SetAttribute(u"new", u"1");
    EXPECT_EQ(map.at(u"new"), TString(u"1"));
    *parsed = *MakeParsed(dom, {{u"x", u"2"}});
    EXPECT_EQ(map.size(), 1U);
    EXPECT_EQ(map.at(u"x"), TString(u"2"));
}
