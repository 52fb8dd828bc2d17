#include "TextDecoding.h"

#include "Utf8Bytes.h"

#include <kesplatform/TCType.h>

#include <QSysInfo>

#include <algorithm>
#include <cerrno>
#include <iconv.h>
#include <memory>

using TextDecoding::Encoding;
using TextDecoding::Failure;

namespace {

constexpr const char* c_nativeUtf16 =
    QSysInfo::ByteOrder == QSysInfo::LittleEndian ? "UTF-16LE" : "UTF-16BE";

/// A kind of text by the width and byte order of its units.
struct UnitKind
{
    const char* name;
    std::size_t width;
    /// Where in a unit the byte stands that holds an ASCII character.
    std::size_t asciiAt;
    std::string_view mark;
};

using namespace std::string_view_literals;

// The marks of UTF-32 come first, because that of UTF-16LE begins one of them.
constexpr UnitKind c_kinds[] = {
    {"UTF-32LE", 4, 0, "\xFF\xFE\0\0"sv}, {"UTF-32BE", 4, 3, "\0\0\xFE\xFF"sv},
    {"UTF-16LE", 2, 0, "\xFF\xFE"sv},     {"UTF-16BE", 2, 1, "\xFE\xFF"sv},
    {"", 1, 0, "\xEF\xBB\xBF"sv},
};

[[noreturn]] void FailAt(std::size_t offset, const std::string& encoding)
{
    TString reason = u"the byte at offset ";
    reason += TString::number(static_cast<unsigned long long>(offset));
    reason += u" is not valid in ";
    reason += encoding.empty() ? TString(u"UTF-8") : TString::fromStdString(encoding);
    throw Failure{std::move(reason)};
}

/// A conversion of the C library; gives back its descriptor.
class Converter
{
public:
    Converter(const char* to, const std::string& from) : m_handle(iconv_open(to, from.c_str())) {}
    ~Converter()
    {
        if (IsKnown())
            iconv_close(m_handle);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool IsKnown() const noexcept { return m_handle != Invalid(); }

    /// Converts `bytes` and hands the pieces to `sink`. Returns how many bytes were converted: all
    /// of them, or those before the first that do not decode.
    template <typename Sink>
    std::size_t Run(std::string_view bytes, const Sink& sink)
    {
        // iconv does not write to its input; its interface is older than const.
        char* from = const_cast<char*>(bytes.data());
        std::size_t left = bytes.size();
        bool isFlush = false;
        for (;;) {
            char* to = m_buffer;
            std::size_t room = sizeof(m_buffer);
            const std::size_t result =
                iconv(m_handle, isFlush ? nullptr : &from, isFlush ? nullptr : &left, &to, &room);
            const int error = result == static_cast<std::size_t>(-1) ? errno : 0;
            sink(std::string_view(m_buffer, static_cast<std::size_t>(to - m_buffer)));
            if (error == E2BIG)
                continue;
            if (error != 0 || isFlush)
                return bytes.size() - left;
            // Encodings with states may hold a character back until they know the end.
            isFlush = true;
        }
    }

private:
    static iconv_t Invalid() noexcept
    {
        return reinterpret_cast<iconv_t>(static_cast<std::intptr_t>(-1));
    }

    iconv_t m_handle;
    alignas(char16_t) char m_buffer[16 * 1024];
};

template <typename Sink>
void Convert(const char* to, std::string_view bytes, const Encoding& encoding, const Sink& sink)
{
    Converter converter(to, encoding.name);
    const std::string_view text = bytes.substr(encoding.markLength);
    const std::size_t converted = converter.Run(text, sink);
    if (converted != text.size())
        FailAt(encoding.markLength + converted, encoding.name);
}

/// The text of an XML declaration up to its ">", as the ASCII characters that it is made of; empty
/// when the bytes, read as units of this kind, do not begin with one.
std::string ReadDeclaration(std::string_view bytes, const UnitKind& kind)
{
    constexpr std::string_view c_start = "<?xml";
    std::string text;
    for (std::size_t at = 0; at + kind.width <= bytes.size(); at += kind.width) {
        for (std::size_t i = 0; i < kind.width; ++i) {
            const auto byte = static_cast<unsigned char>(bytes[at + i]);
            if (i == kind.asciiAt ? byte == 0 || byte >= 0x80 : byte != 0)
                return {};
        }
        const char character = bytes[at + kind.asciiAt];
        if (text.empty() && TCType::isSpace(static_cast<unsigned char>(character)))
            continue;
        text += character;
        if (text.size() <= c_start.size() && text.back() != c_start[text.size() - 1])
            return {};
        if (character == '>')
            return text;
    }
    return {};
}

void SkipSpace(std::string_view& text)
{
    while (!text.empty() && TCType::isSpace(static_cast<unsigned char>(text.front())))
        text.remove_prefix(1);
}

/// Takes name = "value" off the front of `text`. False when there is no such thing.
bool TakePseudoAttribute(std::string_view& text, std::string_view& name, std::string_view& value)
{
    SkipSpace(text);
    name = text.substr(0, std::min(text.size(), text.find_first_of("= \t\r\n\v\f?")));
    text.remove_prefix(name.size());
    SkipSpace(text);
    if (name.empty() || !text.starts_with('='))
        return false;
    text.remove_prefix(1);
    SkipSpace(text);
    if (text.empty() || (text.front() != '\'' && text.front() != '"'))
        return false;
    const std::size_t end = text.find(text.front(), 1);
    if (end == std::string_view::npos)
        return false;
    value = text.substr(1, end - 1);
    text.remove_prefix(end + 1);
    return true;
}

/// The value of the declaration's "encoding"; empty when it names none.
std::string_view FindDeclaredName(std::string_view declaration)
{
    std::string_view rest = declaration.substr(std::string_view("<?xml").size());
    if (rest.empty() || !TCType::isSpace(static_cast<unsigned char>(rest.front())))
        return {};
    std::string_view name;
    std::string_view value;
    while (TakePseudoAttribute(rest, name, value)) {
        if (name == "encoding")
            return value;
    }
    return {};
}

/// Whether a name holds nothing that iconv would take for an option.
bool IsEncodingName(std::string_view name)
{
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               c == '.' || c == '_' || c == '-' || c == ':';
    });
}

