#pragma once

/// What happens to attribute names that begin with a colon before the parser sees the text.
/// Namespaces forbid them, plain XML 1.0 does not.
enum class ColonProcessingMode
{
    /// The bytes are parsed as they are.
    None = 0,
    /// Such names are rewritten and restored behind the parser, so that no caller sees a change.
    EncodeColonAttributes = 1
};
