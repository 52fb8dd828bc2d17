#include "sinks/SAXSink.h"

#include "sinks/AttributeAssembler.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace {

/// A run of text that needed more room than this gives it back.
constexpr std::size_t c_textRoomKept = 0x10000;

} // namespace

SAXSink::~SAXSink() = default;

SAXInterfaceExtension* SAXSink::GetExtension() const noexcept
{
    return dynamic_cast<SAXInterfaceExtension*>(m_sink.get());
}

bool SAXSink::AsksForAttributeErrors() const noexcept
{
    return dynamic_cast<SAXAttributeErrors*>(m_sink.get()) != nullptr;
}

void SAXSink::StartElement(const StartTag& tag)
{
    EndText();
    if (IsRepeated())
        return;
    TString name = tag.element.name;
    if (AttributeMaps::AttributeMap* const attributes = m_attributes.Fill(tag))
        m_sink->StartElement(std::move(name), std::move(*attributes));
    else
        m_sink->StartElement(std::move(name), ToAttributeMap(tag));
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
    DropText();
    m_eventsPassed = 0;
    m_eventsToSkip = 0;
}

void SAXSink::Restart()
{
    DropText();
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

const TString* SAXSink::Keep(std::u16string_view text)
{
    const auto index = static_cast<std::size_t>(std::bit_width(text.size()));
    if (index >= m_texts.size())
        return nullptr;
    char16_t* const to =
        m_texts[index].resizeForOverwrite(static_cast<TString::size_type>(text.size()));
    std::copy(text.begin(), text.end(), to);
    return &m_texts[index];
}

void SAXSink::AppendText(std::u16string_view piece)
{
    if (piece.empty())
        return;
    if (!HasText()) {
        m_onlyPiece = Keep(piece);
        if (m_onlyPiece != nullptr)
            return;
    }
    if (m_onlyPiece != nullptr)
        m_text = std::exchange(m_onlyPiece, nullptr)->view();
    m_text.append(piece);
}

void SAXSink::DropText() noexcept
{
    m_onlyPiece = nullptr;
    m_text.clear();
}

void SAXSink::PassText()
{
    if (IsRepeated()) {
        DropText();
        return;
    }
    const TString* kept = m_onlyPiece != nullptr ? m_onlyPiece : Keep(m_text);
    TString longText;
    if (kept == nullptr)
        longText = TString(std::u16string_view(m_text));
    DropText();
    m_sink->TextContent(kept != nullptr ? *kept : longText);
    if (m_text.capacity() > c_textRoomKept)
        m_text.shrink_to_fit();
}
