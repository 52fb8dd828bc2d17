#include "Targets.h"

#include "support/ExpatReader.h"
#include "support/ParseOutcome.h"
#include "support/Require.h"

#include <kescorexml/BinaryInputSource.h>
#include <kescorexml/CoreXml.h>
#include <kescorexml/XMLUtils.h>

#include <strings.h>

namespace {

/// Whether the bytes look like UTF-16 by their first character alone, which Expat goes by. XML
/// wants a byte-order mark there, and the library looks for one, or for a declaration; else the
/// bytes are UTF-8.
bool IsUtf16WithoutByteOrderMark(std::string_view text)
{
    using namespace std::string_view_literals;
    return text.size() > 1 && (text[0] == '\0') != (text[1] == '\0') &&
           !text.starts_with("<\0?\0"sv) && !text.starts_with("\0<\0?"sv);
}

bool IsOtherVersion(const ExpatReading& reading)
{
    return reading.version.has_value() && reading.version != "1.0";
}

/// Whether the library says that it refuses entities on purpose: references to internal ones, the
/// work that they take, or declarations of external ones.
bool IsRefusalOfEntities(const std::string& error)
{
    static const std::string s_external =
        CoreXml::LookupTStr(CoreXml::StringId::IDS_ERR_XML_ENTITY).toStdString();
    return error.find("more than '0' entity expansions") != std::string::npos ||
           error.find("(expansion limit, ") != std::string::npos ||
           error.find(s_external) != std::string::npos;
}

/// Whether the library says that an entity is not declared.
bool IsUnknownEntity(const std::string& error)
{
    return error.find("entity '") != std::string::npos &&
           error.find("' was not found") != std::string::npos;
}

/// Whether the document has one of the three letters below U+00C0, with which Expat lets names
/// begin in UTF-16 and ISO-8859-1. It does not in UTF-8, and no edition of the standard does.
bool HasNameStartOfExpatAlone(const ExpatReading& reading, std::string_view text)
{
    const bool isBigEndian = text.starts_with("\xFE\xFF") || text.starts_with('\0');
    const bool isUtf16 =
        isBigEndian || text.starts_with("\xFF\xFE") || text.substr(0, 2).ends_with('\0');
    if (!isUtf16)
        return strcasecmp(reading.encoding.c_str(), "ISO-8859-1") == 0 &&
               text.find_first_of("\xAA\xB5\xBA") != std::string_view::npos;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
        const char high = text[isBigEndian ? i : i + 1];
        const char low = text[isBigEndian ? i + 1 : i];
        if (high == '\0' && (low == '\xAA' || low == '\xB5' || low == '\xBA'))
            return true;
    }
    return false;
}

/// Why the library may refuse with that error what Expat takes; empty when there is no reason.
std::string_view FindReasonToRefuse(const ExpatReading& reading, std::string_view text,
                                    const std::string& error)
{
    if (IsUtf16WithoutByteOrderMark(text))
        return "UTF-16 without a mark";
    if (HasNameStartOfExpatAlone(reading, text))
        return "name";
    if (reading.declaresEntities && IsRefusalOfEntities(error))
        return "entities";
    // What neither reads may declare the entities that a document refers to.
    if (reading.hasExternalSubset && IsUnknownEntity(error))
        return "external subset";
    if (reading.refersToParameterEntities)
        return "parameter entities";
    // Expat does not look at the version.
    if (IsOtherVersion(reading))
        return "version";
    return {};
}

/// The character at a position; 0 where there is none.
char32_t FindCharacter(const std::string& text, std::size_t position)
{
    if (position + 1 >= text.size())
        return 0;
    const auto byte = [&](std::size_t offset) {
        return static_cast<unsigned char>(text[position + offset]);
    };
    if (text.starts_with("\xFE\xFF") || text.starts_with('\0'))
        return char32_t(byte(0) << 8 | byte(1));
    if (text.starts_with("\xFF\xFE") || text[1] == '\0')
        return char32_t(byte(1) << 8 | byte(0));
    const std::size_t length = byte(0) < 0xE0 ? 2 : byte(0) < 0xF0 ? 3 : 4;
    const auto units = TString::fromUtf8(std::string_view(text).substr(position, length));
    if (units.length() == 1)
        return units[0];
    return units.length() == 2 && units.toStdString().size() == 4 ? 0x10000 : 0;
}

/// The version that a declaration in ASCII names.
std::string FindVersion(const std::string& text)
{
    const std::size_t open = text.find_first_of("'\"", text.find("version"));
    return open == std::string::npos
               ? std::string()
               : text.substr(open + 1, text.find(text[open], open + 1) - open - 1);
}

/// Whether Expat misses, in a declaration of attributes, the blank between one attribute and the
/// next, which the scanner does not ask for.
bool IsBlankMissingBetweenAttributes(const ExpatReading& reading, std::string_view text)
{
    const std::size_t position = reading.errorPosition;
    if (position == 0 || position >= text.size())
        return false;
    const std::size_t declaration = text.rfind("<!", position);
    if (declaration == std::string_view::npos || !text.substr(declaration).starts_with("<!ATTLIST"))
        return false;
    // Behind the default value, or behind the word in its place.
    const char previous = text[position - 1];
    if (reading.error == "not well-formed (invalid token)")
        return previous == '"' || previous == '\'';
    const std::string_view rest = text.substr(position);
    return reading.error == "syntax error" &&
           (rest.starts_with("#IMPLIED") || rest.starts_with("#REQUIRED"));
}

/// Why the library may take what Expat refuses; empty when there is no reason.
std::string_view FindReasonToTake(const ExpatReading& reading, const std::string& text)
{
    // Expat knows the names of the fourth edition, and the library those of the fifth.
    const char32_t character = FindCharacter(text, reading.errorPosition);
    if (reading.error == "not well-formed (invalid token)" && character >= 0x80 &&
        (character > 0xFFFF || XmlUtils::IsNameChar(static_cast<char16_t>(character))))
        return "name";
    if (IsBlankMissingBetweenAttributes(reading, text))
        return "no blank between declared attributes";
    if (reading.error == "unknown encoding")
        return "encoding";
    // The scanner goes by the bytes where single bytes declare larger units.
    if (reading.error == "encoding specified in XML declaration is incorrect" &&
        text.starts_with("<?xml") && reading.errorPosition < text.find("?>"))
        return "larger units";
    if (IsOtherVersion(reading))
        return "version";
    // Whatever begins with "1." is a version for the scanner.
    const std::string version = FindVersion(text);
    if (reading.errorPosition < text.find("?>") && version.starts_with("1.") && version != "1.0")
        return "version";
    return {};
}

} // namespace

void FuzzTargets::SecondReader(Bytes bytes)
{
    const std::string text(bytes.begin(), bytes.end());
    BinaryInputSource source({bytes.begin(), bytes.end()}, u"id", false);
    const ParseOutcome outcome = ParseSource(source);
    const ExpatReading reading = ReadWithExpat(text);
    const bool isTaken = outcome.errors.empty();
    if (isTaken && reading.error.empty()) {
        // Versions beyond 1.0 know other line ends, and default attributes may be declared where
        // Expat does not read.
        if (!IsOtherVersion(reading) && !reading.refersToParameterEntities)
            Require(outcome.events == reading.events, "both readers see the same");
        return;
    }
    if (isTaken)
        Require(!FindReasonToTake(reading, text).empty(), "only Expat says: " + reading.error);
    else if (reading.error.empty())
        Require(!FindReasonToRefuse(reading, text, outcome.errors[0]).empty(),
                "Expat does not say: " + outcome.errors[0]);
}
