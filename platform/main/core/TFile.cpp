#include <kesplatform/TFile.h>

#include "DiskName.h"

#include <kesplatform/TFormatString.h>
#include <kesplatform/detail/TextDecoding.h>

#include <QFile>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <optional>
#include <system_error>

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

DecodingException::DecodingException(const TPath& path, const TString& encoding,
                                     std::uint64_t offset)
    : Exception(
          path,
          TFormatString(u"the byte at offset %1 is not valid in %2").Format(offset, encoding)),
      m_encoding(encoding), m_offset(offset)
{
}

DecodingException::~DecodingException() = default;

DecodingException* DecodingException::Clone() const
{
    return new DecodingException(*this);
}

void DecodingException::Throw() const
{
    throw *this;
}

} // namespace TIO

QString DiskName(const TPath& path)
{
    const TString& name = path.GetString();
    if (name.contains(u'\0'))
        throw TIO::Exception(path, u"a file name cannot hold a zero character");
    return name.startsWith(u":") ? TString(u"./") + name : name;
}

namespace {

// What a file of unknown size is given to begin with; doubled as long as more comes.
constexpr std::int64_t c_firstRoom = 16 * 1024;

// How much is read at once.
constexpr std::size_t c_bytesAtOnce = 128 * 1024;

/// Grows in steps that stay in the cache, for a string clears its room before anything is read.
std::string ReadAll(TFile& file)
{
    std::string bytes;
    // One byte more than the file holds, so that a file that has not changed needs no more room.
    const std::int64_t size = file.Size();
    bytes.reserve(static_cast<std::size_t>(size > 0 ? size + 1 : c_firstRoom));
    std::size_t length = 0;
    for (;;) {
        if (length == bytes.capacity())
            bytes.reserve(length * 2);
        bytes.resize(std::min(length + c_bytesAtOnce, bytes.capacity()));
        const std::size_t count = file.Read(bytes.data() + length, bytes.size() - length);
        length += count;
        if (count == 0)
            break;
        // Some devices never end.
        if (size <= 0 && !FitsInMemory(static_cast<std::int64_t>(length)))
            throw TIO::Exception(file.GetPath(), u"the file has no size and does not end");
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

TextDecoding::Encoding FindEncoding(const TPath& path, std::string_view bytes)
{
    TextDecoding::Encoding encoding;
    if (const auto failure = TextDecoding::FindEncoding(bytes, encoding))
        throw TIO::Exception(path, failure->reason);
    return encoding;
}

void RequireDecoded(const TPath& path, const std::optional<TextDecoding::Undecodable>& fault)
{
    if (fault)
        throw TIO::DecodingException(path, fault->encoding, fault->offset);
}

} // namespace

class TFile::Impl
{
public:
    explicit Impl(const TPath& path) : m_path(path) {}

    QFile& File() { return m_file; }

    void RequireOpen() const
    {
        if (!m_file.isOpen())
            throw TIO::Exception(m_path, u"the file is not open");
    }

    /// Reports what the system said, or `reason` when it said nothing.
    [[noreturn]] void Fail(const char16_t* reason) const
    {
        const bool isExplained = m_file.error() != QFileDevice::NoError;
        throw TIO::Exception(m_path, isExplained ? TString(m_file.errorString()) : TString(reason));
    }

private:
    const TPath& m_path;
    QFile m_file;
};

TFile::TFile(const TPath& path) : m_path(path), m_impl(std::make_unique<Impl>(m_path)) {}

TFile::~TFile() = default;

void TFile::Open()
{
    m_impl->File().close();
    m_impl->File().setFileName(DiskName(m_path));
    // Callers read in pieces of their own; a second buffer would only be a copy.
    if (!m_impl->File().open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        m_impl->Fail(u"the file cannot be opened");
}

std::size_t TFile::Read(void* bytes, std::size_t count)
{
    m_impl->RequireOpen();
    constexpr auto c_maximum = static_cast<std::size_t>(std::numeric_limits<qint64>::max());
    const qint64 read = m_impl->File().read(static_cast<char*>(bytes),
                                            static_cast<qint64>(std::min(count, c_maximum)));
    if (read < 0)
        m_impl->Fail(u"the file cannot be read");
    return static_cast<std::size_t>(read);
}

void TFile::Seek(std::int64_t offset)
{
    m_impl->RequireOpen();
    if (offset < 0 || m_impl->File().isSequential() || !m_impl->File().seek(offset))
        m_impl->Fail(u"there is no such position to move to");
}

std::int64_t TFile::Size() const
{
    return m_impl->File().isOpen() ? m_impl->File().size() : GetFileSize(m_path);
}

TString TFile::LoadTextFile(const TPath& path, int /*flag*/)
{
    const std::string bytes = LoadBytes(path);
    TString text;
    RequireDecoded(path, TextDecoding::ToText(bytes, FindEncoding(path, bytes), text));
    return text;
}

std::string TFile::LoadTextFileAsUtf8(const TPath& path, int flag)
{
    bool hadByteOrderMark = false;
    return LoadTextFileAsUtf8(path, flag, hadByteOrderMark);
}

std::string TFile::LoadTextFileAsUtf8(const TPath& path, int /*flag*/, bool& hadByteOrderMark)
{
    std::string bytes = LoadBytes(path);
    const TextDecoding::Encoding encoding = FindEncoding(path, bytes);
    hadByteOrderMark = encoding.byteOrderMarkLength > 0;
    std::string utf8;
    RequireDecoded(path, TextDecoding::ToUtf8(std::move(bytes), encoding, utf8));
    return utf8;
}

std::int64_t GetFileSize(const TPath& path)
{
    const std::filesystem::path file(QFile::encodeName(DiskName(path)).toStdString());

    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    // For a file that does not exist, some systems report no error.
    if (!error && status.type() == std::filesystem::file_type::not_found)
        error = std::make_error_code(std::errc::no_such_file_or_directory);
    if (!error && std::filesystem::is_directory(status))
        error = std::make_error_code(std::errc::is_a_directory);
    if (!error && !std::filesystem::is_regular_file(status))
        return 0;
    const std::uintmax_t size = error ? 0 : std::filesystem::file_size(file, error);
    if (error)
        throw TIO::Exception(path, TString::fromStdString(error.message()));
    return static_cast<std::int64_t>(size);
}
