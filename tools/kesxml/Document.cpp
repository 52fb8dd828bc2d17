#include "Document.h"

#include "Entities.h"
#include "Excerpt.h"
#include "NativeFile.h"
#include "SchemaSink.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOMBuilder.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/XMLUtils.h>
#include <kesplatform/CorvinaException.h>
#include <kesplatform/EncodingTable.h>
#include <kesplatform/TFile.h>
#include <kesplatform/detail/TextDecoding.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

QByteArray ReadStandardInput()
{
    static bool s_wasRead = false;
    if (std::exchange(s_wasRead, true))
        throw CorvinaException(u"standard input: it can be read only once.");
    QFile input;
    QByteArray bytes = input.open(stdin, QIODevice::ReadOnly) ? input.readAll() : QByteArray();
    if (input.error() != QFileDevice::NoError)
        throw CorvinaException(u"standard input: " + TString(input.errorString()));
    return bytes;
}

/// Decodes the bytes as those of files are. False for those that are UTF-8 already, and for those
/// that do not decode: the parser finds what is wrong and where.
bool Decode(std::string_view bytes, std::string& text)
{
    TextDecoding::Encoding encoding;
    return !TextDecoding::FindEncoding(bytes, encoding) &&
           !TextDecoding::IsUtf8AsItIs(bytes, encoding) &&
           !TextDecoding::AppendUtf8(bytes, encoding, text) &&
           !text.starts_with(EncodingTable::c_utf8.byteOrderMark);
}

/// For who wants to know nothing but what is wrong.
class IdleSink : public SAXInterface, public SAXAttributeErrors
{
public:
    void StartElement(TString&& /*name*/,
                      std::unordered_map<TString, TString>&& /*attributes*/) override
    {
    }
    void EndElement() override {}
    void TextContent(const TString& /*text*/) override {}
};

/// For who wants to know that, and the tree.
class AskingBuilder : public DOMBuilder, public SAXAttributeErrors
{
public:
    using DOMBuilder::DOMBuilder;
};

/// The name of the first element without its prefix; empty when the first megabyte holds no whole
/// start tag.
std::string ReadRootName(InputSource& source)
{
    std::string head;
    source.GetBytes(head, 1U << 20);
    source.ResetToStart();
    const XmlUtils::StringRange tag = XmlUtils::FindRootTag(head);
    if (tag.start == std::string::npos)
        return {};
    std::string name = head.substr(tag.start + 1, tag.length - 2);
    name.erase(std::min(name.find_first_of("/ \t\r\n"), name.size()));
    return name.substr(name.find(':') + 1);
}

} // namespace

std::unique_ptr<InputSource> OpenDocument(const QString& file)
{
    if (file == "-")
        return MakeDocument(ReadStandardInput(), file);
    if (IsPipe(file) || !IsUtf8Name(file))
        return MakeDocument(ReadNativeFile(file), file);
    try {
        // White space that was skipped would be missing from all positions.
        return InputSourceUtils::InputSourceFromFileName(file, false);
    } catch (const TIO::DecodingException& e) {
        // What is wrong with the document can be shown where it is wrong, unless it is gone: a
        // device is read only once.
        if (!(e.GetEncoding() == u"UTF-8") || !QFileInfo(file).isFile())
            throw;
    }
    return MakeDocument(ReadNativeFile(file), file);
}

std::unique_ptr<InputSource> MakeDocument(const QByteArray& bytes, const QString& name)
{
    const std::string_view document(bytes.data(), static_cast<std::size_t>(bytes.size()));
    if (std::string text; Decode(document, text))
        return std::make_unique<Utf8InputSource>(std::move(text), name, false);
    return std::make_unique<BinaryInputSource>(
        std::vector<unsigned char>(bytes.begin(), bytes.end()), name, false);
}

