#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/DOMElement.h>

#include <gtest/gtest.h>

#include <memory>

/// <r> <a> <b/> <c> <b/> </c> </a> <b> <a/> </b> <a/> </r>, attached to a document.
class DOMPathTest : public testing::Test
{
protected:
    DOMPathTest()
    {
        r = dom.GetRoot()->AddNewChild(u"r");
        a1 = r->AddNewChild(u"a");
        b1 = a1->AddNewChild(u"b");
        c = a1->AddNewChild(u"c");
        b2 = c->AddNewChild(u"b");
        b3 = r->AddNewChild(u"b");
        a2 = b3->AddNewChild(u"a");
        a3 = r->AddNewChild(u"a");
    }

    DOM dom;
    DOMElement* r;
    DOMElement* a1;
    DOMElement* b1;
    DOMElement* c;
    DOMElement* b2;
    DOMElement* b3;
    DOMElement* a2;
    DOMElement* a3;
};

/// That many elements of one name, each the only child of the one before.
inline std::unique_ptr<DOMElement> MakeChain(int levels, const TString& name)
{
    auto top = std::make_unique<DOMElement>(name);
    DOMElement* deepest = top.get();
    for (int level = 1; level < levels; ++level)
        deepest = deepest->AddNewChild(name);
    return top;
}
