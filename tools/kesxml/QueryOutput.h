#pragma once

#include "Json.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/InputSource.h>

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

/// What of the matches is printed, and how.
struct QueryOutputOptions
{
    bool isCount = false;
    bool isText = false;
    bool isJson = false;
    /// The name of the one attribute to print, or empty.
    QString attribute;
    bool namesFiles = false;
};

/// Prints what a query finds in one document after the other.
class QueryOutput
{
public:
    explicit QueryOutput(const QueryOutputOptions& options) : m_options(options) {}

    /// The matches in one document, in its order, and the source of that.
    void Add(const QString& file, InputSource& source,
             const std::vector<const DOMElement*>& matches);
    /// Prints what can only be told at the end.
    void End();
    bool HasMatches() const { return m_count > 0; }

private:
    /// Prints a text of a match, or a number, behind the name of the file where that is wanted.
    void PrintValue(const QString& file, const TString& value);
    void PrintAttributes(const QString& file, const std::vector<const DOMElement*>& matches);
    void PrintElements(const QString& file, InputSource& source,
                       const std::vector<const DOMElement*>& matches);

    QueryOutputOptions m_options;
    /// Begins with the first document that could be read.
    std::optional<JsonArray> m_array;
    bool m_hasDocument = false;
    std::size_t m_count = 0;
};
