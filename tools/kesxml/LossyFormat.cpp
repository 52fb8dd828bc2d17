#include "LossyFormat.h"

#include "Entities.h"

#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMElementTraversal.h>
#include <kescorexml/XMLStringFormatter.h>

namespace {

/// An element keeps one text, so text between its children cannot be written back where it was.
const DOMElement* FindMixedContent(const DOM& document)
{
    for (const DOMElement& element :
         DOMElementTraversal::ConstPreorderTraversal(*document.GetRoot())) {
        if (element.HasText() && element.HasChildren())
            return &element;
    }
    return nullptr;
}

} // namespace

Diagnostics FindLosses(const DOM& document, InputSource& source)
{
    Diagnostics losses = DescribeSkippedEntities(document.GetSkippedEntities(), source.Id());
    if (const DOMElement* const mixed = FindMixedContent(document)) {
        const TString message =
            TString(u"text between child elements is written after them (in <") + mixed->GetName() +
            u">)";
        losses.push_back({false, source.Id(), 0, 0, message, {}});
    }
    return losses;
}

std::string FormatLossily(const DOM& document, bool escapeAll, bool header)
{
    XMLStringFormatter formatter(u"  ", false);
    formatter.SetFormatMode(escapeAll ? FormatMode::EscapeAll : FormatMode::Content);
    XMLFormatter::FormatDOM(formatter, document, nullptr, header);
    return formatter.GetOutput().toStdString();
}
