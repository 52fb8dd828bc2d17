#pragma once

#include <kescorexml/DOMElementChildren.h>
#include <kescorexml/Export.h>
#include <kescorexml/detail/AttributeStorage.h>
#include <kescorexml/detail/ElementList.h>
#include <kesplatform/QualifiedName.h>
#include <kesplatform/TError.h>
#include <kesplatform/TString.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <new>
#include <unordered_map>
#include <vector>

class DOM;
class DOMElementAccess;
class ElementCopy;
class ElementInsertion;
class ElementLife;
class ParsedElements;
struct ElementIdentity;

/// One XML element: a name, a text, unordered attributes and an ordered list of owned children.
///
/// An element is attached to at most one DOM, which keeps its diagnostics; the whole subtree of an
/// attached element is attached to the same DOM. An attached element that is not (or no longer) in
/// a tree belongs to its owner; when its DOM ends first, it and its subtree become detached.
///
/// Every operation is safe on trees of any depth. Every operation that changes a tree happens whole
/// or, when it throws (std::bad_alloc, or what is stated), leaves the tree as it was.
///
/// Const operations may run side by side. A tree is changed by one thread at a time; recording and
/// reading diagnostics is safe from several threads as long as the tree does not change.
///
/// Nothing derives from it: a parse makes elements side by side in memory of their own size, and
/// whoever owns one destroys it without a virtual call.
///
/// @code
/// DOMElement list(u"list");
/// DOMElement* const item = list.AddNewChild(u"item");
/// item->SetText(u"tea");
/// item->SetAttribute(u"cups", u"2");
/// for (const auto& child : list.GetChildren())
///     std::cout << child->GetName() << ' ' << child->GetAttribute(u"cups") << '\n'; // item 2
/// @endcode
class KESCOREXML_EXPORT DOMElement final
{
public:
    /// Attribute values by name.
    using AttributeMap = std::unordered_map<TString, TString>;
    /// Walks over the children; valid until one is added or removed.
    using ChildIterator = ElementList::iterator;
    using ConstChildIterator = ElementList::const_iterator;
    /// Names that were parsed, by their written form.
    using FieldNameCache = std::unordered_map<TString, QualifiedName>;

    /// A detached element without text, attributes, children and location.
    DOMElement(const TString& name);
    DOMElement(TString&& name);
    /// A deep copy, attached to the same document as `other` but without a parent. Locations and
    /// the encoded flag are not copied; the diagnostics of every copied element are.
    /// Mind: like every attached element without parent, the copy clears all diagnostics of its
    /// document when it is destroyed. Insert it somewhere first, or copy into a detached element
    /// by assignment, when that is not wanted.
    DOMElement(const DOMElement& other);
    /// Replaces name, text, attributes and children by copies of `other`'s, whose diagnostics are
    /// copied when this element is attached. Document, parent and location stay; the encoded flag
    /// is cleared. `other` may be in the same tree: the result is that of a copy made beforehand.
    DOMElement& operator=(const DOMElement& other);
    /// What `other` is, this element becomes: name, text, attributes, children, location, encoded
    /// flag, document, diagnostics, and the parent that it was removed from. `other` keeps nothing
    /// but its name; where it is a child, or the root of a document, it also keeps its place and
    /// its document, and this element has no parent (as a copy has none, with the same warning).
    /// Takes time for each child. Where `other` keeps its document, and memory for the note that
    /// this element belongs to that, too, runs out, this element becomes detached.
    DOMElement(DOMElement&& other) noexcept;
    /// Gives what copying gives, but takes text, attributes and children from `other`, which keeps
    /// the rest; its own diagnostics come along. Takes time for each child within a document and
    /// from a detached element. Otherwise, and when this element is below `other`, which then keeps
    /// everything, they are copied.
    DOMElement& operator=(DOMElement&& other);
    /// Elements of a parse live in memory that they share, and give it back themselves when they
    /// are deleted. That is why no class can derive from this one: its part would be left out.
    static void* operator new(std::size_t bytes);
    static void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept;
    static void* operator new(std::size_t, void* memory) noexcept { return memory; }
    /// The other half of that.
    static void operator delete(void* memory) noexcept;
    static void operator delete(void* memory, const std::nothrow_t&) noexcept;
    static void operator delete(void*, void*) noexcept {}
    static void operator delete(DOMElement* element, std::destroying_delete_t) noexcept;

    /// Destroys the subtree, children from the last to the first. An attached element with a
    /// parent (also a former one) erases its own diagnostics, one without parent clears all
    /// diagnostics of its document.
    ~DOMElement();

    /// The name as it is written, prefix included.
    [[nodiscard]] const TString& GetName() const noexcept { return m_name; }
    void SetName(const TString& name) noexcept { m_name = name; }

