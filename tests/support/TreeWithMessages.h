#pragma once

#include "support/TreeTesting.h"

#include <kescorexml/DOM.h>

#include <gtest/gtest.h>

/// A document with the tree a(b(c),d),e below its root, and short words for putting messages on it.
class TreeWithMessages : public testing::Test
{
protected:
    TreeWithMessages() { AddChildren(*m_dom.GetRoot(), "a(b(c),d),e"); }

    DOMElement& At(const char* name) { return Find(m_dom, name); }
    void Push(const char* name, const char* message, bool reported = false, bool cancel = false)
    {
        m_dom.PushError(At(name), message, MakeInfo(1), reported, cancel);
    }
    void Warn(const char* name, const char* message)
    {
        m_dom.PushWarning(At(name), message, MakeInfo(2));
    }

    DOM m_dom;
};
