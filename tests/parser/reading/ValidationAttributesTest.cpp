// What the errors of validation say of attributes to a sink that asks for them.

#include "support/FailingAllocations.h"
#include "support/ParseOutcome.h"
#include "support/Repeat.h"
#include "support/Validation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <random>

namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class AskingSink : public RecordingSink, public SAXAttributeErrors
{
};

using Names = std::vector<std::string>;

/// A parser for documents and their schema, whose sink asks or does not.
struct Session
{
    Session(const std::string& schema, bool isAsking)
    {
        if (isAsking)
            sink = std::make_shared<AskingSink>();
        parser = XercesXMLParser::Create(*source, sink);
        parser->LoadXSDString(TString::fromStdString(schema), u"schema");
        schemaErrors = ToUtf8(parser->GetErrors());
    }
    const std::vector<XMLDiagnostic>& Parse(const std::string& document)
    {
        auto next = std::make_unique<Utf8InputSource>(document, u"id", false);
        sink->events.clear();
        parser->Reload(*next, sink);
        source = std::move(next);
        parser->Parse();
        return parser->GetErrorDiagnostics();
    }

    std::unique_ptr<Utf8InputSource> source =
        std::make_unique<Utf8InputSource>(std::string("<a/>"), u"id", false);
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
    std::unique_ptr<XercesXMLParser> parser;
    std::vector<std::string> schemaErrors;
};

/// For each error the attribute that it names, as "name=value", or "-".
Names NamesOf(const std::vector<XMLDiagnostic>& diagnostics)
{
    Names names;
    for (const XMLDiagnostic& diagnostic : diagnostics) {
        const std::string name = diagnostic.GetAttribute().toStdString();
        const std::string value = diagnostic.GetValue().toStdString();
        names.push_back(name.empty() && value.empty() ? "-" : name + "=" + value);
    }
    return names;
}

Names Named(const std::string& schema, const std::string& document)
{
    return NamesOf(Session(schema, true).Parse(document));
}

std::string Attributes(const std::string& attributes)
{
    return SchemaOf("<xs:simpleType name='few'><xs:restriction base='xs:string'>"
                    "<xs:enumeration value='red'/><xs:enumeration value='blue'/>"
                    "</xs:restriction></xs:simpleType>"
                    "<xs:simpleType name='ints'><xs:list itemType='xs:int'/></xs:simpleType>"
                    "<xs:simpleType name='either'><xs:union memberTypes='xs:int xs:boolean'/>"
                    "</xs:simpleType>"
                    "<xs:element name='a'><xs:complexType><xs:sequence>"
                    "<xs:element ref='a' minOccurs='0' maxOccurs='unbounded'/></xs:sequence>" +
                    attributes + "</xs:complexType></xs:element>");
}

std::string Attribute(const std::string& name, const std::string& rest)
{
    return "<xs:attribute name='" + name + "' " + rest + "/>";
}

/// Attributes of many types.
std::string ManyTypes()
{
    return Attributes(Attribute("int", "type='xs:int'") + Attribute("date", "type='xs:date'") +
                      Attribute("few", "type='few'") + Attribute("ints", "type='ints'") +
                      Attribute("either", "type='either'") +
                      Attribute("five", "type='xs:int' fixed='5'") +
                      Attribute("id", "type='xs:ID'") + Attribute("any", "type='xs:string'"));
}

/// A tag for that schema. Adds what its errors are to name.
std::string RandomTag(std::mt19937& random, Names& expected)
{
    struct Choice
    {
        const char* name;
        const char* good;
        const char* bad;
    };
    std::vector<Choice> choices = {{"int", "1", "x"},           {"date", "2024-01-31", "today"},
                                   {"few", "red", "green"},     {"ints", "1 2", "1 y"},
                                   {"either", "true", "maybe"}, {"any", "1", nullptr},
                                   {"xmlns:p", "u", nullptr},   {"more", nullptr, "1"},
                                   {"other", nullptr, ""},      {"five", "5", "6"}};
    if (random() % 2 == 0)
        choices.back().bad = "x";
    std::shuffle(choices.begin(), choices.end(), random);
    choices.resize(random() % choices.size());
    std::string tag = "<a";
    for (const auto& [name, good, bad] : choices) {
        const bool isBad = good == nullptr || (bad != nullptr && random() % 2 == 0);
        const std::string value = isBad ? bad : good;
        tag += std::string(" ") + name + "='" + value + "'";
        // That is not the fixed value, and no number either.
        const bool isTwice = name == std::string("five") && value == "x";
        if (isBad)
            expected.insert(expected.end(), isTwice ? 2 : 1, name + ("=" + value));
    }
    return tag + ">";
}

