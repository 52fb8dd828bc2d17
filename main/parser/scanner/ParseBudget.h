#pragma once

#include "scanner/NameBuckets.h"
#include "sinks/ParsedNames.h"

#include <kescorexml/ParseLimits.h>

#include <kesplatform/TString.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <xercesc/sax/Locator.hpp>

/// Thrown through the scanner to end a parse that has gone beyond one of its limits. The driver
/// catches it and records it.
struct LimitExceeded
{
    TString message;
    /// Both 0 where there is none.
    unsigned long long line = 0;
    unsigned long long column = 0;
};

/// What has names in a document, each kind in a hash table of its own.
enum class NameKind
{
    Element,
    DeclaredElement,
    Entity,
    ParameterEntity,
    Notation,
    Prefix,
    Namespace,
    Identifier
};

/// Where a scanner that validates looks for the element of a tag.
enum class ElementTable
{
    /// Among the elements that a document type does not declare: a table that grows, as the only
    /// one where nothing is validated.
    NoDocumentType,
    /// Among those that a schema declares, which are none of the document's.
    Schema,
    /// Among those that no schema declares: a table that does not grow.
    NoSchema
};

/// Keeps the accounts of one parse after the other and ends those that exceed their limits. What it
/// costs a document without document type and schema is a few additions and comparisons a tag, and
/// for each name of an element, the first time, a look-up of its own.
class ParseBudget
{
public:
    /// Opens the accounts of a parse; nothing is limited before the first one. What happens to
    /// `limits` later does not touch the parse.
    void Begin(const ParseLimits& limits, std::uint64_t inputBytes, bool isValidating);
    /// From now on the memory of a parse that validates counts: a document type begins. Else it
    /// counts from the first start tag on. What the scanner does before that is no validation, and
    /// forgets what it has opened when it is stopped.
    ///
    /// With a document type, what the scanner allocates for a step counts, too, even if it frees
    /// it at once: the models are the document's. Those of schemas are ready before the parse, and
    /// values that are matched with a pattern may take much for a moment.
    void BeginDocumentType() noexcept
    {
        m_isInDocumentType = true;
        BeginMemory(true);
    }
    /// What the scanner does with content models from now on, it does for validation.
    void EndDocumentType() noexcept { m_isInDocumentType = false; }
    /// The parse is over: what it has met takes no memory any more, but for what the scanner keeps,
    /// too.
    void ForgetNames() noexcept;
    /// The scanner is another one, whose tables are new.
    void ForgetTables() noexcept { m_tables = {}; }
    /// How large the scanner's table of the attributes of a tag may be.
    std::size_t& GetTagReach() noexcept { return m_tables.tagReach; }
    /// Memory does not count any more: the scanner is done, or must be able to clean up.
    void EndMemory() noexcept { m_countsMemory = false; }
    /// Whether the parse does.
    bool IsValidating() const noexcept { return m_isValidating; }
    /// Where errors are located; null for nowhere. Begin forgets it.
    void SetLocator(const xercesc::Locator* locator) noexcept { m_locator = locator; }
    const xercesc::Locator* GetLocator() const noexcept { return m_locator; }
    /// How many units may reach the sink.
    std::uint64_t GetOutputLimit() const noexcept { return m_outputLimit; }
    /// How many declared attributes and units of entities the scanner may be given to do.
    std::uint64_t GetScannerWorkLimit() const noexcept { return m_scannerWorkLimit; }
    /// Whether the parse has exceeded a limit. What the scanner reports on its way out is no news.
    bool HasFailed() const noexcept { return m_hasFailed; }

    /// Puts a message of so many units on its account. False once one has not fitted in, and for
    /// all that follow.
    bool HasRoomForMessage(std::uint64_t units) noexcept
    {
        m_messages += units + ParseLimits::c_unitsOfMessage;
        return m_messages <= m_messageLimit;
    }
    /// Puts so many units of what a message can do without on the same account, if they fit in.
    bool AddToMessages(std::uint64_t units) noexcept
    {
        if (m_messages > m_messageLimit || units > m_messageLimit - m_messages)
            return false;
        m_messages += units;
        return true;
    }
    /// For people.
    TString DescribeMessageLimit() const;

    // Each of these throws LimitExceeded.

