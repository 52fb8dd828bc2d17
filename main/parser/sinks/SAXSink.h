#pragma once

#include "sinks/AttributeMaps.h"
#include "sinks/ScanSink.h"

#include <kescorexml/SAXInterface.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

/// Serves a SAXInterface: text in whole runs, attributes as a map, and a question after each tag
/// whether that is enough.
class SAXSink final : public ScanSink
{
public:
    explicit SAXSink(std::shared_ptr<SAXInterface> sink) noexcept : m_sink(std::move(sink)) {}
    ~SAXSink() override;

    void StartElement(const StartTag& tag) override;
    void AppendText(std::u16string_view piece) override;
    void EndText() override
    {
        if (HasText())
            PassText();
    }
    void EndElement() override;
    bool IsDone() const noexcept override { return m_isDone; }
    void BeginDocument() override;
    void Restart() override;
    bool PassesOn() const noexcept override { return true; }
    bool AsksForLocations() const noexcept override { return true; }
    bool AsksForAttributeErrors() const noexcept override;

    /// The interface as one that also supplies schemas; null when it does not.
    SAXInterfaceExtension* GetExtension() const noexcept;

private:
    /// Whether the next event is one that was passed on before the sink was restarted.
    bool IsRepeated() noexcept;
    bool HasText() const noexcept { return m_onlyPiece != nullptr || !m_text.empty(); }
    void DropText() noexcept;
    void PassText();
    /// Copies a text to among m_texts; null, and nothing is done, when it is too long for it.
    const TString* Keep(std::u16string_view text);

    std::shared_ptr<SAXInterface> m_sink;
    bool m_isDone = false;
    /// Those of this document.
    std::uint64_t m_eventsPassed = 0;
    std::uint64_t m_eventsToSkip = 0;
    /// What the sink has answered behind the last of those to skip.
    bool m_wasDone = false;
    /// The run while it has one piece, among m_texts; else null.
    const TString* m_onlyPiece = nullptr;
    /// The run when it has several pieces, or a long one. Keeps its room between runs.
    std::u16string m_text;
    AttributeMaps m_attributes;
    /// The last runs, by the bits of their length: a sink that did not share one leaves its memory
    /// to the next of about its length.
    std::array<TString, 13> m_texts;
};
