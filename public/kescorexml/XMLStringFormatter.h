#pragma once

#include <kescorexml/XMLFormatter.h>

/// Collects the XML text in a string. A formatter is used for one document: its output only grows.
/// An element tree of any depth can be written as long as its indentation and its text fit; a call
/// of OutputDOMElement that throws leaves the output as it was. An indentation that is longer than
/// XMLFormatter::c_maxIndentLength is std::length_error when it is to be written.
///
/// Different objects may be used from different threads.
///
/// @code
/// XMLStringFormatter formatter(u"", true);
/// {
///     const XMLFormatter::Indenter list(formatter, u"list");
///     formatter.OutputContentTag(u"item", {{u"cups", u"2"}}, u"tea & milk");
/// }
/// std::cout << formatter.GetOutput() << '\n'; // <list><item cups='2'>tea &amp; milk</item></list>
/// @endcode
class KESCOREXML_EXPORT XMLStringFormatter : public XMLFormatter
{
public:
    /// See XMLFormatter.
    XMLStringFormatter(const TString& indentUnit, bool suppressNewlines);
    ~XMLStringFormatter() override;

    void OutputString(const TString& text) override;
    /// All that was written so far.
    [[nodiscard]] virtual TString GetOutput() const;

private:
    friend class KeptText;

    TString m_output;
};
