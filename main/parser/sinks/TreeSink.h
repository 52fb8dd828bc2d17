#pragma once

#include "sinks/ScanSink.h"
#include "slabs/ArenaText.h"
#include "slabs/ParseArena.h"

#include <kescorexml/DOM.h>
#include <kescorexml/SAXFileLocation.h>

#include <memory>
#include <string_view>
#include <vector>

/// Grows the tree of a document as DOMBuilder does, at less cost: elements, attributes, texts and
/// lists of children lie in the slabs of one arena. It is never done before the document ends.
///
/// Children wait on a stack until their parent ends and then move into a list of just their
/// number; so the tree is complete only after Finish.
class TreeSink final : public ScanSink
{
public:
    /// `dom`, whose root is empty, must live until Finish.
    TreeSink(DOM& dom, bool keepWhitespaceText);
    ~TreeSink() override;

    /// Asked for the position at each start and end of an element; null records none.
    void SetLocationInterface(SAXFileLocation* location) noexcept { m_location = location; }

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
    bool AsksForLocations() const noexcept override { return m_location != nullptr; }

    /// Closes what a parse that stopped early has left open; text after the last tag is forgotten.
    /// No events may follow.
    void Finish();

private:
    struct OpenElement
    {
        /// Null for the document's root, which its document owns.
        std::unique_ptr<DOMElement> owner;
        DOMElement* element;
        /// Where its children begin among those that wait.
        std::size_t firstChild;
    };

    void TakeText();
    void CloseTop();

    DOM& m_dom;
    ParseArena m_arena;
    ArenaText m_text{m_arena};
    bool m_keepWhitespaceText;
    SAXFileLocation* m_location = nullptr;
    std::vector<OpenElement> m_open;
    std::vector<std::unique_ptr<DOMElement>> m_waiting;
};
