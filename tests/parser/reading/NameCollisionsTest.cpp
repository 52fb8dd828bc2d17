#include "bytes/XercesText.h"
#include "direct/DirectScanning.h"
#include "support/CollidingNames.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/ParseLimits.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <QString>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xercesc/util/XMLString.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
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

class DeafSink : public SAXInterface
{
public:
    void StartElement(TString&&, std::unordered_map<TString, TString>&&) override {}
    void EndElement() override {}
    void TextContent(const TString&) override {}
};

/// So many names that share a bucket in a table of that size.
std::vector<std::string> FindNames(unsigned modulus, std::size_t count)
{
    std::vector<std::string> names;
    for (int i = 0; names.size() < count; ++i) {
        const TString name = TString::fromStdString("n" + std::to_string(i));
        if (xercesc::XMLString::hash(GetInternalXMLChPtrFromTString(name), modulus) == 100)
            names.push_back(name.toStdString());
    }
    return names;
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
    std::vector<std::string> names = FindNames(479, 257);
    const Place elements = MakePlaces().front();
    EXPECT_THAT(ParseErrors(elements, names, 256), IsCollision("elements"));
    names.pop_back();
    EXPECT_THAT(ParseErrors(elements, names, 256), IsEmpty());
}

TEST(NameCollisions, OfElementsAreNoneOfASchemaWhichLooksElsewhere)
{
    // The table of the elements that no schema declares does not grow: validation counts its work.
    Place elements = MakePlaces().front();
    elements.validates = true;
    elements.make = [](const std::vector<std::string>& names) {
        return "<a>" + RepeatFor(names, [](const std::string& n) { return "<" + n + "/>"; }) +
               "</a>";
    };
    EXPECT_THAT(ParseErrors(elements, MakeCollidingNames(20), 10), IsEmpty());
}

TEST(NameCollisions, OfNamesInContentModelsAreThoseOfDeclaredElements)
{
    const auto parse = [](unsigned count) {
        DOMParser parser;
        parser.SetNameCollisionLimit(20);
        std::string declarations;
        for (const std::string& name : MakeCollidingNames(count))
            declarations +=
                "<!ELEMENT x" + std::to_string(declarations.size()) + " (#PCDATA|" + name + ")*>";
        return parser.ParseXmlString(WithEntity(declarations, "<a/>"), u"id")->HasErrors();
    };
    EXPECT_FALSE(parse(15));
    EXPECT_TRUE(parse(21));
}

TEST(NameCollisions, OfNamesInAContentModelAreFoundBeforeItsEnd)
{
    // It would take time in the square of their number to get there.
    for (const char* const begin : {"(#PCDATA|", "(x,(y|z)*,(", "((("}) {
        for (const bool isPrefixed : {false, true}) {
            SCOPED_TRACE(begin);
            std::string names;
            for (const std::string& name : MakeCollidingNames(22))
                names += (isPrefixed ? "p:" : "") + name + "|";
            DOMParser parser;
            parser.SetNameCollisionLimit(20);
            std::vector<std::string> errors;
            for (const TString& error :
                 parser.ParseXmlString("<!DOCTYPE a [<!ELEMENT a " + (begin + names), u"id")
                     ->GetErrors())
                errors.push_back(error.toStdString());
            EXPECT_THAT(errors, IsCollision("declared elements"));
        }
    }
}

TEST(NameCollisions, OfATagThatCharacterReferencesHideAreFoundWhereItsEntityIsDeclared)
{
    const auto parse = [](const std::string& opening, unsigned count) {
        const std::string tag = opening + "b" +
                                RepeatFor(MakeCollidingNames(count),
                                          [](const std::string& n) { return " " + n + "=''"; }) +
                                "/>";
        DOMParser parser;
        parser.SetNameCollisionLimit(20);
        std::vector<std::string> errors;
        for (const TString& error :
             parser.ParseXmlString(WithEntity("<!ENTITY f \"" + tag + "\">", "<a/>"), u"id")
                 ->GetErrors())
            errors.push_back(error.toStdString());
        return errors;
    };
    EXPECT_THAT(parse("&#60;", 20), IsEmpty());
    EXPECT_THAT(parse("&#60;", 21), IsCollision("attributes of a tag"));
    EXPECT_THAT(parse("&#x3C;", 21), IsCollision("attributes of a tag"));
    // In content, this one begins no tag.
    EXPECT_THAT(parse("&#38;#60;", 21), IsEmpty());
}

