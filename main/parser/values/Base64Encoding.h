#pragma once

#include <cstddef>
#include <string_view>

/// Bytes to characters of Base64 (RFC 4648, section 4), without a look at lines.
namespace Base64Encoding {

constexpr std::string_view c_alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Writes four characters for each three of `count` bytes, the last ones padded. `readable` bytes
/// may be read, `count` at least. Takes 24 bytes at a time where the processor has AVX2.
void Encode(const unsigned char* bytes, std::size_t count, std::size_t readable,
            char16_t* out) noexcept;
/// The same on any processor.
void EncodePortably(const unsigned char* bytes, std::size_t count, std::size_t readable,
                    char16_t* out) noexcept;

} // namespace Base64Encoding
