#include "support/ParseOutcome.h"

#include "support/FailingAllocations.h"
#include "support/Repeat.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XMLDomFormatter.h>

#include <gtest/gtest.h>

#include <random>

namespace {

struct Document
{
    std::string text;
    /// 0 reads it to its end.
    std::size_t stopAfter = 0;
    bool throws = false;
};

/// Documents that could leave something behind: versions, encodings, document types, entities,
/// ends in the middle of everything.
const std::vector<Document>& Documents()
{
    static const std::vector<Document> s_documents = {
        {"<a>x<b/>y</a>"},
        {"<?xml version='1.1'?><a>x&#1;\xC2\x85</a>"},
        {"<a>x&#1;</a>"},
        {"<a>x\xC2\x85y\xE2\x80\xA8z</a>"},
        {"<?xml version='1.0'?><a>x&#1;</a>"},
        {"<?xml version='1.1' nonsense?><a/>"},
        {"<?xml version='1.1' encoding='no-such-encoding'?><a/>"},
        {"<?xml version='1.1'?><!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a/>"},
        {"<?xml version='1.1'?><a><b>x</b><c/></a>", 2},
        {"<?xml version='1.0' encoding='ISO-8859-1' standalone='yes'?><a>\xE9</a>"},
        {"<a>\xC3\xA9</a>"},
        {std::string("\xFE\xFF\0<\0a\0>\0\xE9\0<\0/\0a\0>", 18)},
        {"<!DOCTYPE a [<!ENTITY e 'x'><!ATTLIST a d CDATA 'def' i ID #IMPLIED>]><a i=' x '/>"},
        {"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>"},
        {"<a i=' x '>&e;</a>"},
        {"<!DOCTYPE a SYSTEM 'a.dtd'><a>&e;</a>"},
        {"<!DOCTYPE a [<!ENTITY e SYSTEM 'f'>]><a>&e;</a>"},
        {"<!DOCTYPE a [<!ELEMENT a EMPTY>"},
        {"<a>text<b>"},
        {"<a>text<b></c></a>"},
        {"<a>text<![CDATA[more"},
        {"<a b='c"},
        {""},
        {"   "},
        {"<a>one<b>two<c/>three</b>four</a>", 1},
        {"<a>one<b>two<c/>three</b>four</a>", 4},
        {"<a>one<b>two<c/>three</b>four</a>", 0, true},
        {"<a xmlns='u' xml:space='preserve'> <p:b xmlns:p='v'/> </a>"},
        {"<a :b='1'/>"},
        {"<a>\xFF</a>"},
        {"<?xml version='1.0' \xFF?><a/>"},
        {"<?xml version='1.1'\xC3(?><a/>"},
        {"<a/>\xC3"},
        {std::string("<?xml version='1.1'?><a/>\0<b/>", 29)},
        {"<?xml\nversion='1.0' encoding='ISO-8859-1'?><a>\xE9</a>"},
        {"<?xml version='1.0' encoding='windows-1253'?><a>\xD2</a>"},
        {"<!DOCTYPE a SYSTEM 'b\x0E'><a/>"},
        {"<?xml version='1.1'?><!DOCTYPE a [<!NOTATION n SYSTEM '\x0E'>]><a/>"},
    };
    return s_documents;
}

/// Documents that the limits of LowerLimits end, where they are on their own and everywhere else.
const std::vector<Document>& HostileDocuments()
{
    static const std::vector<Document> s_documents = {
        {"<!DOCTYPE a [<!ENTITY % e ' '>" + Repeat("%e;", 100) + "]><a/>"},
        {"<?xml version='1.1'?><!DOCTYPE a [<!ENTITY % e ''><!ENTITY % f '" +
         Repeat("&#37;e;", 50) + "'>%f;]><a/>"},
        {"<!DOCTYPE a [<!ENTITY e 'text'><!ATTLIST a b CDATA '" + Repeat("&e;", 60) + "'>]><a/>"},
        {"<!DOCTYPE a [<!ENTITY e '<b>text</b>'>]><a>text" + Repeat("&e;", 60) + "</a>"},
        {"<!DOCTYPE a [<!ENTITY e 'text'>]><a><b c='" + Repeat("&e;", 60) + "'/></a>"},
        {"<!DOCTYPE a [<!ATTLIST b x CDATA 'default' y CDATA 'default'>]><a>text" +
         Repeat("<b/>", 200) + "</a>"},
        {"<a>" + Repeat("text<b/>", 300) + "</a>"},
        {Repeat("<a>", 30) + Repeat("</a>", 30)},
        {"<a>" + Repeat("<b><c/></b>", 100) + "</a>"},
        // These do harm only where document types are validated.
        {"<!DOCTYPE a [<!ELEMENT a (#PCDATA" + Repeat("|b", 30) + ")*>]><a/>"},
        {"<!DOCTYPE a [<!ELEMENT a (b" + Repeat(",b?", 20) + ")>]><a/>"},
        {"<!DOCTYPE a [<!ELEMENT b EMPTY><!ATTLIST b c (d" + Repeat("|d", 50) + ") 'd'>]><a/>"},
        {"<!DOCTYPE a [<!ELEMENT b EMPTY><!ELEMENT c EMPTY><!ELEMENT a ((b|c)*,b" +
         Repeat(",(b|c)", 10) + ")>]><a>" + Repeat("<b/>", 11) + "</a>"},
    };
    return s_documents;
}

void LowerLimits(ParseLimits& limits)
{
    limits.SetAmplificationLimit(0, 1000);
    limits.SetExpansionLimit(0, 2000);
    limits.SetValidationDepthLimit(20);
    limits.SetValidationWorkLimit(0, 500);
}

const TString c_schema(u"<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
                       "<xs:element name='a'><xs:complexType mixed='true'><xs:sequence>"
                       "<xs:any processContents='lax' minOccurs='0' maxOccurs='unbounded'/>"
                       "</xs:sequence><xs:attribute name='d' type='xs:string' default='added'/>"
                       "</xs:complexType></xs:element></xs:schema>");

std::vector<Document> AllDocuments()
{
    std::vector<Document> documents = Documents();
    documents.insert(documents.end(), HostileDocuments().begin(), HostileDocuments().end());
    return documents;
}

std::shared_ptr<RecordingSink> MakeSink(const Document& document)
{
    auto sink = std::make_shared<RecordingSink>();
    sink->stopAfter = document.stopAfter;
    if (document.throws) {
        sink->onEvent = [](const std::string& event) {
            if (event == "<c>")
                throw std::runtime_error("enough");
        };
    }
    return sink;
}

BinaryInputSource MakeSource(const Document& document)
{
    return {std::vector<unsigned char>(document.text.begin(), document.text.end()), u"id", false};
}

ParseOutcome ParseAlone(const Document& document)
{
    BinaryInputSource source = MakeSource(document);
    const auto sink = MakeSink(document);
    const auto parser = XercesXMLParser::Create(source, sink);
    parser->Parse();
    return GetOutcome(*parser, *sink);
}

ParseOutcome ParseAfterReload(XercesXMLParser& parser, const Document& document)
{
    BinaryInputSource source = MakeSource(document);
    const auto sink = MakeSink(document);
    parser.Reload(source, sink);
    parser.Parse();
    return GetOutcome(parser, *sink);
}

} // namespace

