#pragma once

#include <kesplatform/TFile.h>
#include <kesplatform/TString.h>

#include <QString>

#include <string_view>

/// Puts these bytes in place of a file, or makes it. Whatever goes wrong, what was there stays:
/// they are written beside it first, and the disk has them before they take its place. A file that
/// a link leads to is replaced, not the link. Throws a CorvinaException that says why not; what is
/// there and no regular file is never replaced.
void SaveFile(const QString& file, std::string_view bytes);

/// What went wrong with a file, without its name.
TString ReasonOf(const TIO::Exception& failure);
