#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

/// UTF-16 that is written through a pointer. It is never initialised, and its room is kept from one
/// use to the next.
class WideBuffer
{
public:
    char16_t* Begin() noexcept { return m_units.get(); }
    const char16_t* End() const noexcept { return m_units.get() + m_room; }

    /// Makes room for at least `count` units behind `to`, keeps those before it, and returns where
    /// it now is.
    char16_t* Reserve(char16_t* to, std::size_t count)
    {
        if (static_cast<std::size_t>(End() - to) >= count) [[likely]]
            return to;
        return Grow(static_cast<std::size_t>(to - Begin()), count);
    }
    /// Gives back what an unusual document has made it take.
    void Shrink() noexcept
    {
        if (m_room > c_roomKept) {
            m_units.reset();
            m_room = 0;
        }
    }

private:
    static constexpr std::size_t c_roomKept = 0x10000;

    char16_t* Grow(std::size_t used, std::size_t count)
    {
        std::size_t room = m_room * 2;
        if (room < used + count)
            room = used + count;
        if (room < 1024)
            room = 1024;
        std::unique_ptr<char16_t[]> units(new char16_t[room]);
        if (used > 0)
            std::memcpy(units.get(), m_units.get(), used * sizeof(char16_t));
        m_units = std::move(units);
        m_room = room;
        return m_units.get() + used;
    }

    std::unique_ptr<char16_t[]> m_units;
    std::size_t m_room = 0;
};
