#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace art {

/// One finished activity. A plain value, but for the name.
struct ActivityRecord
{
    /// What was done; valid during the call of the sink.
    std::string_view name;
    /// In the order added; numbers as decimal text.
    std::vector<std::pair<TString, TString>> attributes;
    /// How long it took.
    std::int64_t nanoseconds = 0;
    /// Growth of the process's allocated heap from begin to end of the activity, in bytes;
    /// negative when it shrank. Other threads' allocations count too.
    std::int64_t memoryUsed = 0;
};

/// Receives finished activities, on the threads that they ran on, possibly on several at once.
class KESPLATFORM_EXPORT ActivitySink
{
public:
    virtual ~ActivitySink();
    /// Called once for each activity.
    virtual void ActivityFinished(const ActivityRecord& record) = 0;
};

/// Installs a sink for the whole process; null switches tracing off. Activities keep the sink that
/// they opened with, and keep it alive. Safe to use from several threads.
KESPLATFORM_EXPORT void SetActivitySink(std::shared_ptr<ActivitySink> sink);

/// Traces one activity, on the thread that makes and ends it. Open, and more than one atomic load,
/// only while a sink is installed. What a sink throws is dropped. Different objects may be used
/// from different threads.
class KESPLATFORM_EXPORT ActivityScope
{
public:
    /// `name` must outlive the scope.
    explicit ActivityScope(std::string_view name) noexcept;
    ~ActivityScope();
    ActivityScope(const ActivityScope&) = delete;
    ActivityScope& operator=(const ActivityScope&) = delete;

    /// Whether no sink was installed when it began.
    [[nodiscard]] bool IsClosed() const noexcept { return m_sink == nullptr; }
    /// Nothing when closed.
    void AddAttribute(const TString& key, const TString& value);
    void AddAttribute(const TString& key, std::int64_t value);

private:
    std::shared_ptr<ActivitySink> m_sink;
    ActivityRecord m_record;
    std::int64_t m_start = 0;
    std::int64_t m_memoryAtStart = 0;
};

} // namespace art
