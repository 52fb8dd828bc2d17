#include "scanner/ParseBudget.h"

#include "base/StackGuard.h"
#include "bytes/XercesText.h"
#include "scanner/CollidingTags.h"

#include <kesplatform/TFormatString.h>

#include <algorithm>
#include <string>
#include <utility>

namespace {

/// The scanner sets up a large buffer for each entity that it opens.
constexpr std::uint64_t c_unitsAnEntity = 512;
/// The scanner's table of the elements that no schema declares; it does not grow. Elements of one
/// name in different namespaces share a bucket.
constexpr NameBuckets::Shape c_validatedElements = NameBuckets::Fixed(29);
/// A look-up goes through all of the bucket, and takes that many times as long for each element
/// there as for a level.
constexpr std::uint64_t c_lookUpsAnElement = 8;
/// So many elements lie in the caches. Of more, hardly any does that a look-up meets in its bucket:
/// for each that is too many, wherever it lies, a look-up takes that many times as long as for a
/// level, and if all of them lie in its bucket, so much longer.
constexpr std::uint64_t c_elementsInCaches = 4096;
constexpr std::uint64_t c_lookUpsAnElementTooMany = 3;
constexpr std::uint64_t c_lookUpsAnElementTooManyInBucket = 16;
/// A namespace declaration takes that much less time than a level.
constexpr std::uint64_t c_namespacesALevel = 4;
/// Look-ups take little time each.
constexpr std::uint64_t c_lookUpsAUnit = 4;
/// Names of an attribute's type are compared in less time than those of a model are looked up.
constexpr std::uint64_t c_namesComparedAUnit = 4;

/// How the scanner's table of the names of a kind begins.
constexpr NameBuckets::Shape GetShape(NameKind kind) noexcept
{
    return NameBuckets::Growing(kind == NameKind::Element ? 29 : 109);
}
/// The scanner's tables of these keep what a document had when the next one comes.
constexpr bool IsKept(NameKind kind) noexcept
{
    return kind == NameKind::Prefix || kind == NameKind::Namespace;
}
constexpr NameBuckets::Shape c_declaredAttributes = NameBuckets::Growing(29);

/// In the plural.
const char16_t* NameOf(NameKind kind) noexcept
{
    switch (kind) {
    case NameKind::Element:
        return u"elements";
    case NameKind::DeclaredElement:
        return u"declared elements";
    case NameKind::Entity:
        return u"entities";
    case NameKind::ParameterEntity:
        return u"parameter entities";
    case NameKind::Notation:
        return u"notations";
    case NameKind::Prefix:
        return u"prefixes";
    case NameKind::Namespace:
        return u"namespaces";
    case NameKind::Identifier:
        return u"identifiers";
    }
    return u"names";
}

/// What the scanner may allocate for a step, a tag or a declaration, before that is work. Building
/// the automaton of a content model can take far more than the automaton.
constexpr std::uint64_t c_freeMemoryInStep = 32 * 1024;
/// The scanner recurses through a content model that is not mixed, a level for each particle at
/// most. It takes 180 bytes a level.
constexpr std::uint64_t c_stackAParticle = 256;
/// What the scanner may hold without regard to the limit: buffers that any document needs.
constexpr std::uint64_t c_freeMemory = 1024 * 1024;

constexpr std::uint64_t c_unlimited = std::numeric_limits<std::uint64_t>::max();

std::uint64_t MultiplySaturating(std::uint64_t a, std::uint64_t b) noexcept
{
    return a != 0 && b > c_unlimited / a ? c_unlimited : a * b;
}

std::uint64_t GetMaximum(const ParseLimits::Growth& growth, std::uint64_t inputBytes) noexcept
{
    return std::max(growth.threshold, MultiplySaturating(growth.factor, inputBytes));
}

/// Past the limit at once, rather than around the end of the number's range.
void Add(std::uint64_t& account, std::uint64_t amount) noexcept
{
    account = amount > c_unlimited - account ? c_unlimited : account + amount;
}

struct ModelSize
{
    std::uint64_t names = 0;
    /// The names, and what says how often something occurs.
    std::uint64_t particles = 0;
    /// How many states the scanner's automaton may have unless they multiply, which memory shows:
    /// in a sequence or where something is repeated, what may follow differs from name to name.
    std::uint64_t states = 0;
};

/// Calls `forName` with each name, and `forRepetition` for what says how often something occurs.
template <typename ForName, typename ForRepetition>
void WalkModel(std::u16string_view model, ForName&& forName, ForRepetition&& forRepetition)
{
    std::size_t begin = 0;
    for (std::size_t at = 0; at <= model.size(); ++at) {
        const char16_t c = at < model.size() ? model[at] : u' ';
        const bool repeats = c == u'?' || c == u'*' || c == u'+';
        if (!repeats && std::u16string_view(u"(),| ").find(c) == std::u16string_view::npos)
            continue;
        if (at > begin)
            forName(model.substr(begin, at - begin));
        if (repeats)
            forRepetition();
        begin = at + 1;
    }
}

ModelSize MeasureModel(std::u16string_view model)
{
    ModelSize size;
    WalkModel(
        model, [&](std::u16string_view) { ++size.names; }, [&] { ++size.particles; });
    const auto commas = static_cast<std::uint64_t>(std::count(model.begin(), model.end(), u','));
    size.states = std::min(size.names, 1 + commas + size.particles);
    size.particles += size.names;
    return size;
}

/// In look-ups, for the scanner's automaton: each state is made of sets of names, of which a
/// machine word holds 64.
std::uint64_t EstimateModelWork(const ModelSize& size) noexcept
{
    const std::uint64_t square = MultiplySaturating(size.names, size.names);
    std::uint64_t work = MultiplySaturating(size.names, size.particles);
    Add(work, MultiplySaturating(square, size.states) / 64);
    return work;
}

TString DescribeGrowth(const ParseLimits::Growth& growth)
{
    return TFormatString(u"%1 units and %2 times the bytes of the document")
        .Format(growth.threshold, growth.factor);
}

TString DescribeCollision(const char16_t* kind, const ParseLimits& limits)
{
    return TFormatString(u"more than %1 %2 have names whose hashes collide (name collision limit, "
                         u"SetNameCollisionLimit)")
        .Format(limits.GetNameCollisionLimit(), kind);
}

} // namespace

