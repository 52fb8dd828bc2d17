#include <kescorexml/IXercesInputSourceProvider.h>
#include <kescorexml/InputSource.h>

InputSource::InputSource(const TString& id) : m_id(id) {}

InputSource::~InputSource() = default;

IXercesInputSourceProvider::~IXercesInputSourceProvider() = default;
