#pragma once

#include "sinks/ScanSink.h"

#include <kescorexml/SAXInterface.h>

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
    void EndElement() override;
    bool IsDone() const noexcept override { return m_isDone; }
    void BeginDocument() override { m_text.clear(); }

    /// The interface as one that also supplies schemas; null when it does not.
    SAXInterfaceExtension* GetExtension() const noexcept;

private:
    void EndText()
    {
        if (!m_text.empty())
            PassText();
    }
    void PassText();

    std::shared_ptr<SAXInterface> m_sink;
    bool m_isDone = false;
    /// Keeps its room between runs.
    std::u16string m_text;
};
