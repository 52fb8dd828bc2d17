#pragma once

#include "Diagnostic.h"

#include <kescorexml/SAXInterface.h>

#include <QSet>
#include <QString>

/// Supplies a schema with the schemas that it imports or includes: regular files in its folder or
/// below, however they are named. Nothing is fetched from elsewhere.
class SchemaSink : public SAXInterfaceExtension
{
public:
    SchemaSink();
    ~SchemaSink() override;

    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override;
    void EndElement() override;
    void TextContent(const TString& text) override;
    TString ResolveSchemaLocation(const TString& baseUri, const TString& systemId) override;
    TString FilterSchemaText(const TString& text, const TString& path) override;

    /// Says which schema is loaded next: what it refers to must not lie outside of its folder.
    void SetSchema(const TString& file);
    /// Says that a schema is loaded already, so that a location elsewhere with the same file name
    /// need not be missed.
    void AddLoaded(const TString& file);
    /// What was said about locations since the last call.
    Diagnostics TakeDiagnostics() noexcept;

private:
    void ReportRemote(const TString& baseUri, const QString& location);
    bool IsInFolder(const QString& path) const;

    /// Absolute.
    QString m_folder;

    /// File names, without folders, of schemas that are known under whatever location.
    QSet<QString> m_knownNames;
    QSet<QString> m_reported;
    Diagnostics m_diagnostics;
};
