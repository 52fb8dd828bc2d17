#include "Targets.h"

#include "support/ColonModel.h"
#include "support/ParseOutcome.h"
#include "support/Require.h"
#include "support/XercesEvents.h"

#include "bytes/XercesColonSanitizer.h"

#include <kesplatform/LogicException.h>

namespace {

std::u16string Restore(const std::u16string& name)
{
    return std::u16string(XercesColonSanitizer::RestoreEncodedAttributeNames(TString(name)).view());
}

std::string Encode(const std::string& xml)
{
    const auto text = std::make_shared<const std::string>(xml);
    const auto encoded = XercesColonSanitizer::EncodeColonAttributeNames(text);
    Require((encoded == text) == (*encoded == xml), "what needs no change is not copied");
    return *encoded;
}

/// Whether names of the document are those of the sanitizer, or are told apart by declarations that
/// it leaves alone.
bool IsBeyondIt(const std::string& xml)
{
    return xml.find("IllegalColon") != std::string::npos ||
           xml.find("<!ATTLIST") != std::string::npos;
}

} // namespace

void FuzzTargets::Sanitizer(Bytes bytes)
{
    const std::string xml(bytes.begin(), bytes.end());
    const std::string expected = ColonModel::Encode(xml);
    std::string encoded = xml;
    try {
        encoded = Encode(xml);
    } catch (const LogicException&) {
        // There is no root tag, so the text is not well formed.
        Require(expected == xml, "a text with a root tag can be encoded");
    }
    RequireEqual(encoded, expected, "a text is encoded as the model does");
    if (IsBeyondIt(xml))
        return;
    const auto events = ReadEvents(xml, [](const std::u16string& name) { return name; });
    if (events)
        Require(ReadEvents(encoded, Restore) == events, "a parser reads what it read before");
}
