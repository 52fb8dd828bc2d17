#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kesplatform/LogicException.h>
#include <kesplatform/TLog.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What tests of element trees share.

/// The names of a subtree in document order: "a(b,c(d))".
inline std::string Outline(const DOMElement& element)
{
    std::string text = element.GetName().toStdString();
    if (element.HasChildren()) {
        char separator = '(';
        for (const auto& child : element.GetChildren()) {
            text += std::exchange(separator, ',') + Outline(*child);
        }
        text += ')';
    }
    return text;
}

/// Adds the children that an outline without its root's name describes: "b,c(d)".
inline void AddChildren(DOMElement& parent, std::string_view outline)
{
    std::vector<DOMElement*> open{&parent};
    while (!outline.empty()) {
        const std::size_t end = std::min(outline.find_first_of("(),"), outline.size());
        if (end > 0)
            open.push_back(
                open.back()->AddNewChild(TString::fromUtf8(outline.substr(0, end)), nullptr));
        outline.remove_prefix(end);
        if (outline.empty())
            break;
        // A name stays open until it is known that it has no children.
        if (outline.front() != '(')
            open.pop_back();
        outline.remove_prefix(1);
    }
}

/// The detached element that an outline describes.
inline std::unique_ptr<DOMElement> MakeTree(std::string_view outline)
{
    const std::size_t end = std::min(outline.find('('), outline.size());
    auto root = std::make_unique<DOMElement>(TString::fromUtf8(outline.substr(0, end)));
    if (end < outline.size())
        AddChildren(*root, outline.substr(end + 1, outline.size() - end - 2));
    return root;
}

/// The first element with that name in the subtree of `top`, which must be there.
inline DOMElement& Find(DOMElement& top, const char* name)
{
    std::vector<DOMElement*> open{&top};
    while (!open.empty()) {
        DOMElement* element = open.back();
        open.pop_back();
        if (element->GetName() == TString(name))
            return *element;
        for (const auto& child : element->GetChildren())
            open.push_back(child.get());
    }
    throw std::logic_error(std::string("no element ") + name);
}

inline DOMElement& Find(DOM& dom, const char* name)
{
    return Find(*dom.GetRoot(), name);
}

/// What `work` throws as a logic assertion; nothing when it throws nothing.
template <typename Work>
std::optional<LogicException> CatchAssertion(Work&& work)
{
    try {
        work();
    } catch (const LogicException& exception) {
        return exception;
    }
    return std::nullopt;
}

/// An error record that differs from those of other numbers.
inline TError::ErrorInfo MakeInfo(unsigned number)
{
    return {CorvinaError(number, TString(u"Info_") + TString::number(number)), 1, 2};
}

inline void AddError(const DOMElement& element, const char* message)
{
    element.Error(message, MakeInfo(1), false, false);
}

inline void AddWarning(const DOMElement& element, const char* message)
{
    element.Warning(message, MakeInfo(2));
}

template <typename Messages>
std::string JoinMessages(const Messages& messages)
{
    std::string text;
    for (const TString& message : messages)
        text += (text.empty() ? "" : " ") + message.toStdString();
    return text;
}

/// All errors of a document in their order, with blanks between them.
inline std::string JoinErrors(const DOM& dom)
{
    return JoinMessages(dom.GetErrors());
}

inline std::string JoinWarnings(const DOM& dom)
{
    return JoinMessages(dom.GetWarnings());
}

/// Takes all log messages of the process as long as it lives.
class LogCapture
{
public:
    struct Entry
    {
        TLog::AnySeverity severity;
        TString message;
        TError::ErrorInfo info;
    };

    LogCapture()
        : m_previous(TLog::SetSink([this](const TLog::Record& record) {
              const std::lock_guard guard(m_mutex);
              m_entries.push_back({record.severity, record.message, record.info});
          }))
    {
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture() { TLog::SetSink(m_previous); }

    std::size_t Count() const
    {
        const std::lock_guard guard(m_mutex);
        return m_entries.size();
    }
    Entry At(std::size_t index) const
    {
        const std::lock_guard guard(m_mutex);
        return m_entries.at(index);
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
    TLog::Sink m_previous;
};
