#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>
#include <kescorexml/DOMParser.h>

// What gdb is to show at the breakpoint.
int main()
{
    const TString empty;
    const TString text = u"\"\u00E9\U0001F600\"";
    const TString longText(500, u'x');
    const auto parsed =
        DOMParser().ParseXmlString("<list sorted='yes'><item cups='2'>tea</item><gap/></list>", "");
    const DOM& document = *parsed;
    const DOMElement& list = *document.GetDocumentRoot();
    DOMElement own(u"own");
    own.SetAttribute(u"made", u"here");
    const DOM nothing;
    return empty.IsEmpty() && text.length() + longText.length() > 0 && list.HasChildren() &&
                   own.HasAttributes() && nothing.GetDocumentRoot() == nullptr
               ? 0
               : 1; // stop here
}
