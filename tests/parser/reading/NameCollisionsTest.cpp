#include "bytes/XercesText.h"
#include "direct/DirectScanning.h"
#include "support/CollidingNames.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/ParseLimits.h>
#include <kescorexml/Utf8InputSource.h>

#include <QString>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xercesc/util/XMLString.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const auto c_limit = static_cast<unsigned>(ParseLimits().GetNameCollisionLimit());

const char* const c_schema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
    "<xs:complexType mixed='true'><xs:sequence><xs:any processContents='lax' minOccurs='0' "
    "maxOccurs='unbounded'/></xs:sequence><xs:attribute name='id' type='xs:ID'/>"
    "<xs:anyAttribute processContents='lax'/></xs:complexType></xs:element></xs:schema>";

/// What the direct scanner leaves to Xerces.
std::string WithEntity(const std::string& declarations, const std::string& content)
{
    return "<!DOCTYPE a [<!ENTITY e ''>" + declarations + "]>" + content;
}

std::string RepeatFor(const std::vector<std::string>& names,
                      const std::function<std::string(const std::string&)>& make)
{
    std::string text;
    for (const std::string& name : names)
        text += make(name);
    return text;
}

/// A place in a document where names can be chosen.
struct Place
{
    const char* kind;
    bool validates;
    std::function<std::string(const std::vector<std::string>&)> make;
};

std::vector<Place> MakePlaces()
{
    const auto content = [](const char* before, const char* after) {
        return [=](const std::vector<std::string>& names) {
            return WithEntity("", "<a>" + RepeatFor(names, [&](const std::string& name) {
                                      return before + name + after;
                                  }) + "</a>");
        };
    };
    const auto declaration = [](const char* before, const char* after) {
        return [=](const std::vector<std::string>& names) {
            return WithEntity(
                RepeatFor(names, [&](const std::string& name) { return before + name + after; }),
                "<a/>");
        };
    };
    const auto validated = [](const char* before, const char* after) {
        return [=](const std::vector<std::string>& names) {
            return "<a>" +
                   RepeatFor(names,
                             [&](const std::string& name) { return before + name + after; }) +
                   "</a>";
        };
    };
    return {
        {"elements", false, content("<", "/>")},
        {"declared elements", false, declaration("<!ELEMENT ", " ANY>")},
        {"declared elements", false, declaration("<!ATTLIST ", " x CDATA #IMPLIED>")},
        {"declared attributes of an element", false,
         declaration("<!ATTLIST a ", " CDATA #IMPLIED>")},
        {"entities", false, declaration("<!ENTITY ", " ''>")},
        {"entities", false, declaration("<!NOTATION n SYSTEM ''><!ENTITY ", " SYSTEM '' NDATA n>")},
        {"parameter entities", false, declaration("<!ENTITY % ", " ''>")},
        {"notations", false, declaration("<!NOTATION ", " SYSTEM ''>")},
        {"attributes of a tag", false,
         [](const std::vector<std::string>& names) {
             return WithEntity("", "<a" + RepeatFor(names, [](const std::string& n) {
                                       return " " + n + "=''";
                                   }) + "/>");
         }},
        {"prefixes", true, validated("<b xmlns:", "='u'/>")},
        {"namespaces", true, validated("<b xmlns='", "'/>")},
        {"identifiers", true, validated("<a id='", "'/>")},
    };
}

std::vector<std::string> ParseErrors(const Place& place, const std::vector<std::string>& names,
                                     std::uint64_t limit = c_limit)
{
    DOMParser parser;
    parser.SetNameCollisionLimit(limit);
    if (place.validates)
        parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(c_schema, u"schema", false));
    std::vector<std::string> errors;
    for (const TString& error : parser.ParseXmlString(place.make(names), u"id")->GetErrors())
        errors.push_back(error.toStdString());
    return errors;
}

auto IsCollision(const std::string& kind)
{
    return ElementsAre(
        testing::AllOf(testing::MatchesRegex("Fatal Error\\([0-9]+,[0-9]+\\): .* \\(id: id\\)"),
                       HasSubstr(kind + " have names whose hashes collide (name collision limit, "
                                        "SetNameCollisionLimit)")));
}

/// With a byte-order mark.
std::vector<unsigned char> Widen(const std::string& ascii, std::size_t unitSize, bool isLittle)
{
    std::vector<unsigned char> bytes;
    const auto add = [&](unsigned unit) {
        for (std::size_t i = 0; i < unitSize; ++i) {
            const std::size_t place = isLittle ? i : unitSize - 1 - i;
            bytes.push_back(static_cast<unsigned char>(place < 2 ? unit >> (8 * place) : 0));
        }
    };
    add(0xFEFF);
    for (const char c : ascii)
        add(static_cast<unsigned char>(c));
    return bytes;
}

} // namespace

TEST(NameCollisions, EndAParseInEachTableOfTheScanner)
{
    for (const Place& place : MakePlaces()) {
        SCOPED_TRACE(place.kind);
        EXPECT_THAT(ParseErrors(place, MakeCollidingNames(5), 5), IsEmpty());
        EXPECT_THAT(ParseErrors(place, MakeCollidingNames(6), 5), IsCollision(place.kind));
        EXPECT_THAT(ParseErrors(place, MakeCollidingNames(c_limit)), IsEmpty());
        EXPECT_THAT(ParseErrors(place, MakeCollidingNames(c_limit + 1)), IsCollision(place.kind));
    }
}

