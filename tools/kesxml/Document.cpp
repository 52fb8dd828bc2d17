#include "Document.h"

#include "Excerpt.h"
#include "SchemaSink.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/DOMBuilder.h>
#include <kescorexml/InputSourceUtils.h>
#include <kescorexml/XMLUtils.h>
#include <kesplatform/CorvinaException.h>
#include <kesplatform/EncodingTable.h>
#include <kesplatform/TFile.h>

#include <QFile>
#include <QFileInfo>
#include <QStringConverter>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

/// All bytes of a file that is open when `isOpen`; `name` is for the message of what went wrong.
QByteArray ReadBytes(QFile& file, bool isOpen, const TString& name)
{
    QByteArray bytes = isOpen ? file.readAll() : QByteArray();
    if (file.error() != QFileDevice::NoError)
        throw CorvinaException(name + u": " + TString(file.errorString()));
    return bytes;
}

QByteArray ReadStandardInput()
{
    static bool s_wasRead = false;
    if (std::exchange(s_wasRead, true))
        throw CorvinaException(u"standard input: it can be read only once.");
    QFile input;
    return ReadBytes(input, input.open(stdin, QIODevice::ReadOnly), u"standard input");
}

QByteArray ReadFile(const QString& name)
{
    QFile file(name);
    return ReadBytes(file, file.open(QIODevice::ReadOnly), name);
}

/// The entry of UTF-16 or UTF-32, by byte-order mark or by the "<" that a document begins with;
/// else null.
const EncodingTable::Entry* FindLargerUnits(std::string_view bytes)
{
    if (const EncodingTable::Entry* const marked = EncodingTable::FindByByteOrderMark(bytes))
        return marked->unitSize > 1 ? marked : nullptr;
    for (const EncodingTable::Entry& entry : EncodingTable::c_entries) {
        if (entry.unitSize > 1 && entry.IsBeginOf(bytes, "<"))
            return &entry;
    }
    return nullptr;
}

/// Decodes larger units, which nothing that looks at single bytes could read.
bool DecodeLargerUnits(const QByteArray& bytes, TString& text)
{
    const EncodingTable::Entry* const entry =
        FindLargerUnits({bytes.data(), static_cast<std::size_t>(bytes.size())});
    if (entry == nullptr)
        return false;
    QStringDecoder decoder(entry->name.data());
    const QString decoded = decoder.decode(bytes);
    text = decoded;
    return !decoder.hasError();
}

/// A source for bytes in an encoding that is yet to be found out.
std::unique_ptr<InputSource> MakeSource(const QByteArray& bytes, const QString& name)
{
    if (TString text; DecodeLargerUnits(bytes, text))
        return std::make_unique<StringInputSource>(text, name, false);
    return std::make_unique<BinaryInputSource>(
        std::vector<unsigned char>(bytes.begin(), bytes.end()), name, false);
}

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
        return MakeSource(ReadStandardInput(), file);
    try {
        // White space that was skipped would be missing from all positions.
        return InputSourceUtils::InputSourceFromFileName(file, false);
    } catch (const TIO::DecodingException& e) {
        // What is wrong with the document can be shown where it is wrong, unless it is gone: a pipe
        // is read only once.
        if (!(e.GetEncoding() == u"UTF-8") || !QFileInfo(file).isFile())
            throw;
    }
    return MakeSource(ReadFile(file), file);
}

DocumentReader::DocumentReader(const ReadOptions& options)
    : m_options(options), m_schemaSink(std::make_shared<SchemaSink>()), m_nothing(u"", u"", false),
      m_parser(XercesXMLParser::Create(m_nothing, m_schemaSink))
{
    if (options.allowEntities)
        m_parser->AllowEntityExpansion_Insecure();
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
    ReadDocument document;
    document.dom = std::make_unique<DOM>();
    const auto builder = std::make_shared<DOMBuilder>(*document.dom, false);
    if (m_options.lineNumbers)
        builder->SetLocationInterface(m_parser.get());
    m_parser->Reload(source, builder);
    m_parser->Parse();
    AddDiagnostics(document.diagnostics, m_parser->GetWarningDiagnostics(), source.Id());
    AddDiagnostics(document.diagnostics, m_parser->GetErrorDiagnostics(), source.Id());
    m_parser->Reload(m_nothing, m_schemaSink);
    AddExcerpts(document.diagnostics, source);
    return document;
}