void ParseBudget::Begin(const ParseLimits& limits, std::uint64_t inputBytes, bool isValidating)
{
    ForgetNames();
    const std::uint64_t number = m_number + 1;
    Tables tables = std::move(m_tables);
    *this = ParseBudget();
    m_number = number;
    m_tables = std::move(tables);
    m_limits = limits;
    m_outputLimit = GetMaximum(limits.GetAmplificationLimit(), inputBytes);
    m_scannerWorkLimit = GetMaximum(limits.GetExpansionLimit(), inputBytes);
    m_messageLimit = GetMaximum(limits.GetMessageLimit(), inputBytes);
    const ParseLimits::Growth& work = limits.GetValidationWorkLimit();
    m_validationWorkLimit = GetMaximum(work, inputBytes);
    m_lookUpLimit =
        GetMaximum({work.factor, MultiplySaturating(c_lookUpsAUnit, work.threshold)}, inputBytes);
    m_isValidating = isValidating;
    m_countsAttributes = isValidating;
}

TString ParseBudget::DescribeMessageLimit() const
{
    return DescribeGrowth(m_limits.GetMessageLimit());
}

void ParseBudget::AddExpansion(std::uint64_t units, std::size_t depth)
{
    AddScannerWork(units + c_unitsAnEntity + depth);
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
    if (m_allocatedInStep > m_maximumInStep)
        FailMemory();
}

