#include "CheckedDocument.h"

#include "ElementLocator.h"
#include "Entities.h"
#include "Excerpt.h"
#include "UnknownRoot.h"

#include <kesplatform/CorvinaException.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

namespace {

bool HasPositions(const Diagnostics& diagnostics)
{
    return std::any_of(diagnostics.begin(), diagnostics.end(),
                       [](const Diagnostic& diagnostic) { return diagnostic.line > 0; });
}

void Append(Diagnostics& diagnostics, Diagnostics found, InputSource& source)
{
    AddExcerpts(found, source);
    diagnostics.insert(diagnostics.end(), found.begin(), found.end());
}

/// What is doubtful about a document without errors.
void AddWarnings(Diagnostics& diagnostics, InputSource& source, DocumentReader& reader,
                 const std::vector<SkippedEntity>& skipped)
{
    if (reader.HasSchema())
        Append(diagnostics, FindUnknownRoot(source, reader), source);
    Append(diagnostics, DescribeSkippedEntities(skipped, source.Id()), source);
}

void ReadTree(DocumentReader& reader, CheckedDocument& checked)
{
    ReadDocument document = reader.Read(*checked.source);
    checked.diagnostics = std::move(document.diagnostics);
    checked.dom = std::move(document.dom);
}

} // namespace

CheckedDocument CheckDocument(DocumentReader& reader, const QString& file, bool isTreeWanted)
{
    CheckedDocument checked;
    checked.file = file;
    try {
        checked.source = OpenDocument(file);
        Diagnostics& diagnostics = checked.diagnostics;
        if (!isTreeWanted)
            diagnostics = reader.Check(*checked.source);
        else
            ReadTree(reader, checked);
        // The reader reads more than this document for what follows.
        const std::vector<SkippedEntity> skipped = reader.GetSkippedEntities();
        if (!HasErrors(diagnostics))
            AddWarnings(diagnostics, *checked.source, reader, skipped);
        if (!checked.dom && HasPositions(diagnostics))
            checked.dom = reader.ReadTree(*checked.source);
        if (checked.dom)
            NameElements(diagnostics, file, *checked.dom);
    } catch (const CorvinaException& e) {
        checked.unreadable = e.GetConcatenatedMessages();
    }
    if (!isTreeWanted) {
        checked.dom.reset();
        checked.source.reset();
    }
    return checked;
}

void CheckInParallel(const QStringList& files, const MakeReader& makeReader,
                     const std::function<void(qsizetype)>& begin,
                     const std::function<void(CheckedDocument)>& report)
{
    std::vector<std::promise<CheckedDocument>> results(static_cast<std::size_t>(files.size()));
    std::atomic<std::size_t> next = 0;
    std::mutex making;
    const auto work = [&] {
        std::unique_ptr<DocumentReader> reader;
        for (std::size_t i = next++; i < results.size(); i = next++) {
            try {
                if (!reader) {
                    const std::lock_guard guard(making);
                    reader = makeReader();
                }
                results[i].set_value(
                    CheckDocument(*reader, files.at(static_cast<qsizetype>(i)), false));
            } catch (...) {
                results[i].set_exception(std::current_exception());
            }
        }
    };
    std::vector<std::jthread> threads(
        std::min<std::size_t>(results.size(), std::max(1U, std::thread::hardware_concurrency())));
    try {
        for (std::jthread& thread : threads)
            thread = std::jthread(work);
        for (std::size_t i = 0; i < results.size(); ++i) {
            begin(static_cast<qsizetype>(i));
            report(results[i].get_future().get());
        }
    } catch (...) {
        // The threads, which are waited for, stop after the documents that they are at.
        next = results.size();
        throw;
    }
}
