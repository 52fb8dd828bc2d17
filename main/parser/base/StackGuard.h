#pragma once

#include <cstddef>

/// Guards recursion that cannot be avoided: into a caller's override, or inside of the scanner.
namespace StackGuard {

/// False when less than `bytes` and a reserve is left of the calling thread's stack: a quarter of
/// it, or 128 KiB when that is less. What runs on a stack of its own that the system does not know
/// as the thread's is not guarded. Costs a comparison after the first call of a thread. Safe to use
/// from several threads.
bool HasRoom(std::size_t bytes = 0) noexcept;

/// std::length_error with the message `what` unless HasRoom.
void RequireRoom(const char* what);

} // namespace StackGuard
