// Recording, asking for, listing and clearing the errors and warnings of a document.

#include <kescorexml/DOM.h>

#include "tree/DiagnosticsAccess.h"
#include "tree/RegistryMessages.h"
#include "tree/RegistrySearch.h"

#include <kescorexml/DOMElement.h>

#include <type_traits>
#include <utility>
#include <vector>

namespace {

using WarningMessage = DOM::DOMWarningMessage;
using Kind = XMLDiagnostic::Kind;

// All that is known of a warning is its message.

TString MessageOf(const WarningMessage& warning)
{
    return warning.m_message;
}

template <typename RecordedError>
TString MessageOf(const RecordedError& error)
{
    return error.GetMessage();
}

XMLDiagnostic DiagnosticOf(const WarningMessage& warning)
{
    return {Kind::Warning, warning.m_message};
}

template <typename RecordedError>
XMLDiagnostic DiagnosticOf(const RecordedError& error)
{
    return error.GetDiagnostic();
}

const TError::ErrorInfo& InfoOf(const WarningMessage& warning)
{
    return warning.m_info;
}

template <typename RecordedError>
const TError::ErrorInfo& InfoOf(const RecordedError& error)
{
    return error.m_error.m_info;
}

template <typename Message, typename Container>
void Collect(const DiagnosticsRegistry<Message>& registry, const DOMElement& top, Container& out)
{
    using Listed = typename Container::value_type;
    VisitSubtree(registry, top, [&out](const Message& message) {
        if constexpr (std::is_same_v<Listed, TString>)
            out.push_back(MessageOf(message));
        else if constexpr (std::is_same_v<Listed, XMLDiagnostic>)
            out.push_back(DiagnosticOf(message));
        else
            out.push_back(InfoOf(message));
    });
}

TString Join(const std::vector<TString>& messages)
{
    TString joined;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        if (i > 0)
            joined.append(u'\n');
        joined.append(messages[i]);
    }
    return joined;
}

} // namespace

// Recording

DOM::RecordedError DOM::MakeError(const XMLDiagnostic& diagnostic, const TError::ErrorInfo& info,
                                  bool reported, bool cancel)
{
    return {{diagnostic.m_text, info, reported, cancel}, diagnostic.m_source};
}

void DiagnosticsAccess::SetSkippedEntities(DOM& document,
                                           const std::vector<SkippedEntity>& entities)
{
    document.m_skippedEntities = entities;
}

void DiagnosticsAccess::PushErrors(DOMElement& element, const std::vector<XMLDiagnostic>& errors,
                                   const std::vector<TError::ErrorInfo>& infos)
{
    if (errors.empty())
        return;
    DOM& document = *element.GetDOMManager();
    const ScopedLock lock(document.m_lock);
    MessageSequence<DOM::RecordedError> messages;
    const auto place = FindMessages(document.m_errors, element);
    if (place != document.m_errors.end())
        messages = place->second.messages;
    for (std::size_t i = 0; i < errors.size(); ++i)
        messages.PushBack(DOM::MakeError(errors[i], infos[i], false, false));
    GetListOrDefaultForNode(element, document.m_errors) = std::move(messages);
}

void DOM::PushError(const DOMElement& element, const TString& message,
                    const TError::ErrorInfo& info, bool reported, bool cancel)
{
    const ScopedLock lock(m_lock);
    Record(m_errors, element, MakeError({Kind::Error, message}, info, reported, cancel), false);
}

void DOM::InsertError(const DOMElement& element, const TString& message,
                      const TError::ErrorInfo& info, bool reported)
{
    const ScopedLock lock(m_lock);
    Record(m_errors, element, MakeError({Kind::Error, message}, info, reported, false), true);
}

void DOM::PushWarning(const DOMElement& element, const TString& message,
                      const TError::ErrorInfo& info)
{
    const ScopedLock lock(m_lock);
    Record(m_warnings, element, WarningMessage{message, info}, false);
}

void DOM::InsertWarning(const DOMElement& element, const TString& message,
                        const TError::ErrorInfo& info)
{
    const ScopedLock lock(m_lock);
    Record(m_warnings, element, WarningMessage{message, info}, true);
}

// Asking

bool DOM::HasErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyMessageInSubtree(m_errors, element, [](const RecordedError&) { return true; });
}

bool DOM::HasErrors() const
{
    return HasErrors(*m_root);
}

bool DOM::HasUnreportedErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyMessageInSubtree(m_errors, element, [](const RecordedError& recorded) {
        return !recorded.m_error.m_reported;
    });
}

bool DOM::HasUnreportedErrors() const
{
    return HasUnreportedErrors(*m_root);
}

bool DOM::HasCancelErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyMessageInSubtree(
        m_errors, element, [](const RecordedError& recorded) { return recorded.m_error.m_cancel; });
}

bool DOM::HasCancelErrors() const
{
    return HasCancelErrors(*m_root);
}

