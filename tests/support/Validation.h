#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/StringInputSource.h>

#include <gmock/gmock.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

/// A schema without target namespace that holds the given declarations.
inline std::string SchemaOf(const std::string& declarations)
{
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>" + declarations +
           "</xs:schema>";
}

inline std::unique_ptr<InputSource> SchemaSource(const std::string& schema, const char* id)
{
    return std::make_unique<StringInputSource>(TString::fromStdString(schema), TString(id), false);
}

/// The errors on the root element of a document, in their order.
inline std::vector<std::string> RootErrors(const DOM& document)
{
    std::list<TString> errors;
    document.GetRoot()->GetErrors(errors);
    std::vector<std::string> result;
    for (const TString& error : errors)
        result.push_back(error.toStdString());
    return result;
}

/// A DOMParser with one schema, for documents called "doc.xml".
class Validator
{
public:
    explicit Validator(const std::string& schema)
    {
        m_parser.AddXSDInputSource(SchemaSource(schema, "schema.xsd"));
    }

    void Add(const std::string& schema, const char* id)
    {
        m_parser.AddXSDInputSource(SchemaSource(schema, id));
    }
    std::unique_ptr<DOM> Parse(const std::string& document) const
    {
        return m_parser.ParseXmlString(document, u"doc.xml");
    }
    std::vector<std::string> Check(const std::string& document) const
    {
        return RootErrors(*Parse(document));
    }

private:
    DOMParser m_parser;
};

/// The message of a violation in "doc.xml" whose reason contains `reason`.
inline auto ViolationAt(int line, int column, const std::string& reason)
{
    using namespace testing;
    return AllOf(StartsWith("Error(" + std::to_string(line) + "," + std::to_string(column) + "): "),
                 HasSubstr(reason), EndsWith(" (id: doc.xml)"));
}
