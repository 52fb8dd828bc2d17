#include "HtmlReport.h"

#include "Html.h"
#include "HtmlCharts.h"
#include "HtmlExcerpts.h"
#include "HtmlStyle.h"
#include "SavedFile.h"
#include "Statistics.h"

#include <kesplatform/CorvinaException.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

/// How many diagnostics are shown: of one document, and in all.
constexpr std::size_t c_ofDocument = 200;
constexpr std::size_t c_inAll = 5000;

constexpr const char* c_doctype = "<!DOCTYPE html>";

[[noreturn]] void Fail(const QString& file, const QString& reason)
{
    throw CorvinaException(TString("the report '" + file + "': " + reason));
}

/// What is there already is replaced only when it may be a report: documents and reports stand
/// side by side on the command line.
void CheckReplaceable(const QString& name)
{
    // Standard output tells of the check already.
    if (name.isEmpty() || name == "-")
        Fail(name, "it needs the name of a file");
    const QFileInfo info(name);
    if (!info.exists())
        return;
    if (!info.isFile())
        Fail(name, "this is no regular file");
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        Fail(name, file.errorString());
    const QByteArray head = file.read(static_cast<qint64>(qstrlen(c_doctype)));
    if (!head.isEmpty() && head.compare(c_doctype, Qt::CaseInsensitive) != 0)
        Fail(name, "what is there is no page of HTML and is not replaced");
}

std::size_t CountErrors(const Diagnostics& diagnostics)
{
    return static_cast<std::size_t>(
        std::count_if(diagnostics.begin(), diagnostics.end(), [](auto& d) { return d.isError; }));
}

QString NameOf(const QString& file)
{
    return file == "-" ? "standard input" : ToHtml(file);
}

QString DrawTotals(const QStringList& names, const QStringList& numbers)
{
    QString html = "<dl class=\"totals\">\n";
    for (qsizetype i = 0; i < names.size(); ++i)
        html += "<div><dt>" + names.at(i) + "</dt><dd>" + numbers.at(i) + "</dd></div>\n";
    return html + "</dl>\n";
}

/// The columns of the overview behind name and result.
const QStringList& GetColumns()
{
    static const QStringList s_columns{"Errors",     "Warnings", "Elements",
                                       "Attributes", "Levels",   "Characters of text"};
    return s_columns;
}

} // namespace

HtmlReport::HtmlReport(const QString& file) : m_file(file), m_diagnosticsLeft(c_inAll)
{
    CheckReplaceable(file);
    if (!m_file.open(QIODevice::WriteOnly))
        Fail(file, m_file.errorString());
}

void HtmlReport::Begin(const QString& file, const QString& kind, const QString& details,
                       const QStringList& numbers)
{
    const QString id = "document-" + ToHtml(++m_count).remove(',');
    const QString name = NameOf(file);
    QString row = "<tr><th scope=\"row\"><a href=\"#" + id + "\">" + name +
                  "</a></th><td class=\"result " + kind + "\">" + kind + "</td>";
    for (qsizetype i = 0; i < GetColumns().size(); ++i)
        row += "<td class=\"number\">" + numbers.value(i) + "</td>";
    m_rows += (row + "</tr>\n").toUtf8();
    m_documents += ("<section class=\"document\" id=\"" + id + "\" aria-labelledby=\"" + id +
                    "-name\">\n<h2 id=\"" + id + "-name\">" + name + "</h2>\n<p class=\"result " +
                    kind + "\">" + details + "</p>\n")
                       .toUtf8();
}

