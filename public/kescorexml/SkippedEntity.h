#pragma once

#include <kesplatform/TString.h>

#include <cstdint>

/// An entity to which a document refers although nobody declares it: in a document whose type is
/// declared elsewhere, where parsers do not look, "&nbsp;" is no mistake, but nothing is read in
/// its place. A plain value.
struct SkippedEntity
{
    /// Without "&" and ";".
    TString name;
    /// How often content and attribute values of the document refer to it. What the text of an
    /// entity refers to counts once, where the document refers to that entity first.
    std::uint64_t references;
    /// The line in which the first of these begins. Lines and columns count as in XMLDiagnostic.
    int line;
    int column; ///< Where it begins in that line.

    /// Whether both say the same.
    bool operator==(const SkippedEntity&) const = default;
};
