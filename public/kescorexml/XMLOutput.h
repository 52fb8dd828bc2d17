#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <iosfwd>

class DOM;
class DOMElement;

/// Where the text of a tree goes: what XMLDomFormatter::RenderAsXMLString gives, as UTF-8, written
/// in pieces of 64 KB or the largest text of an element, so that memory does not grow with the
/// tree. With `header` the XML declaration comes first.
///
/// std::length_error for a tree deeper than XMLFormatter::c_maxIndentLength allows. Safe to use
/// from several threads, which must not write to the same place, as long as nobody changes the
/// tree.
///
/// @code
/// const auto document = DOMParser().ParseXmlString("<list><item>tea</item></list>", "list.xml");
/// const DOMElement& item = *document->GetElement(u"item");
/// XMLOutput::WriteXml(item, std::cout); // <item>tea</item>
/// @endcode
namespace XMLOutput {

/// Saves a document, or an element and all below it, in a file. The text goes to a temporary file
/// in the same folder, which takes the place of an older file once the disk has all of it: whatever
/// fails, nobody finds less there than there was. The older file's permissions are kept; see
/// TSaveFile. TIO::Exception, which names the file and the reason, when it cannot be written.
KESCOREXML_EXPORT void SaveXmlFile(const DOM& document, const TString& fileName,
                                   bool header = true);
KESCOREXML_EXPORT void SaveXmlFile(const DOMElement& element, const TString& fileName,
                                   bool header = true);

/// Writes to a stream, which should be a binary one where that makes a difference. A failure sets
/// std::ios_base::badbit, and nothing more is written; streams throw when they were told to.
KESCOREXML_EXPORT void WriteXml(const DOM& document, std::ostream& stream, bool header = true);
KESCOREXML_EXPORT void WriteXml(const DOMElement& element, std::ostream& stream,
                                bool header = false);

} // namespace XMLOutput
