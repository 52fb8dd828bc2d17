#include <kescorexml/XMLStringFormatter.h>

XMLStringFormatter::XMLStringFormatter(const TString& indentUnit, bool suppressNewlines)
    : XMLFormatter(indentUnit, suppressNewlines)
{
}

XMLStringFormatter::~XMLStringFormatter() = default;

void XMLStringFormatter::OutputString(const TString& text)
{
    m_output += text;
}

TString XMLStringFormatter::GetOutput() const
{
    return m_output;
}
