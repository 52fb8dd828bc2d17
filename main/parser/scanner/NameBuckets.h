#pragma once

#include "base/ByteHash.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <vector>

/// A hash table of the scanner, as far as it takes to tell what its look-ups cost: how many names
/// lie in which bucket. A look-up goes through all names of its bucket, and as the scanner's hash
/// is known to everybody, a document can have names that all lie in one.
class NameBuckets
{
public:
    /// How a table of the scanner begins and grows.
    struct Shape
    {
        std::size_t modulus;
        /// How many names four buckets hold, on the average, before the table grows; 0 if it never
        /// does.
        std::size_t namesInFour;
        /// So many times the buckets, and one, there are then.
        std::size_t factor;
    };
    /// That of elements, entities, notations, identifiers, prefixes and namespaces.
    static constexpr Shape Growing(std::size_t modulus) noexcept { return {modulus, 3, 2}; }
    /// That of the elements that no schema declares.
    static constexpr Shape Fixed(std::size_t modulus) noexcept { return {modulus, 0, 1}; }
    /// That of the attributes of a tag.
    static constexpr Shape c_tag{7, 16, 8};

    /// The scanner empties a table that it uses again, but leaves it as large as it is: it may have
    /// up to `reach` buckets already.
    explicit NameBuckets(const Shape& shape, std::size_t reach = 0);

    /// The names in the bucket of this one, it included, in a table of whichever size it may have
    /// where they are most. One that was added before, with the same `companion`, changes nothing;
    /// names with different companions are different.
    std::size_t Add(std::u16string_view name, std::u16string_view companion = {});
    /// Whether it was added, without companion.
    bool Contains(std::u16string_view name) const;
    /// As Add, for an attribute. With `hasNamespaces`, the scanner hashes what stands behind the
    /// prefix.
    std::size_t AddAttribute(std::u16string_view name, bool hasNamespaces);
    /// So many different names were added.
    std::size_t GetCount() const noexcept { return m_hashes.size(); }
    /// So many buckets the table may have now.
    std::size_t GetReach() const noexcept { return m_tables.back().size(); }

private:
    std::uint64_t GetKey(std::uint64_t hash, std::u16string_view name,
                         std::u16string_view companion) const;
    void GrowIfFull();

    ByteHash::Seed m_seed;
    Shape m_shape;
    /// By the scanner's hash and one that nobody outside of the process knows: names of which both
    /// are the same are taken for one, which only counts too few.
    std::unordered_set<std::uint64_t> m_known;
    std::vector<std::uint64_t> m_hashes;
    /// How many names lie in each bucket: of the table as it would be if it had begun as its shape
    /// says, and of all larger ones that it may be.
    std::vector<std::vector<std::uint32_t>> m_tables;
};
