#pragma once

#include <kescorexml/Export.h>

#include <cstdint>

/// How much a parse may make of its input. A document that goes beyond a limit is taken for an
/// attack: the parse ends there with one fatal error that names the limit and its setter, and what
/// came before stays with the sink. The limits are on from the start and so wide that documents
/// made in good faith do not come near them. They hold for each parse, and each load of a schema,
/// alone. What messages may take is limited, too, but ends their list and no parse. A plain value.
///
/// A setter of zeros refuses all that is counted; the largest number switches a limit off.
class ParseLimits
{
public:
    /// A count may exceed `factor` times the bytes of the document only up to `threshold`. A plain
    /// value.
    struct Growth
    {
        /// How often each byte of the document counts.
        std::uint64_t factor;
        /// What is always allowed.
        std::uint64_t threshold;

        /// Whether both numbers are the same.
        bool operator==(const Growth&) const = default;
    };

    /// What reaches the sink, and what it costs. A code unit of text, of a name or of an
    /// attribute's value counts one, and so does each element and each attribute that the document
    /// spells out: a document without document type and schema yields less than its own size. What
    /// it does not spell out costs more than its letters: an attribute that a declaration supplies,
    /// or that stands in an entity's text, counts 48 beside them, and so does an element in an
    /// entity's text. At first 100 times the bytes, 512 Mi at least: a gibibyte of text, or ten
    /// million default attributes or elements of entities. A few kilobytes can otherwise fill any
    /// memory.
    void SetAmplificationLimit(std::uint64_t factor, std::uint64_t threshold) noexcept
    {
        m_amplification = {factor, threshold};
    }
    [[nodiscard]] const Growth& GetAmplificationLimit() const noexcept { return m_amplification; }

    /// The work that the document type and large tags give to the scanner, whether anything of it
    /// reaches the sink or not. An entity of any kind, parameter entities and those in default
    /// values included, counts at each expansion the code units of its replacement text, 512, and
    /// one for each entity that it is nested in, itself included; a start tag counts the attributes
    /// that are declared for it. Once a tag has had more than 14,628 attributes, each tag with any
    /// counts a 32nd of the buckets of the scanner's table of them, which it empties one by one and
    /// never makes smaller, even for the next document: 914, and eight times as much for eight
    /// times the attributes. At first 100 times the bytes, 256 Mi at least. Six hundred bytes of
    /// entities that each name the one before twice take exponential time otherwise.
    void SetExpansionLimit(std::uint64_t factor, std::uint64_t threshold) noexcept
    {
        m_expansion = {factor, threshold};
    }
    [[nodiscard]] const Growth& GetExpansionLimit() const noexcept { return m_expansion; }

    /// The levels of nested elements while a parse validates; at first 40,000. Validation looks at
    /// all open elements for each tag. Without schemas depth is not limited.
    void SetValidationDepthLimit(std::uint64_t levels) noexcept { m_validationDepth = levels; }
    [[nodiscard]] std::uint64_t GetValidationDepthLimit() const noexcept
    {
        return m_validationDepth;
    }

    /// The work of a parse that validates, on two accounts.
    ///
    /// Look-ups, which may come to four times the threshold: a start tag counts, once for itself
    /// and once for each of its attributes with a prefix, the open elements and a quarter of the
    /// namespace declarations in scope; and, where no schema declares its element, 8 for each such
    /// element so far that lies in one bucket with its own, 16 more for each of these beyond 4096,
    /// and 3 for each beyond 4096 wherever it lies, each pair of name and namespace once. There are
    /// 29 buckets: of elements with different names a 29th lies in each, those with the same name
    /// lie in the same.
    ///
    /// Declarations and memory: what the document type declares counts, as it is validated by: of a
    /// content model the names times the particles and, for as many of its particles as are part of
    /// a sequence or repeated, a 64th of the square of the names; of an attribute's type a quarter
    /// of the square of the names. So does, where there is a document type, half of
    /// the memory that the scanner allocates for one tag or declaration beyond 32 KiB; and neither
    /// that nor what it holds, beyond what it held when the parse began and 1 MiB, may exceed the
    /// limit in bytes.
    ///
    /// At first 100 times the bytes, 256 Mi at least: 10,000 levels above 100,000 elements, or
    /// 28,000 different elements that no schema knows. Many declarations, or many such elements,
    /// take quadratic time otherwise, and a content model of 200 bytes exponential time.
    void SetValidationWorkLimit(std::uint64_t factor, std::uint64_t threshold) noexcept
    {
        m_validationWork = {factor, threshold};
    }
    [[nodiscard]] const Growth& GetValidationWorkLimit() const noexcept { return m_validationWork; }

    /// How many names of one kind may lie in one bucket of the scanner's hash tables, which are not
    /// seeded; at first 4096. Names that nobody has chosen for it share one with a few others; of
    /// some ten thousand regular ones, such as numbers with two zeros behind them, up to 560 do. A
    /// look-up takes time in the number of names in its bucket. The kinds are the elements of a
    /// document, unless a schema validates them, and, by declaration, elements, the attributes of
    /// an element, entities, parameter entities and notations; the attributes of a start tag; and
    /// while validating prefixes, namespaces and identifiers. Tables stay as large as a document
    /// has made them, and namespaces and their prefixes stay in them, as long as the scanner has
    /// schemas loaded: they count for the next document, too. A start tag that exceeds the limit
    /// ends the parse before its first event, or, if character references hide it in the text of an
    /// entity, where that is declared. What the library reads without the scanner is not
    /// limited, for its own table cannot be aimed at.
    void SetNameCollisionLimit(std::uint64_t names) noexcept { m_nameCollisions = names; }
    [[nodiscard]] std::uint64_t GetNameCollisionLimit() const noexcept { return m_nameCollisions; }

    /// What the errors and warnings of a parse take together: the code units of their texts, and 64
    /// for each message. From the first on that does not fit in, they are counted and not kept, but
    /// for fatal errors. A list of which some are missing ends with one message more, an error or
    /// a warning as those are, which names the limit and says how many are missing, at the place of
    /// the first of them. At first 20 times the bytes, 16 Mi at least: 100,000 messages of ordinary
    /// length. A few bytes for each element can otherwise yield a message of two thousand units for
    /// each. Attributes that messages name where the sink asks for it take from the same, and are
    /// not named where nothing is left.
    void SetMessageLimit(std::uint64_t factor, std::uint64_t threshold) noexcept
    {
        m_messages = {factor, threshold};
    }
    [[nodiscard]] const Growth& GetMessageLimit() const noexcept { return m_messages; }

    /// What a message counts beside its text.
    static constexpr std::uint64_t c_unitsOfMessage = 64;
    /// What an attribute that the document does not spell out counts for amplification beside its
    /// letters.
    static constexpr std::uint64_t c_unitsOfImpliedAttribute = 48;
    /// The same for an element.
    static constexpr std::uint64_t c_unitsOfImpliedElement = 48;

    /// Whether all limits are the same.
    bool operator==(const ParseLimits&) const = default;

private:
    Growth m_amplification{100, 512U << 20};
    Growth m_expansion{100, 256U << 20};
    std::uint64_t m_validationDepth = 40000;
    Growth m_validationWork{100, 256U << 20};
    std::uint64_t m_nameCollisions = 4096;
    Growth m_messages{20, 16U << 20};
};
