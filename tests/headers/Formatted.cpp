#include <kesplatform/TStringFormat.h>

#include <cstdio>
#include <format>
#include <string>
#include <string_view>
#include <type_traits>

#if !defined(__cpp_lib_format)
#error "this standard library has no std::format, with which TStringFormat.h declares nothing"
#endif

static_assert(std::is_default_constructible_v<std::formatter<TString>>);

namespace {

/// How many texts were not formatted as they should be.
int s_failures = 0;

void Expect(std::string_view expected, const std::string& formatted)
{
    if (formatted == expected)
        return;
    ++s_failures;
    std::printf("expected \"%.*s\", got \"%s\"\n", static_cast<int>(expected.size()),
                expected.data(), formatted.c_str());
}

} // namespace

int main()
{
    const TString tea = u"tea";
    Expect("", std::format("{}", TString()));
    Expect("tea and t\xC3\xA9", std::format("{} and {}", tea, TString(u"t\u00E9")));
    Expect("[tea     ]", std::format("[{:8}]", tea));
    Expect("[     tea]", std::format("[{:>8}]", tea));
    Expect("[..tea...]", std::format("[{:.^8}]", tea));
    Expect("[te]", std::format("[{:.2}]", tea));
    Expect("[te      ]", std::format("[{:{}.{}}]", tea, 8, 2));
    // Width and precision count characters, not bytes.
    Expect("[t\xC3\xA9.]", std::format("[{:.<3}]", TString(u"t\u00E9")));
    Expect("[\xC3\xA9]", std::format("[{:.1}]", TString(u"\u00E9t")));
    Expect("\xEF\xBF\xBD", std::format("{}", TString(u"\xD800")));
    return s_failures == 0 ? 0 : 1;
}
