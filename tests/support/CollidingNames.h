#pragma once

#include <string>
#include <vector>

/// Different names whose hashes are the same for the scanner, whatever the size of its table: it
/// adds up the units of a name with powers of 38, and "bA" and "ag" give the same.
inline std::vector<std::string> MakeCollidingNames(unsigned count)
{
    unsigned pairs = 1;
    while ((count - 1) >> pairs != 0)
        ++pairs;
    std::vector<std::string> names(count);
    for (unsigned i = 0; i < count; ++i) {
        for (unsigned bit = 0; bit < pairs; ++bit)
            names[i] += (i >> bit & 1U) != 0 ? "bA" : "ag";
    }
    return names;
}
