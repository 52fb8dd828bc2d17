#pragma once

#include "Diagnostic.h"

#include <kescorexml/DOM.h>
#include <kescorexml/InputSource.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <QString>

#include <memory>

class SchemaSink;

/// A document as it was read, with everything that was said about it.
struct ReadDocument
{
    std::unique_ptr<DOM> dom;
    Diagnostics diagnostics;
};

struct ReadOptions
{
    bool allowEntities = false;
    bool lineNumbers = false;
};

/// Opens a file or, for "-", standard input. The source bears the name of the file. What cannot be
/// read is a CorvinaException.
std::unique_ptr<InputSource> OpenDocument(const QString& file);

/// Reads documents one after the other, and validates them once it has a schema.
class DocumentReader
{
public:
    explicit DocumentReader(const ReadOptions& options);
    DocumentReader(const DocumentReader&) = delete;
    DocumentReader& operator=(const DocumentReader&) = delete;
    ~DocumentReader();

    /// Loads a schema with all that it refers to and returns what there was to say about it.
    Diagnostics LoadSchema(InputSource& source);
    ReadDocument Read(InputSource& source);

private:
    ReadOptions m_options;
    std::shared_ptr<SchemaSink> m_schemaSink;
    /// What the parser is bound to between documents.
    StringInputSource m_nothing;
    std::unique_ptr<XercesXMLParser> m_parser;
};
