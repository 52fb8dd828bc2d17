#include <kesplatform/QualifiedName.h>

#include <optional>

namespace {

constexpr char16_t c_dot = u'.';
constexpr char16_t c_quote = u'"';

void AppendPart(TString& to, std::u16string_view part)
{
    if (part.find(c_dot) == part.npos && part.find(c_quote) == part.npos) {
        to += part;
        return;
    }
    to += c_quote;
    for (const char16_t unit : part) {
        if (unit == c_quote)
            to += c_quote;
        to += unit;
    }
    to += c_quote;
}

/// Takes a quoted part, quotes included, off the front of `text`. Nothing is taken and returned
/// when the closing quote is missing.
std::optional<TString> TakeQuotedPart(std::u16string_view& text)
{
    TString part;
    std::size_t from = 1;
    for (;;) {
        const std::size_t quote = text.find(c_quote, from);
        if (quote == text.npos)
            return std::nullopt;
        part += text.substr(from, quote - from);
        if (!text.substr(quote + 1).starts_with(c_quote)) {
            text.remove_prefix(quote + 1);
            return part;
        }
        part += c_quote;
        from = quote + 2;
    }
}

/// A whole text as one part, or nothing when it is not well quoted.
std::optional<TString> ReadField(std::u16string_view text)
{
    if (!text.starts_with(c_quote))
        return text.find(c_quote) == text.npos ? std::optional(TString(text)) : std::nullopt;
    std::optional<TString> part = TakeQuotedPart(text);
    return text.empty() ? part : std::nullopt;
}

/// Takes root and dot off the front of `text`. Without root `text` is left alone and the result
/// is empty; nothing when the root is not well quoted.
std::optional<TString> TakeRoot(std::u16string_view& text)
{
    if (text.starts_with(c_quote)) {
        std::u16string_view rest = text;
        std::optional<TString> root = TakeQuotedPart(rest);
        if (!root || rest.empty())
            return TString();
        if (!rest.starts_with(c_dot))
            return std::nullopt;
        text = rest.substr(1);
        return root;
    }
    const std::size_t dot = text.find(c_dot);
    if (dot == text.npos)
        return TString();
    const std::u16string_view root = text.substr(0, dot);
    if (root.find(c_quote) != root.npos)
        return std::nullopt;
    text.remove_prefix(dot + 1);
    return TString(root);
}

QualifiedName ReadGlobal(const TString& text)
{
    std::u16string_view rest = text.view();
    std::optional<TString> root = TakeRoot(rest);
    if (root) {
        std::optional<TString> field = ReadField(rest);
        if (field)
            return {*std::move(root), *std::move(field)};
    }
    return {TString(), text};
}

QualifiedName ReadLocal(const TString& text)
{
    return {TString(), ReadField(text.view()).value_or(text)};
}

FieldName ReadCached(const TString& text, FieldName::Cache& cache,
                     QualifiedName (&read)(const TString&))
{
    const auto found = cache.find(text);
    return FieldName(found != cache.end() ? found->second
                                          : cache.emplace(text, read(text)).first->second);
}

} // namespace

TString QualifiedName::GetFullValue() const
{
    TString text;
    if (!m_root.IsEmpty()) {
        AppendPart(text, m_root.view());
        text += c_dot;
    }
    AppendPart(text, m_field.view());
    return text;
}

FieldName FieldName::ParseGlobal(const TString& text)
{
    return FieldName(ReadGlobal(text));
}

FieldName FieldName::ParseGlobal(const TString& text, Cache& cache)
{
    return ReadCached(text, cache, ReadGlobal);
}

FieldName FieldName::ParseLocal(const TString& text)
{
    return FieldName(ReadLocal(text));
}

FieldName FieldName::ParseLocal(const TString& text, Cache& cache)
{
    return ReadCached(text, cache, ReadLocal);
}

FieldName MakeGlobalName(const TString& root, FieldName&& name)
{
    name.SetRootValue(root);
    return std::move(name);
}

FieldName MakeLocalName(FieldName&& name)
{
    name.SetRootValue(TString());
    return std::move(name);
}
