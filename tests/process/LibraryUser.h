#pragma once

/// Uses the library in a process that has just begun or is about to end. Returns null, or what went
/// wrong. `language` is an ISO string; its messages are to be translated unless `mayBeEnglish`.
using UseLibraryFunction = const char* (*)(const char* language, bool mayBeEnglish);

/// The name under which a module has such a function.
inline constexpr const char* c_useLibrary = "UseLibrary";
