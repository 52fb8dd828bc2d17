#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <cstdint>
#include <variant>

/// A calendar date (proleptic Gregorian), month and day from 1. A plain value.
struct DataDate
{
    /// The year.
    int year = 1970;
    /// From 1 to 12.
    int month = 1;
    /// From 1.
    int day = 1;
    friend bool operator==(const DataDate&, const DataDate&) noexcept = default;
};

/// A date and a time of day without time zone. A plain value.
struct DataDateTime
{
    /// The day.
    DataDate date;
    /// From 0 to 23.
    int hour = 0;
    /// From 0 to 59.
    int minute = 0;
    /// From 0 to 59.
    int second = 0;
    /// From 0 to 999.
    int millisecond = 0;
    friend bool operator==(const DataDateTime&, const DataDateTime&) noexcept = default;
};

/// One typed value of a data row. A plain value; null by default.
class KESPLATFORM_EXPORT DataValue
{
public:
    /// What is held; std::monostate stands for no value.
    using Variant =
        std::variant<std::monostate, bool, std::int64_t, double, TString, DataDate, DataDateTime>;

    DataValue() noexcept = default;
    /// Holds a value of this type.
    explicit DataValue(bool value) noexcept : m_value(value) {}
    explicit DataValue(int value) noexcept : m_value(std::int64_t{value}) {}
    explicit DataValue(std::int64_t value) noexcept : m_value(value) {}
    explicit DataValue(double value) noexcept : m_value(value) {}
    explicit DataValue(TString value) noexcept : m_value(std::move(value)) {}
    template <OtherText::Any T>
    explicit DataValue(const T& value) : m_value(TString(value))
    {
    }
    explicit DataValue(DataDate value) noexcept : m_value(value) {}
    explicit DataValue(DataDateTime value) noexcept : m_value(value) {}

    /// Whether no value is held.
    [[nodiscard]] bool IsNull() const noexcept { return m_value.index() == 0; }
    /// What is held, valid as long as this object.
    [[nodiscard]] const Variant& Get() const noexcept { return m_value; }

    friend bool operator==(const DataValue&, const DataValue&) noexcept = default;

private:
    Variant m_value;
};

namespace DataValueFormatter {

/// How values are written. A plain value.
struct FormatOptions
{
    /// Texts for machines: no locale, and each reads back as the same value. Without it the texts
    /// are for people, with group separators and six significant digits in the C locale.
    bool canonical = false;
};

/// The text of a value: empty for null, "true" or "false", decimal integers, the shortest text
/// that reads back equal for doubles, ISO 8601 for dates ("2024-02-29") and date-times
/// ("2024-02-29T13:05:00", with ".123" only when there are milliseconds). Years have at least four
/// digits; those beyond 9999 a sign "+", those before year 0 a "-". Doubles that are not finite
/// are "nan", "inf" and "-inf". Fields of dates are written as they are, sensible or not.
/// Safe to use from several threads.
[[nodiscard]] KESPLATFORM_EXPORT TString Format(const DataValue& value,
                                                const FormatOptions& options);

} // namespace DataValueFormatter