TEST(ParseIsolation, NoDocumentTouchesTheNextOne)
{
    std::vector<ParseOutcome> alone;
    for (const Document& document : Documents())
        alone.push_back(ParseAlone(document));

    StringInputSource source(u"<a/>", u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    for (std::size_t first = 0; first < Documents().size(); ++first) {
        for (std::size_t second = 0; second < Documents().size(); ++second) {
            SCOPED_TRACE(Documents()[first].text + " before " + Documents()[second].text);
            EXPECT_EQ(ParseAfterReload(*parser, Documents()[first]), alone[first]);
            EXPECT_EQ(ParseAfterReload(*parser, Documents()[second]), alone[second]);
        }
    }
}

TEST(ParseIsolation, AParseWithoutReloadIsNotTouchedEither)
{
    for (const Document& document : Documents()) {
        if (document.stopAfter != 0)
            continue;
        SCOPED_TRACE(document.text);
        BinaryInputSource source = MakeSource(document);
        const auto sink = MakeSink(document);
        const auto parser = XercesXMLParser::Create(source, sink);
        parser->Parse();
        const ParseOutcome first = GetOutcome(*parser, *sink);
        sink->events.clear();
        parser->Parse();
        EXPECT_EQ(GetOutcome(*parser, *sink), first);
    }
}

TEST(ParseIsolation, ParsersDoNotTouchEachOther)
{
    // One parser is in the middle of its document while another one works.
    StringInputSource outerSource(u"<?xml version='1.1'?><a><b/>x<c/></a>", u"outer", false);
    const auto outerSink = std::make_shared<RecordingSink>();
    const auto outer = XercesXMLParser::Create(outerSource, outerSink);
    int inner = 0;
    outerSink->onEvent = [&](const std::string&) {
        for (const Document& document : Documents()) {
            ParseAlone(document);
            ++inner;
        }
    };
    outer->Parse();
    EXPECT_GT(inner, 0);
    EXPECT_EQ(outerSink->events,
              (std::vector<std::string>{"<a>", "<b>", "</>", "'x'", "<c>", "</>", "</>"}));
    EXPECT_FALSE(outer->HasErrors());
}

TEST(ParseIsolation, PermissionToExpandEntitiesOutlastsAReload)
{
    const Document document{"<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>"};
    StringInputSource source(u"<?xml version='1.1'?><a/>", u"id", false);
    const auto parser = XercesXMLParser::Create(source, std::make_shared<RecordingSink>());
    parser->AllowEntityExpansion_Insecure();
    parser->Parse();
    EXPECT_FALSE(ParseAfterReload(*parser, document).fatal);
    EXPECT_TRUE(ParseAlone(document).fatal);
}

TEST(ParseIsolation, RandomSequencesGiveWhatFreshParsersGive)
{
    const std::vector<Document> documents = AllDocuments();
    const auto makeParser = [](InputSource& source, const std::shared_ptr<RecordingSink>& sink,
                               bool isValidating) {
        auto parser = XercesXMLParser::Create(source, sink);
        LowerLimits(*parser);
        parser->AllowEntityExpansion_Insecure();
        if (isValidating)
            parser->LoadXSDString(c_schema, u"schema");
        return parser;
    };
    std::mt19937 random(20240601);
    std::uniform_int_distribution<std::size_t> pick(0, documents.size() - 1);
    for (const bool isValidating : {false, true}) {
        std::vector<ParseOutcome> alone;
        std::size_t limited = 0;
        for (const Document& document : documents) {
            BinaryInputSource source = MakeSource(document);
            const auto sink = MakeSink(document);
            const auto parser = makeParser(source, sink, isValidating);
            parser->Parse();
            alone.push_back(GetOutcome(*parser, *sink));
            const bool isLimited = !alone.back().errors.empty() &&
                                   alone.back().errors.back().find("Limit)") != std::string::npos;
            limited += isLimited ? 1 : 0;
        }
        EXPECT_GE(limited, HostileDocuments().size() - (isValidating ? 0 : 6));

        BinaryInputSource first = MakeSource(documents[0]);
        const auto parser = makeParser(first, std::make_shared<RecordingSink>(), isValidating);
        std::string before = "nothing";
        for (int step = 0; step < 3000; ++step) {
            const std::size_t next = pick(random);
            SCOPED_TRACE(before + " before " + documents[next].text);
            ASSERT_EQ(ParseAfterReload(*parser, documents[next]), alone[next]);
            before = documents[next].text;
        }
    }
}

TEST(ParseIsolation, RandomSequencesGiveTheTreesThatFreshDOMParsersGive)
{
    const std::vector<Document> documents = AllDocuments();
    const auto parse = [](const DOMParser& parser, const Document& document) {
        const auto dom = parser.ParseXmlBytes(
            std::vector<unsigned char>(document.text.begin(), document.text.end()));
        std::string outcome =
            XMLDomFormatter::RenderAsXMLString(*dom, nullptr, false).toStdString();
        for (const TString& error : dom->GetErrors())
            outcome += "\n" + error.toStdString();
        return outcome;
    };
    const auto configure = [](DOMParser& parser, bool isValidating) {
        LowerLimits(parser);
        if (isValidating)
            parser.AddXSDInputSource(
                std::make_unique<StringInputSource>(c_schema, u"schema", false));
    };
    std::mt19937 random(20240602);
    std::uniform_int_distribution<std::size_t> pick(0, documents.size() - 1);
    for (const bool isValidating : {false, true}) {
        std::vector<std::string> alone;
        for (const Document& document : documents) {
            DOMParser parser;
            configure(parser, isValidating);
            alone.push_back(parse(parser, document));
        }
        DOMParser parser;
        configure(parser, isValidating);
        std::string before = "nothing";
        for (int step = 0; step < (isValidating ? 300 : 3000); ++step) {
            const std::size_t next = pick(random);
            SCOPED_TRACE(before + " before " + documents[next].text);
            ASSERT_EQ(parse(parser, documents[next]), alone[next]);
            before = documents[next].text;
        }
    }
}

TEST(ParseIsolation, NoMemoryIsLeftBehind)
{
    std::vector<Document> documents = AllDocuments();
    for (const char* const model : {"(b,c|d)", "(b|c|", "((b,c),(d|e)?", "(b, (c, d)+, %)",
                                    "(#PCDATA|b|c", "(b,c)x", "(b,,c)"})
        documents.push_back({std::string("<!DOCTYPE a [<!ELEMENT a ") + model + ">]><a/>"});
    documents.push_back({"<!DOCTYPE a [<!ELEMENT a (" + Repeat("b|", 1000) + "|)>]><a/>"});
    documents.push_back({"<!DOCTYPE a [<!ATTLIST a b (c|d| x 'c'>]><a/>"});
    for (const char* const start :
         {"<!DOCTYPE", "<!DOCTYPE a", "<!DOCTYPE a SYSTEM", "<!DOCTYPE a SYSTEM 'b'",
          "<!DOCTYPE a PUBLIC 'b", "<!DOCTYPE a ["})
        documents.push_back({start});
    const auto parseAll = [&](const auto& parser) {
        for (const Document& document : documents) {
            BinaryInputSource source = MakeSource(document);
            parser.ParseXmlInputSource(source, false);
        }
        parser.ParseXmlString("<a/>", u"id");
    };
    const auto expectNothingLeft = [&](const auto& makeParser) {
        parseAll(*makeParser());
        const std::ptrdiff_t before = CountLiveAllocations();
        parseAll(*makeParser());
        EXPECT_EQ(CountLiveAllocations(), before);

        // Nor does a parser that is used for long keep more and more.
        const auto parser = makeParser();
        parseAll(*parser);
        const std::ptrdiff_t afterOne = CountLiveAllocations();
        for (int round = 0; round < 10; ++round)
            parseAll(*parser);
        EXPECT_EQ(CountLiveAllocations(), afterOne);
    };
    const auto makeSchema = [] {
        return std::make_unique<StringInputSource>(c_schema, u"schema", false);
    };
    expectNothingLeft([] { return std::make_unique<DOMParser>(); });
    for (const bool isValidating : {false, true}) {
        SCOPED_TRACE(isValidating);
        const auto configure = [&](auto parser) {
            LowerLimits(*parser);
            if (isValidating)
                parser->AddXSDInputSource(makeSchema());
            return parser;
        };
        expectNothingLeft([&] { return configure(std::make_unique<DOMParser>()); });
        expectNothingLeft([&] {
            auto parser = configure(std::make_unique<StandaloneDOMParser>());
            parser->AllowEntityExpansion_Insecure();
            return parser;
        });
    }
}

TEST(ParseIsolation, AParserGivesBackWhatAnUnusualDocumentMadeItTake)
{
    const auto number = [](int count, const std::string& before, const std::string& after) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += before + std::to_string(i) + after;
        return text;
    };
    const std::string documents[] = {
        // None is well-formed, so that Xerces reads them.
        Repeat("<a>", 20000),
        "<a" + number(10000, " a", "=''") + "></b>",
        "<a>" + number(20000, "<a", "/>") + "</b>",
        "<!DOCTYPE a [" + number(20000, "<!ENTITY e", " 'x'>") + "]><a></b>",
    };
    for (const bool validates : {false, true}) {
        DOMParser parser;
        if (validates)
            parser.AddXSDInputSource(std::make_unique<Utf8InputSource>(
                "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'/>", u"schema", false));
        parser.ParseXmlString("<a></b>", u"id");
        const std::ptrdiff_t usual = CountLiveAllocations();
        for (const std::string& document : documents) {
            EXPECT_TRUE(parser.ParseXmlString(document, u"id")->HasErrors());
            // Those of a name or an element that is kept would be thousands.
            EXPECT_LT(CountLiveAllocations(), usual + 500) << document.substr(0, 40);
        }
    }
}
