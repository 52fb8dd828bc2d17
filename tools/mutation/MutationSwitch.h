// Included by the sources into which tools/mutation has planted faults, and by the recorder that it
// links into their tests. All objects and child processes of a test program share one table, a file
// that the environment variable MUTATION_TABLE names: which fault is on (0: none), and which
// switches were passed since the recorder last cleared them. Without the variable all faults are
// off.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/mman.h>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>

namespace mutation {
// As tools/mutation/trial.py makes it. A byte a fault, of which that of fault n is 1 once its
// switch was passed.
constexpr std::uint32_t c_maximumFaults = 65532;

struct Table
{
    std::uint32_t selected;
    unsigned char passed[c_maximumFaults];
};

inline Table g_idle{};
inline Table* g_table = &g_idle;

// Before any other initialiser of the object, since those may pass switches too. Once for each
// object that holds a g_table of its own.
[[gnu::constructor(101)]] inline void MapTable()
{
    char const* path = std::getenv("MUTATION_TABLE");
    if (!path || g_table != &g_idle)
        return;
    int const file = open(path, O_RDWR | O_CLOEXEC);
    if (file < 0)
        return;
    void* memory = mmap(nullptr, sizeof(Table), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (memory != MAP_FAILED)
        g_table = static_cast<Table*>(memory);
}

// Whether fault n is on. Never in constant expressions, which keep their values.
constexpr bool On(std::uint32_t n)
{
    if (std::is_constant_evaluated())
        return false;
    Table* const table = g_table;
    table->passed[n] = 1;
    return table->selected == n;
}

constexpr bool Flip(std::uint32_t n, bool value)
{
    return On(n) ? !value : value;
}

// The type stays that of the value, so that overloads and templates stay those of the source.
template <typename T>
constexpr T More(std::uint32_t n, T value)
{
    return On(n) ? static_cast<T>(value + 1) : value;
}

template <typename T>
constexpr T Less(std::uint32_t n, T value)
{
    return On(n) ? static_cast<T>(value - 1) : value;
}
} // namespace mutation
