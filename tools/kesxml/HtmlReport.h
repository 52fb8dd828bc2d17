#pragma once

#include "Diagnostic.h"

#include <kescorexml/DOM.h>
#include <kescorexml/InputSource.h>

#include <QByteArray>
#include <QSaveFile>
#include <QString>
#include <QStringList>

#include <cstddef>

/// A page about a check, in one file that refers to nothing else and is well-formed XML too. It is
/// written whole or not at all: until Write() a report of an earlier check stays as it is.
class HtmlReport
{
public:
    /// Throws a CorvinaException when no report can be written there, or when what is there is no
    /// regular file or no page, and so no report.
    explicit HtmlReport(const QString& file);

    /// A document or a schema that was read. `dom`, from which the statistics come, may be null.
    void Add(const QString& file, const Diagnostics& diagnostics, InputSource& source,
             const DOM* dom);
    void AddUnreadable(const QString& file, const QString& reason);
    /// Says in the report against what the documents were validated.
    void SetSchemas(const QStringList& schemas) { m_schemas = schemas; }
    /// Ends the report. Throws a CorvinaException when not all of it was taken.
    void Write();

private:
    /// Adds a line to the table of documents, and begins the part about this one.
    void Begin(const QString& file, const QString& kind, const QString& details,
               const QStringList& numbers);
    QString DrawHead() const;
    QString DrawOverview() const;

    QSaveFile m_file;
    QStringList m_schemas;
    QByteArray m_rows;
    QByteArray m_documents;
    std::size_t m_count = 0;
    std::size_t m_withErrors = 0;
    std::size_t m_unreadable = 0;
    std::size_t m_diagnosticsLeft;
};
