// Which operation of a document takes its lock, and in which way. The test holds the lock itself
// meanwhile; an operation that waits for it is left to wait a moment, and one that must not wait is
// waited for.

#include "support/TreeTesting.h"

#include <kescorexml/PathRenames.h>
#include <kesplatform/TReadWriteLock.h>

#include <chrono>
#include <functional>
#include <future>
#include <thread>

namespace {

TReadWriteLock& LockOf(DOM& dom);

/// An explicit instantiation may name what is private.
template <TReadWriteLock DOM::*Lock>
struct LockAccess
{
    friend TReadWriteLock& LockOf(DOM& dom) { return dom.*Lock; }
};
template struct LockAccess<&DOM::m_lock>;

/// Two documents, each with an element a that has an error and a warning.
struct World
{
    World()
    {
        for (DOM* dom : {&one, &two}) {
            AddChildren(*dom->GetRoot(), "a");
            AddError(Find(*dom, "a"), "e");
            AddWarning(Find(*dom, "a"), "w");
        }
        AddChildren(*one.GetRoot(), "b,removed,moved");
        AddError(Find(one, "removed"), "e");
        removed = one.GetRoot()->RemoveChild(Find(one, "removed"));
        moved = one.GetRoot()->RemoveChild(Find(one, "moved"));
        copied.emplace(B());
    }

    const DOMElement& A() { return Find(one, "a"); }
    /// Without messages, for which locks would be taken once more.
    DOMElement& B() { return Find(one, "b"); }

    DOM one;
    DOM two;
    /// Without messages, too.
    DOM quiet;
    // Of the first document.