/// A type that restricts another with the attribute "p", which is to be qualified or is not.
std::string Prohibited(const std::string& form)
{
    const std::string content = "<xs:sequence><xs:element ref='a' minOccurs='0' "
                                "maxOccurs='unbounded'/></xs:sequence>";
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='u' xmlns='u'>"
           "<xs:complexType name='base'>" +
           content + Attribute("p", "type='xs:int' form='" + form + "'") +
           Attribute("i", "type='xs:int'") + Attribute("d", "type='xs:int' default='1'") +
           "</xs:complexType><xs:complexType name='without'><xs:complexContent>"
           "<xs:restriction base='base'>" +
           content + "<xs:attribute name='p' form='" + form +
           "' use='prohibited'><xs:simpleType><xs:restriction base='xs:int'>"
           "<xs:maxInclusive value='9'/></xs:restriction></xs:simpleType></xs:attribute>"
           "</xs:restriction></xs:complexContent></xs:complexType>"
           "<xs:element name='a' type='without'/></xs:schema>";
}

std::vector<std::string> MessagesOf(const std::vector<XMLDiagnostic>& diagnostics)
{
    std::vector<std::string> messages;
    for (const XMLDiagnostic& diagnostic : diagnostics)
        messages.push_back(diagnostic.GetMessage().toStdString());
    return messages;
}

void ExpectSameButForNames(const std::string& schema, const std::string& document)
{
    SCOPED_TRACE(document);
    Session asking(schema, true);
    Session other(schema, false);
    EXPECT_EQ(asking.schemaErrors, other.schemaErrors);
    const std::vector<XMLDiagnostic> named = asking.Parse(document);
    const std::vector<XMLDiagnostic> plain = other.Parse(document);
    EXPECT_EQ(GetOutcome(*asking.parser, *asking.sink), GetOutcome(*other.parser, *other.sink));
    EXPECT_EQ(MessagesOf(named), MessagesOf(plain));
    EXPECT_THAT(NamesOf(plain), Each("-"));
}

constexpr const char* c_instance = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";

} // namespace

TEST(ValidationAttributes, AreNamedWhereTheirTypeRefusesTheValue)
{
    Session session(ManyTypes(), true);
    ASSERT_THAT(session.schemaErrors, IsEmpty());
    for (const char* const wrong :
         {"int=x", "date=today", "few=green", "ints=1 x", "either=x", "id=1", "int=", "five=6"}) {
        const std::string attribute = wrong;
        const std::string name = attribute.substr(0, attribute.find('='));
        const std::string written = name + "='" + attribute.substr(name.size() + 1) + "'";
        EXPECT_THAT(NamesOf(session.Parse("<a " + written + "/>")), ElementsAre(wrong));
        EXPECT_THAT(NamesOf(session.Parse("<a any='1' " + written + "/>")), ElementsAre(wrong));
        EXPECT_THAT(NamesOf(session.Parse("<a><a/><a any='1' " + written + "><a/></a></a>")),
                    ElementsAre(wrong));
    }
}

TEST(ValidationAttributes, AreNamedInTheOrderOfTheirErrors)
{
    Session session(ManyTypes(), true);
    EXPECT_THAT(NamesOf(session.Parse("<a int='1' date='x' any='' more='' ints='y' either='true' "
                                      "five='7'><a few='z' int='1' other='2'/></a>")),
                ElementsAre("date=x", "more=", "ints=y", "five=7", "few=z", "other=2"));
}

TEST(ValidationAttributes, AreNamedForEachErrorOfTheSame)
{
    Session session(ManyTypes(), true);
    EXPECT_THAT(NamesOf(session.Parse("<a five='x'/>")), ElementsAre("five=x", "five=x"));
    EXPECT_THAT(NamesOf(session.Parse("<a five='6' int='x'/>")), ElementsAre("five=6", "int=x"));
    EXPECT_THAT(NamesOf(session.Parse("<a more='6' five='x' int='y' few='z'/>")),
                ElementsAre("more=6", "five=x", "five=x", "int=y", "few=z"));
}

