#include "LibraryUser.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

// A static object of a host that uses the library in its destructor, after the static objects of
// the library, and of Qt, are gone.

namespace {

[[noreturn]] void Fail(const char* when, const char* what)
{
    std::fprintf(stderr, "%s: %s\n", when, what);
    ::_exit(1);
}

struct Host
{
    ~Host()
    {
        if (useLibrary == nullptr)
            return;
        if (const char* what = useLibrary("de_DE", !wasUsed))
            Fail("at the end", what);
        if (const char* what = useLibrary("fr_FR", true))
            Fail("at the end, with a language that was not used before", what);
    }

    UseLibraryFunction useLibrary = nullptr;
    bool wasUsed = false;
};

// Made before the library is loaded, so destroyed after the library's static objects.
Host s_host;

} // namespace

int main(int count, char** arguments)
{
    if (count != 3)
        Fail("main", "usage: process-end MODULE used|unused");
    void* const module = dlopen(arguments[1], RTLD_NOW);
    if (module == nullptr)
        Fail("main", dlerror());
    s_host.useLibrary = reinterpret_cast<UseLibraryFunction>(dlsym(module, c_useLibrary));
    if (s_host.useLibrary == nullptr)
        Fail("main", dlerror());
    s_host.wasUsed = std::string_view(arguments[2]) == "used";
    if (s_host.wasUsed) {
        if (const char* what = s_host.useLibrary("de_DE", false))
            Fail("main", what);
    }
}
