#pragma once

#include <kesplatform/TPath.h>

#include <QString>

/// The name by which Qt and the system find a file: Qt takes names that begin with a colon for
/// compiled-in resources. TIO::Exception for a name with a zero character, at which the system
/// would take it to end.
QString DiskName(const TPath& path);
