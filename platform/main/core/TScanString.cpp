#include <kesplatform/TScanString.h>

#include <kesplatform/TCType.h>

std::size_t TScanString::skipWhitespace(std::u16string_view text, std::size_t from) noexcept
{
    while (from < text.size() && TCType::isSpace(text[from]))
        ++from;
    return from < text.size() ? from : text.size();
}
