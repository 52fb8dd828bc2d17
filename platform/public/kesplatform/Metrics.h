#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace Metrics {

/// Receives what scopes report, on the threads of the scopes, possibly on several at once.
class KESPLATFORM_EXPORT Sink
{
public:
    virtual ~Sink();
    // What views show is valid during the call.

    /// A scope begins; `flags` are those of its maker.
    virtual void ScopeOpened(std::string_view name, std::uint64_t flags) = 0;
    /// A number that belongs to an open scope.
    virtual void ValueEmitted(std::string_view scope, std::string_view key, std::int64_t value) = 0;
    /// Bytes that belong to an open scope.
    virtual void BytesEmitted(std::string_view scope, std::string_view key,
                              std::string_view bytes) = 0;
    /// The scope that was opened last on this thread, and not closed yet, closes.
    virtual void ScopeClosed(std::string_view name, std::int64_t nanoseconds) = 0;
};

/// Installs a sink for the whole process; null switches metrics off. Scopes keep the sink that
/// they opened with, and keep it alive. Safe to use from several threads.
KESPLATFORM_EXPORT void SetSink(std::shared_ptr<Sink> sink);

/// Measures one piece of work, on the thread that begins and ends it. Open, and more than one
/// atomic load, only while a sink is installed. What a sink throws is dropped. Different objects
/// may be used from different threads.
class KESPLATFORM_EXPORT Scope
{
public:
    /// `name` must outlive the scope. `flags` are handed to the sink.
    explicit Scope(std::string_view name, std::uint64_t flags = 0) noexcept;
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

    /// Whether a sink listens to this scope.
    [[nodiscard]] bool IsOpen() const noexcept { return m_sink != nullptr; }
    /// Hands a number or bytes to the sink, if one listens.
    void Emit(std::string_view key, std::int64_t value) const noexcept;
    void Emit(std::string_view key, std::string_view bytes) const noexcept;

private:
    std::shared_ptr<Sink> m_sink;
    std::string_view m_name;
    std::int64_t m_start = 0;
};

} // namespace Metrics