void ParseBudget::SettleMemory() noexcept
{
    if (m_allocatedInStep > c_freeMemoryInStep)
        Add(m_validationWork, (m_allocatedInStep - c_freeMemoryInStep) / 2);
    m_allocatedInStep = 0;
    m_modelNodesInStep = 0;
    m_maximumInStep = m_validationWorkLimit - std::min(m_validationWork, m_validationWorkLimit);
    Add(m_maximumInStep, c_freeMemoryInStep);
}

void ParseBudget::DeclareElement(std::u16string_view name, std::u16string_view model)
{
    MeetName(NameKind::DeclaredElement, name);
    if (model.starts_with(u'('))
        WalkModel(
            model, [&](std::u16string_view child) { MeetName(NameKind::DeclaredElement, child); },
            [] {});
    if (!m_isValidating)
        return;
    const ModelSize size = MeasureModel(model);
    AddDeclarationWork(EstimateModelWork(size));
    if (!model.starts_with(u"(#PCDATA"))
        RequireStack(MultiplySaturating(size.particles, c_stackAParticle));
}

void ParseBudget::DeclareAttribute(std::u16string_view elementName, std::u16string_view name,
                                   std::u16string_view type)
{
    m_countsAttributes = true;
    const auto [element, isNew] = m_declaredElements.try_emplace(TString(elementName));
    if (isNew) {
        element->second.attributeNames.emplace(c_declaredAttributes);
        MeetName(NameKind::DeclaredElement, elementName);
    }
    ++element->second.attributes;
    if (element->second.attributeNames->Add(name) > m_limits.GetNameCollisionLimit())
        FailCollision(u"declared attributes of an element");
    // Which may be a list of names; the scanner compares each with all others.
    if (m_isValidating) {
        const std::uint64_t names = MeasureModel(type).names;
        AddDeclarationWork(MultiplySaturating(names, names) / c_namesComparedAUnit);
    }
}

void ParseBudget::DeclareEntity(std::u16string_view name)
{
    m_countsAttributes = true;
    if (name.starts_with(u'%'))
        MeetName(NameKind::ParameterEntity, name.substr(1));
    else
        MeetName(NameKind::Entity, name);
}

void ParseBudget::CheckTagsOfEntity(std::u16string_view text)
{
    if (CollidingTags::HasAny(text, m_limits.GetNameCollisionLimit(), m_isValidating,
                              m_tables.tagReach))
        FailCollision(u"attributes of a tag");
}

void ParseBudget::OpenNamespaceScope(std::u16string_view prefix, std::u16string_view uri)
{
    ++m_namespacesInScope;
    MeetName(NameKind::Prefix, prefix);
    MeetName(NameKind::Namespace, uri);
}

void ParseBudget::MeetElement(std::u16string_view name, ParsedNames::DeclaredAttributes& known)
{
    known = {m_number, 0};
    if (!m_declaredElements.empty()) {
        const auto declared = m_declaredElements.find(TString(name));
        if (declared != m_declaredElements.end())
            known.count = declared->second.attributes;
    }
    if (!m_isValidating)
        MeetUndeclaredElement(name);
}

void ParseBudget::MeetUndeclaredElement(std::u16string_view name)
{
    const auto declared = m_names.find(NameKind::DeclaredElement);
    if (declared == m_names.end() || !declared->second.Contains(name))
        MeetName(NameKind::Element, name);
}

void ParseBudget::MeetName(NameKind kind, std::u16string_view name)
{
    if (GetNames(kind).Add(name) > m_limits.GetNameCollisionLimit())
        FailCollision(NameOf(kind));
}

NameBuckets& ParseBudget::GetNames(NameKind kind)
{
    if (IsKept(kind))
        return m_tables.kept.try_emplace(kind, GetShape(kind)).first->second;
    const auto found = m_names.find(kind);
    if (found != m_names.end())
        return found->second;
    return m_names.try_emplace(kind, GetShape(kind), GetReach(kind)).first->second;
}

