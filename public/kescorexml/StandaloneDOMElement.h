#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/detail/AttributeStorage.h>
#include <kescorexml/detail/StandaloneContent.h>
#include <kesplatform/TString.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <vector>

class SlabReferences;

/// An element of the second, self-contained tree: a name, attributes in no order, and a list of
/// content nodes, each a text or a child element, as they stood in the source. Two texts never
/// stand side by side unless an element between them was removed.
///
/// An element owns its children and knows nothing of its parent; it must not be put below itself.
/// References and pointers to a child are valid until that child is destroyed; references to a
/// text until the content of its element changes. Nothing here recurses on the depth of the tree.
///
/// A broken contract is a LogicException and leaves the element unchanged, as does exhausted
/// memory. Const operations may run side by side.
class KESCOREXML_EXPORT StandaloneDOMElement final
{
public:
    /// Attribute values by name.
    using AttributeMap = AttributeStorage::AttributeMap;

    /// An element of that name and nothing else.
    explicit StandaloneDOMElement(const TString& name);
    explicit StandaloneDOMElement(TString&& name);
    /// Destroys the subtree in time linear in its size, children from the last to the first,
    /// without allocating.
    ~StandaloneDOMElement();
    StandaloneDOMElement(const StandaloneDOMElement&) = delete;
    StandaloneDOMElement& operator=(const StandaloneDOMElement&) = delete;
    /// Elements of a parse live in memory that they share, and give it back themselves when they
    /// are deleted. That is why no class can derive from this one: its part would be left out.
    static void* operator new(std::size_t bytes);
    static void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept;
    static void* operator new(std::size_t, void* memory) noexcept { return memory; }
    /// The other half of that.
    static void operator delete(void* memory) noexcept;
    static void operator delete(void* memory, const std::nothrow_t&) noexcept;
    static void operator delete(void*, void*) noexcept {}
    static void operator delete(StandaloneDOMElement* element, std::destroying_delete_t) noexcept;

    /// A deep copy, the encoded flags and the load factors of the attribute maps included.
    [[nodiscard]] std::unique_ptr<StandaloneDOMElement> Clone() const;

    /// The name as it is written, prefix included.
    [[nodiscard]] const TString& GetName() const noexcept { return m_name; }
    void SetName(const TString& name) noexcept { m_name = name; }

    /// Whether names, attributes in whatever order, and content in this order are the same all the
    /// way down. The encoded flags do not matter.
    [[nodiscard]] bool operator==(const StandaloneDOMElement& other) const;
    [[nodiscard]] bool operator!=(const StandaloneDOMElement& other) const
    {
        return !(*this == other);
    }

    /// No content and no attributes.
    [[nodiscard]] bool IsEmpty() const noexcept
    {
        return m_children.empty() && m_attributes.IsEmpty();
    }
    /// Whether there is any content.
    [[nodiscard]] bool HasTextOrChildren() const noexcept { return !m_children.empty(); }
    /// Whether there is a text among the content.
    [[nodiscard]] bool HasText() const noexcept;
    /// Whether there is an element among the content.
    [[nodiscard]] bool HasChildren() const noexcept;

    /// This element's own texts in order, joined; the texts of descendants are not in it.
    [[nodiscard]] TString GetAllText() const;
    /// This element's own texts, in order.
    [[nodiscard]] std::vector<std::reference_wrapper<const TString>> GetTextNodes() const;
    /// The child elements, in order.
    [[nodiscard]] std::vector<std::reference_wrapper<const StandaloneDOMElement>>
    GetChildren() const;
    /// The first child element of that name, or null.
    [[nodiscard]] StandaloneDOMElement* GetChild(const TString& name) noexcept;
    [[nodiscard]] const StandaloneDOMElement* GetChild(const TString& name) const noexcept;

    /// Hands this element's content nodes, one level, in order to the callback of their kind. An
    /// empty callback is std::bad_function_call once a node of its kind is reached. The callbacks
    /// may change the nodes that they are given but must not add or remove nodes of this element.
    void WalkNodes(const std::function<void(StandaloneDOMElement&)>& onElement,
                   const std::function<void(TString&)>& onText);
    void WalkNodes(const std::function<void(const StandaloneDOMElement&)>& onElement,
                   const std::function<void(const TString&)>& onText) const;

    /// Appends to the text at the end of the content, or adds a text node when the content is
    /// empty or ends in an element. The encoded flag of the element becomes `encoded`, whatever it
    /// was before. Amortised constant time a UTF-16 unit.
    void AppendText(const TString& text, bool encoded);
    /// AppendText(text, false): clears the encoded flag.
    void AppendText(const TString& text) { AppendText(text, false); }
    /// Whether the texts of this element stand as they are to be written.
    [[nodiscard]] bool IsEncoded() const noexcept { return m_encoded; }
    void SetEncoded(bool encoded) noexcept { m_encoded = encoded; }

    /// The map itself, valid as long as this element. The first call builds it, and so does the
    /// first GetAttribute; HasAttribute and TryGetAttribute do without.
    [[nodiscard]] AttributeMap& GetAttributes() { return m_attributes.Map(); }
    [[nodiscard]] const AttributeMap& GetAttributes() const { return m_attributes.Map(); }
    /// Copies the map, its load factor included.
    void SetAttributes(const AttributeMap& attributes);
    /// Takes the map over.
    void SetAttributes(AttributeMap&& attributes);
    /// Whether there is an attribute of that name.
    [[nodiscard]] bool HasAttribute(const TString& name) const noexcept;
    /// The value of an attribute that must be there: its absence is a logic assertion.
    [[nodiscard]] const TString& GetAttribute(const TString& name) const;
    /// False, and `value` left alone, when there is no such attribute.
    bool TryGetAttribute(const TString& name, TString& value) const;
    /// Inserts or overwrites.
    void SetAttribute(const TString& name, const TString& value);
    /// Does nothing when there is no such attribute.
    void RemoveAttribute(const TString& name);

    /// Adds a child at the end. Null is a logic assertion. The child is taken, and so it is gone
    /// when memory fails; this element is then as it was.
    void AppendChild(std::unique_ptr<StandaloneDOMElement> element);
    /// Inserts a child in front of the first child element that is equal to `before`, which need
    /// not be a child itself. Null, and no such child, are logic assertions. Costs one comparison
    /// of subtrees for each child in front of the place.
    void InsertChildBefore(std::unique_ptr<StandaloneDOMElement> element,
                           const StandaloneDOMElement& before);
    /// Takes out this very child; an equal one will not do: that is a logic assertion. Texts on
    /// both sides of it stay apart.
    std::unique_ptr<StandaloneDOMElement> RemoveChild(const StandaloneDOMElement& child);
    /// Takes out all child elements in order; the texts stay, unmerged.
    std::vector<std::unique_ptr<StandaloneDOMElement>> RemoveChildren();
    /// Destroys all content, texts and elements, from the last to the first.
    void EraseAllChildNodes() noexcept;

private:
    friend class StandaloneTreeSink;

    using Node = StandaloneNode;

    void CopyOwnPartsTo(StandaloneDOMElement& copy) const;
    /// Destroys a node whose element, if it is one, holds nothing, and leaves to `references` what
    /// it referred to.
    KESCOREXML_NO_EXPORT static void DestroyLeaf(Node&& node, SlabReferences& references) noexcept;

    TString m_name;
    AttributeStorage m_attributes;
    StandaloneContent m_children;
    /// Where in a slab of a parse the element lies; 0 for one on the heap.
    std::uint32_t m_slabOffset = 0;
    bool m_encoded = false;
};
