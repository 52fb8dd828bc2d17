#include "scanner/NameBuckets.h"

#include <QHashFunctions>

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

NameBuckets::NameBuckets(const Shape& shape)
    : m_seed(QHashSeed::globalSeed()), m_shape(shape), m_counts(shape.modulus)
{
}

std::size_t NameBuckets::Add(std::u16string_view name, std::u16string_view companion)
{
    const std::uint64_t hash = HashLikeScanner(name);
    std::uint64_t secret = m_seed.Hash(name.data(), name.size() * sizeof(char16_t));
    if (!companion.empty())
        secret = secret * 31 + m_seed.Hash(companion.data(), companion.size() * sizeof(char16_t));
    if (m_known.insert(ByteHash::MultiplyFolded(hash + 1, 0x9E3779B97F4A7C15U) ^ secret << 24)
            .second) {
        GrowIfFull();
        m_hashes.push_back(hash);
        ++m_counts[hash % m_counts.size()];
    }
    return m_counts[hash % m_counts.size()];
}

void NameBuckets::GrowIfFull()
{
    if (m_shape.namesInFour == 0 || m_hashes.size() < m_counts.size() * m_shape.namesInFour / 4)
        return;
    m_counts.assign(m_counts.size() * m_shape.factor + 1, 0);
    for (const std::uint64_t hash : m_hashes)
        ++m_counts[hash % m_counts.size()];
}
