#include "ParseBudget.h"

#include "XercesText.h"

#include <kesplatform/TFormatString.h>

#include <algorithm>

namespace {

/// The scanner sets up a large buffer for each entity that is open, and compares names with them.
constexpr std::uint64_t c_unitsAnOpenEntity = 64;
/// Elements of one name in different namespaces share a list in the scanner's table of elements.
/// The table does not grow, so that all others cost something, too.
constexpr std::uint64_t c_lookUpsANamespace = 8;

constexpr std::uint64_t c_most = std::numeric_limits<std::uint64_t>::max();

std::uint64_t MultiplyOrMost(std::uint64_t a, std::uint64_t b) noexcept
{
    return a != 0 && b > c_most / a ? c_most : a * b;
}

std::uint64_t GetMost(const ParseLimits::Growth& growth, std::uint64_t inputBytes) noexcept
{
    return std::max(growth.threshold, MultiplyOrMost(growth.factor, inputBytes));
}

/// Past the limit at once, rather than around the end of the number's range.
void Add(std::uint64_t& account, std::uint64_t amount) noexcept
{
    account = amount > c_most - account ? c_most : account + amount;
}

TString DescribeGrowth(const ParseLimits::Growth& growth)
{
    return TFormatString(u"%1 units and %2 times the bytes of the document")
        .Format(growth.threshold, growth.factor);
}

} // namespace

void ParseBudget::Begin(const ParseLimits& limits, std::uint64_t inputBytes, bool isValidating)
{
    const std::uint64_t number = m_number + 1;
    *this = ParseBudget();
    m_number = number;
    m_limits = &limits;
    m_outputLimit = GetMost(limits.GetAmplificationLimit(), inputBytes);
    m_scannerWorkLimit = GetMost(limits.GetExpansionLimit(), inputBytes);
    m_validationWorkLimit = GetMost(limits.GetValidationWorkLimit(), inputBytes);
    m_isValidating = isValidating;
    m_countsAttributes = isValidating;
}

void ParseBudget::AddExpansion(std::uint64_t units, std::size_t depth)
{
    AddScannerWork(units + depth * c_unitsAnOpenEntity);
}

void ParseBudget::DeclareAttribute(std::u16string_view elementName)
{
    m_countsAttributes = true;
    ++m_declaredAttributes[std::u16string(elementName)];
}

std::uint64_t ParseBudget::CountDeclaredAttributes(std::u16string_view name,
                                                   DeclaredAttributes& known) const
{
    if (known.parse != m_number) {
        const auto declared = m_declaredAttributes.find(std::u16string(name));
        known = {m_number, declared == m_declaredAttributes.end() ? 0 : declared->second};
    }
    return known.count;
}

void ParseBudget::AddScannerWork(std::uint64_t amount)
{
    Add(m_scannerWork, amount);
    if (m_scannerWork > m_scannerWorkLimit) {
        Fail(TFormatString(u"the entities and attributes of the document type make more work "
                           u"than %1 (expansion limit, SetExpansionLimit)")
                 .Format(DescribeGrowth(m_limits->GetExpansionLimit())));
    }
}

void ParseBudget::AddValidationWork(const XMLCh* uri, const XMLCh* localName,
                                    std::uint64_t attributes)
{
    const std::uint64_t deepest = m_limits->GetValidationDepthLimit();
    if (m_depth > deepest) {
        Fail(TFormatString(u"elements are nested more than %1 levels deep (validation depth limit, "
                           u"SetValidationDepthLimit)")
                 .Format(deepest));
    }
    Add(m_validationWork, MultiplyOrMost(1 + attributes, m_depth + m_namespacesInScope) +
                              CountLookUp(uri, localName));
    if (m_validationWork > m_validationWorkLimit) {
        Fail(TFormatString(u"validation takes more look-ups of names than %1 (validation work "
                           u"limit, SetValidationWorkLimit)")
                 .Format(DescribeGrowth(m_limits->GetValidationWorkLimit())));
    }
}

std::uint64_t ParseBudget::CountLookUp(const XMLCh* uri, const XMLCh* localName)
{
    std::u16string name(ViewXMLCh(localName));
    std::u16string pair = name;
    pair += u'\0';
    pair += ViewXMLCh(uri);
    std::uint64_t& namespaces = m_elementNames[std::move(name)];
    if (m_elementNames.try_emplace(std::move(pair)).second) {
        ++namespaces;
        ++m_differentElements;
    }
    return m_differentElements + namespaces * c_lookUpsANamespace;
}

void ParseBudget::FailAmplification() const
{
    Fail(TFormatString(u"the document yields more than %1 (amplification limit, "
                       u"SetAmplificationLimit)")
             .Format(DescribeGrowth(m_limits->GetAmplificationLimit())));
}

void ParseBudget::Fail(const TString& message) const
{
    LimitExceeded exceeded{message};
    if (m_locator != nullptr) {
        exceeded.line = m_locator->getLineNumber();
        exceeded.column = m_locator->getColumnNumber();
    }
    throw exceeded;
}
