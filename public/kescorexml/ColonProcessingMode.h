#pragma once

/// What happens to attribute names that begin with a colon before the parser sees the text.
/// Namespaces forbid them, plain XML 1.0 does not. Safe to use from several threads.
enum class ColonProcessingMode
{
    /// The bytes are parsed as they are.
    None = 0,
    /// Such names are rewritten and restored behind the parser, so that elements and attributes are
    /// as the document has them. Rewriting makes the text longer: columns behind such a name, and
    /// in the line of the root tag behind its name, are larger than in the document, and a message
    /// about the attribute may show the prefix "IllegalColon".
    EncodeColonAttributes = 1
};
