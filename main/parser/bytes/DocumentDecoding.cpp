#include "bytes/DocumentDecoding.h"

#include "base/LeadingWhitespace.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/TFormatString.h>
#include <kesplatform/XmlDeclaration.h>
#include <kesplatform/detail/TextDecoding.h>

#include <utility>

using DocumentDecoding::Refusal;
using DocumentDecoding::Result;

namespace {

/// No sequence of UTF-8 begins with the first byte. The scanner would wait for five more of them
/// and, where the document ends before, say that it ended.
constexpr std::string_view c_undecodable = "\xFF      ";

TString Describe(const TextDecoding::Undecodable& undecodable)
{
    if (undecodable.isCut)
        return u"incomplete character at the end of the document";
    return TFormatString(u"bytes that are no character in '%1' encoding")
        .Format(undecodable.encoding);
}

ScanPosition LocateBehindDeclaration(std::string_view bytes)
{
    for (const EncodingTable::Scheme& scheme : EncodingTable::c_schemes) {
        const std::string declaration = XmlDeclaration::Read(bytes, scheme);
        if (declaration.empty())
            continue;
        PositionCounter counter;
        for (const char character : declaration)
            counter.Pass(static_cast<unsigned char>(character));
        return counter.Get();
    }
    return {};
}

/// Then the scanner does not look for an encoding, and says that the declaration comes too late.
bool IsBehindWhitespace(std::string_view bytes)
{
    const std::size_t start = SkipLeadingWhitespace(bytes);
    return start > 0 && bytes.substr(start).starts_with(XmlDeclaration::c_start);
}

/// The scanner speaks so of an encoding that it does not know, and with capitals.
TString DescribeUnknown(std::string_view name)
{
    std::string upper(name);
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return TFormatString(u"unable to create converter for '%1' encoding")
        .Format(TString::fromUtf8(upper));
}

} // namespace

Result DocumentDecoding::Decode(std::string_view bytes)
{
    Result result;
    TextDecoding::Encoding encoding;
    if (const auto failure = TextDecoding::FindEncoding(bytes, encoding)) {
        const bool isUnknown = !failure->unknownName.empty();
        if (isUnknown && IsBehindWhitespace(bytes))
            return {};
        result.refusal =
            Refusal{LocateBehindDeclaration(bytes),
                    isUnknown ? DescribeUnknown(failure->unknownName) : failure->reason};
        return result;
    }
    if (TextDecoding::IsUtf8AsItIs(bytes, encoding))
        return {};
    std::string& utf8 = result.utf8.emplace();
    if (encoding.byteOrderMarkLength > 0)
        utf8 = EncodingTable::c_utf8.byteOrderMark;
    if (const auto fault = TextDecoding::AppendUtf8(bytes, encoding, utf8)) {
        utf8.append(c_undecodable);
        result.fault = Describe(*fault);
    }
    return result;
}
