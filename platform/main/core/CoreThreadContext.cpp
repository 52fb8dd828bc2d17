#include <kesplatform/CoreThreadContext.h>

#include <map>
#include <utility>

namespace {

struct Context
{
    TString sessionId;
    std::map<TString, boost::any> objects;
};

Context& GetContext() noexcept
{
    static thread_local Context context;
    return context;
}

} // namespace

bool CoreThreadContext::HasSessionId() noexcept
{
    return !GetContext().sessionId.IsEmpty();
}

TString CoreThreadContext::GetSessionId()
{
    return GetContext().sessionId;
}

void CoreThreadContext::SetSessionId(const TString& id)
{
    GetContext().sessionId = id;
}

void CoreThreadContext::Clear() noexcept
{
    // The objects end after the context has let go of them: their destructors may use it.
    const Context old = std::exchange(GetContext(), Context());
}

boost::any CoreThreadContext::GetObject(const TString& name)
{
    const auto& objects = GetContext().objects;
    const auto found = objects.find(name);
    return found == objects.end() ? boost::any() : found->second;
}

void CoreThreadContext::SetObject(const TString& name, boost::any object)
{
    // What is replaced ends with the argument, when the context is whole again.
    GetContext().objects[name].swap(object);
}
