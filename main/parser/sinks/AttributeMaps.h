#pragma once

#include "sinks/ScanSink.h"
#include "slabs/AttributeBlock.h"

#include <kescorexml/detail/AttributeStorage.h>

#include <array>
#include <cstdint>
#include <vector>

/// The attribute maps that are handed to a sink, to take or to leave. One that was left as it was
/// serves the next tag of the same attribute names again, with its nodes and the memory of its
/// values, as long as nobody shares them. Bounded, but for what a sink itself has put into them.
///
/// For one thread at a time.
class AttributeMaps
{
public:
    using AttributeMap = AttributeStorage::AttributeMap;

    AttributeMaps() = default;
    ~AttributeMaps();
    AttributeMaps(const AttributeMaps&) = delete;
    AttributeMaps& operator=(const AttributeMaps&) = delete;

    /// The attributes that ToAttributeMap makes of the tag, in some order; valid until the next
    /// call. The caller may do with it whatever may be done with a map. Null when the attributes
    /// are not worth keeping a map for others, or not as they stand: when there are none, too many
    /// or long ones, or names that are equal or that the colon sanitizer made.
    AttributeMap* Fill(const StartTag& tag);

private:
    struct Kept
    {
        /// Retained. Null when there is none.
        AttributeNames* names = nullptr;
        AttributeMap map;
        std::size_t buckets = 0;
        /// Which attribute was the first, the second, ... when the map was last walked over.
        std::array<std::uint8_t, AttributeNames::c_maxCount> order{};
    };

    static bool Refill(Kept& kept, const StartTag& tag);
    Kept* GetKept(AttributeNames& names);

    std::vector<Kept> m_kept;
};
