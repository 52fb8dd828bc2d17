#pragma once

#include <kesplatform/TError.h>
#include <kesplatform/TString.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The module's errors: one function for each place that raises one, named by kind and code. Each
/// returns an error whose identifier is "LogicException_" for an assertion, "DOMException_" for
/// missing data of the document model and "CorvinaException_" for everything else, followed by the
/// function's name. The code is what this name ends in.
namespace KesErrorsError {

inline CorvinaError MakeError(const char16_t* exception, std::string_view function)
{
    constexpr std::size_t c_codeDigits = 8;
    const std::string_view digits = function.substr(function.size() - c_codeDigits);
    std::uint32_t code = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    return {code, TString(exception).append(TString::fromUtf8(function))};
}

inline CorvinaError Assertion(std::string_view function)
{
    return MakeError(u"LogicException_", function);
}

inline CorvinaError MissingData(std::string_view function)
{
    return MakeError(u"DOMException_", function);
}

inline CorvinaError Other(std::string_view function)
{
    return MakeError(u"CorvinaException_", function);
}

// One a line, so that it can be read as the list that it is.
// clang-format off

// Base64
inline CorvinaError LogicAssert_0xD5E47E3E() { return Assertion(__func__); }

// CoreXml
inline CorvinaError LogicAssert_0xC18F5A72() { return Assertion(__func__); }

// DOM
inline CorvinaError LogicAssert_0xD42E7B19() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x6F0895AC() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xB37C21E5() { return Assertion(__func__); }

// DOMElement
inline CorvinaError LogicAssert_0x5B1D0C37() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xC4A61D58() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x7A94E2F1() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x2C60B98D() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x91F3D45A() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x1F8C60E4() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x3E5A1107() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x48C6AC1A() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x5333472D() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x5D9FE240() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x680C7D53() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x72791866() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x7CE5B379() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x87524E8C() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x91BEE99F() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x9C2B84B2() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xA6981FC5() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xB104BAD8() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xBB7155EB() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xC5DDF0FE() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xD04A8C11() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xDAB72724() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xE523C237() { return Assertion(__func__); }
inline CorvinaError RequiredChildMissing_0x26487BC2() { return MissingData(__func__); }
inline CorvinaError RequiredChildByAttribute_0x21039DFE() { return MissingData(__func__); }
inline CorvinaError RequiredDOMAttribute_0x3473F8A4() { return MissingData(__func__); }

// DOMParser
inline CorvinaError LogicAssert_0x46AC9E8D() { return Assertion(__func__); }
inline CorvinaError AutoGen_0x354BEE43() { return Other(__func__); }

// FileInputSource
inline CorvinaError InvalidEncoding_0xE19C2DF8() { return Other(__func__); }

// StandaloneDOMElement
inline CorvinaError LogicAssert_0x16A1A876() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xE9519449() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x41228A24() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xAD7AC3BE() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x108BF60C() { return Assertion(__func__); }

// XercesColonSanitizer
inline CorvinaError LogicAssert_0x83E9A0D6() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x4D57F21B() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xE2B6083F() { return Assertion(__func__); }

// XercesXMLParser
inline CorvinaError LogicAssert_0xE60C9000() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xC83A570E() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xAB95E4EA() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x9D18F6F8() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x7C41D09B() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x5E1D70C4() { return Assertion(__func__); }

// XMLDomFormatter
inline CorvinaError LogicAssert_0x5619328D() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xE813A351() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x9C70B807() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x5C6709A4() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x956FC18E() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xBA49C527() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xCE4F4D17() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x2AF5921A() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xD26E62DD() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x968B6274() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x0F7E4CE7() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xE04AB21E() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x32368D81() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xE6086904() { return Assertion(__func__); }

// XMLFormatter
inline CorvinaError LogicAssert_0x3B9E52D7() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xF6B4AF4C() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xF6AD402C() { return Assertion(__func__); }

// XMLRangeTable
inline CorvinaError LogicAssert_0x1A238B43() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x7DE85DF8() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0x9D698885() { return Assertion(__func__); }

// XMLUtils
inline CorvinaError LogicAssert_0x69F39DBB() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xF3D1E5C5() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xA3E88D2C() { return Assertion(__func__); }
inline CorvinaError LogicAssert_0xC2D03F8A() { return Assertion(__func__); }

// XSDResourceResolver
inline CorvinaError LogicAssert_0xABCA807E() { return Assertion(__func__); }
inline CorvinaError MissingVersionAttribute_0xCA8DC404() { return MissingData(__func__); }
// clang-format on

} // namespace KesErrorsError
