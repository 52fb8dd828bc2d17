#include "SavedFile.h"

#include "NativeFile.h"

#include <kesplatform/CorvinaException.h>
#include <kesplatform/TSaveFile.h>

#include <QFileInfo>

namespace {

[[noreturn]] void Fail(const QString& file, const TString& reason)
{
    throw CorvinaException(TString(file) + u": it cannot be written: " + reason);
}

} // namespace

void SaveFile(const QString& file, std::string_view bytes)
{
    if (!IsUtf8Name(file))
        Fail(file, u"its name is not UTF-8");
    const QFileInfo info(file);
    if (info.exists() && !info.isFile())
        Fail(file, u"this is no regular file");
    try {
        TSaveFile saved(file);
        saved.Write(bytes.data(), bytes.size());
        saved.Commit();
    } catch (const TIO::Exception& e) {
        Fail(file, ReasonOf(e));
    }
}

TString ReasonOf(const TIO::Exception& failure)
{
    // The message is "NAME: REASON".
    return failure.GetMessagesFront().mid(failure.GetPath().GetString().length() + 2);
}