TEST(NameCollisions, DoNotHappenToManyNamesByChance)
{
    for (const Place& place : MakePlaces()) {
        SCOPED_TRACE(place.kind);
        std::vector<std::string> names;
        for (int i = 0; i < (place.validates ? 2000 : 20000); ++i)
            names.push_back("name" + std::to_string(i));
        EXPECT_THAT(ParseErrors(place, names), IsEmpty());
    }
}

TEST(NameCollisions, DoNotHappenToTenThousandRegularNames)
{
    for (const char* const pattern :
         {"N%05d00", "_%05d__", "fig%05d.0", "m%04d_e", "id%d", "x%d00"}) {
        std::vector<std::string> names;
        for (int i = 0; i < 10000; ++i)
            names.push_back(QString::asprintf(pattern, i).toStdString());
        for (const Place& place : MakePlaces()) {
            // So many namespaces of one element are too much for validation.
            if (std::string_view(place.kind) == "namespaces")
                continue;
            SCOPED_TRACE(std::string(pattern) + " as " + place.kind);
            EXPECT_THAT(ParseErrors(place, names), IsEmpty());
        }
    }
}

TEST(NameCollisions, AreFoundWhereTheyAreOnesOfTheTablesSizeAlone)
{
    // The table of elements has 479 buckets when it holds 180 to 359.
    std::vector<std::string> names;
    for (int i = 0; names.size() < 257; ++i) {
        const TString name = TString::fromStdString("n" + std::to_string(i));
        if (xercesc::XMLString::hash(GetInternalXMLChPtrFromTString(name), 479) == 100)
            names.push_back(name.toStdString());
    }
    const Place elements = MakePlaces().front();
    EXPECT_THAT(ParseErrors(elements, names, 256), IsCollision("elements"));
    names.pop_back();
    EXPECT_THAT(ParseErrors(elements, names, 256), IsEmpty());
}

TEST(NameCollisions, OfOneDocumentDoNotCountForTheNext)
{
    DOMParser parser;
    const Place elements = MakePlaces().front();
    const std::vector<std::string> names = MakeCollidingNames(1600);
    const std::vector<std::string> first(names.begin(), names.begin() + 800);
    const std::vector<std::string> second(names.begin() + 800, names.end());
    EXPECT_FALSE(parser.ParseXmlString(elements.make(first), u"id")->HasErrors());
    EXPECT_FALSE(parser.ParseXmlString(elements.make(second), u"id")->HasErrors());
}

TEST(NameCollisions, LeaveWhatCameBeforeInTheTree)
{
    DOMParser parser;
    const auto document =
        parser.ParseXmlString(MakePlaces().front().make(MakeCollidingNames(2000)), u"id");
    ASSERT_NE(document->GetDocumentRoot(), nullptr);
    EXPECT_EQ(document->GetDocumentRoot()->GetChildren().size(), c_limit);
}

TEST(NameCollisions, OfATagAreFoundBeforeTheScannerMeetsThem)
{
    const std::string head = "<a>text\n<b/>";
    const std::string attributes = RepeatFor(
        MakeCollidingNames(2000), [](const std::string& n) { return "\t" + n + " = \"x>y\""; });
    const std::string document = head + "<c" + attributes + "></c></b>";
    DOMParser parser;
    const auto broken = parser.ParseXmlString(document, u"id");
    EXPECT_EQ(broken->GetDocumentRoot(), nullptr);
    ASSERT_EQ(broken->GetErrors().size(), 1U);
    EXPECT_THAT(broken->GetErrors().front().toStdString(),
                testing::StartsWith("Fatal Error(2,5): more than 1024 attributes of a tag "));
    // In other encodings, too.
    for (const auto& [unitSize, isLittle] :
         {std::pair(2U, true), std::pair(2U, false), std::pair(4U, true), std::pair(4U, false)}) {
        SCOPED_TRACE(unitSize);
        const auto errors = parser.ParseXmlBytes(Widen(document, unitSize, isLittle))->GetErrors();
        ASSERT_EQ(errors.size(), 1U);
        EXPECT_THAT(errors.front().toStdString(),
                    testing::StartsWith("Fatal Error(2,5): more than 1024 attributes of a tag "));
    }
}

TEST(NameCollisions, OfATagAreLookedForNoFurtherThanTheNextOpening)
{
    // A tag that was gone through to its end could make each one before it a long way, too.
    const std::string attributes =
        RepeatFor(MakeCollidingNames(10000), [](const std::string& n) { return " " + n + "=''"; });
    for (const char* const before : {"x='", "x y='", "x"}) {
        const std::string document = WithEntity(
            "", "<a " + std::string(before) + std::string(400000, 'x') + "<!'" + attributes + "/>");
        const auto errors = DOMParser().ParseXmlString(document, u"id")->GetErrors();
        ASSERT_EQ(errors.size(), 1U);
        EXPECT_THAT(errors.front().toStdString(), Not(HasSubstr("hashes collide")));
    }
}

TEST(NameCollisions, OfTheDirectScannerDoNotExist)
{
    for (const char* const rest : {"", "<a>", "x"}) {
        const std::string document =
            "<a>" +
            RepeatFor(MakeCollidingNames(2000),
                      [](const std::string& n) { return "<" + n + " " + n + "=''/>"; }) +
            "</a>" + rest;
        const auto errors = DOMParser().ParseXmlString(document, u"id")->GetErrors();
        if (DirectScanning::IsEnabled() && *rest == 0)
            EXPECT_TRUE(errors.empty());
        else
            ASSERT_EQ(errors.size(), 1U);
    }
}