void HtmlReport::Add(const QString& file, const Diagnostics& diagnostics, InputSource& source,
                     const DOM* dom)
{
    const std::size_t errors = CountErrors(diagnostics);
    const std::size_t warnings = diagnostics.size() - errors;
    m_withErrors += errors > 0 ? 1 : 0;
    QStringList numbers{ToHtml(errors), ToHtml(warnings)};
    Distribution distribution;
    if (dom != nullptr) {
        const Statistics statistics = Count(*dom, &distribution);
        numbers += {ToHtml(statistics.elements), ToHtml(statistics.attributes),
                    ToHtml(statistics.depth), ToHtml(statistics.textUnits)};
    }

    QStringList counts;
    if (errors > 0)
        counts += ToHtml(errors, "error");
    if (warnings > 0)
        counts += ToHtml(warnings, "warning");
    const QString kind = errors > 0 ? "errors" : warnings > 0 ? "warnings" : "fine";
    Begin(file, kind, counts.isEmpty() ? kind : counts.join(", "), numbers);

    QString html;
    if (!diagnostics.empty()) {
        const std::size_t limit = std::min(c_ofDocument, m_diagnosticsLeft);
        m_diagnosticsLeft -= std::min(limit, diagnostics.size());
        html += "<h3>Errors and warnings</h3>\n" + DrawExcerpts(diagnostics, source, limit);
    }
    if (dom != nullptr) {
        html += "<h3>What is in it</h3>\n";
        if (errors > 0)
            html += "<p class=\"faint\">A document with errors need not have been read to its "
                    "end.</p>\n";
        html += DrawTotals(GetColumns().mid(2), numbers.mid(2)) + DrawCharts(distribution);
    }
    m_documents += (html + "<p class=\"back\"><a href=\"#documents\">All documents</a></p>\n"
                           "</section>\n")
                       .toUtf8();
}

void HtmlReport::AddUnreadable(const QString& file, const QString& reason)
{
    ++m_unreadable;
    Begin(file, "unreadable", "Unreadable: " + ToHtml(reason), {});
    m_documents += "</section>\n";
}

QString HtmlReport::DrawOverview() const
{
    QString text = ToHtml(m_count, "document");
    const std::size_t fine = m_count - m_withErrors - m_unreadable;
    if (fine > 0)
        text += (fine == m_count ? " " : ", " + ToHtml(fine) + " ") + "without errors";
    if (m_withErrors > 0)
        text += ", " + ToHtml(m_withErrors) + " with errors";
    if (m_unreadable > 0)
        text += ", " + ToHtml(m_unreadable) + " unreadable";
    return text;
}

QString HtmlReport::DrawHead() const
{
    const QByteArray hash =
        QCryptographicHash::hash(QByteArrayView(c_htmlStyle), QCryptographicHash::Sha256)
            .toBase64();
    const QString overview = DrawOverview();
    QString html = QString(c_doctype) +
                   "\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n"
                   "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                   "style-src 'sha256-" +
                   hash +
                   "'; base-uri 'none'; form-action 'none'\"/>\n"
                   "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
                   "<meta name=\"color-scheme\" content=\"light dark\"/>\n"
                   "<meta name=\"generator\" content=\"kesxml " KESXML_VERSION "\"/>\n"
                   "<title>Check: " +
                   overview + "</title>\n<style>" + c_htmlStyle +
                   "</style>\n</head>\n<body>\n<header>\n<h1>Check of XML documents</h1>\n<p>" +
                   overview + ".</p>\n";
    QStringList schemas;
    for (const QString& schema : m_schemas)
        schemas += "<code>" + NameOf(schema) + "</code>";
    if (!schemas.isEmpty())
        html += "<p class=\"faint\">Validated against " + schemas.join(", ") + ".</p>\n";
    return html + "</header>\n";
}

void HtmlReport::Write()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    QString table = "<main>\n<section class=\"documents\" id=\"documents\">\n<h2>Documents"
                    "</h2>\n<table>\n<thead><tr><th scope=\"col\">Document</th>"
                    "<th scope=\"col\">Result</th>";
    for (const QString& column : GetColumns())
        table += "<th scope=\"col\" class=\"number\">" + column + "</th>";
    table += "</tr></thead>\n<tbody>\n";
    const QByteArray foot =
        ("</main>\n<footer>Made by kesxml " KESXML_VERSION " on <time datetime=\"" +
         now.toString(Qt::ISODate) + "\">" + now.toString("d MMMM yyyy, HH:mm") +
         " UTC</time>. Levels count from the document element; characters of text are UTF-16 "
         "units.</footer>\n</body>\n</html>\n")
            .toUtf8();
    const QByteArray page = (DrawHead() + table).toUtf8() + m_rows +
                            "</tbody>\n</table>\n</section>\n" + m_documents + foot;
    if (!WriteAndCommit(m_file, {page.data(), static_cast<std::size_t>(page.size())}))
        Fail(m_file.fileName(), m_file.errorString());
}
