#include <kesplatform/Unicode.h>

#include "Utf8Bytes.h"

#include <cstring>

std::size_t Unicode::normalizeLineEndings(char* text, std::size_t length) noexcept
{
    char* const end = text + length;
    // Texts without CR, which are most, cost one search; otherwise whole lines move at a time.
    char* from = length == 0 ? nullptr : static_cast<char*>(std::memchr(text, '\r', length));
    if (from == nullptr)
        return length;
    char* to = from;
    while (from != end) {
        ++from;
        *to++ = '\n';
        if (from != end && *from == '\n')
            ++from;
        const auto rest = static_cast<std::size_t>(end - from);
        char* next = rest == 0 ? nullptr : static_cast<char*>(std::memchr(from, '\r', rest));
        if (next == nullptr)
            next = end;
        const auto line = static_cast<std::size_t>(next - from);
        std::memmove(to, from, line);
        to += line;
        from = next;
    }
    return static_cast<std::size_t>(to - text);
}

std::size_t Unicode::findInvalidUtf8(std::string_view bytes) noexcept
{
    return Utf8Bytes::FindInvalid(bytes);
}
