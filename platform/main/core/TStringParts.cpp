// Taking texts apart, searching and replacing in them.

#include <kesplatform/TString.h>

#include "FindText.h"

#include <kesplatform/TCType.h>

#include <QStringView>

#include <algorithm>
#include <utility>

namespace {

QStringView ToView(std::u16string_view text)
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

std::size_t SpaceAtStart(std::u16string_view text) noexcept
{
    const auto* end = std::find_if_not(text.begin(), text.end(), TCType::isSpace);
    return static_cast<std::size_t>(end - text.begin());
}

} // namespace

// Parts

TString TString::left(size_type count) const
{
    if (count < 0 || count >= length())
        return *this;
    return TString(view().substr(0, static_cast<std::size_t>(count)));
}

TString TString::right(size_type count) const
{
    if (count < 0 || count >= length())
        return *this;
    return TString(view().substr(static_cast<std::size_t>(length() - count)));
}

TString TString::mid(size_type position, size_type count) const
{
    if (position < 0) {
        if (count >= 0)
            count = std::max<size_type>(0, count + position);
        position = 0;
    }
    if (position >= length())
        return {};
    if (position == 0 && (count < 0 || count >= length()))
        return *this;
    return TString(
        view().substr(static_cast<std::size_t>(position),
                      count < 0 ? std::u16string_view::npos : static_cast<std::size_t>(count)));
}

std::vector<TString> TString::split(char16_t separator) const
{
    std::vector<TString> parts;
    size_type start = 0;
    for (size_type end = indexOf(separator); end >= 0; end = indexOf(separator, start)) {
        parts.push_back(mid(start, end - start));
        start = end + 1;
    }
    parts.push_back(mid(start));
    return parts;
}

TString TString::trimmed() const
{
    const std::size_t start = SpaceAtStart(view());
    std::size_t end = static_cast<std::size_t>(length());
    while (end > start && TCType::isSpace(view()[end - 1]))
        --end;
    return mid(static_cast<size_type>(start), static_cast<size_type>(end - start));
}

TString TString::trimLeft() const
{
    return mid(static_cast<size_type>(SpaceAtStart(view())));
}

// Searching

bool TString::startsWith(const TString& text, int caseSensitivity) const
{
    if (caseSensitivity != CaseInsensitive)
        return view().starts_with(text.view());
    return ToView(view()).startsWith(ToView(text.view()), Qt::CaseInsensitive);
}

bool TString::endsWith(const TString& text, int caseSensitivity) const
{
    if (caseSensitivity != CaseInsensitive)
        return view().ends_with(text.view());
    return ToView(view()).endsWith(ToView(text.view()), Qt::CaseInsensitive);
}

TString::size_type TString::indexOf(const TString& text, size_type from) const noexcept
{
    return indexOf(text, from, length());
}

TString::size_type TString::indexOf(const TString& text, size_type from,
                                    size_type end) const noexcept
{
    const size_type start = std::max<size_type>(0, from);
    if (start > std::min(end, length()))
        return -1;
    const std::u16string_view range =
        view().substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
    const std::size_t found = FindText(range, text.view());
    return found == std::u16string_view::npos ? -1 : start + static_cast<size_type>(found);
}

TString::size_type TString::indexOf(char16_t unit, size_type from) const noexcept
{
    return ToView(view()).indexOf(QChar(unit), std::max<size_type>(0, from));
}

TString& TString::replace(const TString& before, const TString& after)
{
    if (before.IsEmpty())
        return *this;
    size_type found = indexOf(before);
    if (found < 0)
        return *this;
    TString result;
    size_type copied = 0;
    for (; found >= 0; found = indexOf(before, copied)) {
        result.append(view().substr(static_cast<std::size_t>(copied),
                                    static_cast<std::size_t>(found - copied)));
        result.append(after.view());
        copied = found + before.length();
    }
    result.append(view().substr(static_cast<std::size_t>(copied)));
    return *this = std::move(result);
}
