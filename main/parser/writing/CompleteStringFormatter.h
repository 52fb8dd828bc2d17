#pragma once

#include <kescorexml/XMLStringFormatter.h>

#include <exception>

/// A string formatter that knows whether something is missing: XMLFormatter::Indenter swallows what
/// is thrown while it closes its tag, and for want of memory a text would end without close tags.
class CompleteStringFormatter : public XMLStringFormatter
{
public:
    using XMLStringFormatter::XMLStringFormatter;

    void OutputCloseTag(const TString& name) override
    {
        try {
            XMLStringFormatter::OutputCloseTag(name);
        } catch (...) {
            m_failure = std::current_exception();
            throw;
        }
    }

    /// Throws what was thrown while a tag was closed.
    TString GetOutput() const override
    {
        if (m_failure)
            std::rethrow_exception(m_failure);
        return XMLStringFormatter::GetOutput();
    }

private:
    std::exception_ptr m_failure;
};
