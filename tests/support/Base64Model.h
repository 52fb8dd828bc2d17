#pragma once

#include <kesplatform/TString.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Base64Model {

/// The decoding, group by group.
inline std::vector<unsigned char> Decode(const TString& text)
{
    static const std::string c_alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::u16string units(text.trimmed().view());
    std::vector<unsigned char> bytes;
    for (std::size_t position = 0; position < units.size();) {
        std::vector<std::size_t> values;
        std::size_t skipped = 0;
        int padding = 0;
        while (values.size() < 4 && position + values.size() + skipped < units.size()) {
            const char c = static_cast<char>(units[position + values.size() + skipped] & 0xFF);
            const std::size_t value = c_alphabet.find(c);
            if (value != std::string::npos) {
                values.push_back(value);
                continue;
            }
            padding += c == '=';
            ++skipped;
        }
        values.resize(4);
        bytes.push_back(static_cast<unsigned char>(values[0] << 2 | values[1] >> 4));
        if (padding < 2)
            bytes.push_back(static_cast<unsigned char>(values[1] << 4 | values[2] >> 2));
        if (padding == 0)
            bytes.push_back(static_cast<unsigned char>(values[2] << 6 | values[3]));
        position += 4 + skipped;
    }
    return bytes;
}

} // namespace Base64Model
