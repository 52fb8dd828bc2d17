#include <kescorexml/StandaloneDOMElement.h>

#include "base/Assertion.h"
#include "base/KesErrors.h"
#include "slabs/AttributeBlock.h"
#include "slabs/SlabReferences.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

constexpr const char16_t* c_source = u"StandaloneDOMElement";

} // namespace

StandaloneDOMElement::StandaloneDOMElement(const TString& name) : m_name(name) {}

StandaloneDOMElement::StandaloneDOMElement(TString&& name) : m_name(std::move(name)) {}

StandaloneDOMElement::~StandaloneDOMElement()
{
    if (!m_children.empty())
        EraseAllChildNodes();
}

// Not inline: compilers that see through to the global operators take those of this class for ones
// that do not go together.
void* StandaloneDOMElement::operator new(std::size_t bytes)
{
    return ::operator new(bytes);
}

void* StandaloneDOMElement::operator new(std::size_t bytes, const std::nothrow_t& nothrow) noexcept
{
    return ::operator new(bytes, nothrow);
}

void StandaloneDOMElement::operator delete(void* memory) noexcept
{
    ::operator delete(memory);
}

void StandaloneDOMElement::operator delete(void* memory, const std::nothrow_t&) noexcept
{
    ::operator delete(memory);
}

void StandaloneDOMElement::operator delete(StandaloneDOMElement* element,
                                           std::destroying_delete_t) noexcept
{
    const std::uint32_t slabOffset = element->m_slabOffset;
    element->~StandaloneDOMElement();
    if (slabOffset != 0)
        ParseSlab::At(element, slabOffset).Release();
    else
        ::operator delete(static_cast<void*>(element));
}

void StandaloneDOMElement::EraseAllChildNodes() noexcept
{
    SlabReferences references;
    // The way back up is kept in the tree itself: on the way down into the last child of an
    // element, the place of that child holds the element above instead. So the depth costs neither
    // stack nor memory, and nothing can fail.
    StandaloneDOMElement* above = nullptr;
    StandaloneDOMElement* current = this;
    for (;;) {
        while (!current->m_children.empty()) {
            std::unique_ptr<StandaloneDOMElement>& last = current->m_children.back().element;
            if (last == nullptr || last->m_children.empty()) {
                DestroyLeaf(current->m_children.PopBack(), references);
                continue;
            }
            StandaloneDOMElement* child = last.release();
            last.reset(above);
            above = std::exchange(current, child);
        }
        if (above == nullptr)
            return;
        std::unique_ptr<StandaloneDOMElement> emptied(std::exchange(current, above));
        above = current->m_children.back().element.release();
        current->m_children.back().element = std::move(emptied);
    }
}

void StandaloneDOMElement::DestroyLeaf(Node&& node, SlabReferences& references) noexcept
{
    references.Add(TStringBlock::TakeReference(node.text));
    if (node.element == nullptr || node.element->m_slabOffset == 0) {
        node.element.reset();
        return;
    }
    StandaloneDOMElement* const leaf = node.element.release();
    ParseSlab& slab = ParseSlab::At(leaf, leaf->m_slabOffset);
    references.Add(TStringBlock::TakeReference(leaf->m_name));
    if (const AttributeBlock* block = leaf->m_attributes.TakeBlock())
        references.Add(&block->GetSlab());
    references.Add(leaf->m_children.TakeSlab());
    leaf->~StandaloneDOMElement();
    references.Add(&slab);
}

void StandaloneDOMElement::CopyOwnPartsTo(StandaloneDOMElement& copy) const
{
    copy.m_attributes.Take(copy.m_attributes.PrepareReplacement(m_attributes));
    copy.m_encoded = m_encoded;
    copy.m_children.ReserveExactly(m_children.size());
}

