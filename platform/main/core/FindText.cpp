#include "FindText.h"

#include <QStringView>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t c_none = std::u16string_view::npos;

// The plain search may compare this many units for each unit of text that it passes before it
// gives way to the search that is slower to start but never quadratic.
constexpr std::size_t c_patience = 8;

bool Equals(const char16_t* a, const char16_t* b, std::size_t length) noexcept
{
    return std::memcmp(a, b, length * sizeof(char16_t)) == 0;
}

/// The start of the largest suffix of `part` in the order of its units, or in the reverse order,
/// and the period of that suffix.
std::pair<std::size_t, std::size_t> LargestSuffix(std::u16string_view part, bool reverse) noexcept
{
    std::size_t start = 0;
    std::size_t candidate = 1;
    std::size_t matched = 0;
    std::size_t period = 1;
    while (candidate + matched < part.size()) {
        const char16_t a = part[candidate + matched];
        const char16_t b = part[start + matched];
        if (a == b) {
            ++matched;
            if (matched == period) {
                candidate += period;
                matched = 0;
            }
        } else if (reverse ? a > b : a < b) {
            candidate += matched + 1;
            matched = 0;
            period = candidate - start;
        } else {
            start = candidate;
            ++candidate;
            matched = 0;
            period = 1;
        }
    }
    return {start, period};
}

/// The two-way algorithm of Crochemore and Perrin: compares the part's right side forwards, then
/// its left side backwards, and remembers how much a periodic part need not compare again.
std::size_t FindTwoWay(std::u16string_view text, std::u16string_view part) noexcept
{
    auto [middle, period] = std::max(LargestSuffix(part, false), LargestSuffix(part, true));
    const bool isPeriodic =
        middle + period <= part.size() && Equals(part.data(), part.data() + period, middle);
    if (!isPeriodic)
        period = std::max(middle, part.size() - middle) + 1;

    std::size_t known = 0;
    std::size_t at = 0;
    while (text.size() - at >= part.size()) {
        std::size_t right = std::max(middle, known);
        while (right < part.size() && part[right] == text[at + right])
            ++right;
        if (right < part.size()) {
            at += right - middle + 1;
            known = 0;
        } else {
            std::size_t left = middle;
            while (left > known && part[left - 1] == text[at + left - 1])
                --left;
            if (left <= known)
                return at;
            at += period;
            known = isPeriodic ? part.size() - period : 0;
        }
    }
    return c_none;
}

} // namespace

std::size_t FindText(std::u16string_view text, std::u16string_view part) noexcept
{
    if (part.empty())
        return 0;
    const QStringView view(text.data(), static_cast<qsizetype>(text.size()));
    std::size_t at = 0;
    std::size_t compared = 0;
    while (text.size() - at >= part.size()) {
        // The platform's search for one unit looks at several of them at a time.
        const qsizetype found = view.indexOf(QChar(part[0]), static_cast<qsizetype>(at));
        if (found < 0)
            return c_none;
        at = static_cast<std::size_t>(found);
        if (text.size() - at < part.size())
            return c_none;
        std::size_t matched = 1;
        while (matched < part.size() && text[at + matched] == part[matched])
            ++matched;
        if (matched == part.size())
            return at;
        ++at;
        compared += matched;
        if (compared > c_patience * (at + part.size())) {
            const std::size_t later = FindTwoWay(text.substr(at), part);
            return later == c_none ? c_none : at + later;
        }
    }
    return c_none;
}
