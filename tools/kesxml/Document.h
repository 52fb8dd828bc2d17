#pragma once

#include "Diagnostic.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMParser.h>
#include <kescorexml/InputSource.h>
#include <kescorexml/SAXInterface.h>
#include <kescorexml/SkippedEntity.h>
#include <kescorexml/StringInputSource.h>
#include <kescorexml/XercesXMLParser.h>

#include <QString>

#include <memory>
#include <string>
#include <vector>

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
    /// Whether the command has the option --allow-entities, which a message may name.
    bool hasEntityOption = false;
};

/// Opens a file or, for "-", standard input. The source bears the name of the file. What cannot be
/// read is a CorvinaException.
std::unique_ptr<InputSource> OpenDocument(const QString& file);

/// A source for the bytes of a document, in an encoding that is yet to be found out.
std::unique_ptr<InputSource> MakeDocument(const QByteArray& bytes, const QString& name);

/// The whole text of a document in UTF-8, without byte-order mark; the source is at its start
/// afterwards. A CorvinaException when it is in an encoding that is not read but by the parser.
std::string ReadText(InputSource& source);
/// The same, but empty where that throws.
std::string ReadTextIfPossible(InputSource& source);

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
    /// The same without a tree, and so in less time and memory.
    Diagnostics Check(InputSource& source);
    /// Nothing but the tree, into which no schema has put anything.
    std::unique_ptr<DOM> ReadTree(InputSource& source);
    /// What the last document that was read or checked refers to and nobody declares; valid until
    /// the next one.
    const std::vector<SkippedEntity>& GetSkippedEntities() const noexcept
    {
        return m_skippedEntities;
    }
    /// Whether it validates.
    bool HasSchema() const noexcept { return m_hasSchema; }

private:
    ReadDocument Build(InputSource& source);
    /// Parses for a sink.
    Diagnostics Parse(InputSource& source, std::shared_ptr<SAXInterface> sink);

    ReadOptions m_options;
    bool m_hasSchema = false;
    std::vector<SkippedEntity> m_skippedEntities;
    DOMParser m_treeParser;
    std::shared_ptr<SchemaSink> m_schemaSink;
    std::shared_ptr<SAXInterface> m_idleSink;
    /// What the parser is bound to between documents.
    StringInputSource m_nothing;
    std::unique_ptr<XercesXMLParser> m_parser;
};
