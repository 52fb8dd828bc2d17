#pragma once

#include <kesplatform/Export.h>
#include <kesplatform/TString.h>

#include <compare>
#include <unordered_map>

/// A name in two parts, root and field, written root.field. A part that holds a dot or a quote
/// stands in double quotes, quotes inside doubled: "a.b".c. A local name has no root.
/// A plain value, ordered by root and then by field.
class KESPLATFORM_EXPORT QualifiedName
{
public:
    QualifiedName() noexcept = default;
    /// A name of these parts, which are not written forms.
    QualifiedName(TString root, TString field) noexcept
        : m_root(std::move(root)), m_field(std::move(field))
    {
    }

    /// Both parts are empty.
    [[nodiscard]] bool IsEmpty() const noexcept { return m_root.IsEmpty() && m_field.IsEmpty(); }
    /// The root, empty for a local name; valid until this object changes or ends.
    [[nodiscard]] const TString& GetRootValue() const noexcept { return m_root; }
    void SetRootValue(const TString& root) noexcept { m_root = root; }
    /// The field; valid until this object changes or ends.
    [[nodiscard]] const TString& GetFieldValue() const noexcept { return m_field; }
    /// The written form; that of a name without root is the field alone.
    [[nodiscard]] TString GetFullValue() const;

    friend bool operator==(const QualifiedName&, const QualifiedName&) noexcept = default;
    friend std::strong_ordering operator<=>(const QualifiedName&,
                                            const QualifiedName&) noexcept = default;

private:
    TString m_root;
    TString m_field;
};

/// The qualified name of a field; the root is its data source. A plain value. What is static is
/// safe to use from several threads, a cache from one at a time.
class KESPLATFORM_EXPORT FieldName : public QualifiedName
{
public:
    /// Names that were parsed, by their written form.
    using Cache = std::unordered_map<TString, QualifiedName>;

    FieldName() noexcept = default;
    /// The field of a data source.
    FieldName(TString dataSource, TString field) noexcept
        : QualifiedName(std::move(dataSource), std::move(field))
    {
    }
    /// Takes the root as the data source.
    explicit FieldName(QualifiedName name) noexcept : QualifiedName(std::move(name)) {}

    /// Reads root.field; a text without an unquoted dot is a field without root. The first unquoted
    /// dot ends the root, further ones belong to the field. Text that is not well quoted is taken
    /// as it stands, as a field without root.
    [[nodiscard]] static FieldName ParseGlobal(const TString& text);
    /// Looks `text` up in `cache` first and adds it there. A cache serves either global or local
    /// names: what it holds is returned whoever put it there.
    [[nodiscard]] static FieldName ParseGlobal(const TString& text, Cache& cache);
    /// Reads a field alone; unquoted dots belong to it.
    [[nodiscard]] static FieldName ParseLocal(const TString& text);
    [[nodiscard]] static FieldName ParseLocal(const TString& text, Cache& cache);

    friend bool operator==(const FieldName&, const FieldName&) noexcept = default;
    friend std::strong_ordering operator<=>(const FieldName&, const FieldName&) noexcept = default;
};

/// `name` under the data source `root`. Safe to use from several threads.
[[nodiscard]] KESPLATFORM_EXPORT FieldName MakeGlobalName(const TString& root, FieldName&& name);
/// `name` without its data source. Safe to use from several threads.
[[nodiscard]] KESPLATFORM_EXPORT FieldName MakeLocalName(FieldName&& name);
