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

/// How many bytes the charts of a group of documents take, so that thousands of documents fit on a
/// page that opens at once.
constexpr qsizetype c_chartBytes = 64 * 1024;

/// How many bytes the sections about documents take, beyond the first few.
constexpr qsizetype c_sectionBytes = 384 * 1024;
constexpr std::size_t c_fewSections = 50;

/// So many documents that are fine need not be folded.
constexpr std::size_t c_few = 20;

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
        Fail(name, "what is there is not a page of HTML and is not replaced");
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

/// What is told of a document in numbers: what was found, and what is in it.
const QStringList& GetFindings()
{
    static const QStringList s_findings{"Errors", "Warnings"};
    return s_findings;
}

const QStringList& GetContents()
{
    static const QStringList s_contents{"Elements", "Attributes", "Levels", "Characters of text"};
    return s_contents;
}

QString DrawTable(const QStringList& columns, const QString& rows)
{
    QString head = "<table>\n<thead><tr><th scope=\"col\">Document</th>";
    for (const QString& column : columns)
        head += "<th scope=\"col\" class=\"" + QString(column == "Result" ? "result" : "number") +
                "\">" + column + "</th>";
    return head + "</tr></thead>\n<tbody>\n" + rows + "</tbody>\n</table>\n";
}

QStringList CountContents(const Statistics& statistics)
{
    return {ToHtml(statistics.elements), ToHtml(statistics.attributes), ToHtml(statistics.depth),
            ToHtml(statistics.textUnits)};
}

/// "1 error, 2 warnings", or "fine".
QString DescribeFindings(std::size_t errors, std::size_t warnings)
{
    QStringList counts;
    if (errors > 0)
        counts += ToHtml(errors, "error");
    if (warnings > 0)
        counts += ToHtml(warnings, "warning");
    return counts.isEmpty() ? "fine" : counts.join(", ");
}

/// What stands behind the documents of a group.
QString DrawOmission(std::size_t withoutCharts)
{
    if (withoutCharts == 0)
        return {};
    return "<p class=\"omitted\">The charts of " + ToHtml(withoutCharts, "document") +
           " are left out: there are many.</p>\n";
}

} // namespace

HtmlReport::HtmlReport(const QString& file) : m_name(file), m_diagnosticsLeft(c_inAll)
{
    CheckReplaceable(file);
    try {
        m_file.emplace(file);
    } catch (const TIO::Exception& e) {
        Fail(file, ReasonOf(e));
    }
}

void HtmlReport::AddTo(Group& group, const QString& file, const QString& kind,
                       const QString& details, const QStringList& numbers, const QString& content)
{
    const bool isFine = &group == &m_fine;
    Document document{++m_count, NameOf(file), {}, {}};
    QString cells;
    if (!isFine)
        cells += "<td class=\"result " + kind + "\">" + kind + "</td>";
    const qsizetype columns = GetContents().size() + (isFine ? 0 : GetFindings().size());
    for (qsizetype i = 0; i < columns; ++i)
        cells += "<td>" + numbers.value(i) + "</td>";
    document.cells = cells.toUtf8();
    if (!content.isEmpty())
        document.section =
            ("<section class=\"document\" id=\"d" + QString::number(document.number) + "\">\n<h2>" +
             document.name + "</h2>\n<p class=\"result " + kind + "\">" + details + "</p>\n" +
             content + "<p class=\"back\"><a href=\"" + (isFine ? "#fine" : "#documents") +
             "\">All documents</a></p>\n</section>\n")
                .toUtf8();
    group.documents.push_back(std::move(document));
}

void HtmlReport::Draw(const Group& group, Drawing& drawing)
{
    for (const Document& document : group.documents) {
        // A few have room, however large they are.
        const bool hasRoom = drawing.sectionCount < c_fewSections ||
                             drawing.sections.size() + document.section.size() <= c_sectionBytes;
        QString name = document.name;
        if (!document.section.isEmpty() && !hasRoom) {
            ++drawing.leftOut;
        } else if (!document.section.isEmpty()) {
            drawing.sections += document.section;
            ++drawing.sectionCount;
            name = "<a href=\"#d" + QString::number(document.number) + "\">" + name + "</a>";
        }
        drawing.rows +=
            "<tr><th scope=\"row\">" + name.toUtf8() + "</th>" + document.cells + "</tr>\n";
    }
}

