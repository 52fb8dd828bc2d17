#pragma once

#include <kescorexml/DOM.h>
#include <kescorexml/InputSource.h>

#include <QString>

#include <memory>
#include <vector>

/// One message of a parse. Line and column count from 1; 0 means unknown.
struct Diagnostic
{
    bool isError = true;
    int line = 0;
    int column = 0;
    /// Without kind, position and name of the document.
    TString message;
};

/// A document as it was read, with everything that was said about it, in order.
struct ReadDocument
{
    std::unique_ptr<DOM> dom;
    std::vector<Diagnostic> diagnostics;

    bool HasErrors() const;
};

struct ReadOptions
{
    bool allowEntities = false;
    bool lineNumbers = false;
};

/// Opens a file or, for "-", standard input. What cannot be read is a CorvinaException.
std::unique_ptr<InputSource> OpenDocument(const QString& file);
ReadDocument Read(InputSource& source, const ReadOptions& options);

/// "FILE:LINE:COLUMN: error: MESSAGE"; what is unknown of the position is left out.
TString ToText(const QString& file, const Diagnostic& diagnostic);
