#pragma once

#include <kesplatform/DataValue.h>
#include <kesplatform/Export.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

/// One row of values. A plain value.
class KESPLATFORM_EXPORT Tuple
{
public:
    Tuple() noexcept = default;
    /// Holds these values, in this order.
    Tuple(std::initializer_list<DataValue> values) : m_values(values) {}
    explicit Tuple(std::vector<DataValue> values) noexcept : m_values(std::move(values)) {}

    /// The number of values.
    [[nodiscard]] std::uint32_t GetSize() const noexcept
    {
        return static_cast<std::uint32_t>(m_values.size());
    }
    /// Zero-based; an index that is not below GetSize() is std::out_of_range.
    [[nodiscard]] const DataValue& GetDataValue(std::uint32_t index) const
    {
        return m_values.at(index);
    }

private:
    std::vector<DataValue> m_values;
};