std::unique_ptr<StandaloneDOMElement> StandaloneDOMElement::Clone() const
{
    struct Pending
    {
        const StandaloneDOMElement* from;
        StandaloneDOMElement* to;
    };
    auto result = std::make_unique<StandaloneDOMElement>(m_name);
    // A stack of its own: TreeWalk is for the other tree.
    std::vector<Pending> pending{{this, result.get()}};
    while (!pending.empty()) {
        const auto [from, to] = pending.back();
        pending.pop_back();
        from->CopyOwnPartsTo(*to);
        for (const Node& node : from->m_children) {
            std::unique_ptr<StandaloneDOMElement> child;
            if (node.element != nullptr) {
                child = std::make_unique<StandaloneDOMElement>(node.element->m_name);
                pending.push_back({node.element.get(), child.get()});
            }
            to->m_children.PushBack({node.text, std::move(child)});
        }
    }
    return result;
}

bool StandaloneDOMElement::operator==(const StandaloneDOMElement& other) const
{
    // Two trees at once, in any order, and nothing to do behind an element: a list of pairs is all
    // that it takes.
    std::vector<std::pair<const StandaloneDOMElement*, const StandaloneDOMElement*>> pending;
    const StandaloneDOMElement* left = this;
    const StandaloneDOMElement* right = &other;
    for (;;) {
        if (left != right) {
            if (left->m_name != right->m_name ||
                left->m_children.size() != right->m_children.size() ||
                !left->m_attributes.Equals(right->m_attributes))
                return false;
            for (std::size_t i = 0; i < left->m_children.size(); ++i) {
                const Node& a = left->m_children[i];
                const Node& b = right->m_children[i];
                if (a.IsText() != b.IsText() || a.text != b.text)
                    return false;
                if (!a.IsText())
                    pending.emplace_back(a.element.get(), b.element.get());
            }
        }
        if (pending.empty())
            return true;
        std::tie(left, right) = pending.back();
        pending.pop_back();
    }
}

bool StandaloneDOMElement::HasText() const noexcept
{
    return std::ranges::any_of(m_children, [](const Node& node) { return node.IsText(); });
}

bool StandaloneDOMElement::HasChildren() const noexcept
{
    return std::ranges::any_of(m_children, [](const Node& node) { return !node.IsText(); });
}

TString StandaloneDOMElement::GetAllText() const
{
    TString result;
    for (const Node& node : m_children)
        result.append(node.text);
    return result;
}

std::vector<std::reference_wrapper<const TString>> StandaloneDOMElement::GetTextNodes() const
{
    std::vector<std::reference_wrapper<const TString>> result;
    for (const Node& node : m_children) {
        if (node.IsText())
            result.emplace_back(node.text);
    }
    return result;
}

std::vector<std::reference_wrapper<const StandaloneDOMElement>>
StandaloneDOMElement::GetChildren() const
{
    std::vector<std::reference_wrapper<const StandaloneDOMElement>> result;
    for (const Node& node : m_children) {
        if (!node.IsText())
            result.emplace_back(*node.element);
    }
    return result;
}

const StandaloneDOMElement* StandaloneDOMElement::GetChild(const TString& name) const noexcept
{
    for (const Node& node : m_children) {
        if (!node.IsText() && node.element->m_name == name)
            return node.element.get();
    }
    return nullptr;
}

StandaloneDOMElement* StandaloneDOMElement::GetChild(const TString& name) noexcept
{
    return const_cast<StandaloneDOMElement*>(std::as_const(*this).GetChild(name));
}

void StandaloneDOMElement::WalkNodes(const std::function<void(StandaloneDOMElement&)>& onElement,
                                     const std::function<void(TString&)>& onText)
{
    for (Node& node : m_children) {
        if (node.IsText())
            onText(node.text);
        else
            onElement(*node.element);
    }
}

void StandaloneDOMElement::WalkNodes(
    const std::function<void(const StandaloneDOMElement&)>& onElement,
    const std::function<void(const TString&)>& onText) const
{
    for (const Node& node : m_children) {
        if (node.IsText())
            onText(node.text);
        else
            onElement(*node.element);
    }
}

void StandaloneDOMElement::AppendText(const TString& text, bool encoded)
{
    if (m_children.empty() || !m_children.back().IsText()) {
        m_children.ReserveMore(1);
        m_children.PushBack({text, nullptr});
    } else {
        m_children.back().text.append(text);
    }
    m_encoded = encoded;
}