    /// All text of the element itself, without that of its children.
    [[nodiscard]] const TString& GetText() const noexcept { return m_text; }
    /// Sets the text and clears the encoded flag.
    void SetText(const TString& text) noexcept { SetText(text, false); }
    void SetText(const TString& text, bool encoded) noexcept
    {
        m_text = text;
        m_encoded = encoded;
    }
    /// Appends in amortised constant time a unit and clears the encoded flag.
    void AppendText(const TString& text) { AppendText(text, false); }
    /// The text counts as encoded only if both the old and the new text are.
    void AppendText(const TString& text, bool encoded)
    {
        m_text.append(text);
        m_encoded = m_encoded && encoded;
    }
    /// The text is in escaped form already; formatters write it as it stands.
    [[nodiscard]] bool IsEncoded() const noexcept { return m_encoded; }
    void SetEncoded(bool encoded) noexcept { m_encoded = encoded; }

    /// Whether the text is not empty.
    [[nodiscard]] bool HasText() const noexcept { return !m_text.IsEmpty(); }
    /// Whether there is a child.
    [[nodiscard]] bool HasChildren() const noexcept { return !m_children.empty(); }
    /// Whether there is an attribute.
    [[nodiscard]] bool HasAttributes() const noexcept { return !m_attributes.IsEmpty(); }
    /// No text, no children and no attributes.
    [[nodiscard]] bool IsEmpty() const noexcept
    {
        return !HasText() && !HasChildren() && !HasAttributes();
    }

    /// The element whose child this is, or null. A removed element still names its former parent
    /// until it is inserted again; null once that parent is destroyed or is put below the removed
    /// element, so that the way upwards always ends.
    [[nodiscard]] DOMElement* GetParent() noexcept;
    [[nodiscard]] const DOMElement* GetParent() const noexcept;
    /// The element has no parent and was never removed from one.
    [[nodiscard]] bool IsRootNode() const noexcept { return m_parent == nullptr; }
    /// The document that the element is attached to, or null.
    [[nodiscard]] DOM* GetDOMManager() noexcept { return m_dom; }
    [[nodiscard]] const DOM* GetDOMManager() const noexcept { return m_dom; }
    /// Whether `other` is met on the way from the parent upwards; no element is its own child.
    [[nodiscard]] bool IsChildOf(const DOMElement& other) const noexcept;

    /// A view that follows later changes; valid as long as this element.
    [[nodiscard]] DOMElementChildren GetChildren() noexcept { return *this; }
    [[nodiscard]] ConstDOMElementChildren GetChildren() const noexcept { return *this; }
    /// The first child with that name, or null. Linear in the number of children.
    [[nodiscard]] DOMElement* GetChild(const TString& name) noexcept;
    [[nodiscard]] const DOMElement* GetChild(const TString& name) const noexcept;
    /// The text of GetChild(name), or an empty text.
    [[nodiscard]] TString GetChildText(const TString& name) const noexcept;
    /// As GetChild; a DOMException with the name as message when there is none.
    DOMElement& GetRequiredChild(const TString& name);
    const DOMElement& GetRequiredChild(const TString& name) const;
    /// The first child whose attribute has that value; a DOMException with the attribute's name as
    /// message when there is none.
    DOMElement& GetRequiredChildByAttr(const TString& attrName, const TString& attrValue);
    const DOMElement& GetRequiredChildByAttr(const TString& attrName,
                                             const TString& attrValue) const;
    /// The position of `child`, by identity, among the children, or their end.
    [[nodiscard]] ChildIterator FindChild(const DOMElement& child) noexcept;
    [[nodiscard]] ConstChildIterator FindChild(const DOMElement& child) const noexcept;

    /// The map itself, valid as long as this element. The first call builds it; HasAttribute and
    /// GetAttribute do without.
    [[nodiscard]] const AttributeMap& GetAttributes() const { return m_attributes.Map(); }
    [[nodiscard]] AttributeMap& GetAttributes() { return m_attributes.Map(); }
    /// Replaces all attributes.
    void SetAttributes(const AttributeMap& attributes);
    void SetAttributes(AttributeMap&& attributes);
    /// Whether there is an attribute of that name.
    [[nodiscard]] bool HasAttribute(const TString& name) const noexcept;
    /// The value, or an empty text.
    [[nodiscard]] TString GetAttribute(const TString& name) const { return m_attributes.Get(name); }
    /// The attribute's place in the map; a DOMException with the name as message when there is
    /// none.
    AttributeMap::const_iterator RequireAttribute(const TString& name) const;
    /// Inserts or overwrites.
    void SetAttribute(const TString& name, const TString& value);
    /// Does nothing when there is no such attribute.
    void RemoveAttribute(const TString& name);
    /// The value of this element or of the nearest ancestor that has the attribute, or empty.
    [[nodiscard]] TString GetParentAttr(const TString& name) const;
    /// "true", "yes" and "1" are true, "false", "no" and "0" are false, exactly so written; any
    /// other text returns false and leaves `out` alone.
    static bool StringToBool(const TString& text, bool& out) noexcept;