TEST(NameCollisions, OfElementsAreNotHiddenByDeclaredOnesWhichLieElsewhere)
{
    std::string declarations;
    std::string content;
    for (int i = 0; i < 300; ++i) {
        declarations += "<!ELEMENT p" + std::to_string(i) + " EMPTY>";
        content += "<p" + std::to_string(i) + "/>";
    }
    // The table of undeclared elements has 239 buckets when it holds 89 to 178.
    for (const std::string& name : FindNames(239, 150))
        content += "<" + name + "/>";
    DOMParser parser;
    parser.SetNameCollisionLimit(100);
    EXPECT_TRUE(parser.ParseXmlString(WithEntity(declarations, "<a>" + content + "</a>"), u"id")
                    ->HasErrors());
}

TEST(NameCollisions, OfOneDocumentDoNotCountForTheNext)
{
    DOMParser parser;
    const Place elements = MakePlaces().front();
    const std::vector<std::string> names = MakeCollidingNames(6000);
    const std::vector<std::string> first(names.begin(), names.begin() + 3000);
    const std::vector<std::string> second(names.begin() + 3000, names.end());
    EXPECT_FALSE(parser.ParseXmlString(elements.make(first), u"id")->HasErrors());
    EXPECT_FALSE(parser.ParseXmlString(elements.make(second), u"id")->HasErrors());
}

TEST(NameCollisions, LeaveWhatCameBeforeInTheTree)
{
    DOMParser parser;
    const auto document =
        parser.ParseXmlString(MakePlaces().front().make(MakeCollidingNames(c_limit + 900)), u"id");
    ASSERT_NE(document->GetDocumentRoot(), nullptr);
    EXPECT_EQ(document->GetDocumentRoot()->GetChildren().size(), c_limit);
}

TEST(NameCollisions, OfATagAreFoundBeforeTheScannerMeetsThem)
{
    const std::string head = "<a>text\n<b/>";
    const std::string attributes =
        RepeatFor(MakeCollidingNames(c_limit + 900),
                  [](const std::string& n) { return "\t" + n + " = \"x>y\""; });
    const std::string document = head + "<c" + attributes + "></c></b>";
    DOMParser parser;
    const auto broken = parser.ParseXmlString(document, u"id");
    EXPECT_EQ(broken->GetDocumentRoot(), nullptr);
    ASSERT_EQ(broken->GetErrors().size(), 1U);
    EXPECT_THAT(broken->GetErrors().front().toStdString(),
                testing::StartsWith("Fatal Error(2,5): more than 4096 attributes of a tag "));
    // In other encodings, too.
    for (const auto& [unitSize, isLittle] :
         {std::pair(2U, true), std::pair(2U, false), std::pair(4U, true), std::pair(4U, false)}) {
        SCOPED_TRACE(unitSize);
        const auto errors = parser.ParseXmlBytes(Widen(document, unitSize, isLittle))->GetErrors();
        ASSERT_EQ(errors.size(), 1U);
        EXPECT_THAT(errors.front().toStdString(),
                    testing::StartsWith("Fatal Error(2,5): more than 4096 attributes of a tag "));
    }
}

TEST(NameCollisions, AreNoneInWhatLooksLikeATagButIsNone)
{
    const std::string attributes = RepeatFor(MakeCollidingNames(c_limit + 900),
                                             [](const std::string& n) { return " " + n + "='x'"; });
    // The scanner of all documents reads those that are wrong.
    for (const std::string& construct : {"<?p" + attributes + "?>", "<!--" + attributes + "-->"}) {
        const auto errors =
            DOMParser().ParseXmlString("<a>" + construct + "</b>", u"id")->GetErrors();
        ASSERT_EQ(errors.size(), 1U);
        EXPECT_THAT(errors.front().toStdString(), testing::HasSubstr("expected end of tag 'a'"));
    }
}

TEST(NameCollisions, OfATagAreFoundBetweenBlanksOfVersion11)
{
    // U+0085 and U+2028.
    for (const char* const blank : {"\xC2\x85", "\xE2\x80\xA8"}) {
        const std::string tag =
            "<c" + RepeatFor(MakeCollidingNames(c_limit + 900), [&](const std::string& n) {
                return blank + n + blank + "=" + blank + "''";
            });
        DOMParser parser;
        const auto document =
            parser.ParseXmlString("<?xml version='1.1'?><a>" + tag + blank + "/></a>", u"id");
        EXPECT_EQ(document->GetDocumentRoot(), nullptr);
        ASSERT_EQ(document->GetErrors().size(), 1U);
        EXPECT_THAT(document->GetErrors().front().toStdString(), HasSubstr("hashes collide"));
        // Without them, they are blanks for the scanner, too.
        parser.SetNameCollisionLimit(c_limit + 900);
        EXPECT_FALSE(
            parser.ParseXmlString("<?xml version='1.1'?><a>" + tag + blank + "/></a>", u"id")
                ->HasErrors());
    }
}

