#pragma once

#include "slabs/ArenaText.h"
#include "slabs/ParseArena.h"

#include <kescorexml/DOMBuilder.h>
#include <kescorexml/detail/AttributeStorage.h>

#include <memory>
#include <string_view>
#include <vector>

/// The builder that DOMParser uses: what DOMBuilder builds, at less cost. Besides the events of
/// SAXInterface it takes the same events with attributes packed and text in pieces; a parse uses
/// the one or the other, and the builder is never done before the document ends.
///
/// Children wait on a stack until their parent ends and then move into a list of just their
/// number; so the tree is complete only after Finish.
class CompactDOMBuilder final : public DOMBuilder
{
public:
    /// `dom` must live until Finish.
    CompactDOMBuilder(DOM& dom, bool keepWhitespaceText);

    void SetLocationInterface(SAXFileLocation* location) noexcept { m_location = location; }

    /// What was appended is a whole run: a tag comes next.
    void EndText()
    {
        if (!m_text.IsEmpty())
            TakeText();
    }
    /// Where the name and the attributes of a start tag are put.
    ParseArena& GetArena() noexcept { return m_arena; }

    // Until EndText, nothing may follow a piece of text but another one.

    /// A piece of the text between two tags. It is copied.
    void AppendCompactText(std::u16string_view piece) { m_text.Append(piece); }
    void StartCompactElement(TString&& name, AttributeStorage&& attributes);
    void EndCompactElement();

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
