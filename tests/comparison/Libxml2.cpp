#include "Documents.h"
#include "Library.h"

#include <libxml/HTMLparser.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>
#include <libxml/xpath.h>

namespace {

using Document = std::shared_ptr<xmlDoc>;

/// Null when there is no tree. Messages are not printed.
Document Read(const std::string& text, int options = 0)
{
    const int quiet = XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    xmlDoc* const document =
        xmlReadMemory(text.data(), static_cast<int>(text.size()), "a", nullptr, options | quiet);
    return document == nullptr ? nullptr : Document(document, xmlFreeDoc);
}

xmlNode* RootOf(const Document& document)
{
    return document == nullptr ? nullptr : xmlDocGetRootElement(document.get());
}

std::string TextOf(const xmlNode* node)
{
    xmlChar* const content = xmlNodeGetContent(node);
    std::string text = content == nullptr ? "" : reinterpret_cast<const char*>(content);
    xmlFree(content);
    return text;
}

void Ignore(void* /*context*/, const char* /*format*/, ...) {}

class Libxml2 : public Library
{
public:
    std::string PositionOfElement() override
    {
        const Document document = Read(c_twoLines);
        return xmlGetLineNo(xmlFirstElementChild(RootOf(document))) == 2 ? "line" : "?";
    }

    std::string TreeOfBrokenDocument() override
    {
        if (Read(c_broken) != nullptr)
            return "?";
        const Document document = Read(c_broken, XML_PARSE_RECOVER);
        return TextOf(xmlFirstElementChild(RootOf(document))) == "text" ? "with `XML_PARSE_RECOVER`"
                                                                        : "?";
    }

    std::string SchemaValidation() override
    {
        const std::shared_ptr<xmlSchemaParserCtxt> reader(
            xmlSchemaNewMemParserCtxt(c_schema.data(), static_cast<int>(c_schema.size())),
            xmlSchemaFreeParserCtxt);
        const std::shared_ptr<xmlSchema> schema(xmlSchemaParse(reader.get()), xmlSchemaFree);
        const std::shared_ptr<xmlSchemaValidCtxt> validator(xmlSchemaNewValidCtxt(schema.get()),
                                                            xmlSchemaFreeValidCtxt);
        xmlSchemaSetValidErrors(validator.get(), Ignore, Ignore, nullptr);
        return xmlSchemaValidateDoc(validator.get(), Read(c_invalid).get()) > 0 &&
                       xmlSchemaValidateDoc(validator.get(), Read("<n>1</n>").get()) == 0
                   ? "yes"
                   : "no";
    }

    std::string EntityOfDocument() override
    {
        const Document document = Read(c_withEntity);
        const xmlNode* const child = RootOf(document)->children;
        return child != nullptr && child->type == XML_ENTITY_REF_NODE ? "left as a reference" : "?";
    }

    std::string EntityOfFile(const std::string& path) override
    {
        const Document document = Read(WithEntityFile(path));
        if (document == nullptr)
            return "an error";
        return TextOf(RootOf(document)) == "secret" ? "read" : "not read";
    }

    std::string TextBetweenElements() override
    {
        const Document document = Read(c_mixed);
        std::string nodes;
        for (const xmlNode* node = RootOf(document)->children; node != nullptr; node = node->next)
            nodes += node->type == XML_ELEMENT_NODE ? "<b/>" : TextOf(node);
        return nodes == "x<b/>y" ? "in place" : "?";
    }

    std::string Comments() override
    {
        const Document document = Read(c_withComment);
        const xmlNode* const child = RootOf(document)->children;
        return child != nullptr && child->type == XML_COMMENT_NODE ? "kept" : "?";
    }

    std::string Queries() override
    {
        const Document document = Read(c_list);
        const std::shared_ptr<xmlXPathContext> context(xmlXPathNewContext(document.get()),
                                                       xmlXPathFreeContext);
        const std::shared_ptr<xmlXPathObject> found(
            xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>("//b[@x='2']"), context.get()),
            xmlXPathFreeObject);
        return xmlXPathNodeSetGetLength(found->nodesetval) == 1 ? "XPath 1.0" : "?";
    }

    std::string Html() override
    {
        const Document document(htmlReadMemory(c_html.data(), static_cast<int>(c_html.size()), "a",
                                               nullptr, HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING),
                                xmlFreeDoc);
        return TextOf(RootOf(document)) == "onetwo" ? "yes" : "no";
    }

    std::string TextUnits() override
    {
        static_assert(sizeof(xmlChar) == 1);
        return "UTF-8";
    }

    std::shared_ptr<void> Parse(const std::string& document, bool isHuge) override
    {
        return Read(document, isHuge ? XML_PARSE_HUGE : 0);
    }

    std::string HugeSetting() override { return "with `XML_PARSE_HUGE`"; }
};

} // namespace

std::unique_ptr<Library> MakeLibxml2()
{
    return std::make_unique<Libxml2>();
}
