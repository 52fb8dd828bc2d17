#pragma once

#include <QString>

#include <locale.h>

/// Asks the C library how wide characters are, as terminals do, whatever the locale of the process
/// is. It belongs to the thread that makes it.
class CharacterWidths
{
public:
    CharacterWidths();
    CharacterWidths(const CharacterWidths&) = delete;
    CharacterWidths& operator=(const CharacterWidths&) = delete;
    ~CharacterWidths();

    /// The columns of a terminal that a text takes. What the C library does not know takes one.
    int Of(const QString& text) const;

private:
    locale_t m_locale;
    locale_t m_previous = nullptr;
};