TEST(ValidationAttributes, AreNamedInWhateverCompanyTheyAre)
{
    Session session(ManyTypes(), true);
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        Names expected;
        std::string document;
        for (int depth = 0; depth < 4; ++depth)
            document += RandomTag(random, expected);
        for (int depth = 0; depth < 4; ++depth)
            document += "</a>";
        ASSERT_EQ(NamesOf(session.Parse(document)), expected) << document;
    }
}

TEST(ValidationAttributes, AreNotNamedWhereItIsUncertainWhichAreMeant)
{
    const std::string schema =
        Attributes(Attribute("five", "type='xs:int' fixed='5'") +
                   Attribute("six", "type='xs:int' fixed='6'") + Attribute("int", "type='xs:int'"));
    // Whose value is no number either?
    EXPECT_THAT(Named(schema, "<a five='x' six='7' int='x'/>"), ElementsAre("-", "-", "-", "-"));
}

TEST(ValidationAttributes, AreNamedWhereAnIdentifierIsUsedAgain)
{
    EXPECT_THAT(Named(ManyTypes(), "<a id='x'><a id='y'/><a any='' id='x'/></a>"),
                ElementsAre("id=x"));
}

TEST(ValidationAttributes, AreNamedWhereTheyAreNotDeclared)
{
    EXPECT_THAT(Named(Attributes(""), "<a p:more='1' xmlns:p='u' other='2'/>"),
                ElementsAre("p:more=1", "other=2"));
    EXPECT_THAT(Named(Attributes(""), "<a><a :colon='1'/></a>"), ElementsAre(":colon=1"));
    EXPECT_THAT(Named(ManyTypes(), "<a><a any='' p='1' int='' q='2'/><a date='' p='3'/></a>"),
                ElementsAre("p=1", "int=", "q=2", "date=", "p=3"));
    // A wildcard that wants a declaration, and one that takes other namespaces only.
    EXPECT_THAT(Named(Attributes("<xs:anyAttribute processContents='strict'/>"), "<a x='1'/>"),
                ElementsAre("x=1"));
    EXPECT_THAT(Named(Attributes("<xs:anyAttribute namespace='##other' processContents='skip'/>"),
                      "<a x='1'/>"),
                ElementsAre("x=1"));
}

TEST(ValidationAttributes, AreNamedWhereTheyHaveTheWrongNamespace)
{
    const auto schema = [](const std::string& form) {
        return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='u'>"
               "<xs:element name='a'><xs:complexType><xs:attribute name='i' type='xs:int' form='" +
               form + "'/></xs:complexType></xs:element></xs:schema>";
    };
    EXPECT_THAT(Named(schema("qualified"), "<a xmlns='u' i='1'/>"), ElementsAre("i=1"));
    EXPECT_THAT(Named(schema("qualified"), "<a xmlns='u' i='x'/>"), ElementsAre("i=x", "i=x"));
    EXPECT_THAT(Named(schema("unqualified"), "<p:a xmlns:p='u' p:i='1'/>"), ElementsAre("p:i=1"));
}

TEST(ValidationAttributes, AreNamedByTheTypeThatTheDocumentChooses)
{
    const std::string schema =
        SchemaOf("<xs:complexType name='base'/>"
                 "<xs:complexType name='more'><xs:complexContent><xs:extension base='base'>" +
                 Attribute("int", "type='xs:int'") +
                 "</xs:extension></xs:complexContent></xs:complexType>"
                 "<xs:element name='a' type='base'/>");
    const std::string open = std::string("<a") + c_instance;
    EXPECT_THAT(Named(schema, open + " xsi:type='more' int='x'/>"), ElementsAre("int=x"));
    EXPECT_THAT(Named(schema, open + " int='x' xsi:type='more'/>"), ElementsAre("int=x"));
    EXPECT_THAT(Named(schema, open + " xsi:type='base' int='x'/>"), ElementsAre("int=x"));
    EXPECT_THAT(Named(schema, open + " xsi:type='none' int='x'/>"), ElementsAre("-", "int=x"));
}

