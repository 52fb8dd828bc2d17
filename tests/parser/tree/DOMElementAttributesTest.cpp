#include <kescorexml/DOMElement.h>

#include "support/ExpectMissing.h"
#include "support/TreeTesting.h"

TEST(DOMElement, GetAttributeOfAnAbsentOneIsEmpty)
{
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"k", u"v");
    EXPECT_TRUE(element.HasAttribute(u"k"));
    EXPECT_EQ(element.GetAttribute(u"k"), TString(u"v"));
    EXPECT_FALSE(element.HasAttribute(u"K"));
    EXPECT_EQ(element.GetAttribute(u"K"), TString());
}

TEST(DOMElement, SetAttributeOverwrites)
{
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"k", u"v");
    element.SetAttribute(u"k", u"w");
    EXPECT_EQ(element.GetAttribute(u"k"), TString(u"w"));
    EXPECT_EQ(element.GetAttributes().size(), 1U);
}

TEST(DOMElement, RemoveAttributeOfAnAbsentOneDoesNothing)
{
    DOMElement element(TString(u"a"));
    element.RemoveAttribute(u"k");
    element.SetAttribute(u"k", u"v");
    element.RemoveAttribute(u"x");
    EXPECT_TRUE(element.HasAttribute(u"k"));
    element.RemoveAttribute(u"k");
    EXPECT_FALSE(element.HasAttribute(u"k"));
}

TEST(DOMElement, ANameInsideTheMapMayBeUsedToRemoveItsEntry)
{
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"k", u"v");
    element.RemoveAttribute(element.GetAttributes().begin()->first);
    EXPECT_FALSE(element.HasAttributes());
}

TEST(DOMElement, RequireAttributeGivesTheEntryOrThrows)
{
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"k", u"v");
    const auto entry = element.RequireAttribute(u"k");
    EXPECT_EQ(entry->first, TString(u"k"));
    EXPECT_EQ(entry->second, TString(u"v"));
    EXPECT_EQ(&*entry, &*element.GetAttributes().find(u"k"));
    ExpectMissing([&] { element.RequireAttribute(u"x"); }, "x", 0x3473F8A4,
                  "DOMException_RequiredDOMAttribute_0x3473F8A4");
}

TEST(DOMElement, SetAttributesTakesOverACopy)
{
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"old", u"1");
    DOMElement::AttributeMap attributes{{u"k", u"v"}, {u"l", u"w"}};
    attributes.max_load_factor(0.25F);
    const auto same = attributes;
    element.SetAttributes(attributes);
    EXPECT_EQ(attributes, same);
    EXPECT_EQ(element.GetAttributes(), same);
    EXPECT_EQ(element.GetAttributes().max_load_factor(), 0.25F);
}

TEST(DOMElement, SetAttributesTakesBucketsAndLoadFactorAlong)
{
    DOMElement::AttributeMap attributes{{u"k", u"v"}, {u"l", u"w"}};
    attributes.max_load_factor(0.25F);
    attributes.rehash(1000);
    for (const bool hasBefore : {false, true}) {
        DOMElement element(TString(u"a"));
        if (hasBefore) {
            element.SetAttribute(u"before", u"1");
            element.GetAttributes().max_load_factor(4.0F);
        }
        element.SetAttributes(attributes);
        EXPECT_EQ(element.GetAttributes(), attributes);
        EXPECT_EQ(element.GetAttributes().bucket_count(), attributes.bucket_count());
        EXPECT_EQ(element.GetAttributes().max_load_factor(), 0.25F);
    }
}

TEST(DOMElement, SetAttributesOfAnRvalueTakesOverItsStorage)
{
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"old", u"1");
    DOMElement::AttributeMap attributes{{u"k", u"v"}};
    attributes.max_load_factor(0.5F);
    attributes.reserve(1000);
    const std::size_t buckets = attributes.bucket_count();
    const TString* value = &attributes.find(u"k")->second;
    element.SetAttributes(std::move(attributes));
    EXPECT_EQ(element.GetAttributes().size(), 1U);
    EXPECT_EQ(&element.RequireAttribute(u"k")->second, value);
    EXPECT_EQ(element.GetAttributes().bucket_count(), buckets);
    EXPECT_EQ(element.GetAttributes().max_load_factor(), 0.5F);
}

TEST(DOMElement, SetAttributesFromItsOwnMapKeepsThem)
{
    DOMElement element(TString(u"a"));
    element.SetAttribute(u"k", u"v");
    element.SetAttributes(std::as_const(element).GetAttributes());
    EXPECT_EQ(element.GetAttribute(u"k"), TString(u"v"));
}

TEST(DOMElement, TheMapStaysTheSameObjectAndSeesLaterChanges)
{
    DOMElement element(TString(u"a"));
    const DOMElement::AttributeMap& map = std::as_const(element).GetAttributes();
    DOMElement other(TString(u"b"));
    other.SetAttribute(u"o", u"1");

    element.SetAttribute(u"k", u"v");
    EXPECT_EQ(map.size(), 1U);
    element.SetAttributes({{u"x", u"1"}, {u"y", u"2"}});
    EXPECT_EQ(map.size(), 2U);
    const DOMElement::AttributeMap lvalue{{u"z", u"3"}};
    element.SetAttributes(lvalue);
    EXPECT_EQ(map, lvalue);
    element = other;
    EXPECT_EQ(map.at(u"o"), TString(u"1"));
    element.AdoptAttributes(other);
    EXPECT_EQ(map.at(u"o"), TString(u"1"));
    element.GetAttributes()[u"direct"] = u"4";
    EXPECT_EQ(element.GetAttribute(u"direct"), TString(u"4"));
    EXPECT_EQ(&map, &element.GetAttributes());
    EXPECT_EQ(&map, &std::as_const(element).GetAttributes());
}