std::string ReadText(InputSource& source)
{
    std::string text;
    std::string chunk;
    source.ResetToStart();
    while (source.GetBytes(chunk, 1U << 20) && !chunk.empty())
        text += chunk;
    source.ResetToStart();
    if (!QByteArrayView(text.data(), std::ssize(text)).isValidUtf8())
        throw CorvinaException(source.Id() + u": it cannot be read as text in its encoding.");
    text.erase(0, text.size() - EncodingTable::SkipByteOrderMark(text).size());
    return text;
}

std::string ReadTextIfPossible(InputSource& source)
{
    try {
        return ReadText(source);
    } catch (const CorvinaException&) {
        return {};
    }
}

DocumentReader::DocumentReader(const ReadOptions& options)
    : m_options(options), m_schemaSink(std::make_shared<SchemaSink>()),
      m_idleSink(std::make_shared<IdleSink>()), m_nothing(u"", u"", false),
      m_parser(XercesXMLParser::Create(m_nothing, m_schemaSink))
{
    if (options.allowEntities)
        m_parser->AllowEntityExpansion_Insecure();
    m_treeParser.SetEnableLineNumbersOnElements(options.lineNumbers);
}

DocumentReader::~DocumentReader() = default;

Diagnostics DocumentReader::LoadSchema(InputSource& source)
{
    // The schema compiler would complain about every element of a document given by mistake.
    if (const std::string root = ReadRootName(source); !root.empty() && root != "schema") {
        const TString message =
            u"not an XML Schema: its first element is '" + TString::fromStdString(root) + u"'";
        return {{true, source.Id(), 0, 0, message, {}}};
    }
    m_parser->ClearErrorsAndWarnings();
    m_hasSchema = true;
    m_schemaSink->SetSchema(source.Id());
    m_parser->LoadXSDSource(source);
    m_schemaSink->AddLoaded(source.Id());
    Diagnostics diagnostics = m_schemaSink->TakeDiagnostics();
    AddDiagnostics(diagnostics, m_parser->GetWarningDiagnostics(), source.Id());
    AddDiagnostics(diagnostics, m_parser->GetErrorDiagnostics(), source.Id());
    AddExcerpts(diagnostics, source);
    return diagnostics;
}

ReadDocument DocumentReader::Read(InputSource& source)
{
    if (m_hasSchema)
        return Build(source);
    ReadDocument document;
    document.diagnostics = Check(source);
    document.dom = ReadTree(source);
    return document;
}

std::unique_ptr<DOM> DocumentReader::ReadTree(InputSource& source)
{
    source.ResetToStart();
    std::unique_ptr<DOM> dom = m_treeParser.ParseXmlInputSource(source, false);
    // That parser expands no entities, which is an error.
    return m_options.allowEntities && dom->HasErrors() ? Build(source).dom : std::move(dom);
}

// This takes more time than the parser of trees.
ReadDocument DocumentReader::Build(InputSource& source)
{
    ReadDocument document;
    document.dom = std::make_unique<DOM>();
    const auto builder = std::make_shared<AskingBuilder>(*document.dom, false);
    if (m_options.lineNumbers)
        builder->SetLocationInterface(m_parser.get());
    document.diagnostics = Parse(source, builder);
    return document;
}

Diagnostics DocumentReader::Check(InputSource& source)
{
    return Parse(source, m_idleSink);
}

Diagnostics DocumentReader::Parse(InputSource& source, std::shared_ptr<SAXInterface> sink)
{
    Diagnostics diagnostics;
    m_parser->Reload(source, std::move(sink));
    m_parser->Parse();
    AddDiagnostics(diagnostics, m_parser->GetWarningDiagnostics(), source.Id());
    AddDiagnostics(diagnostics, m_parser->GetErrorDiagnostics(), source.Id());
    m_skippedEntities = m_parser->GetSkippedEntities();
    m_parser->Reload(m_nothing, m_schemaSink);
    if (m_options.hasEntityOption && !m_options.allowEntities)
        NameEntityOption(diagnostics);
    AddExcerpts(diagnostics, source);
    return diagnostics;
}
