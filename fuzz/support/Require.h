#pragma once

#include <sstream>
#include <stdexcept>
#include <string>

/// What a target throws when the library does not do what it should. A fuzzer ends at it, a test
/// fails with its message.
class Mismatch : public std::logic_error
{
public:
    using std::logic_error::logic_error;
};

inline void Require(bool holds, const std::string& promise)
{
    if (!holds)
        throw Mismatch(promise);
}

/// Both sides must be printable.
template <typename Actual, typename Expected>
void RequireEqual(const Actual& actual, const Expected& expected, const std::string& what)
{
    if (actual == expected)
        return;
    std::ostringstream message;
    message << what << "\nis:       " << actual << "\nexpected: " << expected;
    throw Mismatch(message.str());
}
