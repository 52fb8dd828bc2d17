#include <kescorexml/InputSourceUtils.h>

#include "base/LeadingWhitespace.h"

#include <kescorexml/FileInputSource.h>
#include <kescorexml/StringInputSource.h>

#include <kesplatform/EncodingTable.h>
#include <kesplatform/Metrics.h>
#include <kesplatform/TFile.h>

#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr std::string_view c_byteOrderMark = EncodingTable::c_utf8.byteOrderMark;

/// A byte-order mark that was taken off a file is to be put back where a parser would take off
/// another, behind white space or not: it refuses the second of two that it gets to see.
bool BeginsWithByteOrderMark(std::string_view utf8, bool behindWhitespace)
{
    return utf8.substr(behindWhitespace ? SkipLeadingWhitespace(utf8) : 0)
        .starts_with(c_byteOrderMark);
}

} // namespace

std::unique_ptr<InputSource> InputSourceUtils::InputSourceFromFileName(const TString& fileName,
                                                                       bool skipLeadingWhitespace)
{
    const Metrics::Scope scope("InputSourceFromFileName");
    const TPath path(fileName);
    if (!FitsInMemory(GetFileSize(path)))
        return std::make_unique<FileInputSource>(fileName);
    bool hadByteOrderMark = false;
    std::string utf8 = TFile::LoadTextFileAsUtf8(path, 1, hadByteOrderMark);
    if (hadByteOrderMark && BeginsWithByteOrderMark(utf8, skipLeadingWhitespace))
        utf8.insert(0, c_byteOrderMark);
    return std::unique_ptr<InputSource>(new StringInputSource(
        StringInputSource::FromUtf8(), std::move(utf8), fileName, skipLeadingWhitespace));
}