TEST(ValidationAttributes, AreNamedWithADocumentType)
{
    const std::string type = "<!DOCTYPE a [<!ATTLIST a any CDATA 'x' few NMTOKEN #IMPLIED>"
                             "<!ATTLIST a id ID 'y' id2 ID ''>]>";
    EXPECT_THAT(Named(ManyTypes(), type + "<a int='x'><a date='y'/></a>"),
                AllOf(Contains("int=x"), Contains("date=y")));
    ExpectSameButForNames(ManyTypes(), type + "<a int='x'><a date='y'/></a>");
    // The document type knows more of an element than the schema.
    for (const std::string root : {"<r k='' j='1'>", "<r xmlns='v' k='' j='1'>"}) {
        const std::string document = "<!DOCTYPE r [<!ELEMENT r ANY><!ATTLIST r k NMTOKEN #IMPLIED>"
                                     "]>" +
                                     root + "<a xmlns='' int='x'/><a xmlns='' few='y'/></r>";
        EXPECT_THAT(Named(ManyTypes(), document), AllOf(Contains("int=x"), Contains("few=y")));
        ExpectSameButForNames(ManyTypes(), document);
    }
}

TEST(ValidationAttributes, AreNamedBesideDefaults)
{
    const std::string schema = Attributes(Attribute("five", "type='xs:int' fixed='5'") +
                                          Attribute("date", "type='xs:date' default='2024-01-31'") +
                                          Attribute("int", "type='xs:int'"));
    EXPECT_THAT(Named(schema, "<a xmlns:p='u' int='x' date='y'/>"), ElementsAre("int=x", "date=y"));
    EXPECT_THAT(Named(schema, "<a><a xmlns:p='u' int='x'/></a>"), ElementsAre("int=x"));
}

TEST(ValidationAttributes, AreNamedAsWrittenWithTheValueThatTheSinkGets)
{
    Session session(ManyTypes(), true);
    EXPECT_THAT(NamesOf(session.Parse("<a int='  one&#x20;&amp;\n two '/>")),
                ElementsAre("int=one & two"));
    EXPECT_EQ(session.sink->events.front(), "<a five=5 int=one & two>");
}

TEST(ValidationAttributes, AreNotNamedWhereTheErrorIsOfTheElement)
{
    const std::string schema =
        SchemaOf("<xs:element name='a'><xs:complexType><xs:sequence>"
                 "<xs:element name='b' type='xs:int' minOccurs='0' maxOccurs='unbounded'/>"
                 "</xs:sequence>" +
                 Attribute("int", "type='xs:int'") + Attribute("must", "use='required'") +
                 "</xs:complexType></xs:element>");
    EXPECT_THAT(Named(schema, "<a int='1'/>"), ElementsAre("-"));
    EXPECT_THAT(Named(schema, "<a must='' int='x'><b>y</b><b/><c/></a>"),
                ElementsAre("int=x", "-", "-", "-", "-"));
    EXPECT_THAT(Named(schema, "<a int='x'/>"), ElementsAre("int=x", "-"));
    EXPECT_THAT(Named(schema, "<a must=''><b>y</b><b u='1'>x</b><b/></a>"),
                ElementsAre("-", "u=1", "-", "-"));
    EXPECT_THAT(Named(schema, "<other int='x'/>"), ElementsAre("-", "int=x"));
}

TEST(ValidationAttributes, AreNotNamedForAnErrorOfAnAttributeOfTheInstanceNamespace)
{
    const std::string schema =
        SchemaOf("<xs:element name='a' nillable='true'><xs:complexType><xs:sequence>"
                 "<xs:element ref='a' minOccurs='0'/></xs:sequence>" +
                 Attribute("int", "type='xs:int'") + Attribute("five", "type='xs:int' fixed='5'") +
                 "</xs:complexType></xs:element>");
    const std::string open = std::string("<a") + c_instance;
    for (const std::string wrong : {"xsi:nil='perhaps'", "xsi:type='a b'", "xsi:type='1'"}) {
        for (const std::string attributes : {"", "int='x' ", "five='6' ", "five='6' more='1' "}) {
            for (const std::string& tag : {open + " " + attributes + wrong + "/>",
                                           open + " " + wrong + " " + attributes + "/>"}) {
                SCOPED_TRACE(tag);
                EXPECT_THAT(Named(schema, tag), AllOf(Not(IsEmpty()), Each("-")));
                EXPECT_THAT(Named(schema, "<a>" + tag + "</a>"), AllOf(Not(IsEmpty()), Each("-")));
            }
        }
    }
    EXPECT_THAT(Named(schema, open + " xsi:nil='true' int='x'/>"), ElementsAre("int=x"));
}

