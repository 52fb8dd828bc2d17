#include "TerminalMarkup.h"

#include "Markup.h"
#include "OneLine.h"

#include <kesplatform/TString.h>

#include <QString>

#include <algorithm>

namespace {

bool SteersATerminal(char16_t unit)
{
    return IsUnsafeUnit(unit) && unit != u'\t' && unit != u'\n';
}

} // namespace

std::string ToTerminalMarkup(std::string_view document)
{
    using Kind = MarkupToken::Kind;
    std::string written;
    MarkupReader reader(document);
    for (MarkupToken token; reader.Read(token);) {
        const TString text = TString::fromStdString(std::string(token.text));
        const std::u16string_view units = text.view();
        if (std::none_of(units.begin(), units.end(), SteersATerminal)) {
            written += token.text;
            continue;
        }
        const bool takesReferences = token.kind == Kind::Text || token.kind == Kind::StartTag ||
                                     token.kind == Kind::EmptyTag;
        QString safe;
        for (const char16_t unit : units) {
            if (!SteersATerminal(unit))
                safe += QChar(unit);
            else if (takesReferences)
                safe += "&#x" + QString::number(unit, 16).toUpper() + ";";
            else
                safe += QChar(QChar::ReplacementCharacter);
        }
        written += safe.toStdString();
    }
    return written;
}
