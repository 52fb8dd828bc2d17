#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TError.h>
#include <kesplatform/TFormatString.h>
#include <kesplatform/TString.h>

#include <functional>

namespace TLog {

enum AnySeverity
{
    Trace = 0,
    Debug = 1,
    Info = 2,
    Warning = 3,
    Error = 4,
    Fatal = 5
};

/// One message on its way to the sink. The references end with the call of the sink.
struct Record
{
    /// How grave it is.
    AnySeverity severity;
    /// The text, valid during the call.
    const TString& message;
    /// The record that belongs to it, valid during the call.
    const TError::ErrorInfo& info;
};

/// Receives every record, on the thread that logs, possibly on several at once.
using Sink = std::function<void(const Record&)>;

/// Installs `sink` for the whole process and returns the one that was there, which may still be at
/// work on other threads. An empty sink brings back the default, Qt's categorised logging under the
/// category "kesplatform", where Fatal is reported as critical: logging never ends the process.
/// Safe to use from several threads.
KESPLATFORM_EXPORT Sink SetSink(Sink sink);

} // namespace TLog

/// Hands a message to the installed sink. What the sink throws is dropped. Safe to use from
/// several threads.
KESPLATFORM_EXPORT void LogMessage(TLog::AnySeverity severity, TString&& message,
                                   TError::ErrorInfo&& info) noexcept;
KESPLATFORM_EXPORT void LogMessage(TLog::AnySeverity severity, TString&& message) noexcept;
