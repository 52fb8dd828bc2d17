#include "CheckReport.h"

#include "Console.h"
#include "HtmlReport.h"

#include <QJsonArray>

#include <algorithm>
#include <span>
#include <utility>

CheckReport::CheckReport(const CheckReportOptions& options, HtmlReport* page)
    : m_options(options), m_page(page)
{
    if (options.isJson)
        m_array.emplace();
}

void CheckReport::ShowProgress(qsizetype number, qsizetype count, const QString& file)
{
    if (m_options.showsProgress)
        ::ShowProgress(QString("[%1/%2] ").arg(number).arg(count) + file);
}

void CheckReport::Add(const CheckedDocument& document)
{
    if (!document.unreadable.IsEmpty())
        return AddUnreadable(document.file, document.unreadable);
    Print(document.file, document.diagnostics);
    if (m_page != nullptr)
        m_page->Add(document.file, document.diagnostics, *document.source, document.dom.get());
}

void CheckReport::AddSchema(const QString& file, const Diagnostics& diagnostics,
                            InputSource& source)
{
    if (diagnostics.empty())
        return;
    // Only errors are worth a line of their own.
    if (HasErrors(diagnostics) || m_array)
        Print(file, diagnostics);
    else
        PrintDiagnostics(diagnostics);
    if (m_page != nullptr)
        m_page->Add(file, diagnostics, source, nullptr);
}

void CheckReport::AddUnreadable(const QString& file, const TString& reason)
{
    HideProgress();
    if (m_array)
        m_array->Add({{"file", file}, {"unreadable", QString(reason)}});
    else
        PrintError(u"kesxml: " + reason);
    if (m_page != nullptr)
        m_page->AddUnreadable(file, reason);
}

void CheckReport::Print(const QString& file, const Diagnostics& diagnostics)
{
    HideProgress();
    if (!m_array)
        return PrintAsText(file, diagnostics);
    const std::size_t shown = std::min(m_options.maxErrors, diagnostics.size());
    QJsonArray all;
    for (const Diagnostic& diagnostic : std::span(diagnostics).first(shown))
        all.append(ToJson(diagnostic));
    QJsonObject object{
        {"file", file}, {"valid", !HasErrors(diagnostics)}, {"diagnostics", std::move(all)}};
    if (shown < diagnostics.size())
        object["omitted"] = static_cast<qint64>(diagnostics.size() - shown);
    m_array->Add(object);
}

void CheckReport::PrintAsText(const QString& file, const Diagnostics& diagnostics)
{
    const std::size_t shown = std::min(m_options.maxErrors, diagnostics.size());
    PrintDiagnostics(std::span(diagnostics).first(shown));
    if (shown < diagnostics.size())
        PrintError(file + ": " + QString::number(diagnostics.size() - shown) +
                   " more errors and warnings are not shown");
    if (!m_options.isQuiet)
        ::Print(Summarise(file, diagnostics) + u"\n");
}

void CheckReport::HideProgress()
{
    if (m_options.showsProgress)
        ::ShowProgress({});
}
