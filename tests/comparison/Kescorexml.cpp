#include "Documents.h"
#include "Library.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/DOMPath.h>
#include <kescorexml/StandaloneDOMParser.h>
#include <kescorexml/StringInputSource.h>

namespace {

class Kescorexml : public Library
{
public:
    std::string PositionOfElement() override
    {
        DOMParser parser;
        parser.SetEnableLineNumbersOnElements(true);
        const auto document = parser.ParseXmlString(c_twoLines, u"a");
        const DOMElement& b = document->GetDocumentRoot()->GetRequiredChild(u"b");
        return b.GetStartLine() == 2 && b.GetStartColumn() == 7 ? "line and column" : "?";
    }

    std::string TreeOfBrokenDocument() override
    {
        const auto document = DOMParser().ParseXmlString(c_broken, u"a");
        const DOMElement* root = document->GetDocumentRoot();
        const bool holdsErrors = document->HasErrors();
        return holdsErrors && root->GetRequiredChild(u"b").GetText() == u"text"
                   ? "as far as it was read"
                   : "?";
    }

    std::string SchemaValidation() override
    {
        DOMParser parser;
        const bool wasFine = !parser.ParseXmlString(c_invalid, u"a")->HasErrors();
        parser.AddXSDInputSource(
            std::make_unique<StringInputSource>(TString::fromStdString(c_schema), u"n.xsd", false));
        return wasFine && parser.ParseXmlString(c_invalid, u"a")->HasErrors() ? "yes" : "no";
    }

    std::string EntityOfDocument() override
    {
        const bool isError = DOMParser().ParseXmlString(c_withEntity, u"a")->HasErrors();
        StandaloneDOMParser parser;
        const bool isErrorAtFirst = !parser.ParseXmlString(c_withEntity, u"a").errors.empty();
        parser.AllowEntityExpansion_Insecure();
        const auto result = parser.ParseXmlString(c_withEntity, u"a");
        const bool isExpanded =
            result.errors.empty() && result.root->GetChild(u"a")->GetAllText() == u"text";
        return isError && isErrorAtFirst && isExpanded ? "an error unless allowed" : "?";
    }

    std::string EntityOfFile(const std::string& path) override
    {
        const auto document = DOMParser().ParseXmlString(WithEntityFile(path), u"a");
        const DOMElement* root = document->GetDocumentRoot();
        if (root != nullptr && root->GetText().toStdString() == "secret")
            return "read";
        return document->HasErrors() ? "an error" : "not read";
    }

    std::string TextBetweenElements() override
    {
        const auto document = DOMParser().ParseXmlString(c_mixed, u"a");
        const bool isJoined = document->GetDocumentRoot()->GetText() == u"xy";
        std::string nodes;
        const auto result = StandaloneDOMParser().ParseXmlString(c_mixed, u"a");
        const StandaloneDOMElement& root = *result.root->GetChild(u"a");
        root.WalkNodes([&](const StandaloneDOMElement&) { nodes += "<b/>"; },
                       [&](const TString& text) { nodes += text.toStdString(); });
        return isJoined && nodes == "x<b/>y" ? "in place with `StandaloneDOMParser`" : "?";
    }

    std::string Comments() override
    {
        const auto result = StandaloneDOMParser().ParseXmlString(c_withComment, u"a");
        return result.errors.empty() && !result.root->GetChild(u"a")->HasTextOrChildren()
                   ? "left out"
                   : "?";
    }

    std::string Queries() override
    {
        const auto document = DOMParser().ParseXmlString(c_list, u"a");
        const DOMElement& root = *document->GetDocumentRoot();
        const auto count = [&](const TString& path) {
            return DOMPath::GetAll<const DOMElement>(root, path).size();
        };
        const bool hasConditions = count(u"//b[@x='2']") == 1;
        return !hasConditions && count(u"//b") == 2 && count(u"/a/*") == 2 ? "names, `*`, `//`"
                                                                           : "?";
    }

    std::string Html() override
    {
        return DOMParser().ParseXmlString(c_html, u"a")->HasErrors() ? "no" : "?";
    }

    std::string TextUnits() override
    {
        static_assert(sizeof(TString().view()[0]) == 2);
        return "UTF-16";
    }

    std::shared_ptr<void> Parse(const std::string& document, bool /*isHuge*/) override
    {
        std::shared_ptr<DOM> tree = DOMParser().ParseXmlString(document, u"a");
        return tree->HasErrors() ? nullptr : tree;
    }
};

} // namespace

std::unique_ptr<Library> MakeKescorexml()
{
    return std::make_unique<Kescorexml>();
}
