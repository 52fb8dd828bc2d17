#pragma once

// What is measured with the help of private classes. Each family registers itself and its limits.

void RegisterSanitizerBenchmarks();
void RegisterLeftToXercesBenchmarks();

/// Parses the XML files that Debian's unicode-cldr-core and shared-mime-info install and prints, as
/// a Markdown table, how many of them the direct scanner has read, and why it has left the others
/// to Xerces. Returns whether it has read as many of both as it should.
bool PrintAccepted();
