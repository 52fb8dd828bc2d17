#include <kescorexml/XMLStringFormatter.h>

#include "writing/IndentLimit.h"
#include "writing/KeptText.h"

#include <typeinfo>

TString* KeptText::Of(XMLFormatter& formatter) noexcept
{
    return typeid(formatter) == typeid(XMLStringFormatter)
               ? &static_cast<XMLStringFormatter&>(formatter).m_output
               : nullptr;
}

XMLStringFormatter::XMLStringFormatter(const TString& indentUnit, bool suppressNewlines)
    : XMLFormatter(indentUnit, suppressNewlines)
{
}

XMLStringFormatter::~XMLStringFormatter() = default;

void XMLStringFormatter::OutputString(const TString& text)
{
    if (IsIndent(text))
        RequireIndentLength(text.length());
    m_output += text;
}

TString XMLStringFormatter::GetOutput() const
{
    return m_output;
}
