#include "TextDecoding.h"

#include "Utf8Bytes.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/TCType.h>
#include <kesplatform/XmlDeclaration.h>

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

[[noreturn]] void FailAt(std::size_t offset, const std::string& encoding)
{
    throw TextDecoding::Undecodable{
        encoding.empty() ? TString(u"UTF-8") : TString::fromStdString(encoding), offset};
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
    const std::string_view text = bytes.substr(encoding.byteOrderMarkLength);
    const std::size_t converted = converter.Run(text, sink);
    if (converted != text.size())
        FailAt(encoding.byteOrderMarkLength + converted, encoding.name);
}

/// The text of an XML declaration up to its ">", as the ASCII characters that it is made of; empty
/// when the bytes, read in these units, do not begin with one.
std::string ReadDeclaration(std::string_view bytes, const EncodingTable::Scheme& scheme)
{
    std::size_t at = 0;
    while (TCType::isSpace(static_cast<unsigned char>(scheme.ReadAscii(bytes, at))))
        at += scheme.unitSize;
    bytes.remove_prefix(at);
    if (!scheme.IsBeginOf(bytes, XmlDeclaration::c_start))
        return {};
    std::string text;
    for (at = 0; char character = scheme.ReadAscii(bytes, at); at += scheme.unitSize) {
        text += character;
        if (character == '>')
            return text;
    }
    return {};
}

/// Whether nothing in a name would be an option for iconv.
bool HoldsNoOption(std::string_view name)
{
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               c == '.' || c == '_' || c == '-' || c == ':';
    });
}

bool IsKnown(std::string_view name)
{
    return EncodingTable::NamesUtf8(name) ||
           (HoldsNoOption(name) && Converter("UTF-8", std::string(name)).IsKnown());
}

std::string GetConverterName(const EncodingTable::Scheme& scheme)
{
    return scheme.encoding == Utf8 ? std::string() : std::string(scheme.name);
}

/// What a text of single bytes is encoded in whose declaration names `name`.
Encoding ResolveDeclaredName(std::string_view name, const std::string& declaration)
{
    if (EncodingTable::NamesUtf8(name))
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
    if (const EncodingTable::Scheme* const marked = EncodingTable::FindByByteOrderMark(bytes))
        return {GetConverterName(*marked), marked->byteOrderMark.size()};
    for (const EncodingTable::Scheme& scheme : EncodingTable::c_schemes) {
        const std::string declaration = ReadDeclaration(bytes, scheme);
        // Whoever reads the text is to say that other white space is wrong there.
        std::string spaced = declaration;
        std::replace(spaced.begin(), spaced.end(), '\v', ' ');
        std::replace(spaced.begin(), spaced.end(), '\f', ' ');
        const std::string_view name = XmlDeclaration::FindEncoding(spaced);
        if (name.empty())
            continue;
        if (!IsKnown(name))
            throw Failure{u"the encoding \"" + TString::fromUtf8(name) + u"\" is not known"};
        return scheme.unitSize > 1 ? Encoding{GetConverterName(scheme), 0}
                                   : ResolveDeclaredName(name, declaration);
    }
    return {};
}

TString TextDecoding::ToText(std::string_view bytes, const Encoding& encoding)
{
    if (encoding.name.empty()) {
        const std::size_t bad = encoding.byteOrderMarkLength +
                                Utf8Bytes::FindInvalid(bytes.substr(encoding.byteOrderMarkLength));
        if (bad != bytes.size())
            FailAt(bad, encoding.name);
        return TString::fromUtf8(bytes.substr(encoding.byteOrderMarkLength));
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
        const std::string_view text = std::string_view(bytes).substr(encoding.byteOrderMarkLength);
        const std::size_t bad = Utf8Bytes::FindInvalid(text);
        if (bad != text.size())
            FailAt(encoding.byteOrderMarkLength + bad, encoding.name);
        bytes.erase(0, encoding.byteOrderMarkLength);
        return std::move(bytes);
    }
    std::string utf8;
    Convert("UTF-8", bytes, encoding, [&utf8](std::string_view piece) { utf8.append(piece); });
    return utf8;
}