bool DOM::HasOnlyCancelErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return !AnyMessageInSubtree(m_errors, element, [](const RecordedError& recorded) {
        return !recorded.m_error.m_cancel;
    });
}

bool DOM::HasOnlyCancelErrors() const
{
    return HasOnlyCancelErrors(*m_root);
}

bool DOM::HasWarnings(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyInSubtree(m_warnings, element,
                        [](const MessageSequence<WarningMessage>&) { return true; });
}

bool DOM::HasWarnings() const
{
    return HasWarnings(*m_root);
}

// Listing

template <typename Container>
void DOM::GetErrors(const DOMElement& element, Container& out) const
{
    Collect(m_errors, element, out);
}

template <typename Container>
void DOM::GetWarnings(const DOMElement& element, Container& out) const
{
    Collect(m_warnings, element, out);
}

void DOM::GetErrors(const DOMElement& element, std::list<TString>& out) const
{
    const ScopedReadLock lock(m_lock);
    GetErrors<std::list<TString>>(element, out);
}

std::list<TString> DOM::GetErrors() const
{
    std::list<TString> messages;
    GetErrors(*m_root, messages);
    return messages;
}

std::list<TError::ErrorInfo> DOM::GetMetadataForErrors() const
{
    const ScopedReadLock lock(m_lock);
    std::list<TError::ErrorInfo> infos;
    GetErrors(*m_root, infos);
    return infos;
}

std::vector<XMLDiagnostic> DOM::GetErrorDiagnostics(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    std::vector<XMLDiagnostic> diagnostics;
    Collect(m_errors, element, diagnostics);
    return diagnostics;
}

std::vector<XMLDiagnostic> DOM::GetErrorDiagnostics() const
{
    return GetErrorDiagnostics(*m_root);
}

TString DOM::GetConcatenatedErrors() const
{
    const ScopedReadLock lock(m_lock);
    std::vector<TString> messages;
    GetErrors(*m_root, messages);
    return Join(messages);
}

void DOM::GetWarnings(const DOMElement& element, std::list<TString>& out) const
{
    const ScopedReadLock lock(m_lock);
    GetWarnings<std::list<TString>>(element, out);
}

std::list<TString> DOM::GetWarnings() const
{
    std::list<TString> messages;
    GetWarnings(*m_root, messages);
    return messages;
}

std::list<TError::ErrorInfo> DOM::GetMetadataForWarnings() const
{
    const ScopedReadLock lock(m_lock);
    std::list<TError::ErrorInfo> infos;
    GetWarnings(*m_root, infos);
    return infos;
}

std::vector<XMLDiagnostic> DOM::GetWarningDiagnostics(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    std::vector<XMLDiagnostic> diagnostics;
    Collect(m_warnings, element, diagnostics);
    return diagnostics;
}

std::vector<XMLDiagnostic> DOM::GetWarningDiagnostics() const
{
    return GetWarningDiagnostics(*m_root);
}

TString DOM::GetConcatenatedWarnings() const
{
    const ScopedReadLock lock(m_lock);
    std::vector<TString> messages;
    GetWarnings(*m_root, messages);
    return Join(messages);
}

// Named in full, for there are overloads of these names that are no templates.
template KESCOREXML_EXPORT void DOM::GetErrors<std::list<TString>>(const DOMElement&,
                                                                   std::list<TString>&) const;
template KESCOREXML_EXPORT void
DOM::GetErrors<std::list<TError::ErrorInfo>>(const DOMElement&,
                                             std::list<TError::ErrorInfo>&) const;
template KESCOREXML_EXPORT void DOM::GetErrors<std::vector<TString>>(const DOMElement&,
                                                                     std::vector<TString>&) const;
template KESCOREXML_EXPORT void DOM::GetWarnings<std::list<TString>>(const DOMElement&,
                                                                     std::list<TString>&) const;
template KESCOREXML_EXPORT void
DOM::GetWarnings<std::list<TError::ErrorInfo>>(const DOMElement&,
                                               std::list<TError::ErrorInfo>&) const;
template KESCOREXML_EXPORT void DOM::GetWarnings<std::vector<TString>>(const DOMElement&,
                                                                       std::vector<TString>&) const;

// Clearing

void DOM::ClearErrors(const DOMElement& element)
{
    const ScopedLock lock(m_lock);
    ClearSubtree(m_errors, element);
}

void DOM::ClearErrors()
{
    ClearErrors(*m_root);
}

void DOM::ClearWarnings(const DOMElement& element)
{
    const ScopedLock lock(m_lock);
    ClearSubtree(m_warnings, element);
}

void DOM::ClearWarnings()
{
    ClearWarnings(*m_root);
}

void DOM::EraseErrorsAndWarningsForNode(const DOMElement& element)
{
    const ScopedLock lock(m_lock);
    EraseMessages(m_errors, element);
    EraseMessages(m_warnings, element);
}

void DOM::ClearAllErrorsAndWarnings()
{
    const ScopedLock lock(m_lock);
    m_errors.clear();
    m_warnings.clear();
}
