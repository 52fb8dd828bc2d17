#include "CheckReport.h"

#include "Console.h"
#include "HtmlReport.h"

#include <QJsonArray>

#include <utility>

CheckReport::CheckReport(bool isJson, bool showsProgress, HtmlReport* page)
    : m_showsProgress(showsProgress), m_page(page)
{
    if (isJson)
        m_array.emplace();
}

void CheckReport::ShowProgress(qsizetype number, qsizetype count, const QString& file)
{
    if (m_showsProgress)
        ::ShowProgress(QString("[%1/%2] ").arg(number).arg(count) + file);
}

void CheckReport::Add(const QString& file, const Diagnostics& diagnostics, InputSource& source,
                      const DOM& dom)
{
    Print(file, diagnostics);
    if (m_page != nullptr)
        m_page->Add(file, diagnostics, source, &dom);
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
    if (!m_array) {
        PrintDiagnostics(diagnostics);
        ::Print(Summarise(file, diagnostics) + u"\n");
        return;
    }
    QJsonArray all;
    for (const Diagnostic& diagnostic : diagnostics)
        all.append(ToJson(diagnostic));
    m_array->Add(
        {{"file", file}, {"valid", !HasErrors(diagnostics)}, {"diagnostics", std::move(all)}});
}

void CheckReport::HideProgress()
{
    if (m_showsProgress)
        ::ShowProgress({});
}