    std::unique_ptr<DOMElement> removed;
    std::unique_ptr<DOMElement> moved;
    std::optional<DOMElement> copied;
    /// What an operation makes, whose end would take locks of its own.
    std::optional<DOMElement> made;
};

struct Operation
{
    const char* name;
    std::function<void(World&)> run;
};

const std::vector<Operation>& ReadingOperations()
{
    static const std::vector<Operation> s_operations{
        {"GetRestrictExternalPaths",
         [](World& w) { static_cast<void>(w.one.GetRestrictExternalPaths()); }},
        {"GetDSValidationCancelType",
         [](World& w) { static_cast<void>(w.one.GetDSValidationCancelType()); }},
        {"GetProtectedDataSourceName",
         [](World& w) { static_cast<void>(w.one.GetProtectedDataSourceName()); }},
        {"GetPathRenames", [](World& w) { static_cast<void>(w.one.GetPathRenames()); }},
        {"HasErrors(e)", [](World& w) { w.one.HasErrors(w.A()); }},
        {"HasErrors", [](World& w) { w.one.HasErrors(); }},
        {"HasUnreportedErrors(e)", [](World& w) { w.one.HasUnreportedErrors(w.A()); }},
        {"HasUnreportedErrors", [](World& w) { w.one.HasUnreportedErrors(); }},
        {"HasCancelErrors(e)", [](World& w) { w.one.HasCancelErrors(w.A()); }},
        {"HasCancelErrors", [](World& w) { w.one.HasCancelErrors(); }},
        {"HasOnlyCancelErrors(e)", [](World& w) { w.one.HasOnlyCancelErrors(w.A()); }},
        {"HasOnlyCancelErrors", [](World& w) { w.one.HasOnlyCancelErrors(); }},
        {"HasWarnings(e)", [](World& w) { w.one.HasWarnings(w.A()); }},
        {"HasWarnings", [](World& w) { w.one.HasWarnings(); }},
        {"GetErrors(e)",
         [](World& w) {
             std::list<TString> out;
             w.one.GetErrors(w.A(), out);
         }},
        {"GetErrors", [](World& w) { static_cast<void>(w.one.GetErrors()); }},
        {"GetMetadataForErrors", [](World& w) { static_cast<void>(w.one.GetMetadataForErrors()); }},
        {"GetConcatenatedErrors",
         [](World& w) { static_cast<void>(w.one.GetConcatenatedErrors()); }},
        {"GetWarnings(e)",
         [](World& w) {
             std::list<TString> out;
             w.one.GetWarnings(w.A(), out);
         }},
        {"GetWarnings", [](World& w) { static_cast<void>(w.one.GetWarnings()); }},
        {"GetMetadataForWarnings",
         [](World& w) { static_cast<void>(w.one.GetMetadataForWarnings()); }},
        {"GetConcatenatedWarnings",
         [](World& w) { static_cast<void>(w.one.GetConcatenatedWarnings()); }},
        {"GetErrorDiagnostics(e)",
         [](World& w) { static_cast<void>(w.one.GetErrorDiagnostics(w.A())); }},
        {"GetErrorDiagnostics", [](World& w) { static_cast<void>(w.one.GetErrorDiagnostics()); }},
        {"GetWarningDiagnostics(e)",
         [](World& w) { static_cast<void>(w.one.GetWarningDiagnostics(w.A())); }},
        {"GetWarningDiagnostics",
         [](World& w) { static_cast<void>(w.one.GetWarningDiagnostics()); }},
        {"RenameField",
         [](World& w) { static_cast<void>(w.one.RenameField(FieldName(u"d", u"f"))); }},
        {"RenameDataSource", [](World& w) { static_cast<void>(w.one.RenameDataSource(u"x")); }},
        {"RenameDataConnection",
         [](World& w) { static_cast<void>(w.one.RenameDataConnection(u"x")); }},
        {"RenameMapSource", [](World& w) { static_cast<void>(w.one.RenameMapSource(u"x")); }},
        {"GetCaptionRenameIfItExists",
         [](World& w) { static_cast<void>(w.one.GetCaptionRenameIfItExists(u"x")); }},
        {"UnRenameDataSource", [](World& w) { static_cast<void>(w.one.UnRenameDataSource(u"x")); }},
    };
    return s_operations;
}

const std::vector<Operation>& WritingOperations()
{
    static const std::vector<Operation> s_operations{
        {"SetDSValidationCancelType", [](World& w) { w.one.SetDSValidationCancelType(1); }},
        {"SetProtectedDataSourceName", [](World& w) { w.one.SetProtectedDataSourceName(u"p"); }},
        {"SetPathRenames", [](World& w) { w.one.SetPathRenames(PathRenames()); }},
        {"PushError", [](World& w) { w.one.PushError(w.A(), u"m", MakeInfo(1), false, false); }},
        {"InsertError", [](World& w) { w.one.InsertError(w.A(), u"m", MakeInfo(1), false); }},
        {"PushWarning", [](World& w) { w.one.PushWarning(w.A(), u"m", MakeInfo(1)); }},
        {"InsertWarning", [](World& w) { w.one.InsertWarning(w.A(), u"m", MakeInfo(1)); }},
        {"ClearErrors(e)", [](World& w) { w.one.ClearErrors(w.A()); }},
        {"ClearErrors", [](World& w) { w.one.ClearErrors(); }},
        {"ClearWarnings(e)", [](World& w) { w.one.ClearWarnings(w.A()); }},
        {"ClearWarnings", [](World& w) { w.one.ClearWarnings(); }},
        {"EraseErrorsAndWarningsForNode",
         [](World& w) { w.one.EraseErrorsAndWarningsForNode(w.A()); }},
        {"ClearAllErrorsAndWarnings", [](World& w) { w.one.ClearAllErrorsAndWarnings(); }},
        {"AddFieldRename", [](World& w) { w.one.AddFieldRename(FieldName(), FieldName()); }},
        {"AddCaptionRename", [](World& w) { w.one.AddCaptionRename(u"x", u"y"); }},
        {"AddDataSourceRename", [](World& w) { w.one.AddDataSourceRename(u"x", u"y"); }},
        {"AddDataConnectionRename", [](World& w) { w.one.AddDataConnectionRename(u"x", u"y"); }},
        {"AddMapSourceRename", [](World& w) { w.one.AddMapSourceRename(u"x", u"y"); }},
        {"~DOMElement of one that was removed", [](World& w) { w.removed.reset(); }},
        {"~DOMElement of a copy", [](World& w) { w.copied.reset(); }},
        {"DOMElement(const DOMElement&)", [](World& w) { w.made.emplace(w.A()); }},
        {"DOMElement(const DOMElement&), no messages", [](World& w) { w.made.emplace(w.B()); }},
        {"DOMElement(DOMElement&&)", [](World& w) { w.made.emplace(std::move(w.B())); }},
        {"RemoveChild, no messages",
         [](World& w) { w.moved = w.one.GetRoot()->RemoveChild(w.B()); }},
        {"AppendChild of one that was removed",
         [](World& w) { w.one.GetRoot()->AppendChild(std::move(w.moved)); }},
        {"= of messages within a document", [](World& w) { w.B() = w.A(); }},
    };
    return s_operations;
}

/// These take the locks of both documents.
const std::vector<Operation>& OperationsOnTwo()
{
    static const std::vector<Operation> s_operations{
        {"AdoptErrorsAndWarningsForNode",
         [](World& w) { w.two.AdoptErrorsAndWarningsForNode(w.A(), nullptr); }},
        {"CopyErrorsAndWarningsForNode",
         [](World& w) { w.two.CopyErrorsAndWarningsForNode(w.A(), nullptr); }},
        {"MoveErrorsAndWarningsTo", [](World& w) { w.one.MoveErrorsAndWarningsTo(w.two); }},
        {"DeepCopy", [](World& w) { w.two.DeepCopy(w.one); }},
        {"=", [](World& w) { Find(w.two, "a") = w.A(); }},
        {"= of what moves", [](World& w) { Find(w.two, "a") = std::move(Find(w.one, "a")); }},
        {"AppendChild", [](World& w) { w.two.GetRoot()->AppendChild(std::move(w.removed)); }},
        {"AdoptChildren",
         [](World& w) { w.two.GetRoot()->AdoptChildren(*w.one.GetRoot(), nullptr); }},
    };
    return s_operations;
}

/// The element-level look at the records, and the template that it calls.
const std::vector<Operation>& OperationsWithoutLock()
{
    static const std::vector<Operation> s_operations{
        {"GetMetadataForErrors",
         [](World& w) {
             std::list<TError::ErrorInfo> out;
             w.A().GetMetadataForErrors(out);
         }},
        {"GetMetadataForWarnings",
         [](World& w) {
             std::list<TError::ErrorInfo> out;
             w.A().GetMetadataForWarnings(out);
         }},
        {"GetErrors<vector>",
         [](World& w) {
             std::vector<TString> out;
             w.one.GetErrors(w.A(), out);
         }},
        {"==", [](World& w) { static_cast<void>(w.one == w.two); }},
        {"GetElement", [](World& w) { static_cast<void>(w.one.GetElement(u"a")); }},
    };
    return s_operations;
}

constexpr std::chrono::milliseconds c_moment{10};
constexpr std::chrono::seconds c_long{20};

/// Whether an operation on another thread comes to its end within `time` while this thread holds
/// `Scope` of `locked`. It has ended in any case when this returns.
template <typename Scope, typename Time>
bool EndsWhileHeld(const Operation& operation, DOM World::*locked, Time time)
{
    World world;
    std::future_status status{};
    std::thread other;
    {
        const Scope scope(LockOf(world.*locked));
        std::packaged_task<void()> task([&] { operation.run(world); });
        const std::future<void> end = task.get_future();
        other = std::thread(std::move(task));
        status = end.wait_for(time);
    }
    other.join();
    return status == std::future_status::ready;
}

} // namespace

