#pragma once

#include <kesplatform/Export.h>

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

class TString;

/// The kinds of text that go wherever a TString goes, are compared with it and added to it. They
/// are told by what they can do, so that no header of Qt is needed here. Safe to use from several
/// threads.
namespace OtherText {

/// A pointer to text that ends with a zero, or an array that holds one. Null is the empty text.
template <typename T, typename Unit>
concept ZeroTerminated =
    std::same_as<std::decay_t<T>, Unit*> || std::same_as<std::decay_t<T>, const Unit*>;
// clang-format off
/// A string or string view of the standard library, or a class made like them.
template <typename T, typename Unit>
concept Standard = requires(const T& text)
{
    typename T::traits_type;
    { text.data() } -> std::same_as<const Unit*>;
    { text.size() } -> std::convertible_to<std::size_t>;
};

/// QString, QStringView, or a class made like them.
template <typename T>
concept QtUtf16 = requires(const T& text)
{
    requires sizeof(*text.utf16()) == sizeof(char16_t);
    { text.size() } -> std::integral;
} && !std::is_base_of_v<TString, T>;

/// QLatin1StringView, or a class made like it.
template <typename T>
concept QtLatin1 = requires(const T& text)
{
    { text.latin1() } -> std::same_as<const char*>;
    { text.size() } -> std::integral;
};

/// std::filesystem::path, or a class made like it, where the names of files are bytes.
template <typename T>
concept FilePath = requires(const T& path)
{
    path.filename();
    requires Standard<std::remove_cvref_t<decltype(path.native())>, char>;
};
// clang-format on
/// Text of UTF-16 units.
template <typename T>
concept Utf16 = ZeroTerminated<T, char16_t> || Standard<T, char16_t> || QtUtf16<T>;

/// Text of bytes, which are taken for UTF-8.
template <typename T>
concept Utf8 = ZeroTerminated<T, char> || ZeroTerminated<T, char8_t> || Standard<T, char> ||
    Standard<T, char8_t>;

/// What the language would turn into a char16_t, whatever it means: bytes, numbers, truth values.
template <typename T>
concept NoUnit = (std::is_arithmetic_v<T> || std::is_enum_v<T>)&&!std::same_as<T, char16_t>;

/// All kinds of text.
template <typename T>
concept Any = Utf16<T> || Utf8<T> || QtLatin1<T> || FilePath<T>;

/// The units or bytes; valid as long as those of `text`.
template <Utf16 T>
[[nodiscard]] std::u16string_view View(const T& text) noexcept
{
    if constexpr (ZeroTerminated<T, char16_t>) {
        const char16_t* const first = text;
        return first == nullptr ? std::u16string_view() : std::u16string_view(first);
    } else if constexpr (Standard<T, char16_t>) {
        return {text.data(), text.size()};
    } else {
        return {reinterpret_cast<const char16_t*>(text.utf16()),
                static_cast<std::size_t>(text.size())};
    }
}
template <Utf8 T>
[[nodiscard]] std::string_view View(const T& text) noexcept
{
    if constexpr (ZeroTerminated<T, char>) {
        const char* const first = text;
        return first == nullptr ? std::string_view() : std::string_view(first);
    } else if constexpr (ZeroTerminated<T, char8_t>) {
        return View(reinterpret_cast<const char*>(static_cast<const char8_t*>(text)));
    } else {
        return {reinterpret_cast<const char*>(text.data()), text.size()};
    }
}
template <FilePath T>
[[nodiscard]] std::string_view View(const T& path) noexcept
{
    return View(path.native());
}
/// A copy: each byte of Latin-1 is the unit of the same number.
template <QtLatin1 T>
[[nodiscard]] std::u16string View(const T& text)
{
    const auto* const first = reinterpret_cast<const unsigned char*>(text.latin1());
    return std::u16string(first, first + text.size());
}

} // namespace OtherText
