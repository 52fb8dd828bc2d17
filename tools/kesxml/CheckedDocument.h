#pragma once

#include "Diagnostic.h"
#include "Document.h"

#include <kescorexml/DOM.h>
#include <kescorexml/InputSource.h>

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

/// What a check found in one document.
struct CheckedDocument
{
    QString file;
    Diagnostics diagnostics;
    /// Why it could not be read; empty when it could.
    TString unreadable;
    /// The document itself, where that is wanted.
    std::unique_ptr<InputSource> source;
    std::unique_ptr<DOM> dom;
};

/// Reads a document and finds out what is wrong with it. A tree is made only when it is wanted, or
/// when there are elements to name. `reader` must tell line numbers.
CheckedDocument CheckDocument(DocumentReader& reader, const QString& file, bool isTreeWanted);

/// Makes readers that check alike. It is called on several threads, one call at a time.
using MakeReader = std::function<std::unique_ptr<DocumentReader>()>;

/// Checks many documents without trees on as many threads as there are processors, and hands each
/// to `report`, on the calling thread and in the order of the files. `begin` is told the index of
/// the document that is waited for. What a check throws is thrown in its turn.
void CheckInParallel(const QStringList& files, const MakeReader& makeReader,
                     const std::function<void(qsizetype)>& begin,
                     const std::function<void(CheckedDocument)>& report);
