#pragma once

/// Guards recursion that is part of a contract, such as that into a caller's override.
namespace StackGuard {

/// std::length_error with the message `what` when little is left of the calling thread's stack:
/// a quarter of it, or 128 KiB when that is less. What runs on a stack of its own that the system
/// does not know as the thread's is not guarded. Costs a comparison after the first call of a
/// thread. Safe to use from several threads.
void RequireRoom(const char* what);

} // namespace StackGuard
