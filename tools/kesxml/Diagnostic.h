#pragma once

#include <kescorexml/XMLDiagnostic.h>

#include <kesplatform/TString.h>

#include <span>
#include <vector>

/// One message of a parse. Line and column count from 1; 0 means unknown.
struct Diagnostic
{
    bool isError = true;
    /// The document, or the schema, that the message is about.
    TString file;
    int line = 0;
    int column = 0;
    /// Without kind, position and name of the file.
    TString message;
    /// The path of the element in which the position lies; empty when that is not known. It ends
    /// with "/@NAME" when it is known that it is about an attribute.
    TString path;
    /// The line of the document in which the position lies, fit for a terminal, without what is far
    /// from the position; empty when that is not known.
    TString excerpt{};
    /// How many columns of a terminal are before the position in the excerpt.
    int caret = 0;
    /// Whether it is about bytes that are not UTF-8, up to which the document was not read, so that
    /// the element is not known.
    bool isInvalidUtf8 = false;
    /// Whether it is about a reference to an entity that is not allowed.
    bool isEntityRefused = false;
    /// The name of the attribute that it is about, and its value as it was validated; empty when
    /// that is not known.
    TString attribute{};
    TString value{};
};

using Diagnostics = std::vector<Diagnostic>;

/// Adds what a parser recorded about a document or schema, and what that refers to.
void AddDiagnostics(Diagnostics& diagnostics, const std::vector<XMLDiagnostic>& recorded,
                    const TString& file);

bool HasErrors(const Diagnostics& diagnostics);

/// ": 'VALUE'" for an attribute, of whose value the message does not speak, cut when it is long;
/// else nothing.
TString GetValueNote(const Diagnostic& diagnostic);

/// Writes each diagnostic as a line to standard error, "FILE:LINE:COLUMN: error: MESSAGE in PATH"
/// with the note on the value and without what is unknown, and below it the excerpt, where there is
/// one, with a caret under the position. In colours where standard error shows them.
void PrintDiagnostics(std::span<const Diagnostic> diagnostics);
/// "FILE: 1 error, 2 warnings" or "FILE: fine".
TString Summarise(const TString& file, const Diagnostics& diagnostics);
