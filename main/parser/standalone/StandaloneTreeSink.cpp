#include "standalone/StandaloneTreeSink.h"

#include "sinks/AttributeAssembler.h"

#include <kesplatform/TScanString.h>

#include <cstddef>
#include <new>
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
    TString name = ParsedNames::GetNameIn(m_arena, tag.element);
    AttributeStorage attributes = PackAttributes(m_arena, tag);
    ParseSlab* slab = nullptr;
    std::byte* const memory = m_arena.Allocate(sizeof(StandaloneDOMElement), slab);
    std::unique_ptr<StandaloneDOMElement> element(::new (memory)
                                                      StandaloneDOMElement(std::move(name)));
    element->m_slabOffset = slab->OffsetOf(memory);
    element->m_attributes.Take(std::move(attributes));
    m_open.push_back({std::move(element), m_waiting.size()});
}

void StandaloneTreeSink::TakeText()
{
    const std::u16string_view text = m_text.View();
    if (m_keepWhitespaceText || TScanString::skipWhitespace(text) < text.size())
        m_waiting.push_back({m_text.Take(), nullptr});
    else
        m_text.Drop();
}

void StandaloneTreeSink::EndElement()
{
    EndText();
    CloseTop();
    // Should there be no room for it among what waits, it is still open.
    m_waiting.emplace_back();
    m_waiting.back().element = std::move(m_open.back().element);
    m_open.pop_back();
}

void StandaloneTreeSink::CloseTop()
{
    UnfinishedElement& top = m_open.back();
    const std::size_t count = m_waiting.size() - top.firstNode;
    if (count > 0) {
        top.element->m_children.FillIn(m_arena, m_waiting.data() + top.firstNode, count);
        m_waiting.resize(top.firstNode);
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
