#pragma once

#include "sinks/ScanSink.h"
#include "slabs/ArenaText.h"
#include "slabs/ParseArena.h"

#include <kescorexml/StandaloneDOMElement.h>

#include <memory>
#include <string_view>
#include <vector>

/// Grows a StandaloneDOMElement tree. Elements, attributes, texts and lists of content lie in the
/// slabs of one arena.
///
/// What an element holds waits on a stack until the element ends and then moves into a list of just
/// its length; so the tree is complete only once it is taken.
class StandaloneTreeSink final : public ScanSink
{
public:
    explicit StandaloneTreeSink(bool keepWhitespaceText);
    ~StandaloneTreeSink() override;

    void StartElement(const StartTag& tag) override;
    void AppendText(std::u16string_view piece) override { m_text.Append(piece); }
    void EndText() override
    {
        if (!m_text.IsEmpty())
            TakeText();
    }
    void EndElement() override;
    bool IsDone() const noexcept override { return false; }
    void Restart() override;
    bool AsksForLocations() const noexcept override { return false; }

    /// Closes what a parse that stopped early has left open; text after the last tag is forgotten.
    /// Gives an element "Document" that holds the document. No events may follow.
    std::unique_ptr<StandaloneDOMElement> TakeRoot();

private:
    struct UnfinishedElement
    {
        std::unique_ptr<StandaloneDOMElement> element;
        /// Where its content begins among what waits.
        std::size_t firstNode;
    };

    void TakeText();
    /// Gives the innermost open element what it holds.
    void CloseTop();

    ParseArena m_arena;
    ArenaText m_text{m_arena};
    bool m_keepWhitespaceText;
    std::vector<UnfinishedElement> m_open;
    std::vector<StandaloneNode> m_waiting;
};
