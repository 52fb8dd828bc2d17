#include "sinks/SAXSink.h"

#include "sinks/AttributeAssembler.h"

#include <utility>

namespace {

/// A run of text that needed more room than this gives it back.
constexpr std::size_t c_textRoomKept = 0x10000;

} // namespace

ScanSink::~ScanSink() = default;

SAXSink::~SAXSink() = default;

SAXInterfaceExtension* SAXSink::GetExtension() const noexcept
{
    return dynamic_cast<SAXInterfaceExtension*>(m_sink.get());
}

void SAXSink::StartElement(const StartTag& tag)
{
    EndText();
    if (IsRepeated())
        return;
    m_sink->StartElement(TString(tag.element.name), ToAttributeMap(tag));
    m_isDone |= m_sink->IsDone();
}

void SAXSink::EndElement()
{
    EndText();
    if (IsRepeated())
        return;
    m_sink->EndElement();
    m_isDone |= m_sink->IsDone();
}

void SAXSink::BeginDocument()
{
    m_text.clear();
    m_eventsPassed = 0;
    m_eventsToSkip = 0;
}

void SAXSink::Rewind()
{
    m_text.clear();
    m_eventsToSkip = std::exchange(m_eventsPassed, 0);
    m_wasDone = std::exchange(m_isDone, false);
}

bool SAXSink::IsRepeated() noexcept
{
    if (m_eventsPassed++ >= m_eventsToSkip)
        return false;
    if (m_eventsPassed == m_eventsToSkip)
        m_isDone = m_wasDone;
    return true;
}

void SAXSink::PassText()
{
    if (IsRepeated()) {
        m_text.clear();
        return;
    }
    const TString text{std::u16string_view(m_text)};
    m_text.clear();
    m_sink->TextContent(text);
    if (m_text.capacity() > c_textRoomKept)
        m_text.shrink_to_fit();
}
