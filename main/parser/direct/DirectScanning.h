#pragma once

/// Whether plain documents are read by the library's own scanner, and what became of the last one.
/// For tests and measurements: nobody else can tell by which scanner a document was read.
///
/// Safe to use from several threads.
namespace DirectScanning {

/// From now on, in the whole process; at first as the build option KESCOREXML_DIRECT_SCANNER says.
void SetEnabled(bool enabled) noexcept;
bool IsEnabled() noexcept;

/// Why a document was left to Xerces.
enum class Verdict
{
    /// It was not left to it: the direct scanner has read the document.
    Accepted,
    /// No parse on this thread yet.
    None,
    /// The direct scanner is switched off.
    Disabled,
    /// The parser validates.
    Schema,
    /// A limit of the parse is so low that a plain document might meet it.
    Limit,
    /// Bytes of another encoding, or that are no characters.
    Encoding,
    /// A declaration that is not plain.
    Declaration,
    /// A document type with more than declarations of elements and attributes.
    DocumentType,
    /// A reference to an entity that is not predefined.
    Entity,
    /// An attribute whose name begins with a colon, before the colon sanitizer has seen it.
    ColonName,
    /// Not well-formed, or not known for certain to be.
    Markup
};

/// Of the last parse on this thread.
Verdict GetLastVerdict() noexcept;
void SetLastVerdict(Verdict verdict) noexcept;
/// A word for it, as messages of tests show it.
const char* GetName(Verdict verdict) noexcept;

/// Switches the direct scanner on or off for as long as this lives.
class Switch
{
public:
    explicit Switch(bool enabled) noexcept : m_before(IsEnabled()) { SetEnabled(enabled); }
    ~Switch() { SetEnabled(m_before); }
    Switch(const Switch&) = delete;
    Switch& operator=(const Switch&) = delete;

private:
    bool m_before;
};

} // namespace DirectScanning
