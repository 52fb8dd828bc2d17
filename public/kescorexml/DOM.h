#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/PathRenames.h>
#include <kescorexml/SkippedEntity.h>
#include <kescorexml/XMLDiagnostic.h>
#include <kescorexml/detail/Diagnostics.h>
#include <kesplatform/QualifiedName.h>
#include <kesplatform/TError.h>
#include <kesplatform/TReadWriteLock.h>
#include <kesplatform/TString.h>

#include <list>
#include <map>
#include <memory>
#include <utility>
#include <vector>

class DOMElement;

/// A document: owns the root of one element tree and keeps, beside it, what is said about the
/// tree's elements: errors and warnings by element, and rename maps.
///
/// The root is a synthetic element named "Document"; the XML document element is its first child.
/// Every listing of diagnostics comes in the order of DOMElementTraversal: an element's own
/// messages in their order, then those of its children's subtrees from the last child to the first.
///
/// Different objects may be used from different threads. Of one, diagnostics and renames may be
/// written and read from several threads as long as nobody changes the tree: one re-entrant
/// read-write lock guards all state but the tree itself, and every call takes it but for those that
/// look at the tree alone or say so. Operations on two documents lock the one at the higher address
/// first.
///
/// @code
/// const auto document = DOMParser().ParseXmlString("<a>\n<b>tea</a>", "a.xml");
/// for (const TString& error : document->GetErrors())
///     std::cout << error << '\n'; // Fatal Error(2,9): expected end of tag 'b' (id: a.xml)
/// @endcode
class KESCOREXML_EXPORT DOM
{
public:
    /// An error of an element.
    struct DOMErrorMessage
    {
        /// What people read.
        TString m_message;
        /// What programs read.
        TError::ErrorInfo m_info;
        /// The user has been told already.
        bool m_reported;
        /// The user cancelled; not a real fault.
        bool m_cancel;
    };

    /// A warning of an element.
    struct DOMWarningMessage
    {
        /// What people read.
        TString m_message;
        /// What programs read.
        TError::ErrorInfo m_info;
    };

    /// The flag is kept for the document's users.
    DOM(bool restrictExternalPaths = false);
    DOM(const DOM&) = delete;
    DOM& operator=(const DOM&) = delete;
    /// Elements that were removed from the tree and still live become detached.
    virtual ~DOM();

    /// The flag that the document was made with.
    [[nodiscard]] bool GetRestrictExternalPaths() const;

    /// Makes this document a copy of `other`: tree, diagnostics, renames and settings. From itself
    /// it keeps the tree and clears the diagnostics.
    void DeepCopy(const DOM& other);

    /// Compares the trees and nothing else.
    [[nodiscard]] bool operator==(const DOM& other) const;
    [[nodiscard]] bool operator!=(const DOM& other) const { return !(*this == other); }

    /// The synthetic element, which lives as long as this document.
    [[nodiscard]] DOMElement* GetRoot() noexcept { return m_root.get(); }
    [[nodiscard]] const DOMElement* GetRoot() const noexcept { return m_root.get(); }
    /// The root's first child, or null.
    [[nodiscard]] DOMElement* GetDocumentRoot() noexcept;
    [[nodiscard]] const DOMElement* GetDocumentRoot() const noexcept;
    /// The first element with that name in document order, at most 1000 levels below the root;
    /// null when there is none.
    [[nodiscard]] DOMElement* GetElement(const TString& name);
    [[nodiscard]] const DOMElement* GetElement(const TString& name) const;

    /// The entities to which the text refers that this document was parsed from, although nobody
    /// declares them, in the order of their first references: the tree lacks what they stand for.
    /// Empty for other documents, and when the text was not read to its end. The reference, valid
    /// until a DeepCopy to this document, is read without the lock.
    [[nodiscard]] const std::vector<SkippedEntity>& GetSkippedEntities() const noexcept
    {
        return m_skippedEntities;
    }

    /// A number that is kept for the document's users.
    void SetDSValidationCancelType(int type);
    [[nodiscard]] int GetDSValidationCancelType() const;
    /// The data source whose name RenameField keeps.
    void SetProtectedDataSourceName(const TString& name);
    /// The reference, valid as long as this document, is read without the lock; do not race it with
    /// the setter.
    [[nodiscard]] const TString& GetProtectedDataSourceName() const;
    /// Keeps a copy of the renames.
    void SetPathRenames(const PathRenames& renames);
    /// The reference, valid as long as this document, is read without the lock; do not race it with
    /// the setter.
    [[nodiscard]] const PathRenames& GetPathRenames() const;

