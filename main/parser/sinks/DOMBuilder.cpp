#include <kescorexml/DOMBuilder.h>

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/SAXFileLocation.h>

#include <kesplatform/TScanString.h>

DOMBuilder::DOMBuilder(DOM& dom, bool keepWhitespaceText)
    : m_stack{dom.GetRoot()}, m_keepWhitespaceText(keepWhitespaceText)
{
}

DOMBuilder::~DOMBuilder() = default;

void DOMBuilder::StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes)
{
    DOMElement* const parent = m_stack.back();
    auto element = std::make_unique<DOMElement>(std::move(name));
    element->SetAttributes(std::move(attributes));
    if (m_location != nullptr) {
        int line = 0;
        int column = 0;
        m_location->GetCurrentLocation(line, column);
        element->SetElementStartLocation(line, column);
    }
    m_stack.push_back(element.get());
    parent->AppendChild(std::move(element));
}

void DOMBuilder::EndElement()
{
    if (m_location != nullptr) {
        int line = 0;
        int column = 0;
        m_location->GetCurrentLocation(line, column);
        m_stack.back()->SetElementEndLocation(line, column);
    }
    m_stack.pop_back();
}

void DOMBuilder::TextContent(const TString& text)
{
    const std::u16string_view units = text.view();
    if (m_keepWhitespaceText || TScanString::skipWhitespace(units) < units.size())
        m_stack.back()->AppendText(text);
}
