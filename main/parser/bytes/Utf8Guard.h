#pragma once

#include <span>
#include <string_view>

/// The scanner drops, without a word, some sequences of four bytes that begin with F5 to F7: they
/// would be characters beyond the last one. Here is what makes it see them.
namespace Utf8Guard {

/// Whether the scanner takes a document that comes as bytes for UTF-8: it begins neither with a
/// mark nor with the pattern of another encoding, and its declaration, if any, names UTF-8, larger
/// units, or nothing, or is one behind a mark that the scanner overlooks.
bool IsReadAsUtf8(std::string_view bytes);

/// Puts, in place of each of those bytes, one that the scanner always refuses.
void RefuseBeyondLastCharacter(std::span<char> bytes) noexcept;

} // namespace Utf8Guard
