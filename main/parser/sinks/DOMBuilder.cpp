#include <kescorexml/DOMBuilder.h>

#include "sinks/ParsedNames.h"
#include "slabs/AttributeBlock.h"
#include "slabs/ListPieces.h"
#include "slabs/ParseArena.h"
#include "tree/ParsedElements.h"

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/SAXFileLocation.h>

#include <kesplatform/TScanString.h>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

struct DOMBuilder::State
{
    explicit State(bool keepsWhitespace) : keepWhitespaceText(keepsWhitespace)
    {
        // The tree is the caller's while it grows: parts of it may be taken out meanwhile.
        arena.ShareBeforeClosing();
    }

    bool keepWhitespaceText;
    ParseArena arena;
    ListPieces pieces{arena};
    ParsedNames names;
};

namespace {

/// Lists of names are found by zero-terminated ones. A caller's may hold anything.
bool HasNull(const DOMElement::AttributeMap& attributes) noexcept
{
    return std::any_of(attributes.begin(), attributes.end(), [](const auto& attribute) {
        return attribute.first.view().find(u'\0') != std::u16string_view::npos;
    });
}

/// What is packed is only read, so that whoever made the map can use it again.
AttributeStorage Pack(ParseArena& arena, ParsedNames& names, ParsedNames::Entry& element,
                      DOMElement::AttributeMap&& attributes)
{
    AttributeStorage storage;
    const std::size_t count = attributes.size();
    if (count == 0)
        return storage;
    if (count <= AttributeNames::c_maxCount && !HasNull(attributes)) {
        std::array<const char16_t*, AttributeNames::c_maxCount> texts;
        std::array<std::u16string_view, AttributeNames::c_maxCount> values;
        std::size_t i = 0;
        for (const auto& [name, value] : attributes) {
            texts[i] = name.utf16();
            values[i++] = value.view();
        }
        const std::span<const char16_t* const> list(texts.data(), count);
        AttributeNames* known = ParsedNames::FindAttributeNames(element, list);
        if (known == nullptr)
            known = names.MakeAttributeNames(element, list);
        if (AttributeBlock* block =
                AttributeBlock::Create(arena, *known, std::span(values.data(), count))) {
            storage.Adopt(block);
            return storage;
        }
    }
    storage.Replace(std::move(attributes));
    return storage;
}

} // namespace

DOMBuilder::DOMBuilder(DOM& dom, bool keepWhitespaceText)
    : m_stack{dom.GetRoot()}, m_state(std::make_unique<State>(keepWhitespaceText))
{
}

DOMBuilder::~DOMBuilder() = default;

void DOMBuilder::StartElement(TString&& name, std::unordered_map<TString, TString>&& attributes)
{
    ParseArena& arena = m_state->arena;
    m_state->names.ForgetIfLarge();
    ParsedNames::Entry& entry = m_state->names.FindElement(name);
    AttributeStorage packed = Pack(arena, m_state->names, entry, std::move(attributes));
    std::unique_ptr<DOMElement> element =
        ParsedElements::New(arena, ParsedNames::GetNameIn(arena, entry), std::move(packed));
    if (m_location != nullptr) {
        int line = 0;
        int column = 0;
        m_location->GetCurrentLocation(line, column);
        element->SetElementStartLocation(line, column);
    }
    // Nothing must fail between the insertion and the note that the element is open.
    if (m_stack.size() == m_stack.capacity())
        m_stack.reserve(2 * m_stack.size());
    m_stack.push_back(
        ParsedElements::AppendNew(m_state->pieces, *m_stack.back(), std::move(element)));
}

void DOMBuilder::EndElement()
{
    if (m_location != nullptr) {
        int line = 0;
        int column = 0;
        m_location->GetCurrentLocation(line, column);
        m_stack.back()->SetElementEndLocation(line, column);
    }
    m_stack.pop_back();
}

void DOMBuilder::TextContent(const TString& text)
{
    const std::u16string_view units = text.view();
    if (!m_state->keepWhitespaceText && TScanString::skipWhitespace(units) == units.size())
        return;
    DOMElement& element = *m_stack.back();
    if (element.HasText())
        element.AppendText(text);
    else
        element.SetText(ParseArena::IsTextForSlab(units) ? m_state->arena.MakeText(units) : text);
}
