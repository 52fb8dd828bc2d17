#pragma once

#include <kescorexml/ParseLimits.h>

#include <kesplatform/TString.h>

#include <xercesc/sax/Locator.hpp>
#include <xercesc/sax2/Attributes.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>

/// Thrown through the scanner to end a parse that has gone beyond one of its limits. The driver
/// catches it and records it.
struct LimitExceeded
{
    TString message;
    /// Both 0 where there is none.
    unsigned long long line = 0;
    unsigned long long column = 0;
};

/// Keeps the accounts of one parse after the other and ends those that exceed their limits. What it
/// costs a document without document type and schema is a few additions a tag.
class ParseBudget
{
public:
    /// Opens the accounts of a parse; nothing is limited before the first one. `limits` must
    /// outlive the parse.
    void Begin(const ParseLimits& limits, std::uint64_t inputBytes, bool isValidating);
    /// Where errors are located; null for nowhere. Begin forgets it.
    void SetLocator(const xercesc::Locator* locator) noexcept { m_locator = locator; }

    // Each of these throws LimitExceeded.

    void AddText(std::size_t units)
    {
        m_output += units;
        if (m_output > m_outputLimit) [[unlikely]]
            FailAmplification();
    }
    /// `name` is the qualified name.
    void StartElement(std::u16string_view name, const XMLCh* uri, const XMLCh* localName,
                      const xercesc::Attributes& attributes)
    {
        ++m_depth;
        if (m_inspectsTags) [[unlikely]]
            InspectTag(name, uri, localName, attributes);
        AddText(name.size() + 1);
    }
    /// An entity of that length is about to be read inside of `depth` - 1 others.
    void AddExpansion(std::uint64_t units, std::size_t depth);

    void EndElement() noexcept { --m_depth; }
    void DeclareEntity() noexcept { m_inspectsTags = true; }
    void DeclareAttribute(std::u16string_view elementName);
    void OpenNamespaceScope() noexcept { ++m_namespacesInScope; }
    void CloseNamespaceScope() noexcept { --m_namespacesInScope; }

private:
    void InspectTag(std::u16string_view name, const XMLCh* uri, const XMLCh* localName,
                    const xercesc::Attributes& attributes);
    void AddScannerWork(std::uint64_t amount);
    void AddValidationWork(const XMLCh* uri, const XMLCh* localName, std::uint64_t attributes);
    std::uint64_t CountLookUp(const XMLCh* uri, const XMLCh* localName);
    [[noreturn]] void FailAmplification() const;
    [[noreturn]] void Fail(const TString& message) const;

    static constexpr std::uint64_t c_unlimited = std::numeric_limits<std::uint64_t>::max();

    const ParseLimits* m_limits = nullptr;
    const xercesc::Locator* m_locator = nullptr;
    std::uint64_t m_output = 0;
    std::uint64_t m_outputLimit = c_unlimited;
    std::uint64_t m_scannerWork = 0;
    std::uint64_t m_scannerWorkLimit = c_unlimited;
    std::uint64_t m_depth = 0;
    /// A tag can yield or cost more than what stands in it.
    bool m_inspectsTags = false;

    // By element name.
    std::unordered_map<std::u16string, std::uint64_t> m_declaredAttributes;

    bool m_isValidating = false;
    std::uint64_t m_validationWork = 0;
    std::uint64_t m_validationWorkLimit = c_unlimited;
    std::uint64_t m_namespacesInScope = 0;
    std::uint64_t m_differentElements = 0;
    // The number of namespaces by local name, and an entry for each pair of local name and
    // namespace.
    std::unordered_map<std::u16string, std::uint64_t> m_elementNames;
};