    void AddText(std::size_t units)
    {
        m_output += units;
        if (m_output > m_outputLimit) [[unlikely]]
            FailAmplification();
    }
    /// `name` is the qualified name, and `known` what the budget noted down for it. Declarations
    /// of namespaces do not count for `prefixedAttributes`, which are heeded while validating.
    void StartElement(std::u16string_view name, ParsedNames::DeclaredAttributes& known,
                      const XMLCh* uri, const XMLCh* localName, std::uint64_t attributes,
                      std::uint64_t prefixedAttributes)
    {
        ++m_depth;
        if (m_isValidating) [[unlikely]]
            AddValidationWork(name, uri, localName, prefixedAttributes);
        if (known.parse != m_number) [[unlikely]]
            MeetElement(name, known);
        if (known.count != 0) [[unlikely]]
            AddScannerWork(known.count);
        if (m_tables.tagReach > c_smallTagTable && attributes != 0) [[unlikely]]
            AddScannerWork(m_tables.tagReach / c_bucketsAUnit);
        AddText(name.size() + (m_isInEntity ? ParseLimits::c_unitsOfImpliedElement : 1));
    }
    /// Whether attributes, too, are to be added: a tag can yield more than what stands in it.
    bool CountsAttributes() const noexcept { return m_countsAttributes; }
    /// Those of the tag that is about to start which do not stand in it.
    void SetDefaultAttributes(std::uint64_t count) noexcept { m_defaultAttributes = count; }
    /// In which table the element of the tag is that is about to start; heeded while validating.
    void SetElementTable(ElementTable table) noexcept { m_elementTable = table; }
    /// All attributes of a tag, whose names and values have so many units.
    void AddAttributes(std::uint64_t count, std::uint64_t units)
    {
        const std::uint64_t implied = m_isInEntity ? count : m_defaultAttributes;
        AddText(units + count + implied * (ParseLimits::c_unitsOfImpliedAttribute - 1));
    }
    /// The names of all attributes of a tag, zero-terminated.
    void CheckAttributeNames(std::span<const char16_t* const> names)
    {
        if (names.size() > m_limits.GetNameCollisionLimit()) [[unlikely]]
            CheckManyAttributeNames(names);
    }
    /// A name of that kind, declared or used; it may have been before.
    void MeetName(NameKind kind, std::u16string_view name);
    /// A start tag that is still to come has too many attributes whose hashes collide.
    [[noreturn]] void FailAtTag(unsigned long long line, unsigned long long column);
    /// An entity of that length is about to be read inside of `depth` - 1 others.
    void AddExpansion(std::uint64_t units, std::size_t depth);
    /// So many readers are open: that of the document and one for each entity.
    void SetReaders(std::size_t count) noexcept { m_isInEntity = count > 1; }

    /// The scanner is about to allocate a block. It does so at each level where it recurses
    /// through a value that it matches with a pattern.
    void AddMemory(std::size_t bytes)
    {
        if (m_countsMemory) [[unlikely]] {
            RequireStack(0);
            m_memory += static_cast<std::int64_t>(bytes);
            if (m_countsSteps)
                AddToStep(bytes);
        }
    }
    /// The scanner is about to make a node of a content model.
    void AddModelNode()
    {
        if (m_countsMemory && m_countsSteps) [[unlikely]]
            AddToStep(++m_modelNodesInStep / 2);
    }
    /// The scanner has looked up a name of a content model, of which it tells only at its end.
    void MeetModelName(std::u16string_view name)
    {
        if (m_isInDocumentType)
            MeetName(NameKind::DeclaredElement, name);
    }
    /// The document type declares an element with that content model.
    void DeclareElement(std::u16string_view name, std::u16string_view model);
    /// The document type declares an attribute of that type.
    void DeclareAttribute(std::u16string_view elementName, std::u16string_view name,
                          std::u16string_view type);

