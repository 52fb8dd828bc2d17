#include "LibraryUser.h"

#include <kescorexml/Base64.h>
#include <kescorexml/CoreXml.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/XMLDomFormatter.h>
#include <kescorexml/XMLStringFormatter.h>
#include <kescorexml/XMLTokens.h>
#include <kescorexml/XMLValueParsers.h>
#include <kesplatform/CoreThreadContext.h>
#include <kesplatform/TLocale.h>

#include <string_view>

namespace {

constexpr auto c_message = CoreXml::StringId::IDS_ERR_XML_ENTITY;
constexpr const char16_t* c_english = u"XML External <!ENTITY> definitions are not allowed.";

/// A session of this thread, whose id is not short.
void StartSession()
{
    CoreThreadContext::SetSessionId(u"a session whose id takes memory of its own");
    CoreThreadContext::SetObject(CoreXml::attrLocale, TLocale(LanguageCode(u"it_IT")));
}

TString WriteByCalls()
{
    XMLStringFormatter formatter(u"  ", false);
    formatter.OutputHeader();
    formatter.OutputComment(u"note");
    {
        const XMLFormatter::Indenter list(
            formatter, u"list", {{u"isOpen", XMLFormatter::FormatBooleanAttribute(true)}});
        formatter.OutputTag(u"item", {});
    }
    return formatter.GetOutput();
}

TString WriteTree()
{
    XMLDomFormatter tree;
    {
        const XMLFormatter::Indenter list(tree, u"list", {{u"isOpen", u"true"}});
        tree.OutputTag(u"item", {});
    }
    tree.OutputHeader();
    tree.OutputComment(u"note");
    return tree.GetOutput(FormatMode::Content);
}

} // namespace

extern "C" __attribute__((visibility("default"))) const char* UseLibrary(const char* language,
                                                                         bool mayBeEnglish)
{
    StartSession();
    const TString text = CoreXml::LookupTStr(c_message, language);
    if (text.IsEmpty())
        return "no message";
    if (text == c_english && !mayBeEnglish)
        return "a message that is not translated";
    if (CoreXml::LookupTStr(c_message).IsEmpty())
        return "no message for the session";
    if (!XMLValueParsers::ParseBool(u"true"))
        return "true that is not true";
    if (std::u16string_view(XMLTokens::tagPack) != u"pack")
        return "a token";
    if (WriteByCalls() != u"<?xml version='1.0' encoding='utf-8' ?>\n\n<!-- note -->\n"
                          u"<list isOpen='true'>\n  <item />\n</list>\n")
        return "what a formatter writes";
    if (WriteTree() != WriteByCalls())
        return "what is written of a tree";
    if (Base64Decode(u"QUJD") != std::vector<unsigned char>{'A', 'B', 'C'})
        return "Base64";
    return nullptr;
}
