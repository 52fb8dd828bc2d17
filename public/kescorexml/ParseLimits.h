#pragma once

#include <cstdint>

/// How much a parse may make of its input. A document that goes beyond a limit is taken for an
/// attack: the parse ends there with one fatal error that names the limit and its setter, and what
/// came before stays with the sink. The limits are on from the start and so wide that documents
/// made in good faith do not come near them. They hold for each parse, and each load of a schema,
/// alone. A plain value.
///
/// A setter of zeros refuses all that is counted; the largest number switches a limit off.
class ParseLimits
{
public:
    /// A count may exceed `factor` times the bytes of the document only up to `threshold`.
    struct Growth
    {
        /// How often each byte of the document counts.
        std::uint64_t factor;
        /// What is always allowed.
        std::uint64_t threshold;

        /// Whether both numbers are the same.
        bool operator==(const Growth&) const = default;
    };

    /// What reaches the sink. A code unit of text, of a name or of an attribute's value counts one,
    /// and so does each element and each attribute. At first 100 times the bytes, 8 Mi at least.
    /// The default attributes and the entities of a few kilobytes can otherwise fill any memory. A
    /// document without document type and schema yields less than its own size.
    void SetAmplificationLimit(std::uint64_t factor, std::uint64_t threshold) noexcept
    {
        m_amplification = {factor, threshold};
    }
    const Growth& GetAmplificationLimit() const noexcept { return m_amplification; }

    /// The work that the document type gives to the scanner, whether anything of it reaches the
    /// sink or not. An entity of any kind, parameter entities and those in default values included,
    /// counts at each expansion the code units of its replacement text and 64 for each entity that
    /// it is nested in, itself included; a start tag counts the attributes that are declared for
    /// it. At first 100 times the bytes, 16 Mi at least. Six hundred bytes of entities that each
    /// name the one before twice take exponential time otherwise.
    void SetExpansionLimit(std::uint64_t factor, std::uint64_t threshold) noexcept
    {
        m_expansion = {factor, threshold};
    }
    const Growth& GetExpansionLimit() const noexcept { return m_expansion; }

    /// The levels of nested elements while a parse validates; at first 10,000. Validation looks at
    /// all open elements for each tag. Without schemas depth is not limited.
    void SetValidationDepthLimit(std::uint64_t levels) noexcept { m_validationDepth = levels; }
    std::uint64_t GetValidationDepthLimit() const noexcept { return m_validationDepth; }

    /// The look-ups of a parse that validates. A start tag counts, once for itself and once for
    /// each of its attributes, the open elements and the namespace declarations in scope; and for
    /// the look-up of its declaration the different elements so far, and eight for each namespace
    /// that elements of its name have been in. What the document type declares counts, too, as it
    /// is validated by: of a content model the names times the particles and a 64th of the cube of
    /// the names, of an attribute's type the square of the names. So does, where there is a
    /// document type, half of the memory that the scanner allocates for one tag or declaration
    /// beyond 32 KiB; and neither that nor what it holds, beyond what it held when the parse began
    /// and 1 MiB, may exceed the limit in bytes. At first 100 times the bytes, 64 Mi at least. Many
    /// declarations, or many elements that no schema knows, take quadratic time otherwise, and a
    /// content model of 200 bytes exponential time.
    void SetValidationWorkLimit(std::uint64_t factor, std::uint64_t threshold) noexcept
    {
        m_validationWork = {factor, threshold};
    }
    const Growth& GetValidationWorkLimit() const noexcept { return m_validationWork; }

    /// Whether all limits are the same.
    bool operator==(const ParseLimits&) const = default;

private:
    Growth m_amplification{100, 8U << 20};
    Growth m_expansion{100, 16U << 20};
    std::uint64_t m_validationDepth = 10000;
    Growth m_validationWork{100, 64U << 20};
};