void HtmlReport::Add(const QString& file, const Diagnostics& diagnostics, InputSource& source,
                     const DOM* dom)
{
    const std::size_t errors = CountErrors(diagnostics);
    const std::size_t warnings = diagnostics.size() - errors;
    m_withErrors += errors > 0 ? 1 : 0;
    const QString kind = errors > 0 ? "errors" : warnings > 0 ? "warnings" : "fine";
    Group& group = errors > 0 ? m_bad : warnings > 0 ? m_doubtful : m_fine;
    QStringList numbers;
    if (&group != &m_fine)
        numbers = {ToHtml(errors), ToHtml(warnings)};

    QString content;
    if (!diagnostics.empty()) {
        const std::size_t limit = std::min(c_ofDocument, m_diagnosticsLeft);
        m_diagnosticsLeft -= std::min(limit, diagnostics.size());
        content += "<h3>Errors and warnings</h3>\n" + DrawExcerpts(diagnostics, source, limit);
    }
    if (dom != nullptr)
        content += DrawContents(group, *dom, errors > 0, numbers);
    AddTo(group, file, kind, DescribeFindings(errors, warnings), numbers, content);
}

QString HtmlReport::DrawContents(Group& group, const DOM& dom, bool hasErrors, QStringList& numbers)
{
    Distribution distribution;
    const QStringList counts = CountContents(Count(dom, &distribution));
    numbers += counts;
    QString html = "<h3>What is in it</h3>\n";
    if (hasErrors)
        html +=
            "<p class=\"faint\">A document with errors need not have been read to its end.</p>\n";
    html += DrawTotals(GetContents(), counts) + DrawCharts(distribution);
    if (group.chartBytes + html.size() > c_chartBytes) {
        ++group.withoutCharts;
        return {};
    }
    group.chartBytes += html.size();
    return html;
}

void HtmlReport::AddUnreadable(const QString& file, const QString& reason)
{
    ++m_unreadable;
    AddTo(m_bad, file, "unreadable", "Unreadable: " + ToHtml(reason), {}, "\n");
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

QByteArray HtmlReport::DrawFound() const
{
    Drawing drawing;
    Draw(m_bad, drawing);
    Draw(m_doubtful, drawing);
    if (drawing.rows.isEmpty())
        return {};
    const QStringList columns = QStringList{"Result"} + GetFindings() + GetContents();
    QString leftOut;
    if (drawing.leftOut > 0)
        leftOut = "<p class=\"omitted\">What was found in " +
                  ToHtml(drawing.leftOut, "more document") +
                  " is left out: there are many. Check fewer of them to see it.</p>\n";
    return ("<section class=\"documents\" id=\"documents\">\n"
            "<h2>Documents with errors or warnings</h2>\n" +
            DrawTable(columns, drawing.rows) + "</section>\n")
               .toUtf8() +
           drawing.sections +
           (leftOut + DrawOmission(m_bad.withoutCharts + m_doubtful.withoutCharts)).toUtf8();
}

QByteArray HtmlReport::DrawFine() const
{
    if (m_fine.documents.empty())
        return {};
    Drawing drawing;
    Draw(m_fine, drawing);
    const std::size_t count = m_fine.documents.size();
    return ("<details id=\"fine\"" + QString(count <= c_few ? " open=\"open\"" : "") +
            ">\n<summary><h2>" + ToHtml(count, "document") +
            " without errors or warnings</h2></summary>\n<div class=\"documents\">\n" +
            DrawTable(GetContents(), drawing.rows) + "</div>\n")
               .toUtf8() +
           drawing.sections + DrawOmission(m_fine.withoutCharts).toUtf8() + "</details>\n";
}

void HtmlReport::Write()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QByteArray foot =
        ("</main>\n<footer>Made by kesxml " KESXML_VERSION " on <time datetime=\"" +
         now.toString(Qt::ISODate) + "\">" + now.toString("d MMMM yyyy, HH:mm") +
         " UTC</time>. Levels count from the document element; characters of text are UTF-16 "
         "units.</footer>\n</body>\n</html>\n")
            .toUtf8();
    const QByteArray page = (DrawHead() + "<main>\n").toUtf8() + DrawFound() + DrawFine() + foot;
    try {
        m_file->Write(page.data(), static_cast<std::size_t>(page.size()));
        m_file->Commit();
    } catch (const TIO::Exception& e) {
        Fail(m_name, ReasonOf(e));
    }
}