    /// The scanner has freed a block.
    void ReturnMemory(std::size_t bytes) noexcept { m_memory -= static_cast<std::int64_t>(bytes); }
    /// The scanner is between two steps. What it has allocated for the last one, if much, goes on
    /// the account of validation.
    void SettleMemory() noexcept;
    void EndElement() noexcept { --m_depth; }
    /// Parameter entities have names that begin with "%".
    void DeclareEntity(std::u16string_view name);
    /// The text of an entity, in which character references stand for what they mean.
    void CheckTagsOfEntity(std::u16string_view text);
    void OpenNamespaceScope(std::u16string_view prefix, std::u16string_view uri);
    void CloseNamespaceScope() noexcept { --m_namespacesInScope; }

private:
    /// What the scanner's tables keep from one parse to the next, as long as it lives.
    struct Tables
    {
        /// By kind, the sizes that they may have.
        std::array<std::size_t, static_cast<std::size_t>(NameKind::Identifier) + 1> reach{};
        std::size_t tagReach = 0;
        /// Those that keep their names, too.
        std::unordered_map<NameKind, NameBuckets> kept;
    };
    /// The scanner empties its table of the attributes of a tag one bucket after the other, for
    /// each tag. A smaller table takes no longer than the tag.
    static constexpr std::size_t c_smallTagTable = 4096;
    static constexpr std::size_t c_bucketsAUnit = 32;

    NameBuckets& GetNames(NameKind kind);
    std::size_t& GetReach(NameKind kind) noexcept
    {
        return m_tables.reach[static_cast<std::size_t>(kind)];
    }
    /// The first element of a name, or the first since names were forgotten.
    void MeetElement(std::u16string_view name, ParsedNames::DeclaredAttributes& known);
    /// What no document type declares or names lies in a table of its own.
    void MeetUndeclaredElement(std::u16string_view name);
    void CheckManyAttributeNames(std::span<const char16_t* const> names);
    void AddScannerWork(std::uint64_t amount);
    void AddValidationWork(std::u16string_view name, const XMLCh* uri, const XMLCh* localName,
                           std::uint64_t prefixedAttributes);
    void AddDeclarationWork(std::uint64_t amount);
    void BeginMemory(bool countsSteps) noexcept;
    void AddToStep(std::uint64_t amount);
    void RequireStack(std::size_t bytes);
    [[noreturn]] void FailMemory();
    /// For an element that no schema declares.
    std::uint64_t CountElementLookUps(const XMLCh* uri, const XMLCh* localName);
    [[noreturn]] void FailAmplification();
    [[noreturn]] void FailCollision(const char16_t* kind);
    [[noreturn]] void Fail(const TString& message);

    static constexpr std::uint64_t c_unlimited = std::numeric_limits<std::uint64_t>::max();

    ParseLimits m_limits;
    const xercesc::Locator* m_locator = nullptr;
    bool m_hasFailed = false;
    std::uint64_t m_output = 0;
    std::uint64_t m_outputLimit = c_unlimited;
    std::uint64_t m_scannerWork = 0;
    std::uint64_t m_scannerWorkLimit = c_unlimited;
    std::uint64_t m_messages = 0;
    std::uint64_t m_messageLimit = c_unlimited;
    std::uint64_t m_depth = 0;
    bool m_countsAttributes = false;
    bool m_isInEntity = false;
    bool m_isInDocumentType = false;
    std::uint64_t m_defaultAttributes = 0;
    ElementTable m_elementTable = ElementTable::NoDocumentType;

    /// Of the parse.
    std::uint64_t m_number = 0;
    struct DeclaredElement
    {
        std::uint64_t attributes = 0;
        std::optional<NameBuckets> attributeNames;
    };
    // By name; complete before the first element begins.
    std::unordered_map<TString, DeclaredElement> m_declaredElements;
    // Each from the first name on.
    std::unordered_map<NameKind, NameBuckets> m_names;
    Tables m_tables;

    bool m_isValidating = false;
    std::uint64_t m_validationWork = 0;
    std::uint64_t m_validationWorkLimit = c_unlimited;
    std::uint64_t m_lookUps = 0;
    std::uint64_t m_lookUpLimit = c_unlimited;
    std::uint64_t m_namespacesInScope = 0;
    /// From the first element on that no schema declares.
    std::optional<NameBuckets> m_validatedElements;

    bool m_countsMemory = false;
    bool m_countsSteps = false;
    /// What the scanner holds more, or less, than when it began to read.
    std::int64_t m_memory = 0;
    std::uint64_t m_allocatedInStep = 0;
    /// The scanner compares each name of a mixed model with all others before it tells of the
    /// declaration.
    std::uint64_t m_modelNodesInStep = 0;
    /// What m_allocatedInStep may become before the account of validation is empty.
    std::uint64_t m_maximumInStep = 0;
};
