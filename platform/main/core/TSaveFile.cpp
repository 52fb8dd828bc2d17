#include <kesplatform/TSaveFile.h>

#include "DiskName.h"

#include <kesplatform/TFile.h>

#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

class TSaveFile::Impl
{
public:
    explicit Impl(const TPath& path) : m_path(path), m_file(DiskName(path)) {}

    void Open()
    {
        // The system would rename over any of these but a folder.
        const QFileInfo old(m_file.fileName());
        if (old.exists() && !old.isFile())
            throw TIO::Exception(m_path, u"it is no regular file and cannot be replaced");
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            Fail();
    }

    void Write(const char* bytes, std::size_t count)
    {
        constexpr auto c_maximum = static_cast<std::size_t>(std::numeric_limits<qint64>::max());
        while (count > 0) {
            const qint64 written =
                m_file.write(bytes, static_cast<qint64>(std::min(count, c_maximum)));
            if (written <= 0)
                Fail();
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
    }

    void Commit()
    {
        if (!m_file.flush())
            Fail();
        Synchronise();
        if (!m_file.commit())
            Fail();
    }

private:
    /// Qt does this when it commits, but takes no notice of a failure.
    void Synchronise() const
    {
#ifdef Q_OS_UNIX
        // Some file systems cannot.
        if (fsync(m_file.handle()) != 0 && errno != EINVAL && errno != ENOSYS && errno != ENOTSUP)
            throw TIO::Exception(m_path,
                                 TString::fromStdString(std::system_category().message(errno)));
#endif
    }

    [[noreturn]] void Fail() const
    {
        throw TIO::Exception(m_path, m_file.errorString());
    }

    TPath m_path;
    QSaveFile m_file;
};

TSaveFile::TSaveFile(const TPath& path) : m_impl(std::make_unique<Impl>(path))
{
    m_impl->Open();
}

TSaveFile::~TSaveFile() = default;

void TSaveFile::Write(const void* bytes, std::size_t count)
{
    m_impl->Write(static_cast<const char*>(bytes), count);
}

void TSaveFile::Commit()
{
    m_impl->Commit();
}
