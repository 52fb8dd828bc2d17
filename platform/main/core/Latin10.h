#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

/// ISO-8859-16, which ICU does not know. Below 0xA0 it is ISO-8859-1.
namespace Latin10 {

inline constexpr char16_t c_firstUpper = 0xA0;

/// The characters of the bytes from 0xA0 on.
inline constexpr char16_t c_upper[] =
    u"\u00A0\u0104\u0105\u0141\u20AC\u201E\u0160\u00A7\u0161\u00A9\u0218\u00AB\u0179\u00AD\u017A"
    u"\u017B\u00B0\u00B1\u010C\u0142\u017D\u201D\u00B6\u00B7\u017E\u010D\u0219\u00BB\u0152\u0153"
    u"\u0178\u017C\u00C0\u00C1\u00C2\u0102\u00C4\u0106\u00C6\u00C7\u00C8\u00C9\u00CA\u00CB\u00CC"
    u"\u00CD\u00CE\u00CF\u0110\u0143\u00D2\u00D3\u00D4\u0150\u00D6\u015A\u0170\u00D9\u00DA\u00DB"
    u"\u00DC\u0118\u021A\u00DF\u00E0\u00E1\u00E2\u0103\u00E4\u0107\u00E6\u00E7\u00E8\u00E9\u00EA"
    u"\u00EB\u00EC\u00ED\u00EE\u00EF\u0111\u0144\u00F2\u00F3\u00F4\u0151\u00F6\u015B\u0171\u00F9"
    u"\u00FA\u00FB\u00FC\u0119\u021B\u00FF";
static_assert(std::size(c_upper) == 0x60 + 1);

/// Whether a name is one of it, in any case and with any punctuation.
inline bool IsName(std::string_view name)
{
    std::string plain;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z')
            plain += static_cast<char>(c - 'A' + 'a');
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'))
            plain += c;
    }
    return plain == "iso885916" || plain == "iso8859162001" || plain == "latin10" ||
           plain == "l10" || plain == "isoir226" || plain == "csiso885916";
}

} // namespace Latin10
