#include "standalone/StandaloneTreeSink.h"

#include "sinks/AttributeAssembler.h"

#include <kesplatform/TScanString.h>

#include <iterator>
#include <utility>

StandaloneTreeSink::StandaloneTreeSink(bool keepWhitespaceText)
    : m_keepWhitespaceText(keepWhitespaceText)
{
    m_open.push_back({std::make_unique<StandaloneDOMElement>(TString(u"Document")), 0});
}

StandaloneTreeSink::~StandaloneTreeSink() = default;

void StandaloneTreeSink::StartElement(const StartTag& tag)
{
    EndText();
    auto element =
        std::make_unique<StandaloneDOMElement>(ParsedNames::GetNameIn(m_arena, tag.element));
    element->m_attributes.Take(PackAttributes(m_arena, tag));
    m_open.push_back({std::move(element), m_waiting.size()});
}

void StandaloneTreeSink::TakeText()
{
    const std::u16string_view text = m_text.View();
    if (m_keepWhitespaceText || TScanString::skipWhitespace(text) < text.size())
        m_waiting.push_back({m_text.Take(), true, nullptr});
    else
        m_text.Drop();
}

void StandaloneTreeSink::EndElement()
{
    EndText();
    CloseTop();
    // Should there be no room for it among what waits, it is still open.
    m_waiting.push_back({TString(), false, nullptr});
    m_waiting.back().element = std::move(m_open.back().element);
    m_open.pop_back();
}

void StandaloneTreeSink::CloseTop()
{
    UnfinishedElement& top = m_open.back();
    const auto first = m_waiting.begin() + static_cast<std::ptrdiff_t>(top.firstNode);
    if (first != m_waiting.end()) {
        top.element->m_children.assign(std::make_move_iterator(first),
                                       std::make_move_iterator(m_waiting.end()));
        m_waiting.erase(first, m_waiting.end());
    }
}

void StandaloneTreeSink::Restart()
{
    m_text.Drop();
    m_waiting.clear();
    while (m_open.size() > 1)
        m_open.pop_back();
}

std::unique_ptr<StandaloneDOMElement> StandaloneTreeSink::TakeRoot()
{
    m_text.Drop();
    while (m_open.size() > 1)
        EndElement();
    CloseTop();
    m_arena.Close();
    return std::move(m_open.front().element);
}