TEST(DOMLocks, WhatReadsSharesTheLockWithOtherReaders)
{
    for (const Operation& operation : ReadingOperations())
        EXPECT_TRUE(EndsWhileHeld<ScopedReadLock>(operation, &World::one, c_long))
            << operation.name;
}

TEST(DOMLocks, WhatReadsWaitsForAWriter)
{
    for (const Operation& operation : ReadingOperations())
        EXPECT_FALSE(EndsWhileHeld<ScopedLock>(operation, &World::one, c_moment)) << operation.name;
}

TEST(DOMLocks, WhatWritesWaitsForReaders)
{
    for (const Operation& operation : WritingOperations())
        EXPECT_FALSE(EndsWhileHeld<ScopedReadLock>(operation, &World::one, c_moment))
            << operation.name;
}

TEST(DOMLocks, WhatIsAboutTwoDocumentsWaitsForReadersOfEither)
{
    for (const Operation& operation : OperationsOnTwo()) {
        EXPECT_FALSE(EndsWhileHeld<ScopedReadLock>(operation, &World::one, c_moment))
            << operation.name;
        EXPECT_FALSE(EndsWhileHeld<ScopedReadLock>(operation, &World::two, c_moment))
            << operation.name;
    }
}

TEST(DOMLocks, ACopyOfAWholeDocumentWaitsForReadersEvenWithoutMessages)
{
    const Operation copy{"", [](World& w) { w.two.DeepCopy(w.quiet); }};
    EXPECT_FALSE(EndsWhileHeld<ScopedReadLock>(copy, &World::two, c_moment));
    EXPECT_FALSE(EndsWhileHeld<ScopedReadLock>(copy, &World::quiet, c_moment));
    const Operation self{"", [](World& w) { w.quiet.DeepCopy(w.quiet); }};
    EXPECT_FALSE(EndsWhileHeld<ScopedReadLock>(self, &World::quiet, c_moment));
}

TEST(DOMLocks, WhatIsSaidToTakeNoLockTakesNone)
{
    for (const Operation& operation : OperationsWithoutLock())
        EXPECT_TRUE(EndsWhileHeld<ScopedLock>(operation, &World::one, c_long)) << operation.name;
}

TEST(DOMLocks, CopyingADetachedElementsMessagesTakesNone)
{
    static const DOMElement s_detached(u"d");
    const Operation operation{"", [](World& w) {
                                  w.one.AdoptErrorsAndWarningsForNode(s_detached, nullptr);
                                  w.one.CopyErrorsAndWarningsForNode(s_detached, nullptr);
                              }};
    EXPECT_TRUE(EndsWhileHeld<ScopedReadLock>(operation, &World::one, c_long));
}

TEST(DOMLocks, WholeDocumentsCopiedInOppositeDirectionsDoNotDeadlock)
{
    World world;
    const auto work = [](DOM& to, DOM& from) {
        for (int round = 0; round < 500; ++round) {
            to.DeepCopy(from);
            to.AddDataSourceRename(u"x", u"y");
            to.SetProtectedDataSourceName(u"p");
            to.SetDSValidationCancelType(round);
            static_cast<void>(to.RenameDataSource(u"x"));
            static_cast<void>(to.RenameField(FieldName(u"d", u"f")));
            static_cast<void>(from.GetDSValidationCancelType());
            static_cast<void>(from.UnRenameDataSource(u"y"));
        }
    };
    std::thread there([&] { work(world.two, world.one); });
    std::thread back([&] { work(world.one, world.two); });
    there.join();
    back.join();
    EXPECT_TRUE(world.one == world.two);
    EXPECT_EQ(world.one.RenameDataSource(u"x"), u"y");
    EXPECT_EQ(world.two.RenameDataSource(u"x"), u"y");
}
