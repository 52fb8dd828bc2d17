#include <kesplatform/TFile.h>

#include "TextDecoding.h"

#include <kesplatform/TFormatString.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <limits>

namespace TIO {

Exception::Exception(const TPath& path, const TString& reason)
    : CorvinaException(TFormatString(u"%1: %2").Format(path.GetString(), reason)), m_path(path)
{
}

Exception::~Exception() = default;

Exception* Exception::Clone() const
{
    return new Exception(*this);
}

void Exception::Throw() const
{
    throw *this;
}

} // namespace TIO

namespace {

// What a file of unknown size is read in; doubled as long as more comes.
constexpr std::size_t c_firstPiece = 16 * 1024;

/// The name for QFile, which takes names that begin with a colon for compiled-in resources.
QString DiskName(const TPath& path)
{
    const TString& name = path.GetString();
    return name.startsWith(u":") ? TString(u"./") + name : name;
}

std::string ReadAll(TFile& file)
{
    std::string bytes;
    // One byte more than the file holds, so that its end shows in the first read.
    bytes.resize(std::max(c_firstPiece, static_cast<std::size_t>(file.Size()) + 1));
    std::size_t length = 0;
    for (;;) {
        const std::size_t count = file.Read(bytes.data() + length, bytes.size() - length);
        length += count;
        if (count == 0)
            break;
        if (length == bytes.size())
            bytes.resize(bytes.size() * 2);
    }
    bytes.resize(length);
    return bytes;
}

std::string LoadBytes(const TPath& path)
{
    TFile file(path);
    file.Open();
    return ReadAll(file);
}

} // namespace

class TFile::Impl
{
public:
    explicit Impl(const TPath& path) : m_path(path), m_file(DiskName(path)) {}

    QFile& File() { return m_file; }

    [[noreturn]] void Fail() const { throw TIO::Exception(m_path, TString(m_file.errorString())); }

private:
    const TPath& m_path;
    QFile m_file;
};

TFile::TFile(const TPath& path) : m_path(path), m_impl(std::make_unique<Impl>(m_path)) {}

TFile::~TFile() = default;

void TFile::Open()
{
    // Callers read in pieces of their own; a second buffer would only be a copy.
    if (!m_impl->File().open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        m_impl->Fail();
}

std::size_t TFile::Read(void* bytes, std::size_t count)
{
    constexpr auto c_most = static_cast<std::size_t>(std::numeric_limits<qint64>::max());
    const qint64 read = m_impl->File().read(static_cast<char*>(bytes),
                                            static_cast<qint64>(std::min(count, c_most)));
    if (read < 0)
        m_impl->Fail();
    return static_cast<std::size_t>(read);
}

void TFile::Seek(std::int64_t offset)
{
    if (!m_impl->File().seek(offset))
        m_impl->Fail();
}

std::int64_t TFile::Size() const
{
    return GetFileSize(m_path);
}

TString TFile::LoadTextFile(const TPath& path, int flag)
{
    static_cast<void>(flag);
    const std::string bytes = LoadBytes(path);
    try {
        return TextDecoding::ToText(bytes, TextDecoding::FindEncoding(bytes));
    } catch (const TextDecoding::Failure& failure) {
        throw TIO::Exception(path, failure.reason);
    }
}

std::string TFile::LoadTextFileAsUtf8(const TPath& path, int flag)
{
    static_cast<void>(flag);
    std::string bytes = LoadBytes(path);
    try {
        const TextDecoding::Encoding encoding = TextDecoding::FindEncoding(bytes);
        return TextDecoding::ToUtf8(std::move(bytes), encoding);
    } catch (const TextDecoding::Failure& failure) {
        throw TIO::Exception(path, failure.reason);
    }
}

std::int64_t GetFileSize(const TPath& path)
{
    const QFileInfo info(DiskName(path));
    if (!info.exists())
        throw TIO::Exception(path, u"No such file or directory");
    if (info.isDir())
        throw TIO::Exception(path, u"Is a directory");
    return info.size();
}
