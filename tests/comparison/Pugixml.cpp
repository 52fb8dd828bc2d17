#include "Documents.h"
#include "Library.h"

#include <pugixml.hpp>

namespace {

class Pugixml : public Library
{
public:
    std::string PositionOfElement() override
    {
        pugi::xml_document document;
        document.load_string(c_twoLines.c_str());
        // That of the name.
        return document.child("a").child("b").offset_debug() == 7 ? "byte offset" : "?";
    }

    std::string TreeOfBrokenDocument() override
    {
        pugi::xml_document document;
        const bool isFine = bool(document.load_string(c_broken.c_str()));
        const std::string text = document.child("a").child("b").text().get();
        return !isFine && text == "text" ? "as far as it was read" : "?";
    }

    std::string SchemaValidation() override
    {
        pugi::xml_document document;
        return document.load_string(c_invalid.c_str()) ? "no" : "?";
    }

    std::string EntityOfDocument() override
    {
        pugi::xml_document document;
        document.load_string(c_withEntity.c_str());
        return std::string(document.child("a").text().get()) == "&e;" ? "left as text" : "?";
    }

    std::string EntityOfFile(const std::string& path) override
    {
        pugi::xml_document document;
        const bool isFine = bool(document.load_string(WithEntityFile(path).c_str()));
        const std::string text = document.child("a").text().get();
        return text == "secret" ? "read" : isFine ? "not read" : "an error";
    }

    std::string TextBetweenElements() override
    {
        pugi::xml_document document;
        document.load_string(c_mixed.c_str());
        std::string nodes;
        for (const pugi::xml_node& node : document.child("a").children())
            nodes += node.type() == pugi::node_element ? "<b/>" : node.value();
        return nodes == "x<b/>y" ? "in place" : "?";
    }

    std::string Comments() override
    {
        const auto count = [](unsigned int options) {
            pugi::xml_document document;
            document.load_string(c_withComment.c_str(), options);
            return document.child("a").first_child().type() == pugi::node_comment;
        };
        if (count(pugi::parse_default))
            return "kept";
        return count(pugi::parse_default | pugi::parse_comments) ? "with `parse_comments`" : "?";
    }

    std::string Queries() override
    {
        pugi::xml_document document;
        document.load_string(c_list.c_str());
        return document.select_nodes("//b[@x='2']").size() == 1 ? "XPath 1.0" : "?";
    }

    std::string Html() override
    {
        pugi::xml_document document;
        return document.load_string(c_html.c_str()) ? "?" : "no";
    }

    std::string TextUnits() override
    {
        static_assert(sizeof(pugi::char_t) == 1);
        return "UTF-8";
    }

    std::shared_ptr<void> Parse(const std::string& text, bool /*isHuge*/) override
    {
        auto document = std::make_shared<pugi::xml_document>();
        return document->load_buffer(text.data(), text.size()) ? document : nullptr;
    }
};

} // namespace

std::unique_ptr<Library> MakePugixml()
{
    return std::make_unique<Pugixml>();
}