    /// Inserts in front of `before`, or at the end when that is null or no child (which is logged).
    /// The child's subtree becomes attached to this element's document, and its diagnostics move
    /// there; when the child came from directly under another document's root, the diagnostics of
    /// that root move onto this document's root, too. When this throws, `child` still owns.
    /// Inserting nothing, or an element into its own subtree, is a logic assertion.
    /// A log sink may change trees, also this one, as long as it does not destroy what the call is
    /// about: the child is attached already when the miss is logged, and appended afterwards.
    DOMElement* InsertChild(std::unique_ptr<DOMElement>&& child, const DOMElement* before);
    /// InsertChild at the end.
    DOMElement* AppendChild(std::unique_ptr<DOMElement>&& child);
    /// InsertChild with a new element of that name, which is returned.
    DOMElement* AddNewChild(const TString& name, const DOMElement* before = nullptr);
    /// GetChild(name), or a new child at the end.
    DOMElement* GetOrNewChild(const TString& name);
    /// Hands `child` to the caller. It keeps its document, its diagnostics and the name of its
    /// parent. A logic assertion when it is no child.
    std::unique_ptr<DOMElement> RemoveChild(DOMElement& child);
    /// The first child with that name, or null.
    std::unique_ptr<DOMElement> RemoveChild(const TString& name);
    /// All children, in their order.
    std::vector<std::unique_ptr<DOMElement>> RemoveChildren();
    /// Removes `child` if it is empty (IsEmpty); otherwise null.
    std::unique_ptr<DOMElement> RemoveIfEmpty(DOMElement& child);
    std::unique_ptr<DOMElement> RemoveIfEmpty(const TString& name);
    /// REQUIRES: a parent that holds this element. Inserts it under `newParent` instead.
    void Move(DOMElement& newParent, const DOMElement* before);
    /// Moves `child` here from its parent; a logic assertion when it has none. A child of this
    /// element stays where it is, whatever `before` says.
    void Adopt(DOMElement& child, const DOMElement* before);
    /// Moves all children of `from` here, in order, in front of `before`. Linear in the number of
    /// children of both.
    void AdoptChildren(DOMElement& from, const DOMElement* before);
    /// Moves one attribute here, over an existing one; nothing when `from` does not have it.
    void AdoptAttribute(DOMElement& from, const TString& name);
    /// Moves all attributes here, over existing ones.
    void AdoptAttributes(DOMElement& from) { AdoptAttributes(from, true); }
    /// Copies the attributes of `from` here, over existing ones only if `overwrite`; `from` has
    /// none afterwards in any case.
    void AdoptAttributes(DOMElement& from, bool overwrite);
    /// Makes this element the first child of its parent; a logic assertion without one. An element
    /// that is the first of several already ends up last, and the miss is logged.
    void MoveToFront();

    /// Lines and columns count from 1; 0 means unknown.
    void SetElementStartLocation(int line, int column) noexcept
    {
        m_startLine = line;
        m_startColumn = column;
    }
    /// Of the end of the end tag; lines and columns count from 1, and 0 means unknown.
    void SetElementEndLocation(int line, int column) noexcept
    {
        m_endLine = line;
        m_endColumn = column;
    }
    /// The line of the end of the start tag; 0 when unknown.
    [[nodiscard]] int GetStartLine() const noexcept { return m_startLine; }
    /// The column behind the start tag; 0 when unknown.
    [[nodiscard]] int GetStartColumn() const noexcept { return m_startColumn; }
    /// The line of the end of the end tag; 0 when unknown.
    [[nodiscard]] int GetEndLine() const noexcept { return m_endLine; }
    /// The column behind the end tag; 0 when unknown.
    [[nodiscard]] int GetEndColumn() const noexcept { return m_endColumn; }

    /// Names, texts, attributes regardless of order, and children in order. Documents, locations
    /// and the encoded flag are not compared.
    [[nodiscard]] bool operator==(const DOMElement& other) const { return !(*this != other); }
    [[nodiscard]] bool operator!=(const DOMElement& other) const;

    // Diagnostics of this element, kept by its document; see DOM. Each is a logic assertion on a
    // detached element.

