#include "support/TreeTesting.h"

#include <kescorexml/DOMParser.h>

#include <array>
#include <random>
#include <string>

namespace {

/// Names that begin like one another, repeat, and are too long for a slab now and then.
std::string DrawName(std::mt19937& random)
{
    constexpr std::array<unsigned, 7> c_lengths{1, 2, 3, 4, 9, 400, 600};
    return std::string(c_lengths[random() % c_lengths.size()], "ab"[random() % 2]);
}

std::string DrawValue(std::mt19937& random)
{
    constexpr std::array<unsigned, 7> c_lengths{0, 1, 5, 30, 200, 505, 3000};
    return std::string(c_lengths[random() % c_lengths.size()], 'v');
}

} // namespace

TEST(TreeSink, NamesAndValuesAreThoseOfTheDocumentInWhateverOrderTheyCome)
{
    std::mt19937 random(20240501);
    const DOMParser parser;
    for (int round = 0; round < 20; ++round) {
        std::string text = "<r>";
        std::vector<std::array<std::string, 5>> expected;
        for (int i = 0; i < 300; ++i) {
            const std::string second = random() % 2 == 0 ? "x" : "xx";
            expected.push_back({DrawName(random), DrawValue(random), second, DrawValue(random),
                                DrawValue(random)});
            const auto& [name, value, key, other, content] = expected.back();
            text += "<" + name + " k='" + value + "' " + key + "='" + other + "'>" + content +
                    "</" + name + ">";
        }
        const auto dom = parser.ParseXmlString(text + "</r>", TString());
        const auto children = dom->GetDocumentRoot()->GetChildren();
        ASSERT_EQ(children.size(), expected.size());
        std::size_t i = 0;
        for (const auto& child : children) {
            const auto& [name, value, key, other, content] = expected[i++];
            EXPECT_EQ(child->GetName(), TString::fromStdString(name));
            EXPECT_EQ(child->GetAttribute(u"k"), TString::fromStdString(value));
            EXPECT_EQ(child->GetAttribute(TString::fromStdString(key)),
                      TString::fromStdString(other));
            EXPECT_EQ(child->GetText(), TString::fromStdString(content));
        }
    }
}

TEST(TreeSink, NamesOutliveTheirDocumentAndItsParser)
{
    std::vector<TString> names;
    {
        const DOMParser parser;
        const auto dom = parser.ParseXmlString("<r><a/><b/><a/><b/></r>", TString());
        for (const auto& child : dom->GetDocumentRoot()->GetChildren())
            names.push_back(child->GetName());
    }
    EXPECT_THAT(names,
                testing::ElementsAre(TString(u"a"), TString(u"b"), TString(u"a"), TString(u"b")));
}

TEST(TreeSink, WhatParsedElementsWereGivenLaterEndsWithThem)
{
    const DOMParser parser;
    const auto dom = parser.ParseXmlString("<r><a k='v'>text<c/></a><b k='v'/></r>", TString());
    for (const auto& child : dom->GetDocumentRoot()->GetChildren()) {
        child->SetName(TString(u"a name of its own"));
        TString emptied(u"a text of its own");
        emptied.resize(0);
        child->SetText(emptied);
        child->GetAttributes().clear();
        child->AddNewChild(u"d");
        child->RemoveChildren();
    }
    // Nothing is lost, which the sanitizer sees, and nothing is ended twice.
    EXPECT_EQ(Outline(*dom->GetDocumentRoot()), "r(a name of its own,a name of its own)");
}
