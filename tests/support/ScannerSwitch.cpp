// With KESCOREXML_TEST_SCANNER=xerces in the environment, a test program runs with the direct
// scanner switched off from its start.

#include "direct/DirectScanning.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace {

bool SwitchScanner()
{
    const char* const value = std::getenv("KESCOREXML_TEST_SCANNER");
    // For both, see DocumentsTwice.cpp.
    if (value == nullptr || *value == '\0' || std::string_view(value) == "both")
        return false;
    if (std::string_view(value) != "xerces") {
        std::cerr << "KESCOREXML_TEST_SCANNER is to be xerces, both or nothing\n";
        std::exit(2);
    }
    DirectScanning::SetEnabled(false);
    return true;
}

[[maybe_unused]] const bool s_isSwitched = SwitchScanner();

} // namespace
