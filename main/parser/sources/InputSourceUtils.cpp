#include <kescorexml/InputSourceUtils.h>

#include <kescorexml/FileInputSource.h>
#include <kescorexml/StringInputSource.h>

#include <kesplatform/Metrics.h>
#include <kesplatform/TFile.h>

std::unique_ptr<InputSource> InputSourceUtils::InputSourceFromFileName(const TString& fileName,
                                                                       bool skipLeadingWhitespace)
{
    const Metrics::Scope scope("InputSourceFromFileName");
    const TPath path(fileName);
    if (!FitsInMemory(GetFileSize(path)))
        return std::make_unique<FileInputSource>(fileName);
    return std::unique_ptr<InputSource>(new StringInputSource(StringInputSource::FromUtf8(),
                                                              TFile::LoadTextFileAsUtf8(path, 1),
                                                              fileName, skipLeadingWhitespace));
}
