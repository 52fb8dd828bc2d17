#include "support/AccessTrap.h"
#include "support/RecordingSink.h"
#include "support/TemporaryFile.h"

#include <kescorexml/DOMParser.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

const std::string c_schemaStart = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>";
const std::string c_schemaEnd = "<xs:element name='a'><xs:complexType mixed='true'><xs:sequence>"
                                "<xs:any processContents='lax' minOccurs='0' "
                                "maxOccurs='unbounded'/></xs:sequence></xs:complexType>"
                                "</xs:element></xs:schema>";
const std::string c_schema = c_schemaStart + c_schemaEnd;

const std::string c_instanceNamespace = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";

/// Every way in which a document can name something outside of itself.
std::vector<std::string> MakeDocuments(const std::string& place)
{
    const std::string quoted = "'" + place + "'";
    const std::string system = "SYSTEM " + quoted;
    return {
        "<!DOCTYPE a " + system + "><a/>",
        "<!DOCTYPE a PUBLIC 'p' " + quoted + "><a>&e;</a>",
        "<!DOCTYPE a " + system + " [<!ATTLIST a b CDATA 'c'>]><a/>",
        "<?xml version='1.0' standalone='no'?><!DOCTYPE a " + system + "><a/>",
        "<?xml version='1.1'?><!DOCTYPE a " + system + "><a/>",
        "<!DOCTYPE a [<!ENTITY e " + system + ">]><a>&e;</a>",
        "<!DOCTYPE a [<!ENTITY e PUBLIC 'p' " + quoted + ">]><a b='&e;'/>",
        "<!DOCTYPE a [<!ENTITY % e " + system + "> %e;]><a/>",
        "<!DOCTYPE a [<!ENTITY % f '<!ENTITY &#37; e " + system + ">'>%f;%e;]><a/>",
        "<!DOCTYPE a [<!NOTATION n " + system + "><!ENTITY e " + system + " NDATA n>]><a/>",
        "<a" + c_instanceNamespace + " xsi:noNamespaceSchemaLocation=" + quoted + "/>",
        "<a" + c_instanceNamespace + " xsi:schemaLocation='u " + place + "'/>",
        "<a><u:b xmlns:u='u'" + c_instanceNamespace + " xsi:schemaLocation='u " + place +
            "'><u:c/></u:b></a>",
        "<a><xi:include xmlns:xi='http://www.w3.org/2001/XInclude' href=" + quoted + "/></a>",
        "<?xml-stylesheet href=\"" + place + "\" type='text/xsl'?><?xml-model href=\"" + place +
            "\"?><a/>",
        "<a xml:base=" + quoted + " xmlns:p=" + quoted + "/>",
        "<?xml version='1.0' encoding=" + quoted + "?><a/>",
        "<?xml version='1.0' encoding='there.xml'?><a/>",
        "<?xml version='1.0' encoding='ibm-9999_P100-1999'?><a/>",
        "<?xml\nversion='1.0' encoding='x-there'?><a/>",
        "<?xml version='1.0' encoding='windows-1253'?><a>\xD2</a>",
    };
}

/// Every way in which a schema can do so.
std::vector<std::string> MakeSchemas(const std::string& place)
{
    const std::string quoted = "'" + place + "'";
    std::vector<std::string> schemas;
    for (const std::string& reference :
         {"<xs:include schemaLocation=" + quoted + "/>",
          "<xs:import schemaLocation=" + quoted + "/>",
          "<xs:import namespace='u' schemaLocation=" + quoted + "/>",
          "<xs:import namespace=" + quoted + "/>", "<xs:redefine schemaLocation=" + quoted + "/>",
          "<xs:annotation><xs:appinfo source=" + quoted + "/></xs:annotation>"})
        schemas.push_back(c_schemaStart + reference + c_schemaEnd);
    for (const std::string& doctype :
         {"<!DOCTYPE xs:schema SYSTEM " + quoted + ">",
          "<!DOCTYPE xs:schema PUBLIC 'p' " + quoted + ">",
          "<!DOCTYPE xs:schema [<!ENTITY % e SYSTEM " + quoted + "> %e;]>"})
        schemas.push_back(doctype + c_schema);
    schemas.push_back("<!DOCTYPE xs:schema [<!ENTITY e SYSTEM " + quoted + ">]>" + c_schemaStart +
                      "&e;" + c_schemaEnd);
    std::string located = c_schema;
    located.insert(located.find('>'), c_instanceNamespace +
                                          " xsi:schemaLocation='http://www.w3.org/2001/XMLSchema " +
                                          place + "'");
    schemas.push_back(located);
    return schemas;
}

