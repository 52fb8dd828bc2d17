#include "SavedFile.h"

#include "NativeFile.h"

#include <kesplatform/CorvinaException.h>

#include <QFileInfo>

namespace {

[[noreturn]] void Fail(const QString& file, const QString& reason)
{
    throw CorvinaException(TString(file + ": it cannot be written: " + reason));
}

} // namespace

void SaveFile(const QString& file, std::string_view bytes)
{
    if (!IsUtf8Name(file))
        Fail(file, "its name is not UTF-8");
    const QFileInfo info(file);
    if (info.exists() && !info.isFile())
        Fail(file, "this is no regular file");
    QSaveFile saved(file);
    if (!saved.open(QIODevice::WriteOnly))
        Fail(file, saved.errorString());
    if (!WriteAndCommit(saved, bytes))
        Fail(file, saved.errorString());
}

bool WriteAndCommit(QSaveFile& file, std::string_view bytes)
{
    // A disk that fills up takes a part first, and that is no error yet.
    while (!bytes.empty()) {
        const qint64 count = file.write(bytes.data(), static_cast<qint64>(bytes.size()));
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    // Committing alone would overlook that the last of it was not taken.
    return file.flush() && file.commit();
}
