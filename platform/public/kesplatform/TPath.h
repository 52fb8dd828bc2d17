#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <compare>

/// A file path: a plain value, compared and ordered by its text. Nothing here touches a disk.
class KESPLATFORM_EXPORT TPath
{
public:
    TPath() noexcept = default;
    /// A path as it is written.
    TPath(TString path) noexcept : m_path(std::move(path)) {}
    template <OtherText::Any T>
    TPath(const T& path) : m_path(path)
    {
    }

    /// Whether it is the empty text.
    [[nodiscard]] bool IsEmpty() const noexcept { return m_path.IsEmpty(); }
    /// The text.
    [[nodiscard]] const TString& GetString() const noexcept { return m_path; }
    /// The path without its last part: "a" of "a/x", empty of "x". The root stays: "/" of "/x".
    [[nodiscard]] TPath RemoveFilename() const;
    /// The text with forward slashes.
    [[nodiscard]] TString GenericString() const;

    /// One slash between the two; the other side when one is empty; `b` when it is absolute.
    friend KESPLATFORM_EXPORT TPath operator/(const TPath& a, const TPath& b);

    friend bool operator==(const TPath&, const TPath&) noexcept = default;
    friend std::strong_ordering operator<=>(const TPath&, const TPath&) noexcept = default;

private:
    TString m_path;
};