TEST(ValidationAttributes, AreNotNamedInATagWithAProhibitedOne)
{
    for (const std::string form : {"qualified", "unqualified"}) {
        const std::string schema = Prohibited(form);
        for (const std::string prefix : {"", "q:"}) {
            for (const std::string attributes : {"P='1'", "P='x'", "P='1' i='x'", "i='x' P='1'",
                                                 "i='x' P='1' d='y'", "d='y' P='10' more='2'"}) {
                std::string tag = "<q:a xmlns:q='u' " + attributes + "/>";
                tag.replace(tag.find('P'), 1, prefix + "p");
                SCOPED_TRACE(tag);
                EXPECT_THAT(Named(schema, tag), AllOf(Not(IsEmpty()), Each("-")));
                ExpectSameButForNames(schema, tag);
            }
        }
        for (const std::string prefix : {"", "q:"}) {
            const std::string bad = "<q:a i='x' " + prefix + "p='1' q:more='2'/>";
            SCOPED_TRACE(bad);
            Names names = Named(schema, "<q:a xmlns:q='u'>" + bad + "<q:a d='2' i='y'/></q:a>");
            ASSERT_THAT(names, SizeIs(testing::Ge(4U)));
            EXPECT_EQ(names.back(), "i=y");
            names.pop_back();
            EXPECT_THAT(names, Each("-"));
        }
    }
}

TEST(ValidationAttributes, AreNotNamedInATagWithTwoIdentifiers)
{
    const std::string schema =
        SchemaOf(Attribute("id1", "type='xs:ID'") + Attribute("id2", "type='xs:ID'") +
                 "<xs:element name='a' nillable='true'><xs:complexType>"
                 "<xs:anyAttribute processContents='strict'/></xs:complexType></xs:element>");
    const std::string open = std::string("<a") + c_instance;
    EXPECT_THAT(Named(schema, "<a id1='x' id2='y'/>"), ElementsAre("-"));
    EXPECT_THAT(Named(schema, open + " id1='x' xsi:nil='perhaps' id2='y'/>"),
                AllOf(Not(IsEmpty()), Each("-")));
}

TEST(ValidationAttributes, AreNotNamedToASinkThatDoesNotAsk)
{
    EXPECT_THAT(NamesOf(Session(ManyTypes(), false).Parse("<a int='x' more='1'/>")),
                ElementsAre("-", "-"));
    const auto document = Validator(ManyTypes()).Parse("<a int='x'/>");
    EXPECT_THAT(NamesOf(document->GetErrorDiagnostics()), ElementsAre("-"));
}

TEST(ValidationAttributes, AreNotNamedWithoutASchema)
{
    Utf8InputSource source(std::string("<!DOCTYPE a [<!ATTLIST a b (c) #IMPLIED>]><a b='d' b=''/>"),
                           u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<AskingSink>());
    parser->Parse();
    EXPECT_THAT(NamesOf(parser->GetErrorDiagnostics()), ElementsAre("-"));
}

TEST(ValidationAttributes, ChangeNoMessageAndNoEvent)
{
    for (const char* const document :
         {"<a int='x' date='1' five='x' more='1'>text<a/><b c='1'/></a>", "<a int='x'",
          "<a int='x' int='y'/>", "<a int='x'><a date='y'></b>", "<other><a int='x'/></other>",
          "<a id='x'><a id='x'/></a>", "<!DOCTYPE a [<!ENTITY e 'x'>]><a int='&e;'/>",
          "<a int='\xff'/>", "<a five='7' xmlns='v'><a/></a>",
          "<?xml version='1.1'?><a int='x&#1;'/>"})
        ExpectSameButForNames(ManyTypes(), document);
}

