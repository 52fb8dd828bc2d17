#include "Documents.h"
#include "Library.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

namespace {

namespace xe = xercesc;

/// Counts what is reported and throws nothing.
class Counter : public xe::HandlerBase
{
public:
    void warning(const xe::SAXParseException&) override {}
    void error(const xe::SAXParseException&) override { ++count; }
    void fatalError(const xe::SAXParseException&) override { ++count; }

    int count = 0;
};

/// A document, which its parser owns.
struct Tree
{
    xe::XercesDOMParser parser;
    Counter errors;

    bool Read(const std::string& text)
    {
        parser.setErrorHandler(&errors);
        const xe::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()),
                                           text.size(), "a");
        parser.parse(source);
        return errors.count == 0;
    }

    xe::DOMElement* Root() { return parser.getDocument()->getDocumentElement(); }
};

std::string ToUtf8(const XMLCh* text)
{
    char* bytes = xe::XMLString::transcode(text);
    std::string result = bytes;
    xe::XMLString::release(&bytes);
    return result;
}

std::string TextOf(const xe::DOMNode* node)
{
    return node == nullptr ? "" : ToUtf8(node->getTextContent());
}

/// The number of nodes that an expression finds; -1 when it is refused.
int CountMatches(Tree& tree, const XMLCh* expression)
{
    try {
        xe::DOMXPathResult* const found = tree.parser.getDocument()->evaluate(
            expression, tree.Root(), nullptr, xe::DOMXPathResult::ORDERED_NODE_SNAPSHOT_TYPE,
            nullptr);
        const int count = static_cast<int>(found->getSnapshotLength());
        found->release();
        return count;
    } catch (const xe::DOMException&) {
        return -1;
    }
}

template <typename T>
constexpr bool c_hasLine = requires(const T& thing)
{
    thing.getLineNumber();
};

class XercesDom : public Library
{
public:
    XercesDom() { xe::XMLPlatformUtils::Initialize(); }
    ~XercesDom() override { xe::XMLPlatformUtils::Terminate(); }

    std::string PositionOfElement() override
    {
        // Errors have a locator, nodes have nothing like it.
        static_assert(c_hasLine<xe::DOMLocator>);
        return c_hasLine<xe::DOMNode> || c_hasLine<xe::DOMElement> ? "?" : "none";
    }

    std::string TreeOfBrokenDocument() override
    {
        Tree tree;
        const bool isFine = tree.Read(c_broken);
        return !isFine && TextOf(tree.Root()->getFirstElementChild()) == "text"
                   ? "as far as it was read"
                   : "?";
    }

    std::string SchemaValidation() override
    {
        const auto isValid = [](const std::string& text) {
            Tree tree;
            const xe::MemBufInputSource schema(reinterpret_cast<const XMLByte*>(c_schema.data()),
                                               c_schema.size(), "n.xsd");
            tree.parser.setDoNamespaces(true);
            tree.parser.setDoSchema(true);
            tree.parser.setLoadSchema(false);
            tree.parser.setValidationScheme(xe::XercesDOMParser::Val_Always);
            tree.parser.loadGrammar(schema, xe::Grammar::SchemaGrammarType, true);
            tree.parser.useCachedGrammarInParse(true);
            return tree.Read(text);
        };
        return isValid("<n>1</n>") && !isValid(c_invalid) ? "yes" : "no";
    }

    std::string EntityOfDocument() override
    {
        Tree tree;
        return tree.Read(c_withEntity) && TextOf(tree.Root()) == "text" ? "expanded" : "?";
    }

    std::string EntityOfFile(const std::string& path) override
    {
        Tree tree;
        const bool isFine = tree.Read(WithEntityFile(path));
        if (TextOf(tree.Root()) == "secret")
            return "read";
        return isFine ? "not read" : "an error";
    }

    std::string TextBetweenElements() override
    {
        Tree tree;
        tree.Read(c_mixed);
        std::string nodes;
        for (xe::DOMNode* node = tree.Root()->getFirstChild(); node != nullptr;
             node = node->getNextSibling())
            nodes += node->getNodeType() == xe::DOMNode::ELEMENT_NODE ? "<b/>" : TextOf(node);
        return nodes == "x<b/>y" ? "in place" : "?";
    }

    std::string Comments() override
    {
        Tree tree;
        tree.Read(c_withComment);
        const xe::DOMNode* const child = tree.Root()->getFirstChild();
        return child != nullptr && child->getNodeType() == xe::DOMNode::COMMENT_NODE ? "kept" : "?";
    }

    std::string Queries() override
    {
        Tree tree;
        tree.Read(c_list);
        if (CountMatches(tree, u"//b[@x='2']") == 1)
            return "XPath 1.0";
        return CountMatches(tree, u".//b") == 2 && CountMatches(tree, u"./*") == 2
                   ? "names, `*`, `.//`"
                   : "?";
    }

    std::string Html() override
    {
        Tree tree;
        return tree.Read(c_html) ? "?" : "no";
    }

    std::string TextUnits() override
    {
        static_assert(sizeof(XMLCh) == 2);
        return "UTF-16";
    }

    std::shared_ptr<void> Parse(const std::string& text, bool /*isHuge*/) override
    {
        Tree tree;
        if (!tree.Read(text))
            return nullptr;
        return std::shared_ptr<xe::DOMDocument>(
            tree.parser.adoptDocument(), [](xe::DOMDocument* document) { document->release(); });
    }
};

} // namespace

std::unique_ptr<Library> MakeXercesDom()
{
    return std::make_unique<XercesDom>();
}
