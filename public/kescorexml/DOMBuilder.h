#pragma once

#include <kescorexml/SAXInterface.h>

#include <memory>
#include <vector>

class DOM;
class DOMElement;
class SAXFileLocation;

/// Grows the tree of a document from the events of a parse: everything becomes part of its root
/// element. Events must be balanced. Different objects may be used from different threads.
class KESCOREXML_EXPORT DOMBuilder : public SAXInterface
{
public:
    /// `dom` must outlive the last event. Unless `keepWhitespaceText`, runs of white space alone
    /// are dropped; other text is kept whole.
    DOMBuilder(DOM& dom, bool keepWhitespaceText);
    DOMBuilder(const DOMBuilder&) = delete;
    DOMBuilder& operator=(const DOMBuilder&) = delete;
    ~DOMBuilder() override;

    /// Lets every further element record where its tags end. Null records nothing. `location` must
    /// outlive the last event.
    void SetLocationInterface(SAXFileLocation* location) noexcept { m_location = location; }
    /// The innermost open element, at first the root.
    [[nodiscard]] DOMElement* PeekStack() const { return m_stack.back(); }

    void StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes) override;
    /// The current element is complete; its parent becomes the current one.
    void EndElement() override;
    void TextContent(const TString& text) override;

private:
    struct State;

    std::vector<DOMElement*> m_stack;
    std::unique_ptr<State> m_state;
    SAXFileLocation* m_location = nullptr;
};
