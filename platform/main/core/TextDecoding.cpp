#include <kesplatform/detail/TextDecoding.h>

#include "AsciiSteps.h"
#include "StrictConverter.h"
#include "Utf8Bytes.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/TCType.h>
#include <kesplatform/Unicode.h>
#include <kesplatform/XmlDeclaration.h>

#include <algorithm>

using TextDecoding::Encoding;
using TextDecoding::Failure;
using TextDecoding::Undecodable;

namespace {

TString NameOf(const Encoding& encoding)
{
    return encoding.name.empty() ? TString(u"UTF-8") : TString::fromStdString(encoding.name);
}

Failure MakeUnknown(std::string_view name)
{
    return {u"the encoding \"" + TString::fromUtf8(name) + u"\" is not known", std::string(name)};
}

bool IsAscii(std::string_view bytes) noexcept
{
    std::size_t at = 0;
    while (at + AsciiSteps::c_step <= bytes.size() && AsciiSteps::IsAscii(bytes.data() + at))
        at += AsciiSteps::c_step;
    return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Hands the pieces of the text to `sink`.
template <typename Sink>
std::optional<Undecodable> Convert(std::string_view bytes, const Encoding& encoding,
                                   const Sink& sink)
{
    StrictConverter converter(encoding.name);
    converter.Begin(bytes.substr(encoding.byteOrderMarkLength));
    for (std::u16string_view piece; !(piece = converter.Next()).empty();)
        sink(piece);
    const auto& fault = converter.GetFault();
    if (!fault)
        return std::nullopt;
    return Undecodable{NameOf(encoding), encoding.byteOrderMarkLength + fault->offset,
                       fault->isCut};
}

std::u16string Decode(StrictConverter& converter, std::string_view bytes)
{
    std::u16string text;
    converter.Begin(bytes);
    for (std::u16string_view piece; !(piece = converter.Next()).empty();)
        text += piece;
    return text;
}

/// Whether a declaration that was read as `text` reads like that in this encoding, too.
bool Agrees(StrictConverter& converter, std::string_view declaration, std::u16string_view text)
{
    return Decode(converter, declaration) == text && !converter.GetFault();
}

/// The XML declaration behind what may be taken for white space before it.
std::string ReadDeclaration(std::string_view bytes, const EncodingTable::Scheme& scheme)
{
    std::size_t at = 0;
    while (TCType::isSpace(static_cast<unsigned char>(scheme.ReadAscii(bytes, at))))
        at += scheme.unitSize;
    return XmlDeclaration::Read(bytes.substr(at), scheme);
}

std::string GetConverterName(const EncodingTable::Scheme& scheme)
{
    return scheme.encoding == Utf8 ? std::string() : std::string(scheme.name);
}

/// What a text is encoded in whose declaration, read in these units, names `name`.
std::optional<Failure> ResolveDeclaredName(std::string_view name, const std::string& declaration,
                                           const EncodingTable::Scheme& scheme, Encoding& encoding)
{
    encoding = {GetConverterName(scheme), 0};
    if (EncodingTable::NamesUtf8(name))
        return std::nullopt;
    StrictConverter converter(name);
    if (!converter.IsKnown())
        return MakeUnknown(name);
    if (scheme.unitSize > 1)
        return std::nullopt;
    // Only an encoding that agrees with ASCII on the declaration can be the true one.
    const bool isTrue =
        !converter.IsUtf8() &&
        Agrees(converter, declaration, std::u16string(declaration.begin(), declaration.end()));
    if (isTrue)
        encoding.name = name;
    return std::nullopt;
}

/// The encoding of EBCDIC that a text names which begins with a declaration in one. What a
/// declaration is made of lies at the same bytes in all of them, but for white space.
std::optional<Failure> FindOfEbcdic(std::string_view bytes, Encoding& encoding)
{
    constexpr char c_greaterThan = '\x6E';
    const std::string_view declaration = bytes.substr(0, bytes.find(c_greaterThan)).substr(0, 1000);
    StrictConverter common("IBM037");
    const std::u16string text = Decode(common, declaration);
    std::string ascii;
    for (const char16_t unit : text)
        ascii += unit < 0x80 ? static_cast<char>(unit) : ' ';
    const std::string_view name = XmlDeclaration::FindEncoding(ascii);
    if (name.empty())
        return Failure{u"the text is in EBCDIC, and does not say in which encoding of it", {}};
    StrictConverter converter(name);
    if (!converter.IsKnown())
        return MakeUnknown(name);
    if (!Agrees(converter, declaration, text))
        return Failure{u"the text is in EBCDIC, and not in the encoding that it names", {}};
    encoding.name = name;
    return std::nullopt;
}

/// The first byte of a text in UTF-8 that is none.
std::optional<Undecodable> CheckUtf8(std::string_view bytes, const Encoding& encoding)
{
    const std::string_view text = bytes.substr(encoding.byteOrderMarkLength);
    const std::size_t bad = Utf8Bytes::FindInvalid(text);
    if (bad == text.size())
        return std::nullopt;
    return Undecodable{NameOf(encoding), encoding.byteOrderMarkLength + bad};
}

/// Whether nothing needs to be looked up to know that the text is UTF-8. Most are, and short.
bool IsPlainUtf8(std::string_view bytes) noexcept
{
    constexpr std::string_view c_start = XmlDeclaration::c_start;
    if (bytes.size() < 2 || bytes[0] != '<' || bytes[1] == '\0')
        return false;
    return !bytes.starts_with(c_start) ||
           EncodingTable::NamesUtf8(XmlDeclaration::FindEncoding(bytes));
}

} // namespace

std::optional<Failure> TextDecoding::FindEncoding(std::string_view bytes, Encoding& encoding)
{
    encoding = {};
    if (IsPlainUtf8(bytes))
        return std::nullopt;
    if (const EncodingTable::Scheme* const marked = EncodingTable::FindByByteOrderMark(bytes)) {
        encoding = {GetConverterName(*marked), marked->byteOrderMark.size()};
        return std::nullopt;
    }
    if (bytes.starts_with(EncodingTable::c_ebcdicDeclaration))
        return FindOfEbcdic(bytes, encoding);
    for (const EncodingTable::Scheme& scheme : EncodingTable::c_schemes) {
        const std::string declaration = ReadDeclaration(bytes, scheme);
        // Whoever reads the text is to say that other white space is wrong there.
        std::string spaced = declaration;
        std::replace(spaced.begin(), spaced.end(), '\v', ' ');
        std::replace(spaced.begin(), spaced.end(), '\f', ' ');
        const std::string_view name = XmlDeclaration::FindEncoding(spaced);
        if (!name.empty())
            return ResolveDeclaredName(name, declaration, scheme, encoding);
        if (scheme.unitSize > 1 && scheme.IsBeginOf(bytes, "<")) {
            encoding.name = GetConverterName(scheme);
            break;
        }
    }
    return std::nullopt;
}

std::optional<Undecodable> TextDecoding::ToText(std::string_view bytes, const Encoding& encoding,
                                                TString& text)
{
    text.clear();
    if (!IsUtf8AsItIs(bytes, encoding))
        return Convert(bytes, encoding, [&](std::u16string_view piece) { text.append(piece); });
    if (auto fault = CheckUtf8(bytes, encoding))
        return fault;
    text = TString::fromUtf8(bytes.substr(encoding.byteOrderMarkLength));
    return std::nullopt;
}

std::optional<Undecodable> TextDecoding::ToUtf8(std::string&& bytes, const Encoding& encoding,
                                                std::string& utf8)
{
    utf8.clear();
    if (!IsUtf8AsItIs(bytes, encoding))
        return AppendUtf8(bytes, encoding, utf8);
    if (auto fault = CheckUtf8(bytes, encoding))
        return fault;
    bytes.erase(0, encoding.byteOrderMarkLength);
    utf8 = std::move(bytes);
    return std::nullopt;
}

bool TextDecoding::IsUtf8AsItIs(std::string_view bytes, const Encoding& encoding)
{
    return encoding.name.empty() || (IsAscii(bytes) && StrictConverter(encoding.name).KeepsAscii());
}

std::optional<Undecodable> TextDecoding::AppendUtf8(std::string_view bytes,
                                                    const Encoding& encoding, std::string& utf8)
{
    utf8.reserve(utf8.size() + bytes.size());
    return Convert(bytes, encoding, [&utf8](std::u16string_view piece) {
        utf8 += Unicode::toUtf8KeepingHalves(piece);
    });
}