bool IsUtf8Name(std::string_view name)
{
    std::string upper(name);
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return upper == "UTF-8" || upper == "UTF8";
}

bool IsKnown(std::string_view name)
{
    return IsUtf8Name(name) ||
           (IsEncodingName(name) && Converter("UTF-8", std::string(name)).IsKnown());
}

/// What a text of single bytes is encoded in whose declaration names `name`.
Encoding ResolveDeclaredName(std::string_view name, const std::string& declaration)
{
    if (IsUtf8Name(name))
        return {};
    const Encoding encoding{std::string(name), 0};
    std::string decoded;
    Converter converter("UTF-8", encoding.name);
    const std::size_t converted =
        converter.Run(declaration, [&decoded](std::string_view piece) { decoded.append(piece); });
    // Only an encoding that agrees with ASCII on the declaration can be the true one.
    return converted == declaration.size() && decoded == declaration ? encoding : Encoding();
}

} // namespace

Encoding TextDecoding::FindEncoding(std::string_view bytes)
{
    for (const UnitKind& kind : c_kinds) {
        if (bytes.starts_with(kind.mark))
            return {kind.name, kind.mark.size()};
    }
    for (const UnitKind& kind : c_kinds) {
        const std::string declaration = ReadDeclaration(bytes, kind);
        const std::string_view name =
            declaration.empty() ? std::string_view() : FindDeclaredName(declaration);
        if (name.empty())
            continue;
        if (!IsKnown(name))
            throw Failure{u"the encoding \"" + TString::fromUtf8(name) + u"\" is not known"};
        return kind.width > 1 ? Encoding{kind.name, 0} : ResolveDeclaredName(name, declaration);
    }
    return {};
}

TString TextDecoding::ToText(std::string_view bytes, const Encoding& encoding)
{
    if (encoding.name.empty()) {
        const std::size_t bad =
            encoding.markLength + Utf8Bytes::FindInvalid(bytes.substr(encoding.markLength));
        if (bad != bytes.size())
            FailAt(bad, encoding.name);
        return TString::fromUtf8(bytes.substr(encoding.markLength));
    }
    TString text;
    Convert(c_nativeUtf16, bytes, encoding, [&text](std::string_view piece) {
        text.append(std::u16string_view(reinterpret_cast<const char16_t*>(piece.data()),
                                        piece.size() / sizeof(char16_t)));
    });
    return text;
}

std::string TextDecoding::ToUtf8(std::string&& bytes, const Encoding& encoding)
{
    if (encoding.name.empty()) {
        const std::string_view text = std::string_view(bytes).substr(encoding.markLength);
        const std::size_t bad = Utf8Bytes::FindInvalid(text);
        if (bad != text.size())
            FailAt(encoding.markLength + bad, encoding.name);
        bytes.erase(0, encoding.markLength);
        return std::move(bytes);
    }
    std::string utf8;
    Convert("UTF-8", bytes, encoding, [&utf8](std::string_view piece) { utf8.append(piece); });
    return utf8;
}
