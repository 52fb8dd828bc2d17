#include "scanner/ParseBudget.h"

#include "base/StackGuard.h"
#include "bytes/XercesText.h"

#include <kesplatform/TFormatString.h>

#include <algorithm>
#include <string>

namespace {

/// The scanner sets up a large buffer for each entity that is open, and compares names with them.
constexpr std::uint64_t c_unitsAnOpenEntity = 64;
/// Elements of one name in different namespaces share a list in the scanner's table of elements.
/// The table does not grow, so that all others cost something, too.
constexpr std::uint64_t c_lookUpsANamespace = 8;

/// What the scanner may allocate for a step, a tag or a declaration, before that is work. Building
/// the automaton of a content model can take far more than the automaton.
constexpr std::uint64_t c_freeMemoryInStep = 32 * 1024;
/// The scanner recurses through a content model that is not mixed, a level for each particle at
/// most. It takes 180 bytes a level.
constexpr std::uint64_t c_stackAParticle = 256;
/// What the scanner may hold without regard to the limit: buffers that any document needs.
constexpr std::uint64_t c_freeMemory = 1024 * 1024;

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

struct ModelSize
{
    std::uint64_t names = 0;
    /// The names, and what says how often something occurs.
    std::uint64_t particles = 0;
};

ModelSize MeasureModel(std::u16string_view model) noexcept
{
    ModelSize size;
    bool isInName = false;
    for (const char16_t c : model) {
        const bool separates = std::u16string_view(u"(),| ").find(c) != std::u16string_view::npos;
        const bool repeats = c == u'?' || c == u'*' || c == u'+';
        if (repeats)
            ++size.particles;
        else if (!separates && !isInName)
            ++size.names;
        isInName = !separates && !repeats;
    }
    size.particles += size.names;
    return size;
}

/// In look-ups, for the scanner's automaton: it has up to a state for each name, made of sets of
/// names, of which a machine word holds 64.
std::uint64_t EstimateModelWork(const ModelSize& size) noexcept
{
    const std::uint64_t square = MultiplyOrMost(size.names, size.names);
    std::uint64_t work = MultiplyOrMost(size.names, size.particles);
    Add(work, MultiplyOrMost(square, size.names) / 64);
    return work;
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
    m_limits = limits;
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

void ParseBudget::BeginMemory(bool countsSteps) noexcept
{
    m_memory = 0;
    m_allocatedInStep = 0;
    m_countsMemory = m_isValidating;
    m_countsSteps = countsSteps;
    SettleMemory();
}

void ParseBudget::AddToStep(std::uint64_t amount)
{
    Add(m_allocatedInStep, amount);
    if (m_allocatedInStep > m_mostInStep)
        FailMemory();
}

void ParseBudget::SettleMemory() noexcept
{
    if (m_allocatedInStep > c_freeMemoryInStep)
        Add(m_validationWork, (m_allocatedInStep - c_freeMemoryInStep) / 2);
    m_allocatedInStep = 0;
    m_modelNodesInStep = 0;
    m_mostInStep = m_validationWorkLimit - std::min(m_validationWork, m_validationWorkLimit);
    Add(m_mostInStep, c_freeMemoryInStep);
}

void ParseBudget::DeclareElement(std::u16string_view model)
{
    if (!m_isValidating)
        return;
    const ModelSize size = MeasureModel(model);
    AddDeclarationWork(EstimateModelWork(size));
    if (!model.starts_with(u"(#PCDATA"))
        RequireStack(MultiplyOrMost(size.particles, c_stackAParticle));
}

void ParseBudget::DeclareAttribute(std::u16string_view elementName, std::u16string_view type)
{
    m_countsAttributes = true;
    ++m_declaredAttributes[TString(elementName)];
    // Which may be a list of names; the scanner compares each with all others.
    if (m_isValidating) {
        const std::uint64_t names = MeasureModel(type).names;
        AddDeclarationWork(MultiplyOrMost(names, names));
    }
}

std::uint64_t ParseBudget::CountDeclaredAttributes(std::u16string_view name,
                                                   ParsedNames::DeclaredAttributes& known) const
{
    if (known.parse != m_number) {
        const auto declared = m_declaredAttributes.find(TString(name));
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
                 .Format(DescribeGrowth(m_limits.GetExpansionLimit())));
    }
}

void ParseBudget::AddValidationWork(const XMLCh* uri, const XMLCh* localName,
                                    std::uint64_t attributes)
{
    const std::uint64_t deepest = m_limits.GetValidationDepthLimit();
    if (m_depth > deepest) {
        Fail(TFormatString(u"elements are nested more than %1 levels deep (validation depth limit, "
                           u"SetValidationDepthLimit)")
                 .Format(deepest));
    }
    SettleMemory();
    if (m_depth == 1 && !m_countsMemory)
        BeginMemory(false);
    Add(m_validationWork, MultiplyOrMost(1 + attributes, m_depth + m_namespacesInScope) +
                              CountLookUp(uri, localName));
    if (m_validationWork > m_validationWorkLimit) {
        Fail(TFormatString(u"validation takes more look-ups of names than %1 (validation work "
                           u"limit, SetValidationWorkLimit)")
                 .Format(DescribeGrowth(m_limits.GetValidationWorkLimit())));
    }
    if (m_memory > static_cast<std::int64_t>(c_freeMemory) &&
        static_cast<std::uint64_t>(m_memory) - c_freeMemory > m_validationWorkLimit)
        FailMemory();
}

void ParseBudget::AddDeclarationWork(std::uint64_t amount)
{
    SettleMemory();
    Add(m_validationWork, amount);
    if (m_validationWork > m_validationWorkLimit) {
        Fail(TFormatString(u"the declarations of the document type make more work for validation "
                           u"than %1 (validation work limit, SetValidationWorkLimit)")
                 .Format(DescribeGrowth(m_limits.GetValidationWorkLimit())));
    }
}

void ParseBudget::RequireStack(std::size_t bytes)
{
    if (StackGuard::HasRoom(bytes)) [[likely]]
        return;
    EndMemory();
    Fail(u"validation takes more stack than the thread has");
}

void ParseBudget::FailMemory()
{
    EndMemory();
    Fail(TFormatString(u"validation takes more bytes of memory than %1 (validation work limit, "
                       u"SetValidationWorkLimit)")
             .Format(DescribeGrowth(m_limits.GetValidationWorkLimit())));
}

std::uint64_t ParseBudget::CountLookUp(const XMLCh* uri, const XMLCh* localName)
{
    const std::u16string_view name = ViewXMLCh(localName);
    std::u16string joined(name);
    joined += u'\0';
    joined += ViewXMLCh(uri);
    TString pair{std::u16string_view(joined)};
    std::uint64_t& namespaces = m_elementNames[TString(name)];
    if (m_elementNames.try_emplace(std::move(pair)).second) {
        ++namespaces;
        ++m_differentElements;
    }
    return m_differentElements + namespaces * c_lookUpsANamespace;
}

void ParseBudget::FailAmplification()
{
    Fail(TFormatString(u"the document yields more than %1 (amplification limit, "
                       u"SetAmplificationLimit)")
             .Format(DescribeGrowth(m_limits.GetAmplificationLimit())));
}

void ParseBudget::Fail(const TString& message)
{
    m_hasFailed = true;
    LimitExceeded exceeded{message};
    if (m_locator != nullptr) {
        exceeded.line = m_locator->getLineNumber();
        exceeded.column = m_locator->getColumnNumber();
    }
    throw exceeded;
}
