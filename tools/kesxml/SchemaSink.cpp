#include "SchemaSink.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

#include <utility>

namespace {

/// Whether a reference names a scheme of its own, such as "http:".
bool HasScheme(const QString& reference)
{
    static const QRegularExpression s_scheme("^[A-Za-z][A-Za-z0-9+.-]+:");
    return s_scheme.match(reference).hasMatch();
}

QString ToLocalPath(const QString& reference)
{
    return reference.startsWith("file:") ? QUrl(reference).toLocalFile() : reference;
}

} // namespace

// The attributes of XML itself are built in.
SchemaSink::SchemaSink() : m_knownNames{"xml.xsd"} {}

SchemaSink::~SchemaSink() = default;

void SchemaSink::StartElement(TString&& /*name*/,
                              std::unordered_map<TString, TString>&& /*attributes*/)
{
}

void SchemaSink::EndElement() {}

void SchemaSink::TextContent(const TString& /*text*/) {}

TString SchemaSink::ResolveSchemaLocation(const TString& baseUri, const TString& systemId)
{
    const QString reference = systemId;
    if (reference.isEmpty())
        return {};
    if (HasScheme(reference) && !reference.startsWith("file:")) {
        ReportRemote(baseUri, reference);
        return {};
    }
    const QDir folder(QFileInfo(ToLocalPath(baseUri)).path());
    bool isOutside = false;
    // A location is a URI, but many are written as plain file names.
    for (const QString& name :
         {ToLocalPath(reference), QUrl::fromPercentEncoding(reference.toUtf8())}) {
        if (name.contains(QChar::Null))
            continue;
        const QString path = QDir::cleanPath(folder.filePath(name));
        if (!IsInFolder(path))
            isOutside = true;
        // Neither a folder nor a device.
        else if (const QFileInfo file(path); file.isFile() && file.isReadable())
            return path;
    }
    if (isOutside && m_knownNames.contains(QUrl(reference).fileName()))
        return {};
    const QString message =
        isOutside ? "' is not read because it is not in the folder of the schema that was given or "
                    "below; give it with an --xsd before this one"
                  : QString("' cannot be read");
    m_diagnostics.push_back({true, baseUri, 0, 0, "the schema '" + reference + message, {}});
    return {};
}

bool SchemaSink::IsInFolder(const QString& path) const
{
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    return absolute == m_folder ||
           absolute.startsWith(m_folder.endsWith('/') ? m_folder : m_folder + '/');
}

void SchemaSink::ReportRemote(const TString& baseUri, const QString& location)
{
    if (m_knownNames.contains(QUrl(location).fileName()) || m_reported.contains(location))
        return;
    m_reported.insert(location);
    const QString message = "the schema '" + location +
                            "' is not read because it is not a local file; give a copy of it with "
                            "an --xsd before this one";
    m_diagnostics.push_back({false, baseUri, 0, 0, message, {}});
}

void SchemaSink::SetSchema(const TString& file)
{
    m_folder = QDir::cleanPath(QFileInfo(QString(file)).absolutePath());
}

void SchemaSink::AddLoaded(const TString& file)
{
    m_knownNames.insert(QFileInfo(QString(file)).fileName());
}

TString SchemaSink::FilterSchemaText(const TString& text, const TString& /*path*/)
{
    // As many bytes of the text's UTF-8 are compiled as the text has units; blanks at the end make
    // up for the characters that take more.
    const auto missing = static_cast<TString::size_type>(text.toStdString().size()) - text.length();
    return missing > 0 ? text + TString(missing, u' ') : text;
}

Diagnostics SchemaSink::TakeDiagnostics() noexcept
{
    return std::exchange(m_diagnostics, {});
}
