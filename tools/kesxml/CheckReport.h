#pragma once

#include "CheckedDocument.h"
#include "Json.h"

#include <QString>

#include <cstddef>
#include <limits>
#include <optional>

class HtmlReport;

/// How a check is told.
struct CheckReportOptions
{
    bool isJson = false;
    bool showsProgress = false;
    /// Without the line for each document.
    bool isQuiet = false;
    /// How many errors and warnings of a document are shown.
    std::size_t maxErrors = std::numeric_limits<std::size_t>::max();
};

/// Tells what a check found, for people or for programs, and has it on a page too.
class CheckReport
{
public:
    /// `page` may be null, and has to live as long.
    CheckReport(const CheckReportOptions& options, HtmlReport* page);

    void ShowProgress(qsizetype number, qsizetype count, const QString& file);
    /// For a page, source and tree are needed.
    void Add(const CheckedDocument& document);
    /// Tells nothing of a schema of which there is nothing to say.
    void AddSchema(const QString& file, const Diagnostics& diagnostics, InputSource& source);

private:
    void AddUnreadable(const QString& file, const TString& reason);
    void HideProgress();
    void Print(const QString& file, const Diagnostics& diagnostics);
    void PrintAsText(const QString& file, const Diagnostics& diagnostics);

    CheckReportOptions m_options;
    std::optional<JsonArray> m_array;
    HtmlReport* m_page;
};
