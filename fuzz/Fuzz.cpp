// The fuzzer: fuzz --target=NAME, then arguments of libFuzzer.

#include "Targets.h"

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace {

const FuzzTargets::Target* s_target = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    constexpr std::string_view c_option = "--target=";
    for (int i = 1; i < *argc; ++i) {
        const std::string_view argument = (*argv)[i];
        if (!argument.starts_with(c_option))
            continue;
        for (const FuzzTargets::Target& target : FuzzTargets::c_all) {
            if (target.name == argument.substr(c_option.size()))
                s_target = &target;
        }
    }
    if (s_target != nullptr)
        return 0;
    std::cerr << "One target must be named with --target=NAME:\n";
    for (const FuzzTargets::Target& target : FuzzTargets::c_all)
        std::cerr << "  " << target.name << "\n";
    std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    s_target->testOneInput({data, size});
    return 0;
}
