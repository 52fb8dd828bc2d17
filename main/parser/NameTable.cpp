#include "NameTable.h"

const TString& NameTable::Remember(std::u16string_view name, std::uint32_t hash)
{
    if (name.size() > c_longestKept) {
        m_unkept = TString(name);
        return m_unkept;
    }
    Slot* chosen = nullptr;
    for (std::uint32_t probe = 0; probe < c_probes && chosen == nullptr; ++probe) {
        Slot& slot = m_slots[(hash + probe) % c_slots];
        if (slot.name.IsEmpty())
            chosen = &slot;
    }
    if (chosen == nullptr)
        chosen = &m_slots[(hash + (hash >> 16) % c_probes) % c_slots];
    chosen->name = TString(name);
    chosen->hash = hash;
    return chosen->name;
}
