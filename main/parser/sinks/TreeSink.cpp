#include "sinks/TreeSink.h"

#include "sinks/AttributeAssembler.h"
#include "tree/ParsedElements.h"

#include <kescorexml/DOM.h>
#include <kescorexml/SAXFileLocation.h>
#include <kesplatform/TScanString.h>

#include <utility>

TreeSink::TreeSink(DOM& dom, bool keepWhitespaceText)
    : m_dom(dom), m_keepWhitespaceText(keepWhitespaceText)
{
    m_open.push_back({nullptr, dom.GetRoot(), 0});
}

TreeSink::~TreeSink() = default;

void TreeSink::StartElement(const StartTag& tag)
{
    EndText();
    AttributeStorage packed = PackAttributes(m_arena, tag);
    DOMElement& parent = *m_open.back().element;
    std::unique_ptr<DOMElement> element = ParsedElements::New(
        m_arena, ParsedNames::GetNameIn(m_arena, tag.element), std::move(packed), &m_dom, parent);
    if (m_location != nullptr) {
        int line = 0;
        int column = 0;
        m_location->GetCurrentLocation(line, column);
        element->SetElementStartLocation(line, column);
    }
    DOMElement* opened = element.get();
    m_open.push_back({std::move(element), opened, m_waiting.size()});
}

void TreeSink::TakeText()
{
    const std::u16string_view text = m_text.View();
    if (m_keepWhitespaceText || TScanString::skipWhitespace(text) < text.size())
        ParsedElements::AppendText(*m_open.back().element, m_text);
    else
        m_text.Drop();
}

void TreeSink::EndElement()
{
    EndText();
    if (m_location != nullptr) {
        int line = 0;
        int column = 0;
        m_location->GetCurrentLocation(line, column);
        m_open.back().element->SetElementEndLocation(line, column);
    }
    CloseTop();
}

void TreeSink::CloseTop()
{
    OpenElement& top = m_open.back();
    const std::size_t count = m_waiting.size() - top.firstChild;
    if (count > 0) {
        ParsedElements::AttachChildren(m_arena, *top.element,
                                       std::span(m_waiting).subspan(top.firstChild));
        m_waiting.resize(top.firstChild);
    }
    if (top.owner != nullptr) {
        m_waiting.push_back(std::move(top.owner));
        m_open.pop_back();
    }
}

void TreeSink::Restart()
{
    m_text.Drop();
    m_waiting.clear();
    while (m_open.size() > 1)
        m_open.pop_back();
}

void TreeSink::Finish()
{
    m_text.Drop();
    while (m_open.size() > 1)
        CloseTop();
    CloseTop();
    // A parser may hold on to its last sink for long.
    std::vector<std::unique_ptr<DOMElement>>().swap(m_waiting);
    std::vector<OpenElement>().swap(m_open);
    m_arena.Close();
}
