#include <kesplatform/TLog.h>

#include <QLoggingCategory>

#include <memory>
#include <mutex>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(Category, "kesplatform", QtDebugMsg)

void LogToQt(const TLog::Record& record)
{
    const auto text = [&record] {
        TString line = record.message;
        const TString& identifier = record.info.GetError().GetIdentifier();
        if (!identifier.IsEmpty())
            line += TString(u" (") + identifier + u")";
        return QString(line);
    };
    switch (record.severity) {
    case TLog::Trace:
    case TLog::Debug:
        qCDebug(Category).noquote() << text();
        break;
    case TLog::Info:
        qCInfo(Category).noquote() << text();
        break;
    case TLog::Warning:
        qCWarning(Category).noquote() << text();
        break;
    case TLog::Error:
    case TLog::Fatal:
        qCCritical(Category).noquote() << text();
        break;
    }
}

/// The installed sink; null stands for the default. A record on its way holds a share, so that a
/// sink may be replaced while another thread is inside it.
class SinkHolder
{
public:
    std::shared_ptr<const TLog::Sink> Get() const
    {
        const std::lock_guard guard(m_mutex);
        return m_sink;
    }

    std::shared_ptr<const TLog::Sink> Set(std::shared_ptr<const TLog::Sink> sink)
    {
        const std::lock_guard guard(m_mutex);
        return std::exchange(m_sink, std::move(sink));
    }

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const TLog::Sink> m_sink;
};

SinkHolder& GetSinkHolder()
{
    // Never destroyed: destructors of other static objects may still log.
    static auto* s_holder = new SinkHolder;
    return *s_holder;
}

} // namespace

TLog::Sink TLog::SetSink(Sink sink)
{
    auto next = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
    const auto previous = GetSinkHolder().Set(std::move(next));
    return previous == nullptr ? Sink() : *previous;
}

void LogMessage(TLog::AnySeverity severity, TString&& message, TError::ErrorInfo&& info) noexcept
{
    try {
        const TString text = std::move(message);
        const TError::ErrorInfo record = std::move(info);
        const auto sink = GetSinkHolder().Get();
        if (sink != nullptr)
            (*sink)({severity, text, record});
        else
            LogToQt({severity, text, record});
    } catch (...) {
        // A message that cannot be delivered must not take the work with it that it reports on.
    }
}

void LogMessage(TLog::AnySeverity severity, TString&& message) noexcept
{
    LogMessage(severity, std::move(message), TError::ErrorInfo::NoError());
}
