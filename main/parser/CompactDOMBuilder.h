#pragma once

#include "CompactElementSink.h"

#include <kescorexml/DOMBuilder.h>

#include <memory>
#include <vector>

/// The builder that DOMParser uses: what DOMBuilder builds, at less cost. Children wait on a stack
/// until their parent ends and then move into a list of just their number; so the tree is complete
/// only after Finish.
class CompactDOMBuilder final : public DOMBuilder, public CompactElementSink
{
public:
    /// `dom` must live until Finish.
    CompactDOMBuilder(DOM& dom, bool keepWhitespaceText);

    void SetLocationInterface(SAXFileLocation* location) noexcept { m_location = location; }
    ParseArena& GetArena() override { return m_arena; }
    void StartCompactElement(TString&& name, AttributeStorage&& attributes) override;
    void CompactTextContent(std::u16string_view text) override;
    void EndCompactElement() override;

    /// Closes what a parse that stopped early has left open. No events may follow.
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

    void CloseTop();

    DOM& m_dom;
    ParseArena m_arena;
    bool m_keepWhitespaceText;
    SAXFileLocation* m_location = nullptr;
    std::vector<OpenElement> m_open;
    std::vector<std::unique_ptr<DOMElement>> m_waiting;
};