TEST(ValidationAttributes, OfOneDocumentDoNotDisturbAnother)
{
    Session session(ManyTypes(), true);
    for (const char* const disturbing :
         {"<a int='x'><a date='y'", "<a int='x' more='1'", "<a int='x' int='y'/>",
          "<!DOCTYPE a [<!ATTLIST a id ID ''>]><a int='x'/>", "<other more='1'><b int='x'/>",
          "<a int='x' any='\xff'/>"}) {
        SCOPED_TRACE(disturbing);
        session.Parse(disturbing);
        EXPECT_THAT(NamesOf(session.Parse("<a><a any='1' few='x'/></a>")), ElementsAre("few=x"));
        EXPECT_THAT(session.Parse("<a><a any='1' few='red'/></a>"), IsEmpty());
    }
    // The sink ends the parse in the tag whose attributes are wrong.
    session.sink->onEvent = [](const std::string&) { throw 1; };
    session.Parse("<a int='x' more='1'/>");
    session.sink->onEvent = nullptr;
    EXPECT_THAT(NamesOf(session.Parse("<a><a few='x'/></a>")), ElementsAre("few=x"));
}

TEST(ValidationAttributes, AreNamedWhereATagHasVeryMany)
{
    constexpr int c_count = 20'000;
    std::string tag = "<a>\n<a";
    for (int i = 0; i < c_count; ++i)
        tag += " u" + std::to_string(i) + "='" + std::to_string(i) + "'";
    const Names names = Named(ManyTypes(), tag + " int='x'/></a>");
    ASSERT_THAT(names, SizeIs(c_count + 1));
    EXPECT_EQ(names[0], "u0=0");
    EXPECT_EQ(names[c_count - 1], "u19999=19999");
    EXPECT_EQ(names[c_count], "int=x");
}

TEST(ValidationAttributes, TakeFromTheAccountOfMessages)
{
    Session session(ManyTypes(), true);
    const std::string document = "<a>\n<a int='first'/><a int='second'/></a>";
    const std::vector<XMLDiagnostic> all = session.Parse(document);
    ASSERT_THAT(NamesOf(all), ElementsAre("int=first", "int=second"));
    const std::uint64_t messages =
        static_cast<std::uint64_t>(all[0].GetText().length() + all[1].GetText().length() + 2 * 64);
    const std::uint64_t first = 8;
    const std::uint64_t second = 9;
    const auto parse = [&](std::uint64_t limit) {
        session.parser->SetMessageLimit(0, limit);
        return NamesOf(session.Parse(document));
    };
    EXPECT_THAT(parse(messages + first + second), ElementsAre("int=first", "int=second"));
    EXPECT_THAT(parse(messages + first + second - 1), ElementsAre("int=first", "-"));
    EXPECT_THAT(parse(messages + first), ElementsAre("int=first", "-"));
    // The second message has no room, or the first has none for its attribute.
    const auto ofFirst = static_cast<std::uint64_t>(all[0].GetText().length()) + 64;
    parse(ofFirst + first);
    EXPECT_THAT(session.parser->GetErrorDiagnostics().back().GetText().toStdString(),
                HasSubstr("1 more from here on"));
    EXPECT_THAT(parse(ofFirst + first - 1), ElementsAre("-", "-"));
    EXPECT_THAT(parse(0), ElementsAre("-"));
}

TEST(ValidationAttributes, AreNamedOrTheParseSaysThatItFailedWhenMemoryRunsOut)
{
    Session session(ManyTypes(), true);
    const std::string document =
        "<a int='x'><a any='1' few='longer than the others' five='y'/></a>";
    const Names expected = NamesOf(session.Parse(document));
    ASSERT_THAT(expected, ElementsAre("int=x", "few=longer than the others", "five=y", "five=y"));
    for (std::size_t allowed = 0;; ++allowed) {
        ASSERT_LT(allowed, 100'000U);
        bool hasFailed = false;
        {
            const FailingAllocations failing(allowed, 1);
            try {
                session.Parse(document);
            } catch (const std::bad_alloc&) {
            }
            hasFailed = FailingAllocations::HasFailed();
        }
        if (!hasFailed)
            break;
        // Whatever is left of it disturbs no other.
        ASSERT_EQ(NamesOf(session.Parse(document)), expected) << "after " << allowed;
    }
}

TEST(ValidationAttributes, OfADamagedSchemaNeverBringAParseDown)
{
    const std::string schema = ManyTypes();
    const std::string document =
        "<a int='x' date='1' five='x' more='1' few='z' ints='y'><a int='z'/></a>";
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        std::string damaged = schema;
        for (int i = 0; i < 2; ++i)
            damaged[random() % damaged.size()] = schema[random() % schema.size()];
        SCOPED_TRACE(damaged);
        ExpectSameButForNames(damaged, document);
    }
}
