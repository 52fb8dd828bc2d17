#pragma once

#include <cstddef>
#include <optional>

/// The bytes of heap in use by this process; nothing where the system does not tell.
std::optional<std::size_t> GetHeapInUse();