    /// Adds an error of an element after those that it has.
    void PushError(const DOMElement& element, const TString& message, const TError::ErrorInfo& info,
                   bool reported, bool cancel);
    /// Puts the message first; it is no cancellation.
    void InsertError(const DOMElement& element, const TString& message,
                     const TError::ErrorInfo& info, bool reported);
    /// Adds a warning of an element after those that it has.
    void PushWarning(const DOMElement& element, const TString& message,
                     const TError::ErrorInfo& info);
    /// Puts the message first.
    void InsertWarning(const DOMElement& element, const TString& message,
                       const TError::ErrorInfo& info);

    // Each of these asks about an element and its descendants; about the whole registry when the
    // element has no parent, and without element. The whole registry holds messages of elements of
    // other trees, too, even of such as are gone (see MoveErrorsAndWarningsTo). Takes time for each
    // element of the subtree or, if they are fewer, for each element in the registry and its
    // ancestors.

    /// Whether there is an error, cancellations included.
    bool HasErrors(const DOMElement& element) const;
    bool HasErrors() const;
    /// Whether there is an error that the user has not been told.
    bool HasUnreportedErrors(const DOMElement& element) const;
    bool HasUnreportedErrors() const;
    /// Whether there is a cancellation.
    bool HasCancelErrors(const DOMElement& element) const;
    bool HasCancelErrors() const;
    /// No error that is not a cancellation: true without any error, too.
    bool HasOnlyCancelErrors(const DOMElement& element) const;
    bool HasOnlyCancelErrors() const;
    /// Unlike HasErrors this asks which elements the registry has a list for: not one whose
    /// messages were adopted away, and a parentless element has warnings as soon as there is any
    /// list.
    bool HasWarnings(const DOMElement& element) const;
    bool HasWarnings() const;

    /// Appends to `out`.
    void GetErrors(const DOMElement& element, std::list<TString>& out) const;
    [[nodiscard]] std::list<TString> GetErrors() const;
    /// The same errors taken apart, in the same order: those of the parser with their positions in
    /// the document. They stay what they are when elements are copied or moved.
    [[nodiscard]] std::vector<XMLDiagnostic> GetErrorDiagnostics(const DOMElement& element) const;
    [[nodiscard]] std::vector<XMLDiagnostic> GetErrorDiagnostics() const;
    /// One record for each error, in the same order.
    [[nodiscard]] std::list<TError::ErrorInfo> GetMetadataForErrors() const;
    /// All messages joined with line feeds.
    [[nodiscard]] TString GetConcatenatedErrors() const;
    /// Appends to `out`.
    void GetWarnings(const DOMElement& element, std::list<TString>& out) const;
    [[nodiscard]] std::list<TString> GetWarnings() const;
    /// The same warnings taken apart, in the same order.
    [[nodiscard]] std::vector<XMLDiagnostic> GetWarningDiagnostics(const DOMElement& element) const;
    [[nodiscard]] std::vector<XMLDiagnostic> GetWarningDiagnostics() const;
    /// One record for each warning, in the same order.
    [[nodiscard]] std::list<TError::ErrorInfo> GetMetadataForWarnings() const;
    /// All messages joined with line feeds.
    [[nodiscard]] TString GetConcatenatedWarnings() const;

    /// Appends to a list of TString, a list of TError::ErrorInfo or a vector of TString. Takes no
    /// lock: do not race it with who records or clears messages.
    template <typename Container>
    void GetErrors(const DOMElement& element, Container& out) const;
    /// The same for warnings.
    template <typename Container>
    void GetWarnings(const DOMElement& element, Container& out) const;

