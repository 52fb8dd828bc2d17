#pragma once

#include <kesplatform/ActivityScope.h>
#include <kesplatform/Metrics.h>

#include <memory>
#include <string>
#include <vector>

/// Installs a metrics sink for the life of this object. It writes down "+name" and "-name" for
/// scopes and "scope key=value" for what they emit.
class RecordingMetrics
{
public:
    RecordingMetrics() { Metrics::SetSink(m_sink); }
    ~RecordingMetrics() { Metrics::SetSink(nullptr); }
    RecordingMetrics(const RecordingMetrics&) = delete;
    RecordingMetrics& operator=(const RecordingMetrics&) = delete;

    const std::vector<std::string>& GetLines() const { return m_sink->lines; }

private:
    class LineSink : public Metrics::Sink
    {
    public:
        void ScopeOpened(std::string_view name, std::uint64_t) override
        {
            lines.push_back("+" + std::string(name));
        }
        void ValueEmitted(std::string_view scope, std::string_view key, std::int64_t value) override
        {
            lines.push_back(std::string(scope) + " " + std::string(key) + "=" +
                            std::to_string(value));
        }
        void BytesEmitted(std::string_view scope, std::string_view key,
                          std::string_view bytes) override
        {
            lines.push_back(std::string(scope) + " " + std::string(key) + "=" + std::string(bytes));
        }
        void ScopeClosed(std::string_view name, std::int64_t) override
        {
            lines.push_back("-" + std::string(name));
        }

        std::vector<std::string> lines;
    };

    std::shared_ptr<LineSink> m_sink = std::make_shared<LineSink>();
};

/// Installs an activity sink for the life of this object and keeps what it receives.
class RecordingActivities
{
public:
    RecordingActivities() { art::SetActivitySink(m_sink); }
    ~RecordingActivities() { art::SetActivitySink(nullptr); }
    RecordingActivities(const RecordingActivities&) = delete;
    RecordingActivities& operator=(const RecordingActivities&) = delete;

    const std::vector<art::ActivityRecord>& GetRecords() const { return m_sink->records; }

private:
    class RecordSink : public art::ActivitySink
    {
    public:
        void ActivityFinished(const art::ActivityRecord& record) override
        {
            records.push_back(record);
        }

        std::vector<art::ActivityRecord> records;
    };

    std::shared_ptr<RecordSink> m_sink = std::make_shared<RecordSink>();
};
