#include <kescorexml/SAXFileLocation.h>
#include <kescorexml/SAXInterface.h>

SAXInterface::~SAXInterface() = default;

bool SAXInterface::IsDone()
{
    return false;
}

SAXInterfaceExtension::~SAXInterfaceExtension() = default;

SAXAttributeErrors::~SAXAttributeErrors() = default;

SAXFileLocation::~SAXFileLocation() = default;
