#pragma once

#include "support/ParseOutcome.h"

#include <kescorexml/SAXInterface.h>
#include <kescorexml/Utf8InputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

// Documents that meet the limits of a parse, and what is said of them.

/// A schema that allows anything below the element "a".
inline const char* const c_openSchema =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'>"
    "<xs:complexType mixed='true'><xs:sequence><xs:any processContents='lax' minOccurs='0' "
    "maxOccurs='unbounded'/></xs:sequence><xs:anyAttribute processContents='lax'/>"
    "</xs:complexType></xs:element></xs:schema>";

/// Counts what reaches it, as the amplification limit counts what a document spells out.
class CountingSink : public SAXInterface
{
public:
    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override
    {
        units += 1 + static_cast<std::uint64_t>(name.length());
        for (const auto& [key, value] : attributes)
            units += 1 + static_cast<std::uint64_t>(key.length() + value.length());
        attributeCount += attributes.size();
        ++elements;
    }
    void EndElement() override {}
    void TextContent(const TString& text) override
    {
        units += static_cast<std::uint64_t>(text.length());
    }

    std::uint64_t units = 0;
    std::uint64_t elements = 0;
    std::uint64_t attributeCount = 0;
};

/// A parser for one document, which validates when it has a schema.
struct Session
{
    explicit Session(std::string text, const char* schema = nullptr)
        : source(std::move(text), u"id", false), sink(std::make_shared<CountingSink>()),
          parser(XercesXMLParser::Create(source, sink))
    {
        if (schema != nullptr)
            parser->LoadXSDString(schema, u"schema");
    }
    std::vector<std::string> Parse()
    {
        parser->Parse();
        EXPECT_EQ(parser->HasFatallyErrored(), parser->HasErrors());
        return ToUtf8(parser->GetErrors());
    }
    std::vector<std::string> ParseExpanding()
    {
        parser->AllowEntityExpansion_Insecure();
        return Parse();
    }

    Utf8InputSource source;
    std::shared_ptr<CountingSink> sink;
    std::unique_ptr<XercesXMLParser> parser;
};

template <typename Make>
std::string Concatenate(int count, Make&& make)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += make(std::to_string(i));
    return text;
}

inline std::string WithDoctype(const std::string& declarations, const std::string& content)
{
    return "<!DOCTYPE a [" + declarations + "]>" + content;
}

/// One fatal error of the usual form that names the limit and its setter.
inline auto IsOnlyError(const char* limit, const char* setter)
{
    return testing::ElementsAre(testing::AllOf(
        testing::MatchesRegex("Fatal Error\\([0-9]+,[0-9]+\\): .* \\(.*\\) \\(id: id\\)"),
        testing::HasSubstr(std::string("(") + limit + " limit, " + setter + ")")));
}

inline const auto c_isAmplificationError = IsOnlyError("amplification", "SetAmplificationLimit");
