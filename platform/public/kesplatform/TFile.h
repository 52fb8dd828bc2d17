#pragma once

#include <kesplatform/CorvinaException.h>
#include <kesplatform/Export.h>
#include <kesplatform/TPath.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace TIO {

/// A file that cannot be opened, read, decoded or written. The message names the file and the
/// reason. For threads and copies see CorvinaException.
class KESPLATFORM_EXPORT Exception : public CorvinaException
{
public:
    /// About a file; the message names it and the reason.
    Exception(const TPath& path, const TString& reason);
    /// A copy about the same file.
    Exception(const Exception&) = default;
    ~Exception() override;

    [[nodiscard]] Exception* Clone() const override;
    [[noreturn]] void Throw() const override;

    /// The file, as it was named; valid as long as this exception.
    [[nodiscard]] const TPath& GetPath() const noexcept { return m_path; }

private:
    TPath m_path;
};

/// A text file with bytes that do not decode. The message says where.
class KESPLATFORM_EXPORT DecodingException : public Exception
{
public:
    /// About the byte at `offset`, which is not valid in `encoding`.
    DecodingException(const TPath& path, const TString& encoding, std::uint64_t offset);
    /// A copy about the same byte.
    DecodingException(const DecodingException&) = default;
    ~DecodingException() override;

    [[nodiscard]] DecodingException* Clone() const override;
    [[noreturn]] void Throw() const override;

    /// The encoding that the file is in by its byte-order mark, else by its declaration, else
    /// "UTF-8"; valid as long as this exception.
    [[nodiscard]] const TString& GetEncoding() const noexcept { return m_encoding; }
    /// Of the first byte that does not decode, from the start of the file.
    [[nodiscard]] std::uint64_t GetOffset() const noexcept { return m_offset; }

private:
    TString m_encoding;
    std::uint64_t m_offset;
};

} // namespace TIO

/// A file open for reading. Closed at the end of the object's life. Different objects may be used
/// from different threads; what is static is safe to use from several.
class KESPLATFORM_EXPORT TFile
{
public:
    /// Opens nothing yet.
    explicit TFile(const TPath& path);
    ~TFile();
    TFile(const TFile&) = delete;
    TFile& operator=(const TFile&) = delete;

    /// The path that it was made with; valid as long as this object.
    [[nodiscard]] const TPath& GetPath() const noexcept { return m_path; }

    /// Opens for reading. A directory, or anything that cannot be opened, is a TIO::Exception.
    void Open();
    /// Reads up to `count` bytes and returns how many came; 0 at the end. TIO::Exception.
    std::size_t Read(void* bytes, std::size_t count);
    /// Moves to a byte offset from the start. TIO::Exception.
    void Seek(std::int64_t offset);
    /// The size on disk in bytes. TIO::Exception when the file cannot be examined.
    [[nodiscard]] std::int64_t Size() const;

    /// The whole file as text. Flag 1, the only one, decodes by byte-order mark, else by the
    /// encoding that an XML declaration names, else as UTF-8, unless the bytes themselves show that
    /// it cannot be that. One byte-order mark is not part of the text. Bytes that do not decode are
    /// a TIO::DecodingException; what tells no size, as pipes and devices do, and holds more than
    /// 1,073,741,823 bytes is a TIO::Exception.
    [[nodiscard]] static TString LoadTextFile(const TPath& path, int flag);
    /// The same text as UTF-8: what LoadTextFile(path, flag).toStdString() gives, without the
    /// detour through UTF-16 when the file is UTF-8 already.
    [[nodiscard]] static std::string LoadTextFileAsUtf8(const TPath& path, int flag);
    /// The same; `hadByteOrderMark` is told whether a byte-order mark was taken off.
    [[nodiscard]] static std::string LoadTextFileAsUtf8(const TPath& path, int flag,
                                                        bool& hadByteOrderMark);

private:
    class Impl;

    TPath m_path;
    std::unique_ptr<Impl> m_impl;
};

/// The size of a file in bytes; TIO::Exception when there is no such file or it is a directory.
/// What has no size, a pipe or a device, counts as 0. Safe to use from several threads.
[[nodiscard]] KESPLATFORM_EXPORT std::int64_t GetFileSize(const TPath& path);

/// Whether a file of so many bytes is read as a whole where it could be read in pieces; what tells
/// no size is never to hold more.
[[nodiscard]] constexpr bool FitsInMemory(std::int64_t fileSize) noexcept
{
    return fileSize <= 0x3FFFFFFF;
}