    /// See DOM::ClearErrors.
    void ClearErrors();
    /// See DOM::PushError.
    void Error(const TString& message, const TError::ErrorInfo& info = TError::ErrorInfo::NoError(),
               bool reported = false, bool cancel = false) const;
    /// See DOM::InsertError.
    void PrefixError(const TString& message,
                     const TError::ErrorInfo& info = TError::ErrorInfo::NoError(),
                     bool reported = false) const;
    /// See DOM::HasErrors.
    bool HasErrors() const;
    /// See DOM::HasUnreportedErrors.
    bool HasUnreportedErrors() const;
    /// See DOM::HasCancelErrors.
    bool HasCancelErrors() const;
    /// See DOM::HasOnlyCancelErrors.
    bool HasOnlyCancelErrors() const;
    /// Appends to `out`.
    void GetErrors(std::list<TString>& out) const;
    /// Reads the registry without locking it.
    void GetMetadataForErrors(std::list<TError::ErrorInfo>& out) const;
    /// See DOM::ClearWarnings.
    void ClearWarnings();
    /// See DOM::PushWarning.
    void Warning(const TString& message,
                 const TError::ErrorInfo& info = TError::ErrorInfo::NoError()) const;
    /// See DOM::InsertWarning.
    void PrefixWarning(const TString& message,
                       const TError::ErrorInfo& info = TError::ErrorInfo::NoError()) const;
    /// See DOM::HasWarnings.
    bool HasWarnings() const;
    /// Appends to `out`.
    void GetWarnings(std::list<TString>& out) const;
    /// Reads the registry without locking it.
    void GetMetadataForWarnings(std::list<TError::ErrorInfo>& out) const;

    // Renames, kept by the document; see DOM. The first two are logic assertions on a detached
    // element, for which the look-ups give back what they were asked for.

    /// See DOM::AddFieldRename.
    void AddFieldRename(const FieldName& from, const FieldName& to);
    /// See DOM::AddCaptionRename.
    void AddCaptionRename(const TString& from, const TString& to);
    /// See DOM::RenameField.
    [[nodiscard]] FieldName RenameField(const FieldName& name) const;
    /// See DOM::RenameDataConnection.
    [[nodiscard]] TString RenameDataConnection(const TString& name) const;
    /// See DOM::RenameDataSource.
    [[nodiscard]] TString RenameDataSource(const TString& name) const;
    /// See DOM::RenameMapSource.
    [[nodiscard]] TString RenameMapSource(const TString& name) const;
    /// Looks up the value of the attribute `attrName`. REQUIRES: an attached element.
    [[nodiscard]] TString GetCaptionRenameIfItExists(const TString& attrName) const;
    /// The global field name that the attribute holds, renamed. `cache` is the caller's parse
    /// cache.
    [[nodiscard]] FieldName GetFieldName(const TString& attrName) const;
    [[nodiscard]] FieldName GetFieldName(const TString& attrName, FieldNameCache& cache) const;
    /// The same for the element's text.
    [[nodiscard]] FieldName GetTextAsFieldName() const;
    [[nodiscard]] FieldName GetTextAsFieldName(FieldNameCache& cache) const;
    /// The same for a local name of the field of `dataSource`; the result is local again.
    [[nodiscard]] FieldName GetLocalFieldName(const TString& attrName,
                                              const TString& dataSource) const;
    [[nodiscard]] FieldName GetLocalFieldName(const TString& attrName, const TString& dataSource,
                                              FieldNameCache& cache) const;

private:
    friend class DOM;
    friend class DOMElementAccess;
    friend class DOMElementChildren;
    friend class ElementCopy;
    friend class ElementInsertion;
    friend class ElementLife;
    friend class ParsedElements;

    KESCOREXML_NO_EXPORT void DestroyChildren() noexcept;
    KESCOREXML_NO_EXPORT void DropContent() noexcept;
    KESCOREXML_NO_EXPORT std::size_t IndexOf(const DOMElement& child) const noexcept;

    DOM* m_dom = nullptr;
    DOMElement* m_parent = nullptr;
    TString m_name;
    TString m_text;
    AttributeStorage m_attributes;
    ElementList m_children;
    int m_startLine = 0;
    int m_startColumn = 0;
    int m_endLine = 0;
    int m_endColumn = 0;
    /// Made when somebody needs to remember this element beyond its life; see ElementIdentity.
    mutable std::atomic<ElementIdentity*> m_identity{nullptr};
    /// Where in a slab of a parse this element lies; 0 for one on the heap.
    std::uint32_t m_slabOffset = 0;
    bool m_encoded = false;
};

/// The value of the attribute on `start` or the nearest ancestor that has it, or empty; null gives
/// an empty text.
[[nodiscard]] KESCOREXML_EXPORT TString GetParentAttrIteratively(DOMElement* start,
                                                                 const TString& name);
