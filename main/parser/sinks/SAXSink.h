#pragma once

#include "sinks/ScanSink.h"

#include <kescorexml/SAXInterface.h>

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
    void AppendText(std::u16string_view piece) override { m_text.append(piece); }
    void EndText() override
    {
        if (!m_text.empty())
            PassText();
    }
    void EndElement() override;
    bool IsDone() const noexcept override { return m_isDone; }
    void BeginDocument() override;
    void Rewind() override;
    bool PassesOn() const noexcept override { return true; }
    bool AsksForLocations() const noexcept override { return true; }

    /// The interface as one that also supplies schemas; null when it does not.
    SAXInterfaceExtension* GetExtension() const noexcept;

private:
    /// Whether the next event is one that was passed on before the sink was rewound.
    bool IsRepeated() noexcept;
    void PassText();

    std::shared_ptr<SAXInterface> m_sink;
    bool m_isDone = false;
    /// Those of this document.
    std::uint64_t m_eventsPassed = 0;
    std::uint64_t m_eventsToSkip = 0;
    /// What the sink has answered behind the last of those to skip.
    bool m_wasDone = false;
    /// Keeps its room between runs.
    std::u16string m_text;
};