void ParseInAllWays(const std::string& document, const std::string& schema)
{
    for (const bool isValidating : {false, true}) {
        const auto makeSchema = [&] {
            return std::make_unique<Utf8InputSource>(schema, u"schema", false);
        };
        DOMParser tree;
        StandaloneDOMParser standalone;
        if (isValidating) {
            tree.AddXSDInputSource(makeSchema());
            standalone.AddXSDInputSource(makeSchema());
        }
        tree.ParseXmlString(document, u"id");
        tree.ParseXmlString(document, u"/tmp/id.xml");
        tree.ParseXmlBytes({document.begin(), document.end()});
        standalone.ParseXmlString(document, u"id");
        standalone.AllowEntityExpansion_Insecure();
        standalone.ParseXmlString(document, u"file:///tmp/id.xml");
    }
}

/// Has everything loaded that is loaded on first use, messages included.
void WarmUp()
{
    for (const char* const document :
         {"<a><b/></a>", "<b/>", "<a b='c'>", "<!DOCTYPE a [<!ENTITY e SYSTEM 'none'>]><a/>",
          "<?xml version='1.1'?><a/>", "<a/><b/>"})
        ParseInAllWays(document, c_schema);
}

/// A file that is there, by all names that lead to it, and servers.
std::vector<std::string> MakePlaces(const TemporaryFolder& folder)
{
    const std::string path =
        folder.Write("there.xml", "<!-- a DTD, a schema and an entity --><x/>").toStdString();
    return {path, "file://" + path, "../../../../../../.." + path, "http://127.0.0.1:9/x",
            "ftp://127.0.0.1:9/x"};
}

void ExpectNoAccess(const AccessOutcome& outcome)
{
    if (outcome.isUnsupported)
        GTEST_SKIP() << "this system cannot watch its processes";
    EXPECT_EQ(outcome.access, "");
    EXPECT_TRUE(outcome.isFinished);
}

} // namespace

TEST(ParseAccess, DocumentsOpenNothing)
{
    const TemporaryFolder folder;
    const std::vector<std::string> places = MakePlaces(folder);
    ExpectNoAccess(RunWatchingAccess(WarmUp, [&](void (*label)(const char*)) {
        for (const std::string& place : places) {
            for (const std::string& document : MakeDocuments(place)) {
                label(document.c_str());
                ParseInAllWays(document, c_schema);
            }
        }
    }));
}

TEST(ParseAccess, SchemasOpenNothing)
{
    const TemporaryFolder folder;
    const std::vector<std::string> places = MakePlaces(folder);
    ExpectNoAccess(RunWatchingAccess(WarmUp, [&](void (*label)(const char*)) {
        for (const std::string& place : places) {
            for (const std::string& schema : MakeSchemas(place)) {
                label(schema.c_str());
                ParseInAllWays("<a/>", schema);
            }
        }
    }));
}

TEST(ParseAccess, AnExtensionOpensWhatItNames)
{
    class Extension : public BasicRecordingSink<SAXInterfaceExtension>
    {
    public:
        TString ResolveSchemaLocation(const TString&, const TString& systemId) override
        {
            return systemId;
        }
        TString FilterSchemaText(const TString& text, const TString&) override { return text; }
    };
    const TemporaryFolder folder;
    const std::string path = folder.Write("there.xsd", c_schema).toStdString();
    const AccessOutcome outcome = RunWatchingAccess(WarmUp, [&](void (*label)(const char*)) {
        label("the extension");
        Utf8InputSource source("<a/>", u"id", false);
        const auto parser = XercesXMLParser::Create(source, std::make_shared<Extension>());
        parser->LoadXSDString(TString::fromStdString(c_schemaStart +
                                                     "<xs:include schemaLocation='" + path +
                                                     "'/></xs:schema>"),
                              u"schema");
    });
    if (outcome.isUnsupported)
        GTEST_SKIP() << "this system cannot watch its processes";
    // The same documents would show up above if they opened anything.
    EXPECT_THAT(outcome.access, testing::EndsWith(" at the extension"));
    EXPECT_FALSE(outcome.isFinished);
}
