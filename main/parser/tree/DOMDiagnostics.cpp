// Recording, asking for, listing and clearing the errors and warnings of a document.

#include <kescorexml/DOM.h>

#include "tree/RegistryEntries.h"
#include "tree/RegistrySearch.h"

#include <kescorexml/DOMElement.h>

#include <type_traits>
#include <vector>

namespace {

using ErrorMessage = DOM::DOMErrorMessage;
using WarningMessage = DOM::DOMWarningMessage;

template <typename Message, typename Container>
void Collect(const DiagnosticsRegistry<Message>& registry, const DOMElement& top, Container& out)
{
    VisitSubtree(registry, top, [&out](const Message& message) {
        if constexpr (std::is_same_v<typename Container::value_type, TString>)
            out.push_back(message.m_message);
        else
            out.push_back(message.m_info);
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

void DOM::PushError(const DOMElement& element, const TString& message,
                    const TError::ErrorInfo& info, bool reported, bool cancel)
{
    const ScopedLock lock(m_lock);
    Record(m_errors, element, ErrorMessage{message, info, reported, cancel}, false);
}

void DOM::InsertError(const DOMElement& element, const TString& message,
                      const TError::ErrorInfo& info, bool reported)
{
    const ScopedLock lock(m_lock);
    Record(m_errors, element, ErrorMessage{message, info, reported, false}, true);
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
    return AnyMessageInSubtree(m_errors, element, [](const ErrorMessage&) { return true; });
}

bool DOM::HasErrors() const
{
    return HasErrors(*m_root);
}

bool DOM::HasUnreportedErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyMessageInSubtree(m_errors, element,
                               [](const ErrorMessage& message) { return !message.m_reported; });
}

bool DOM::HasUnreportedErrors() const
{
    return HasUnreportedErrors(*m_root);
}

bool DOM::HasCancelErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return AnyMessageInSubtree(m_errors, element,
                               [](const ErrorMessage& message) { return message.m_cancel; });
}

bool DOM::HasCancelErrors() const
{
    return HasCancelErrors(*m_root);
}

bool DOM::HasOnlyCancelErrors(const DOMElement& element) const
{
    const ScopedReadLock lock(m_lock);
    return !AnyMessageInSubtree(m_errors, element,
                                [](const ErrorMessage& message) { return !message.m_cancel; });
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
    EraseEntry(m_errors, element);
    EraseEntry(m_warnings, element);
}

void DOM::ClearAllErrorsAndWarnings()
{
    const ScopedLock lock(m_lock);
    m_errors.clear();
    m_warnings.clear();
}
