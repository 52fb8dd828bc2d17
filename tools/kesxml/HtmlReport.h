#pragma once

#include "Diagnostic.h"

#include <kescorexml/DOM.h>
#include <kescorexml/InputSource.h>
#include <kesplatform/TSaveFile.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <optional>
#include <vector>

/// A page about a check, in one file that refers to nothing else and is well-formed XML too. What
/// has errors stands first, what has warnings next, and what is fine, folded, at the end; within
/// these the order is that of adding. Where there are thousands of bad documents, those for which
/// there is no room have no more than a line in a table. It is written whole or not at all: until
/// Write() a report of an earlier check stays as it is.
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
    struct Document
    {
        std::size_t number;
        QString name;
        /// The line of a table, behind the name.
        QByteArray cells;
        /// What more there is to say; empty when that is nothing.
        QByteArray section;
    };

    /// Documents of which the same can be said.
    struct Group
    {
        std::vector<Document> documents;
        /// What numbers and charts take of the sections.
        qsizetype chartBytes = 0;
        /// The documents whose charts had no room.
        std::size_t withoutCharts = 0;
    };

    /// Documents as they stand on the page.
    struct Drawing
    {
        QByteArray rows;
        QByteArray sections;
        std::size_t sectionCount = 0;
        /// How many had no room.
        std::size_t leftOut = 0;
    };

    /// Adds a document, with a section unless `content` is empty.
    void AddTo(Group& group, const QString& file, const QString& kind, const QString& details,
               const QStringList& numbers, const QString& content);
    static void Draw(const Group& group, Drawing& drawing);
    /// What is in a document, for a section, while there is room; adds it to `numbers` too.
    static QString DrawContents(Group& group, const DOM& dom, bool hasErrors, QStringList& numbers);
    QString DrawHead() const;
    QString DrawOverview() const;
    QByteArray DrawFound() const;
    QByteArray DrawFine() const;

    QString m_name;
    /// Open from the start: that no report can be written there is said before all is checked.
    std::optional<TSaveFile> m_file;
    QStringList m_schemas;
    Group m_bad;
    Group m_doubtful;
    Group m_fine;
    std::size_t m_count = 0;
    std::size_t m_withErrors = 0;
    std::size_t m_unreadable = 0;
    std::size_t m_diagnosticsLeft;
};
