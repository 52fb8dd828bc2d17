#pragma once

#include <array>
#include <span>
#include <string_view>

/// What is fuzzed. A target takes any bytes, makes the library work on them and compares what comes
/// out with a second opinion; see support/Require.h for how it says that they differ. The same
/// bytes always do the same.
namespace FuzzTargets {

using Bytes = std::span<const unsigned char>;

void Base64(Bytes bytes);
void DirectScanner(Bytes bytes);
void FormatterCalls(Bytes bytes);
void ParseAndWrite(Bytes bytes);
void ParserCalls(Bytes bytes);
void Paths(Bytes bytes);
void RangeTable(Bytes bytes);
void Sanitizer(Bytes bytes);
void Scanners(Bytes bytes);
void SecondReader(Bytes bytes);
void Sources(Bytes bytes);
void StandaloneTree(Bytes bytes);
void VersionSniffing(Bytes bytes);

struct Target
{
    /// Names its seeds in corpus/ and its past finds in finds/, too.
    std::string_view name;
    void (*testOneInput)(Bytes);
};

inline constexpr std::array c_all{
    Target{"Base64", Base64},
    Target{"DirectScanner", DirectScanner},
    Target{"FormatterCalls", FormatterCalls},
    Target{"ParseAndWrite", ParseAndWrite},
    Target{"ParserCalls", ParserCalls},
    Target{"Paths", Paths},
    Target{"RangeTable", RangeTable},
    Target{"Sanitizer", Sanitizer},
    Target{"Scanners", Scanners},
    Target{"SecondReader", SecondReader},
    Target{"Sources", Sources},
    Target{"StandaloneTree", StandaloneTree},
    Target{"VersionSniffing", VersionSniffing},
};

} // namespace FuzzTargets