TEST(DOMElement, GetParentAttrAsksTheNearestAncestor)
{
    const auto root = MakeTree("r(a(b(c)))");
    root->SetAttribute(u"k", u"root");
    root->SetAttribute(u"far", u"root");
    Find(*root, "a").SetAttribute(u"k", u"a");
    DOMElement& c = Find(*root, "c");
    EXPECT_EQ(c.GetParentAttr(u"k"), TString(u"a"));
    EXPECT_EQ(c.GetParentAttr(u"far"), TString(u"root"));
    EXPECT_EQ(c.GetParentAttr(u"none"), TString());
    EXPECT_EQ(GetParentAttrIteratively(&c, u"k"), TString(u"a"));
    EXPECT_EQ(GetParentAttrIteratively(nullptr, u"k"), TString());
    // A value that is there but empty is found.
    c.SetAttribute(u"k", TString());
    EXPECT_EQ(c.GetParentAttr(u"k"), TString());
    EXPECT_EQ(GetParentAttrIteratively(&c, u"k"), TString());
}

TEST(DOMElement, StringToBoolKnowsSixTexts)
{
    for (const char* text : {"true", "yes", "1"}) {
        bool out = false;
        EXPECT_TRUE(DOMElement::StringToBool(text, out)) << text;
        EXPECT_TRUE(out) << text;
    }
    for (const char* text : {"false", "no", "0"}) {
        bool out = true;
        EXPECT_TRUE(DOMElement::StringToBool(text, out)) << text;
        EXPECT_FALSE(out) << text;
    }
}

TEST(DOMElement, StringToBoolLeavesTheOutputAloneForAnythingElse)
{
    for (const char* text : {"TRUE", "True", "YES", "No", "FALSE", " true", "true ", "", "2", "00",
                             "10", "tru", "truee", "y", "n", "on", "off"}) {
        for (const bool before : {false, true}) {
            bool out = before;
            EXPECT_FALSE(DOMElement::StringToBool(text, out)) << text;
            EXPECT_EQ(out, before) << text;
        }
    }
}

TEST(DOMElement, AdoptAttributeMovesOneValue)
{
    DOMElement to(TString(u"a"));
    DOMElement from(TString(u"b"));
    to.SetAttribute(u"k", u"old");
    from.SetAttribute(u"k", u"new");
    from.SetAttribute(u"l", u"stays");
    to.AdoptAttribute(from, u"k");
    EXPECT_EQ(to.GetAttribute(u"k"), TString(u"new"));
    EXPECT_FALSE(from.HasAttribute(u"k"));
    EXPECT_TRUE(from.HasAttribute(u"l"));
    EXPECT_FALSE(to.HasAttribute(u"l"));
    to.AdoptAttribute(from, u"absent");
    EXPECT_FALSE(to.HasAttribute(u"absent"));
    EXPECT_EQ(to.GetAttributes().size(), 1U);
    to.AdoptAttribute(from, u"l");
    EXPECT_EQ(to.GetAttribute(u"l"), TString(u"stays"));
}

TEST(DOMElement, AdoptAttributeThatFromLacksKeepsTheOwnValue)
{
    DOMElement to(TString(u"a"));
    DOMElement from(TString(u"b"));
    to.SetAttribute(u"k", u"own");
    to.AdoptAttribute(from, u"k");
    EXPECT_EQ(to.GetAttribute(u"k"), TString(u"own"));
}

TEST(DOMElement, AdoptAttributesReplacesValuesByDefault)
{
    for (const bool explicitly : {false, true}) {
        DOMElement to(TString(u"a"));
        DOMElement from(TString(u"b"));
        to.SetAttributes({{u"k", u"old"}, {u"own", u"1"}});
        from.SetAttributes({{u"k", u"new"}, {u"more", u"2"}});
        if (explicitly)
            to.AdoptAttributes(from, true);
        else
            to.AdoptAttributes(from);
        EXPECT_EQ(to.GetAttributes(),
                  (DOMElement::AttributeMap{{u"k", u"new"}, {u"own", u"1"}, {u"more", u"2"}}));
        EXPECT_FALSE(from.HasAttributes());
    }
}

TEST(DOMElement, AdoptAttributesWithoutOverwritingDropsWhatIsNotTaken)
{
    DOMElement to(TString(u"a"));
    DOMElement from(TString(u"b"));
    to.SetAttributes({{u"k", u"old"}, {u"own", u"1"}});
    from.SetAttributes({{u"k", u"new"}, {u"more", u"2"}});
    to.AdoptAttributes(from, false);
    EXPECT_EQ(to.GetAttributes(),
              (DOMElement::AttributeMap{{u"k", u"old"}, {u"own", u"1"}, {u"more", u"2"}}));
    EXPECT_FALSE(from.HasAttributes());
}

TEST(DOMElement, AdoptingFromItselfErases)
{
    DOMElement element(TString(u"a"));
    element.SetAttributes({{u"k", u"1"}, {u"l", u"2"}});
    element.AdoptAttribute(element, u"k");
    EXPECT_EQ(element.GetAttributes(), (DOMElement::AttributeMap{{u"l", u"2"}}));
    element.AdoptAttributes(element);
    EXPECT_FALSE(element.HasAttributes());
}