    /// Of the element and its descendants; everything when the element has no parent.
    void ClearErrors(const DOMElement& element);
    void ClearErrors();
    /// The same for warnings.
    void ClearWarnings(const DOMElement& element);
    void ClearWarnings();
    /// Of this one element.
    void EraseErrorsAndWarningsForNode(const DOMElement& element);
    /// Of all elements.
    void ClearAllErrorsAndWarnings();
    /// Moves the element's own messages from the document that it is attached to into this one,
    /// to `target` or, when that is null, to the element. What the receiver has already wins, and
    /// the moved messages are dropped. Nothing happens for a detached element.
    void AdoptErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target);
    /// The same, but the element keeps its messages.
    void CopyErrorsAndWarningsForNode(const DOMElement& node, const DOMElement* target);
    /// Hands all messages to `other`, whose own are dropped. They still are those of this
    /// document's elements: questions about the root of `other` count them, even when the elements
    /// are gone, until they are cleared there; listings of its tree do not show them.
    void MoveErrorsAndWarningsTo(DOM& other);

    /// From now on RenameField gives `to` for `from`.
    void AddFieldRename(const FieldName& from, const FieldName& to);
    /// A caption is renamed only once; a second time is a logic assertion.
    void AddCaptionRename(const TString& oldCaption, const TString& newCaption);
    /// From now on RenameDataSource gives `to` for `from`.
    void AddDataSourceRename(const TString& from, const TString& to);
    /// From now on RenameDataConnection gives `to` for `from`.
    void AddDataConnectionRename(const TString& from, const TString& to);
    /// From now on RenameMapSource gives `to` for `from`.
    void AddMapSourceRename(const TString& from, const TString& to);
    /// The data source first, then the field under its new data source. Names of the protected
    /// data source stay as they are.
    [[nodiscard]] FieldName RenameField(FieldName name) const;
    /// The new name, or `name` itself.
    [[nodiscard]] TString RenameDataSource(const TString& name) const;
    /// The new name, or `name` itself.
    [[nodiscard]] TString RenameDataConnection(const TString& name) const;
    /// The new name, or `name` itself.
    [[nodiscard]] TString RenameMapSource(const TString& name) const;
    /// The new caption, or `caption` itself.
    [[nodiscard]] TString GetCaptionRenameIfItExists(const TString& caption) const;
    /// The first old name, in ascending order, that was renamed to `newName`, or `newName`.
    /// Linear in the number of renames.
    [[nodiscard]] TString UnRenameDataSource(const TString& newName) const;

private:
    friend class DOMElement;
    friend class DiagnosticsAccess;
    friend class ElementCopy;
    friend class ElementInsertion;
    friend class ElementLife;

    enum SubtreeScope
    {
        TopAndDescendants,
        DescendantsOnly
    };

    /// An error as it is kept.
    struct KESCOREXML_NO_EXPORT RecordedError
    {
        XMLDiagnostic GetDiagnostic() const { return {m_error.m_message, m_source}; }
        [[nodiscard]] TString GetMessage() const { return m_source.MakeMessage(m_error.m_message); }

        /// Its message is only the text of the diagnostic, of which people read all.
        DOMErrorMessage m_error;
        XMLDiagnostic::Source m_source;
    };

    using NameMap = std::map<TString, TString>;

    KESCOREXML_NO_EXPORT static TString Lookup(const NameMap& names, const TString& name);
    /// Moves the diagnostics of a subtree from its document, if it has one, into this one, and
    /// those of that document's root when the topmost elements that move are its children. Happens
    /// whole or not at all.
    KESCOREXML_NO_EXPORT void AdoptSubtree(const DOMElement& top, SubtreeScope scope);
    /// Copies the diagnostics of each first element to the second one, which is attached here and
    /// keeps what it has. Happens whole or not at all.
    KESCOREXML_NO_EXPORT void
    CopyForClones(const DOM& from,
                  const std::vector<std::pair<const DOMElement*, const DOMElement*>>& pairs);
    KESCOREXML_NO_EXPORT static RecordedError MakeError(const XMLDiagnostic& diagnostic,
                                                        const TError::ErrorInfo& info,
                                                        bool reported, bool cancel);

    std::unique_ptr<DOMElement> m_root;
    std::map<FieldName, FieldName> m_fieldRenames;
    NameMap m_captionRenames;
    NameMap m_dataSourceRenames;
    NameMap m_dataConnectionRenames;
    NameMap m_mapSourceRenames;
    DiagnosticsRegistry<RecordedError> m_errors;
    DiagnosticsRegistry<DOMWarningMessage> m_warnings;
    PathRenames m_pathRenames;
    std::vector<SkippedEntity> m_skippedEntities;
    TString m_protectedDataSourceName;
    int m_dsValidationCancelType = 0;
    bool m_restrictExternalPaths;
    mutable TReadWriteLock m_lock;
    /// First of the attached elements that are in no tree.
    ElementIdentity* m_firstLoose = nullptr;
};
