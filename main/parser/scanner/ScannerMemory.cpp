#include "scanner/ScannerMemory.h"

#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/validators/common/ContentSpecNode.hpp>

#include <cstring>
#include <limits>
#include <new>

using xercesc::BinMemInputStream;
using xercesc::XMLPlatformUtils;

// For each entity, internal or not, in content, in an attribute's value, in a default value or
// among declarations, the scanner makes a stream over the replacement text and then, as the next
// thing, a reader for the stream. Readers hold their buffers, which makes their size unlike any
// other.

namespace {

/// The room of the stack with which the scanner takes the content model of a type apart, a tree of
/// which only a deep one needs more.
constexpr XMLSize_t c_destructionStackSize = 10 * sizeof(void*);

/// What a block begins with: the address of its manager.
XMLSize_t GetHeaderSize() noexcept
{
    return XMLPlatformUtils::alignPointerForNewBlockAllocation(sizeof(xercesc::MemoryManager*));
}

template <typename Type>
XMLSize_t GetBlockSize() noexcept
{
    return GetHeaderSize() + sizeof(Type);
}

/// Readers are accounted for as entities, and destructors must not fail.
bool CountsAsMemory(XMLSize_t size) noexcept
{
    return size != GetBlockSize<xercesc::XMLReader>() && size != c_destructionStackSize;
}

/// The address of a polymorphic object's type information, which objects begin with.
const void* ReadType(const void* object) noexcept
{
    const void* type = nullptr;
    std::memcpy(&type, object, sizeof(type));
    return type;
}

const void* GetStreamType()
{
    const BinMemInputStream sample(nullptr, 0, BinMemInputStream::BufOpt_Reference);
    return ReadType(&sample);
}

} // namespace

ScannerMemory::ScannerMemory(ParseBudget& budget) : m_budget(budget), m_streamType(GetStreamType())
{
}

ScannerMemory::~ScannerMemory()
{
    Reset();
    while (m_blocks.next != &m_blocks)
        FreeLinked(m_blocks.next + 1);
}

void ScannerMemory::Reset() noexcept
{
    m_hasFailed = false;
    m_readers.clear();
    m_topReader = nullptr;
    m_budget.SetReaders(0);
    if (m_refusedStream != nullptr)
        deallocate(m_refusedStream);
}

xercesc::MemoryManager* ScannerMemory::getExceptionMemoryManager()
{
    // An exception may outlive the scanner.
    return XMLPlatformUtils::fgMemoryManager;
}

void* ScannerMemory::allocate(XMLSize_t size)
{
    const bool isReader = size == GetBlockSize<xercesc::XMLReader>();
    if (isReader) [[unlikely]]
        OpenReader();
    if (CountsAsMemory(size))
        m_budget.AddMemory(size);
    if (size == GetBlockSize<xercesc::ContentSpecNode>())
        m_budget.AddModelNode();
    void* const block = AllocateBlock(size);
    if (isReader) [[unlikely]]
        NoteReader(block);
    m_latest = block;
    m_latestSize = size;
    return block;
}

void* ScannerMemory::AllocateBlock(XMLSize_t size)
{
    try {
        void* const block = AllocateLinked(size);
        // Readers are large, come once for each entity, and initialise themselves.
        if (m_clears && size != GetBlockSize<xercesc::XMLReader>())
            std::memset(block, 0, size);
        return block;
    } catch (const xercesc::OutOfMemoryException&) {
        void* const block =
            m_hasFailed || size == c_destructionStackSize ? m_reserve.Allocate(size) : nullptr;
        if (block != nullptr)
            return block;
        m_hasFailed = true;
        m_budget.EndMemory();
        throw;
    }
}

void* ScannerMemory::AllocateLinked(XMLSize_t size)
{
    if (size > std::numeric_limits<XMLSize_t>::max() - sizeof(Link))
        throw xercesc::OutOfMemoryException();
    auto* const link =
        static_cast<Link*>(XMLPlatformUtils::fgMemoryManager->allocate(sizeof(Link) + size));
    *link = {&m_blocks, m_blocks.next, size};
    link->next->previous = link;
    m_blocks.next = link;
    m_held += size;
    return link + 1;
}

void ScannerMemory::FreeLinked(void* block) noexcept
{
    Link* const link = static_cast<Link*>(block) - 1;
    link->previous->next = link->next;
    link->next->previous = link->previous;
    m_held -= link->size;
    XMLPlatformUtils::fgMemoryManager->deallocate(link);
}

void ScannerMemory::deallocate(void* block)
{
    if (block == nullptr || m_reserve.Deallocate(block))
        return;
    if (block == m_latest)
        m_latest = nullptr;
    if (block == m_refusedStream)
        m_refusedStream = nullptr;
    if (block == m_topReader) [[unlikely]] {
        m_readers.pop_back();
        m_topReader = m_readers.empty() ? nullptr : m_readers.back();
        m_budget.SetReaders(m_readers.size());
    }
    const XMLSize_t size = (static_cast<Link*>(block) - 1)->size;
    if (CountsAsMemory(size))
        m_budget.ReturnMemory(size);
    FreeLinked(block);
}

bool ScannerMemory::IsStreamOfEntity() const noexcept
{
    return m_latest != nullptr && m_latestSize == GetBlockSize<BinMemInputStream>() &&
           ReadType(static_cast<const std::byte*>(m_latest) + GetHeaderSize()) == m_streamType;
}

void ScannerMemory::OpenReader()
{
    // The document's own stream comes from elsewhere.
    if (!IsStreamOfEntity())
        return;
    const auto* const stream = reinterpret_cast<const BinMemInputStream*>(
        static_cast<const std::byte*>(m_latest) + GetHeaderSize());
    // The scanner lets go of the stream without deleting it when it gets no reader for it.
    m_refusedStream = m_latest;
    m_budget.AddExpansion(stream->getSize() / sizeof(XMLCh), m_readers.size());
    m_refusedStream = nullptr;
}

void ScannerMemory::NoteReader(void* block)
{
    try {
        m_readers.push_back(block);
    } catch (const std::bad_alloc&) {
        deallocate(block);
        m_hasFailed = true;
        m_budget.EndMemory();
        throw xercesc::OutOfMemoryException();
    }
    m_topReader = block;
    m_budget.SetReaders(m_readers.size());
}