TEST(NameCollisions, OfATagCountInATableThatAnotherTagHasMadeLarge)
{
    // 256 attributes make it 457 buckets large, of which the names share one.
    const auto attribute = [](const std::string& n) { return " " + n + "=''"; };
    std::vector<std::string> many;
    for (int i = 0; i < 300; ++i)
        many.push_back("p" + std::to_string(i));
    const std::string primer = "<b" + RepeatFor(many, attribute) + "/>";
    const std::string tag = "<c" + RepeatFor(FindNames(457, 150), attribute) + "/>";
    const auto parse = [](DOMParser& parser, const std::string& content) {
        parser.SetNameCollisionLimit(100);
        return parser.ParseXmlString(WithEntity("", "<a>" + content + "</a>"), u"id")->HasErrors();
    };
    DOMParser parser;
    EXPECT_FALSE(parse(parser, tag));
    DOMParser other;
    EXPECT_TRUE(parse(other, primer + tag));
    // Nor is it smaller for the next document.
    EXPECT_TRUE(parse(other, tag));
}

TEST(NameCollisions, CountInTablesThatTheDocumentBeforeHasMadeLarge)
{
    std::vector<std::string> many;
    for (int i = 0; i < 300; ++i)
        many.push_back("p" + std::to_string(i));
    const Place elements = MakePlaces().front();
    DOMParser parser;
    parser.SetNameCollisionLimit(100);
    const std::string document = elements.make(FindNames(479, 110));
    EXPECT_FALSE(parser.ParseXmlString(document, u"id")->HasErrors());
    EXPECT_FALSE(parser.ParseXmlString(elements.make(many), u"id")->HasErrors());
    EXPECT_TRUE(parser.ParseXmlString(document, u"id")->HasErrors());
}

TEST(NameCollisions, OfPrefixesCountForAllDocumentsThatAParserValidates)
{
    for (const std::string before : {"<b xmlns:", "<b xmlns='"}) {
        const std::string after = before.back() == ':' ? "='u'/>" : "'/>";
        const std::vector<std::string> names = MakeCollidingNames(30);
        Utf8InputSource none("<a/>", u"id", false);
        const auto parser = XercesXMLParser::Create(none, std::make_shared<DeafSink>());
        parser->LoadXSDString(c_schema, u"schema");
        parser->SetNameCollisionLimit(20);
        for (unsigned i = 0; i < 30; ++i) {
            Utf8InputSource source("<a>" + before + names[i] + after + "</a>", u"id", false);
            parser->Reload(source, std::make_shared<DeafSink>());
            parser->Parse();
            EXPECT_EQ(parser->HasErrors(), i >= 20) << i;
        }
    }
}

TEST(NameCollisions, OfReferencesCountEachOfAnAttribute)
{
    std::string names;
    for (const std::string& name : MakeCollidingNames(30))
        names += name + " ";
    DOMParser parser;
    parser.SetNameCollisionLimit(20);
    parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(
        "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
        "<xs:complexType><xs:attribute name='r' type='xs:IDREFS'/></xs:complexType></xs:element>"
        "</xs:schema>",
        u"schema", false));
    std::vector<std::string> errors;
    for (const TString& error : parser.ParseXmlString("<a r='" + names + "'/>", u"id")->GetErrors())
        errors.push_back(error.toStdString());
    EXPECT_THAT(errors, IsCollision("identifiers"));
}

TEST(NameCollisions, OfAttributesAreThoseOfTheirNamesWithoutPrefixWhileValidating)
{
    // The table of the scanner does not know of prefixes then.
    std::string declarations;
    std::string attributes;
    for (const char* const prefix : {"p", "q", "r"}) {
        declarations += std::string(" xmlns:") + prefix + "='" + prefix + "'";
        for (const std::string& name : MakeCollidingNames(8))
            attributes += " " + std::string(prefix) + ":" + name + "=''";
    }
    const std::string document = "<a" + declarations + "><a" + attributes + "/></a>";
    DOMParser parser;
    parser.SetNameCollisionLimit(20);
    EXPECT_FALSE(parser.ParseXmlString(document, u"id")->HasErrors());
    parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(c_schema, u"schema", false));
    EXPECT_TRUE(parser.ParseXmlString(document, u"id")->HasErrors());
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
            RepeatFor(MakeCollidingNames(c_limit + 900),
                      [](const std::string& n) { return "<" + n + " " + n + "=''/>"; }) +
            "</a>" + rest;
        const auto errors = DOMParser().ParseXmlString(document, u"id")->GetErrors();
        if (DirectScanning::IsEnabled() && *rest == 0)
            EXPECT_TRUE(errors.empty());
        else
            ASSERT_EQ(errors.size(), 1U);
    }
}
