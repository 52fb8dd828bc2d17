#include <kesplatform/CoreThreadContext.h>

#include <map>
#include <utility>

namespace {

/// Set when the thread's context is gone. Destructors that run later, those of static objects on
/// the main thread, find a thread without session.
constinit thread_local bool t_isOver = false;

struct Context
{
    Context() = default;
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context() { t_isOver = true; }

    TString sessionId;
    std::map<TString, boost::any> objects;
};

/// Null when the thread's context is gone.
Context* GetContext() noexcept
{
    if (t_isOver)
        return nullptr;
    static thread_local Context t_context;
    return &t_context;
}

} // namespace

bool CoreThreadContext::HasSessionId() noexcept
{
    const Context* const context = GetContext();
    return context != nullptr && !context->sessionId.IsEmpty();
}

TString CoreThreadContext::GetSessionId()
{
    const Context* const context = GetContext();
    return context == nullptr ? TString() : context->sessionId;
}

void CoreThreadContext::SetSessionId(const TString& id)
{
    if (Context* const context = GetContext())
        context->sessionId = id;
}

void CoreThreadContext::Clear() noexcept
{
    Context* const context = GetContext();
    if (context == nullptr)
        return;
    context->sessionId.clear();
    // The objects end after the context has let go of them: their destructors may use it.
    const auto old = std::exchange(context->objects, {});
}

boost::any CoreThreadContext::GetObject(const TString& name)
{
    const Context* const context = GetContext();
    if (context == nullptr)
        return {};
    const auto found = context->objects.find(name);
    return found == context->objects.end() ? boost::any() : found->second;
}

void CoreThreadContext::SetObject(const TString& name, boost::any object)
{
    // What is replaced ends with the argument, when the context is whole again.
    if (Context* const context = GetContext())
        context->objects[name].swap(object);
}
