#pragma once

#include <kescorexml/InputSource.h>
#include <kescorexml/QtKesResourceId.h>

#include <memory>
#include <vector>

class XercesXMLParserImpl;

/// The schemas that a parser loads before each document.
class SchemaSources
{
public:
    void Add(std::unique_ptr<InputSource> source);
    /// A compiled-in one. Fails as reading a resource does.
    void AddResource(QtKesResourceId id);
    bool IsEmpty() const noexcept { return m_schemas.empty(); }
    /// Loads all, in the order in which they were added. What a source throws passes through.
    void LoadInto(XercesXMLParserImpl& parser);

private:
    struct Schema
    {
        std::unique_ptr<InputSource> source;
        bool wasRead = false;
    };

    std::vector<Schema> m_schemas;
};
