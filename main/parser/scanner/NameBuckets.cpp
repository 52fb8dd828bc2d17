#include "scanner/NameBuckets.h"

#include <QHashFunctions>

#include <algorithm>

namespace {

/// XMLString::hash, before it takes the remainder.
std::uint64_t HashLikeScanner(std::u16string_view name) noexcept
{
    std::uint64_t hash = 0;
    for (const char16_t unit : name)
        hash = hash * 38 + (hash >> 24) + unit;
    return hash;
}

} // namespace

NameBuckets::NameBuckets(const Shape& shape, std::size_t reach)
    : m_seed(QHashSeed::globalSeed()), m_shape(shape)
{
    m_tables.emplace_back(shape.modulus);
    while (m_shape.namesInFour != 0 && GetReach() < reach)
        m_tables.emplace_back(GetReach() * m_shape.factor + 1);
}

std::size_t NameBuckets::Add(std::u16string_view name, std::u16string_view companion)
{
    const std::uint64_t hash = HashLikeScanner(name);
    if (m_known.insert(GetKey(hash, name, companion)).second) {
        GrowIfFull();
        m_hashes.push_back(hash);
        for (auto& counts : m_tables)
            ++counts[hash % counts.size()];
    }
    std::size_t names = 0;
    for (const auto& counts : m_tables)
        names = std::max<std::size_t>(names, counts[hash % counts.size()]);
    return names;
}

bool NameBuckets::Contains(std::u16string_view name) const
{
    return m_known.count(GetKey(HashLikeScanner(name), name, {})) != 0;
}

std::uint64_t NameBuckets::GetKey(std::uint64_t hash, std::u16string_view name,
                                  std::u16string_view companion) const
{
    std::uint64_t secret = m_seed.Hash(name.data(), name.size() * sizeof(char16_t));
    if (!companion.empty())
        secret = secret * 31 + m_seed.Hash(companion.data(), companion.size() * sizeof(char16_t));
    return ByteHash::MultiplyFolded(hash + 1, 0x9E3779B97F4A7C15U) ^ secret << 24;
}

std::size_t NameBuckets::AddAttribute(std::u16string_view name, bool hasNamespaces)
{
    const std::size_t colon = hasNamespaces ? name.find(u':') : std::u16string_view::npos;
    if (colon == std::u16string_view::npos)
        return Add(name);
    return Add(name.substr(colon + 1), name.substr(0, colon + 1));
}

void NameBuckets::GrowIfFull()
{
    std::vector<std::uint32_t>& counts = m_tables.front();
    if (m_shape.namesInFour == 0 || m_hashes.size() < counts.size() * m_shape.namesInFour / 4)
        return;
    if (m_tables.size() > 1) {
        m_tables.erase(m_tables.begin());
        return;
    }
    counts.assign(counts.size() * m_shape.factor + 1, 0);
    for (const std::uint64_t hash : m_hashes)
        ++counts[hash % counts.size()];
}
