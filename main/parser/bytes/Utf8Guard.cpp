#include "bytes/Utf8Guard.h"

#include "base/ByteScan.h"
#include "bytes/DeclaredEncoding.h"

#include <algorithm>

namespace {

struct BeginsBeyondLastCharacter
{
    bool operator()(const char* p) const noexcept
    {
        const auto value = static_cast<unsigned char>(*p);
        return value >= 0xF5 && value <= 0xF7;
    }
#if defined(__SSE2__)
    ByteScan::Block MayMatch(const char* p) const noexcept
    {
        // Well-formed text has no byte from F5 on.
        const ByteScan::Block bytes = ByteScan::Load(p);
        return _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8('\xF5')), bytes);
    }
    ByteScan::Block Hint(const char* p) const noexcept
    {
        return MayMatch(p);
    }
#endif
};

bool EqualsIgnoringCase(std::string_view text, std::string_view upper)
{
    return std::equal(text.begin(), text.end(), upper.begin(), upper.end(), [](char a, char b) {
        return (a >= 'a' && a <= 'z' ? a - 'a' + 'A' : a) == b;
    });
}

} // namespace

bool Utf8Guard::IsReadAsUtf8(std::string_view bytes)
{
    if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE"))
        return false;
    // Without mark, units of two or four bytes show by their zero bytes, EBCDIC by its "<?xm".
    if (bytes.substr(0, 4).find('\0') != std::string_view::npos ||
        bytes.starts_with("\x4C\x6F\xA7\x94"))
        return false;
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
        // Behind a mark, nobody tells it.
        if (!DeclaredEncoding::FindOverlooked(bytes).empty())
            return true;
    }
    const std::string_view encoding = DeclaredEncoding::FindOfSingleBytes(bytes);
    return encoding.empty() || EqualsIgnoringCase(encoding, "UTF-8") ||
           EqualsIgnoringCase(encoding, "UTF8");
}

void Utf8Guard::RefuseBeyondLastCharacter(std::span<char> bytes) noexcept
{
    std::size_t found = 0;
    while ((found = ByteScan::FindFirst(bytes.data(), found, bytes.size(),
                                        BeginsBeyondLastCharacter{})) != ByteScan::c_npos)
        bytes[found++] = '\xFF';
}
