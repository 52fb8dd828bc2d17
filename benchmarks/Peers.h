#pragma once

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include <memory>
#include <string>

/// Call it before anything of Xerces; it stays initialised.
void InitialiseXercesOnce();

/// A Xerces reader with the features of a plain parse of this library and a handler that does
/// nothing: what the scanner alone costs.
class BareReader
{
public:
    BareReader();
    ~BareReader();
    BareReader(const BareReader&) = delete;
    BareReader& operator=(const BareReader&) = delete;

    void Parse(const std::string& bytes);

private:
    xercesc::SecurityManager m_securityManager;
    xercesc::DefaultHandler m_handler;
    std::unique_ptr<xercesc::SAX2XMLReader> m_reader;
};

/// Has the heap merge the small pieces that were given back, which else the next one pays for who
/// asks for a large one.
void SettleHeap();
/// The bytes that the process has allocated on the heap.
std::size_t GetHeapInUse();
