#include "QueryOutput.h"

#include "Console.h"
#include "Document.h"
#include "ElementPath.h"
#include "OneLine.h"
#include "SortedAttributes.h"
#include "TagPositions.h"

namespace {

/// One line: where the start tag begins, the path, the attributes and the start of the text.
TString Describe(const DOMElement& element, TextPosition position, ElementPaths& paths)
{
    TString line = TString::number(position.line) + u":" + TString::number(position.column) + u" " +
                   paths.Get(element);
    for (const auto* attribute : SortByName(element.GetAttributes()))
        line += u" " + attribute->first + u"='" + ToAttributeText(attribute->second) + u"'";
    if (element.HasText())
        line += u" \"" + ToOneLine(element.GetText(), c_shownUnits) + u"\"";
    return line;
}

QJsonObject ToJson(const QString& file, const DOMElement& element, TextPosition position,
                   ElementPaths& paths)
{
    QJsonObject attributes;
    for (const auto& [name, value] : element.GetAttributes())
        attributes[name] = QString(value);
    return {{"file", file},
            {"line", position.line},
            {"column", position.column},
            {"path", QString(paths.Get(element))},
            {"name", QString(element.GetName())},
            {"attributes", attributes},
            {"text", QString(element.GetText())}};
}

} // namespace

void QueryOutput::Add(const QString& file, InputSource& source,
                      const std::vector<const DOMElement*>& matches)
{
    m_hasDocument = true;
    if (!m_options.attribute.isEmpty())
        return PrintAttributes(file, matches);
    m_count += matches.size();
    if (m_options.isCount) {
        if (!m_options.isJson)
            PrintValue(file, TString::number(static_cast<unsigned long>(matches.size())));
    } else if (m_options.isText) {
        for (const DOMElement* const match : matches)
            PrintValue(file, match->GetText());
    } else {
        PrintElements(file, source, matches);
    }
}

void QueryOutput::End()
{
    if (m_hasDocument && m_options.isCount && m_options.isJson)
        PrintJson({{"count", static_cast<qint64>(m_count)}});
}

void QueryOutput::PrintValue(const QString& file, const TString& value)
{
    const TString name = m_options.namesFiles ? ToEscaped(file) + u":" : TString();
    PrintText(name + value + u"\n");
}

void QueryOutput::PrintAttributes(const QString& file,
                                  const std::vector<const DOMElement*>& matches)
{
    const TString name = m_options.attribute;
    for (const DOMElement* const match : matches) {
        const auto found = match->GetAttributes().find(name);
        if (found == match->GetAttributes().end())
            continue;
        ++m_count;
        PrintValue(file, found->second);
    }
}

void QueryOutput::PrintElements(const QString& file, InputSource& source,
                                const std::vector<const DOMElement*>& matches)
{
    if (m_options.isJson && !m_array)
        m_array.emplace();
    ElementPaths paths;
    const std::string text = matches.empty() ? std::string() : ReadTextIfPossible(source);
    TagPositions positions(text);
    for (const DOMElement* const match : matches) {
        const TextPosition position =
            positions.FindStart({match->GetStartLine(), match->GetStartColumn()});
        if (m_array)
            m_array->Add(ToJson(file, *match, position, paths));
        else
            PrintValue(file, Describe(*match, position, paths));
    }
}