void ParseBudget::ForgetNames() noexcept
{
    for (const auto& [kind, names] : m_names)
        GetReach(kind) = names.GetReach();
    // An assignment would keep the buckets.
    decltype(m_declaredElements)().swap(m_declaredElements);
    decltype(m_names)().swap(m_names);
    m_validatedElements.reset();
}

void ParseBudget::CheckManyAttributeNames(std::span<const char16_t* const> names)
{
    NameBuckets buckets(NameBuckets::c_tag, m_tables.tagReach);
    for (const char16_t* name : names) {
        if (buckets.AddAttribute(name, m_isValidating) > m_limits.GetNameCollisionLimit())
            FailCollision(u"attributes of a tag");
    }
    m_tables.tagReach = buckets.GetReach();
}

void ParseBudget::AddScannerWork(std::uint64_t amount)
{
    Add(m_scannerWork, amount);
    if (m_scannerWork > m_scannerWorkLimit) {
        Fail(TFormatString(u"entities, declared attributes and tags of very many attributes make "
                           u"more work than %1 (expansion limit, SetExpansionLimit)")
                 .Format(DescribeGrowth(m_limits.GetExpansionLimit())));
    }
}

void ParseBudget::AddValidationWork(std::u16string_view name, const XMLCh* uri,
                                    const XMLCh* localName, std::uint64_t prefixedAttributes)
{
    const std::uint64_t maximumDepth = m_limits.GetValidationDepthLimit();
    if (m_depth > maximumDepth) {
        Fail(TFormatString(u"elements are nested more than %1 levels deep (validation depth limit, "
                           u"SetValidationDepthLimit)")
                 .Format(maximumDepth));
    }
    SettleMemory();
    if (m_depth == 1 && !m_countsMemory)
        BeginMemory(false);
    Add(m_lookUps, MultiplySaturating(1 + prefixedAttributes,
                                      m_depth + m_namespacesInScope / c_namespacesALevel));
    if (m_elementTable == ElementTable::NoDocumentType)
        MeetUndeclaredElement(name);
    if (m_elementTable == ElementTable::NoSchema)
        Add(m_lookUps, CountElementLookUps(uri, localName));
    if (m_lookUps > m_lookUpLimit) {
        Fail(TFormatString(u"validation takes more look-ups of names than 4 times %1 units and %2 "
                           u"times the bytes of the document (validation work limit, "
                           u"SetValidationWorkLimit)")
                 .Format(m_limits.GetValidationWorkLimit().threshold,
                         m_limits.GetValidationWorkLimit().factor));
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

std::uint64_t ParseBudget::CountElementLookUps(const XMLCh* uri, const XMLCh* localName)
{
    if (!m_validatedElements)
        m_validatedElements.emplace(c_validatedElements);
    const auto countTooMany = [](std::uint64_t elements) {
        return elements - std::min(elements, c_elementsInCaches);
    };
    const std::uint64_t inBucket = m_validatedElements->Add(ViewXMLCh(localName), ViewXMLCh(uri));
    return c_lookUpsAnElement * inBucket +
           c_lookUpsAnElementTooManyInBucket * countTooMany(inBucket) +
           c_lookUpsAnElementTooMany * countTooMany(m_validatedElements->GetCount());
}

void ParseBudget::FailAmplification()
{
    Fail(TFormatString(u"the document yields more than %1 (amplification limit, "
                       u"SetAmplificationLimit)")
             .Format(DescribeGrowth(m_limits.GetAmplificationLimit())));
}

void ParseBudget::FailCollision(const char16_t* kind)
{
    Fail(DescribeCollision(kind, m_limits));
}

void ParseBudget::FailAtTag(unsigned long long line, unsigned long long column)
{
    m_hasFailed = true;
    throw LimitExceeded{DescribeCollision(u"attributes of a tag", m_limits), line, column};
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