void StandaloneDOMElement::SetAttributes(const AttributeMap& attributes)
{
    if (&attributes != &GetAttributes())
        m_attributes.Replace(AttributeMap(attributes));
}

void StandaloneDOMElement::SetAttributes(AttributeMap&& attributes)
{
    if (&attributes != &GetAttributes())
        m_attributes.Replace(std::move(attributes));
}

bool StandaloneDOMElement::HasAttribute(const TString& name) const noexcept
{
    std::u16string_view value;
    return m_attributes.View(name, value);
}

const TString& StandaloneDOMElement::GetAttribute(const TString& name) const
{
    const AttributeMap& attributes = GetAttributes();
    const auto it = attributes.find(name);
    if (it == attributes.end())
        ThrowAssertion(c_source, PublishedLine(226), u"it != m_attributes.end()",
                       KesErrorsError::LogicAssert_0x16A1A876());
    return it->second;
}

bool StandaloneDOMElement::TryGetAttribute(const TString& name, TString& value) const
{
    if (!HasAttribute(name))
        return false;
    value = m_attributes.Get(name);
    return true;
}

void StandaloneDOMElement::SetAttribute(const TString& name, const TString& value)
{
    GetAttributes().insert_or_assign(name, value);
}

void StandaloneDOMElement::RemoveAttribute(const TString& name)
{
    if (HasAttribute(name))
        GetAttributes().erase(name);
}

void StandaloneDOMElement::AppendChild(std::unique_ptr<StandaloneDOMElement> element)
{
    if (element == nullptr)
        ThrowAssertion(c_source, PublishedLine(295), u"element != nullptr",
                       KesErrorsError::LogicAssert_0xE9519449());
    m_children.ReserveMore(1);
    m_children.PushBack({TString(), std::move(element)});
}

void StandaloneDOMElement::InsertChildBefore(std::unique_ptr<StandaloneDOMElement> element,
                                             const StandaloneDOMElement& before)
{
    if (element == nullptr)
        ThrowAssertion(c_source, PublishedLine(302), u"element != nullptr",
                       KesErrorsError::LogicAssert_0x41228A24());
    const auto place = std::ranges::find_if(m_children, [&before](const Node& node) {
        return !node.IsText() && *node.element == before;
    });
    if (place == m_children.end())
        ThrowAssertion(c_source, PublishedLine(318), u"Can't insert child",
                       KesErrorsError::LogicAssert_0xAD7AC3BE());
    const auto index = static_cast<std::size_t>(place - m_children.begin());
    m_children.ReserveMore(1);
    m_children.Insert(index, {TString(), std::move(element)});
}

std::unique_ptr<StandaloneDOMElement>
StandaloneDOMElement::RemoveChild(const StandaloneDOMElement& child)
{
    const auto place = std::ranges::find_if(
        m_children, [&child](const Node& node) { return node.element.get() == &child; });
    if (place == m_children.end())
        ThrowAssertion(c_source, PublishedLine(344), u"Can't remove child",
                       KesErrorsError::LogicAssert_0x108BF60C());
    std::unique_ptr<StandaloneDOMElement> removed = std::move(place->element);
    m_children.Take(static_cast<std::size_t>(place - m_children.begin()));
    return removed;
}

std::vector<std::unique_ptr<StandaloneDOMElement>> StandaloneDOMElement::RemoveChildren()
{
    std::vector<std::unique_ptr<StandaloneDOMElement>> removed;
    removed.reserve(static_cast<std::size_t>(
        std::ranges::count(m_children, false, [](const Node& node) { return node.IsText(); })));
    Node* kept = m_children.begin();
    for (Node& node : m_children) {
        if (!node.IsText()) {
            removed.push_back(std::move(node.element));
            continue;
        }
        if (kept != &node)
            *kept = std::move(node);
        ++kept;
    }
    m_children.Truncate(static_cast<std::size_t>(kept - m_children.begin()));
    return removed;
}
