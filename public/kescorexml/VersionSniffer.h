#pragma once

#include <kescorexml/Export.h>
#include <kescorexml/InputSource.h>

#include <kesplatform/TString.h>
#include <kesplatform/VersionNumber.h>

#include <optional>

/// The version of a document, taken from the attribute `attributeName` ("version" when empty) of
/// its root start tag, without a parse. Nothing when the document has no complete root start tag or
/// that tag no such attribute; a value that is no version counts as the platform reads it.
///
/// Reads 512 bytes at a time from where `document` stands, which is its start unless the caller
/// moved it, and no further than the root start tag; whatever happens, `document` is back at its
/// start afterwards. Costs time and memory linear in the bytes read. What the source throws, this
/// throws. Safe to use from several threads, each with a source of its own.
///
/// REQUIRES: `document` can be rewound. Else the process ends, as InputSourceResetter states: do
/// not sniff a FileInputSource of a pipe, but read the pipe into memory first.
///
/// @code
/// StringInputSource source(u"<workbook version='18.1'> and so on", u"w", false);
/// std::cout << VersionSniffer(source, u"version")->GetAsString() << '\n'; // 18.1
/// @endcode
[[nodiscard]] KESCOREXML_EXPORT std::optional<VersionNumber>
VersionSniffer(InputSource& document, const TString& attributeName);
