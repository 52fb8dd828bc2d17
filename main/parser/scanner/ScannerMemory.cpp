#include "scanner/ScannerMemory.h"

#include "bytes/XercesText.h"

#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/validators/common/ContentSpecNode.hpp>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>

using xercesc::BinMemInputStream;
using xercesc::ContentSpecNode;
using xercesc::XMLPlatformUtils;

// For each entity, internal or not, in content, in an attribute's value, in a default value or
// among declarations, the scanner makes a stream over the replacement text and then, as the next
// thing, a reader for the stream. Readers hold their buffers, which makes their size unlike any
// other.

namespace {

/// The room of the stack with which the scanner takes the content model of a type apart, a tree of
/// which only a deep one needs more.
constexpr XMLSize_t c_destructionStackSize = 10 * sizeof(void*);

/// What is put aside for each node of a model, in bytes. At worst all of them lie on the stack,
/// which grows by a quarter each time, and what it had before is of no use until the last one is
/// back: five times the last one, which has room for five quarters of the nodes.
constexpr XMLSize_t c_reserveForModelNode = 8 * sizeof(void*);
constexpr XMLSize_t c_reserveForModel = 16 * 1024;

/// The next stack after one of that size, or the same.
constexpr XMLSize_t GrowStack(XMLSize_t size) noexcept
{
    const XMLSize_t pointers = size / sizeof(void*);
    return std::max(pointers + 1, pointers + pointers / 4) * sizeof(void*);
}

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

bool IsOfModelNode(XMLSize_t size) noexcept
{
    return size == GetBlockSize<ContentSpecNode>();
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

const void* GetModelNodeType()
{
    const ContentSpecNode sample;
    return ReadType(&sample);
}

} // namespace

ScannerMemory::ScannerMemory(ParseBudget& budget)
    : m_budget(budget), m_streamType(GetStreamType()), m_modelNodeType(GetModelNodeType())
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
    m_hasRefused = false;
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
    // Readers are accounted for as entities, and destructors must not fail.
    const bool isStack = IsDestructionStack(size);
    const bool isCounted = !isReader && !isStack;
    if (isCounted)
        AskBudget([&] { m_budget.AddMemory(size); });
    if (IsOfModelNode(size))
        ReserveForModelNode();
    void* const block = AllocateBlock(size, isCounted);
    if (isReader) [[unlikely]]
        NoteReader(block);
    m_latest = block;
    m_latestSize = size;
    m_latestIsStack = isStack;
    // What the reserve gives is not zeros, and nobody asks for names any more.
    if (IsOfModelNode(size))
        m_latestModelNode =
            m_hasFailed ? nullptr : static_cast<const std::byte*>(block) + GetHeaderSize();
    return block;
}

bool ScannerMemory::IsDestructionStack(XMLSize_t size) const noexcept
{
    // A destructor allocates nothing between one stack and the next.
    return size == c_destructionStackSize ||
           (m_latestIsStack && m_latest != nullptr && size == GrowStack(m_latestSize));
}

template <typename Add>
void ScannerMemory::AskBudget(Add&& add)
{
    try {
        add();
    } catch (const std::bad_alloc&) {
        FailMemory();
    } catch (...) {
        m_hasRefused = true;
        throw;
    }
}

void ScannerMemory::ReserveForModelNode()
{
    AskBudget([this] {
        MeetNameOfModelNode();
        m_budget.AddModelNode();
    });
    try {
        m_reserve.Require(c_reserveForModel + (m_modelNodes + 1) * c_reserveForModelNode);
    } catch (const std::bad_alloc&) {
        FailMemory();
    }
}

void ScannerMemory::MeetNameOfModelNode()
{
    // Where the scanner makes a node for another one at once, either may be allocated first; until
    // it is made, it is zeros. Nodes without a name have no element.
    if (m_latestModelNode == nullptr || ReadType(m_latestModelNode) != m_modelNodeType)
        return;
    const auto* const node = static_cast<const ContentSpecNode*>(m_latestModelNode);
    const xercesc::QName* const element = node->getElement();
    if (element == nullptr)
        return;
    const std::u16string_view prefix = ViewXMLCh(element->getPrefix());
    const std::u16string_view local = ViewXMLCh(element->getLocalPart());
    if (prefix.empty())
        m_budget.MeetModelName(local);
    else
        m_budget.MeetModelName(std::u16string(prefix).append(u":").append(local));
}

void* ScannerMemory::AllocateBlock(XMLSize_t size, bool isCounted)
{
    try {
        void* const block = AllocateLinked(size, isCounted);
        // Readers are large, come once for each entity, and initialise themselves.
        const bool isReader = size == GetBlockSize<xercesc::XMLReader>();
        if ((m_hasSchemas && !isReader) || IsOfModelNode(size))
            std::memset(block, 0, size);
        return block;
    } catch (const xercesc::OutOfMemoryException&) {
        void* const block =
            m_hasFailed || IsDestructionStack(size) ? m_reserve.Allocate(size) : nullptr;
        if (block != nullptr)
            return block;
        FailMemory();
    }
}

void ScannerMemory::FailMemory()
{
    m_hasFailed = true;
    m_hasRefused = true;
    m_budget.EndMemory();
    throw xercesc::OutOfMemoryException();
}

void* ScannerMemory::AllocateLinked(XMLSize_t size, bool isCounted)
{
    if (size > std::numeric_limits<XMLSize_t>::max() - sizeof(Link))
        throw xercesc::OutOfMemoryException();
    auto* const link =
        static_cast<Link*>(XMLPlatformUtils::fgMemoryManager->allocate(sizeof(Link) + size));
    *link = {&m_blocks, m_blocks.next, size, isCounted, false};
    link->next->previous = link;
    m_blocks.next = link;
    m_held += size;
    m_modelNodes += IsOfModelNode(size) ? 1U : 0U;
    return link + 1;
}

void ScannerMemory::FreeLinked(void* block) noexcept
{
    Link* const link = static_cast<Link*>(block) - 1;
    link->previous->next = link->next;
    link->next->previous = link->previous;
    m_held -= link->size;
    m_modelNodes -= IsOfModelNode(link->size) ? 1U : 0U;
    XMLPlatformUtils::fgMemoryManager->deallocate(link);
}

void ScannerMemory::deallocate(void* block)
{
    if (block == nullptr)
        return;
    // Those of the reserve, too.
    if (block == m_latest)
        m_latest = nullptr;
    const void* const object = static_cast<const std::byte*>(block) + GetHeaderSize();
    if (object == m_latestModelNode)
        m_latestModelNode = nullptr;
    if (m_reserve.Deallocate(block))
        return;
    Link& link = *(static_cast<Link*>(block) - 1);
    if (link.isReturned) [[unlikely]]
        return;
    if (block == m_refusedStream)
        m_refusedStream = nullptr;
    if (block == m_topReader) [[unlikely]] {
        m_readers.pop_back();
        m_topReader = m_readers.empty() ? nullptr : m_readers.back();
        m_budget.SetReaders(m_readers.size());
    }
    if (link.isCounted)
        m_budget.ReturnMemory(link.size);
    if (m_hasRefused && m_hasSchemas) [[unlikely]]
        link.isReturned = true;
    else
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
        FailMemory();
    }
    m_topReader = block;
    m_budget.SetReaders(m_readers.size());
}
