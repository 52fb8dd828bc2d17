#include <kescorexml/detail/AttributeStorage.h>

#include "slabs/AttributeBlock.h"

#include <memory>

/// The map, and the block it was built from for as long as other readers may be looking at it.
struct AttributeStorage::Box
{
    ~Box() { DropBlock(); }
    void DropBlock() noexcept
    {
        if (block != nullptr)
            block->Release();
        block = nullptr;
    }

    AttributeMap map;
    AttributeBlock* block = nullptr;
};

AttributeStorage::Box* AttributeStorage::ToBox(std::uintptr_t state) noexcept
{
    return (state & c_boxFlag) != 0 ? reinterpret_cast<Box*>(state & ~c_boxFlag) : nullptr;
}

AttributeBlock* AttributeStorage::ToBlock(std::uintptr_t state) noexcept
{
    return (state & c_boxFlag) != 0 ? nullptr : reinterpret_cast<AttributeBlock*>(state);
}

void AttributeStorage::Adopt(AttributeBlock* block) noexcept
{
    m_state.store(reinterpret_cast<std::uintptr_t>(block), std::memory_order_relaxed);
}

AttributeBlock* AttributeStorage::TakeBlock() noexcept
{
    AttributeBlock* block = ToBlock(m_state.load(std::memory_order_acquire));
    if (block != nullptr)
        m_state.store(0, std::memory_order_relaxed);
    return block;
}

AttributeStorage::AttributeStorage(const AttributeStorage& other)
{
    const std::uintptr_t state = other.m_state.load(std::memory_order_acquire);
    if (const Box* box = ToBox(state)) {
        auto copy = std::make_unique<Box>();
        copy->map = box->map;
        m_state = reinterpret_cast<std::uintptr_t>(copy.release()) | c_boxFlag;
    } else if (AttributeBlock* block = ToBlock(state)) {
        block->Retain();
        m_state = state;
    }
}

AttributeStorage::AttributeStorage(AttributeStorage&& other) noexcept
    : m_state(other.m_state.load(std::memory_order_relaxed))
{
    // Nobody else may look at what is moved from: no exchange is needed, which would lock.
    other.m_state.store(0, std::memory_order_relaxed);
}

void AttributeStorage::Destroy() noexcept
{
    const std::uintptr_t state = m_state.load(std::memory_order_acquire);
    if (Box* box = ToBox(state))
        delete box;
    else if (AttributeBlock* block = ToBlock(state))
        block->Release();
}

std::size_t AttributeStorage::Size() const noexcept
{
    const std::uintptr_t state = m_state.load(std::memory_order_acquire);
    if (const Box* box = ToBox(state))
        return box->map.size();
    const AttributeBlock* block = ToBlock(state);
    return block == nullptr ? 0 : block->Count();
}

bool AttributeStorage::View(const TString& name, std::u16string_view& value) const noexcept
{
    const std::uintptr_t state = m_state.load(std::memory_order_acquire);
    if (const Box* box = ToBox(state)) {
        const auto found = box->map.find(name);
        if (found == box->map.end())
            return false;
        value = found->second.view();
        return true;
    }
    const AttributeBlock* block = ToBlock(state);
    if (block == nullptr)
        return false;
    const std::size_t index = block->Names().Find(name);
    if (index == block->Count())
        return false;
    value = block->Value(index);
    return true;
}

TString AttributeStorage::Get(const TString& name) const
{
    const std::uintptr_t state = m_state.load(std::memory_order_acquire);
    if (const Box* box = ToBox(state)) {
        const auto found = box->map.find(name);
        return found == box->map.end() ? TString() : found->second;
    }
    const AttributeBlock* block = ToBlock(state);
    if (block == nullptr)
        return {};
    const std::size_t index = block->Names().Find(name);
    return index == block->Count() ? TString() : block->ShareValue(index);
}

bool AttributeStorage::Equals(const AttributeStorage& other) const noexcept
{
    if (Size() != other.Size())
        return false;
    bool equal = true;
    const auto compare = [&](const TString& name, std::u16string_view value) {
        std::u16string_view otherValue;
        equal = equal && other.View(name, otherValue) && value == otherValue;
    };
    const std::uintptr_t state = m_state.load(std::memory_order_acquire);
    if (const Box* box = ToBox(state)) {
        for (const auto& [name, value] : box->map)
            compare(name, value.view());
    } else if (const AttributeBlock* block = ToBlock(state)) {
        block->ForEach(compare);
    }
    return equal;
}

const AttributeBlock* AttributeStorage::GetBlock() const noexcept
{
    return ToBlock(m_state.load(std::memory_order_acquire));
}

AttributeStorage::Box& AttributeStorage::MakeBox() const
{
    std::uintptr_t state = m_state.load(std::memory_order_acquire);
    if (Box* box = ToBox(state))
        return *box;
    auto made = std::make_unique<Box>();
    if (AttributeBlock* block = ToBlock(state)) {
        made->map.reserve(block->Count());
        for (std::size_t i = 0; i < block->Count(); ++i)
            made->map.emplace(block->Names().Name(i), block->ShareValue(i));
        // The reference moves from this object to the box, with the exchange below.
        made->block = block;
    }
    const std::uintptr_t boxed = reinterpret_cast<std::uintptr_t>(made.get()) | c_boxFlag;
    if (!m_state.compare_exchange_strong(state, boxed, std::memory_order_acq_rel)) {
        made->block = nullptr;
        return *ToBox(state);
    }
    return *made.release();
}

const AttributeStorage::AttributeMap& AttributeStorage::Map() const
{
    return MakeBox().map;
}

AttributeStorage::AttributeMap& AttributeStorage::Map()
{
    Box& box = MakeBox();
    box.DropBlock();
    return box.map;
}

void AttributeStorage::Replace(AttributeMap&& attributes)
{
    Map() = std::move(attributes);
    attributes.clear();
}

AttributeStorage AttributeStorage::PrepareReplacement(const AttributeStorage& other) const
{
    AttributeStorage copy(other);
    if (ToBox(m_state.load(std::memory_order_acquire)) != nullptr)
        copy.Map();
    return copy;
}

void AttributeStorage::Take(AttributeStorage&& replacement) noexcept
{
    const std::uintptr_t own = m_state.load(std::memory_order_relaxed);
    if (Box* box = ToBox(own)) {
        box->DropBlock();
        box->map = std::move(ToBox(replacement.m_state.load(std::memory_order_relaxed))->map);
        return;
    }
    m_state.store(replacement.m_state.load(std::memory_order_relaxed), std::memory_order_release);
    replacement.m_state.store(own, std::memory_order_relaxed);
}
