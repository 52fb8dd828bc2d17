#include "HtmlCharts.h"

#include "Html.h"
#include "OneLine.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t c_maxRows = 12;
constexpr std::size_t c_nameUnits = 48;

using NamedCount = const CountsByName::value_type*;

/// One chart, row by row.
class Chart
{
public:
    /// `largest` is the number whose bar is as long as there is room for.
    Chart(const char* caption, const char* kind, std::size_t largest)
        : m_html(QString("<table class=\"chart\">\n<caption>%1</caption>\n<thead><tr>"
                         "<th scope=\"col\">%2</th><th scope=\"col\" class=\"number\">Number</th>"
                         "<td></td></tr></thead>\n<tbody>\n")
                     .arg(caption, kind)),
          m_largest(std::max<std::size_t>(largest, 1))
    {
    }

    void Add(const QString& label, std::size_t count)
    {
        // What is not nothing is seen.
        const double width =
            std::max(100.0 * static_cast<double>(count) / static_cast<double>(m_largest), 0.5);
        AddRow(label, count,
               QString("<svg aria-hidden=\"true\"><rect width=\"%1%\" height=\"100%\"/></svg>")
                   .arg(width, 0, 'f', 2));
    }

    /// The rest has no bar: it is not one thing like the others.
    void AddRest(const QString& label, std::size_t count) { AddRow(label, count, {}); }

    QString Finish() { return std::move(m_html) + "</tbody>\n</table>\n"; }

private:
    void AddRow(const QString& label, std::size_t count, const QString& bar)
    {
        // Not by arg(): a label may hold what looks like a place to fill in.
        m_html += "<tr><th scope=\"row\">" + label + "</th><td class=\"number\">" + ToHtml(count) +
                  "</td><td class=\"bar\">" + bar + "</td></tr>\n";
    }

    QString m_html;
    std::size_t m_largest;
};

/// The largest counts first, those that are alike by name.
std::vector<NamedCount> FindLargest(const CountsByName& counts)
{
    std::vector<NamedCount> largest;
    largest.reserve(counts.size());
    for (const auto& count : counts)
        largest.push_back(&count);
    const auto shown = std::min(largest.size(), c_maxRows);
    std::partial_sort(largest.begin(), largest.begin() + static_cast<std::ptrdiff_t>(shown),
                      largest.end(), [](NamedCount a, NamedCount b) {
                          return a->second != b->second ? a->second > b->second
                                                        : a->first < b->first;
                      });
    return largest;
}

QString DrawNames(const char* caption, const char* kind, const CountsByName& counts)
{
    if (counts.empty())
        return {};
    const std::vector<NamedCount> largest = FindLargest(counts);
    Chart chart(caption, kind, largest.front()->second);
    std::size_t rest = 0;
    for (std::size_t i = 0; i < largest.size(); ++i) {
        if (i < c_maxRows)
            chart.Add("<code>" + ToHtml(ToOneLine(largest[i]->first, c_nameUnits)) + "</code>",
                      largest[i]->second);
        else
            rest += largest[i]->second;
    }
    if (largest.size() > c_maxRows)
        chart.AddRest(ToHtml(largest.size() - c_maxRows, "other name"), rest);
    return chart.Finish();
}

QString DrawLevels(const std::vector<std::size_t>& levels)
{
    if (levels.empty())
        return {};
    Chart chart("Elements by level", "Level", *std::max_element(levels.begin(), levels.end()));
    std::size_t rest = 0;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        if (i < c_maxRows)
            chart.Add(ToHtml(i + 1), levels[i]);
        else
            rest += levels[i];
    }
    if (levels.size() > c_maxRows)
        chart.AddRest(ToHtml(levels.size() - c_maxRows, "deeper level"), rest);
    return chart.Finish();
}

} // namespace

QString DrawCharts(const Distribution& distribution)
{
    const QString charts =
        DrawNames("Elements by name", "Element", distribution.elements) +
        DrawLevels(distribution.levels) +
        DrawNames("Attributes by name", "Attribute", distribution.attributes) +
        DrawNames("Characters of text by element", "Element", distribution.textUnits);
    return charts.isEmpty() ? QString() : "<div class=\"charts\">\n" + charts + "</div>\n";
}
