#include "sinks/AttributeMaps.h"

#include "sinks/AttributeAssembler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using Map = AttributeMaps::AttributeMap;
using Attributes = std::vector<std::pair<const char16_t*, std::u16string>>;

/// What a tag shows, with the room that its views need.
class Tag
{
public:
    Tag(ParsedNames& names, std::u16string_view element, const Attributes& attributes)
        : m_names(names), m_element(names.Find(element)), m_attributes(attributes)
    {
        for (const auto& [name, value] : m_attributes) {
            m_attributeNames.push_back(name);
            m_attributeValues.push_back(value);
        }
    }

    StartTag Get() const { return {m_names, m_element, m_attributeNames, m_attributeValues}; }

private:
    ParsedNames& m_names;
    ParsedNames::Entry& m_element;
    const Attributes m_attributes;
    std::vector<const char16_t*> m_attributeNames;
    std::vector<std::u16string_view> m_attributeValues;
};

class AttributeMapsTest : public testing::Test
{
protected:
    Map* Fill(std::u16string_view element, const Attributes& attributes)
    {
        return maps.Fill(Tag(names, element, attributes).Get());
    }
    /// Expects all that a caller can see of the map to be as that of a new one.
    void ExpectFillsAsNew(std::u16string_view element, const Attributes& attributes)
    {
        const Map expected = ToAttributeMap(Tag(names, element, attributes).Get());
        const Map* const map = Fill(element, attributes);
        ASSERT_NE(map, nullptr);
        EXPECT_EQ(*map, expected);
        EXPECT_EQ(map->bucket_count(), expected.bucket_count());
        EXPECT_EQ(map->max_load_factor(), expected.max_load_factor());
        EXPECT_TRUE(std::equal(map->begin(), map->end(), expected.begin()));
    }

    ParsedNames names;
    AttributeMaps maps;
    const Attributes first{{u"a", u"1"}, {u"b", u""}, {u"c", u"a longer value than the others"}};
    const Attributes second{{u"a", u"two"}, {u"b", u"x"}, {u"c", u""}};
};

} // namespace

TEST_F(AttributeMapsTest, AreAsNewForEveryTag)
{
    for (int round = 0; round < 3; ++round) {
        ExpectFillsAsNew(u"e", first);
        ExpectFillsAsNew(u"e", second);
        ExpectFillsAsNew(u"e", {{u"c", u"1"}, {u"a", u"2"}});
        ExpectFillsAsNew(u"other", {{u"c", u"1"}});
    }
}

TEST_F(AttributeMapsTest, UseNodesAndMemoryAgainThatWereLeft)
{
    const TString* const value = &Fill(u"e", first)->at(u"c");
    const char16_t* const units = value->utf16();
    Map* const map = Fill(u"e", {{u"a", u"2"}, {u"b", u"3"}, {u"c", u"no longer than before"}});
    EXPECT_EQ(&map->at(u"c"), value);
    EXPECT_EQ(value->utf16(), units);
}

TEST_F(AttributeMapsTest, LeaveWhatWasTakenToWhoeverTookIt)
{
    const Map taken = std::move(*Fill(u"e", first));
    ExpectFillsAsNew(u"e", second);
    const TString shared = Fill(u"e", first)->at(u"c");
    ExpectFillsAsNew(u"e", second);
    EXPECT_EQ(taken, ToAttributeMap(Tag(names, u"e", first).Get()));
    EXPECT_EQ(shared, TString(u"a longer value than the others"));
}

TEST_F(AttributeMapsTest, ForgetWhatACallerHasDoneToThem)
{
    const auto change = [this](auto&& apply) {
        apply(*Fill(u"e", first));
        ExpectFillsAsNew(u"e", second);
    };
    change([](Map& map) { map.clear(); });
    change([](Map& map) { map.erase(u"a"); });
    change([](Map& map) { map.emplace(u"z", u"1"); });
    change([](Map& map) { map = {{u"x", u"1"}, {u"y", u"2"}, {u"z", u"3"}}; });
    change([](Map& map) {
        map.erase(u"a");
        map.emplace(u"z", u"1");
    });
    change([](Map& map) {
        auto node = map.extract(u"a");
        node.key() = u"z";
        map.insert(std::move(node));
    });
    change([](Map& map) { map.rehash(100); });
    change([](Map& map) { map.max_load_factor(0.5F); });
    change([](Map& map) {
        for (auto& [name, value] : map)
            value += u"more";
    });
    change([](Map& map) { std::swap(map.at(u"a"), map.at(u"c")); });
}

TEST_F(AttributeMapsTest, TakeAnEmptyNameForNoneOfTheirs)
{
    // Whatever place it comes to, a longer list has been there.
    const Attributes long_{{u"a", u"1"}, {u"b", u"2"}, {u"c", u"3"},
                           {u"d", u"4"}, {u"e", u"5"}, {u"f", u"6"}};
    for (int i = 0; i < 200; ++i)
        ExpectFillsAsNew(TString(u"long") + TString::number(i / 2), long_);
    const Attributes pair{{u"a", u"1"}, {u"b", u"2"}};
    ExpectFillsAsNew(u"e", pair);
    for (int i = 0; i < 2; ++i) {
        Map& map = *Fill(u"e", pair);
        map.erase(u"a");
        map[TString()] = u"x";
    }
    ExpectFillsAsNew(u"e", pair);
}

TEST_F(AttributeMapsTest, AreNotKeptForWhatIsRare)
{
    EXPECT_EQ(Fill(u"e", {}), nullptr);
    EXPECT_EQ(Fill(u"e", {{u"a", std::u16string(10000, u'x')}}), nullptr);
    EXPECT_EQ(Fill(u"e", {{std::u16string(10000, u'x').c_str(), u"1"}}), nullptr);
    const std::u16string longName(10000, u'x');
    EXPECT_EQ(Fill(u"e", {{u"a", u"1"}, {longName.c_str(), u"2"}}), nullptr);
    EXPECT_EQ(Fill(u"e", {{u"a", u"1"}, {u"a", u"2"}}), nullptr);
    EXPECT_EQ(Fill(u"e", {{u"IllegalColon:a", u"1"}}), nullptr);
}

TEST_F(AttributeMapsTest, AreAsNewWhenThereAreMoreListsOfNamesThanMapsAreKept)
{
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 200; ++i) {
            const TString element = TString(u"e") + TString::number(i);
            ExpectFillsAsNew(element, first);
        }
    }
}
