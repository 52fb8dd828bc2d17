#pragma once

#include <kescorexml/Export.h>
#include <kesplatform/TString.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>

class AttributeBlock;

/// How an element keeps its attributes, in one pointer. What a parse found stays packed in one
/// AttributeBlock until somebody asks for the map itself or changes an attribute; from then on the
/// map is the truth. Nobody but the element that has it can tell which of the two it is.
///
/// Only what inline operations of the elements use is exported.
///
/// Const operations may run side by side. The map that Map() const gives lives until the element
/// ends; it is the very map that later changes are made to.
class AttributeStorage
{
public:
    using AttributeMap = std::unordered_map<TString, TString>;

    AttributeStorage() noexcept = default;
    AttributeStorage(const AttributeStorage& other);
    AttributeStorage(AttributeStorage&& other) noexcept;
    AttributeStorage& operator=(const AttributeStorage&) = delete;
    AttributeStorage& operator=(AttributeStorage&&) = delete;
    ~AttributeStorage()
    {
        if (m_state.load(std::memory_order_relaxed) != 0)
            Destroy();
    }

    KESCOREXML_EXPORT std::size_t Size() const noexcept;
    bool IsEmpty() const noexcept
    {
        return m_state.load(std::memory_order_relaxed) == 0 || Size() == 0;
    }

    /// Whether there is an attribute `name`; `value` then shows its value until the next change.
    bool View(const TString& name, std::u16string_view& value) const noexcept;
    /// The value, or an empty text.
    KESCOREXML_EXPORT TString Get(const TString& name) const;
    /// Whether both hold the same names with the same values.
    bool Equals(const AttributeStorage& other) const noexcept;

    /// The packed attributes, or null when the map is the truth or nothing is stored.
    const AttributeBlock* GetBlock() const noexcept;
    /// The map. Built on first use.
    KESCOREXML_EXPORT const AttributeMap& Map() const;
    KESCOREXML_EXPORT AttributeMap& Map();

    /// Takes over one reference to `block`, which may be null. REQUIRES: an empty storage.
    void Adopt(AttributeBlock* block) noexcept;
    /// The reverse: leaves the reference to a block to the caller, and nothing here. Null, and
    /// nothing is changed, when there is none or the map is the truth.
    AttributeBlock* TakeBlock() noexcept;
    /// Replaces everything, the maximum load factor included; the map that references lead to
    /// stays the same object once there is one.
    void Replace(AttributeMap&& attributes);
    /// A copy of `other` in the form that Take wants.
    AttributeStorage PrepareReplacement(const AttributeStorage& other) const;
    /// As Replace. REQUIRES: what PrepareReplacement gave, and no change since then.
    void Take(AttributeStorage&& replacement) noexcept;

private:
    struct Box;

    static constexpr std::uintptr_t c_boxFlag = 1;
    static Box* ToBox(std::uintptr_t state) noexcept;
    static AttributeBlock* ToBlock(std::uintptr_t state) noexcept;

    void Destroy() noexcept;
    Box& MakeBox() const;

    /// 0, the address of an AttributeBlock, or that of a Box with c_boxFlag.
    mutable std::atomic<std::uintptr_t> m_state{0};
};
