#pragma once

#include "Diagnostic.h"
#include "Json.h"

#include <kescorexml/DOM.h>
#include <kescorexml/InputSource.h>

#include <QString>

#include <optional>

class HtmlReport;

/// Tells what a check found, for people or for programs, and has it on a page too.
class CheckReport
{
public:
    /// `page` may be null, and has to live as long.
    CheckReport(bool isJson, bool showsProgress, HtmlReport* page);

    void ShowProgress(qsizetype number, qsizetype count, const QString& file);
    void Add(const QString& file, const Diagnostics& diagnostics, InputSource& source,
             const DOM& dom);
    /// Tells nothing of a schema of which there is nothing to say.
    void AddSchema(const QString& file, const Diagnostics& diagnostics, InputSource& source);
    void AddUnreadable(const QString& file, const TString& reason);

private:
    void HideProgress();
    void Print(const QString& file, const Diagnostics& diagnostics);

    std::optional<JsonArray> m_array;
    bool m_showsProgress;
    HtmlReport* m_page;
};
