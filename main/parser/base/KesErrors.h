#pragma once

#include <kesplatform/TError.h>

/// The module's errors: one function for each place that raises one, named by kind and code. Each
/// returns an error whose identifier is "LogicException_" for an assertion, "DOMException_" for
/// missing data of the document model and "CorvinaException_" for everything else, followed by the
/// function's name.
namespace KesErrorsError {

// Base64

inline CorvinaError LogicAssert_0xD5E47E3E()
{
    return {0xD5E47E3E, u"LogicException_LogicAssert_0xD5E47E3E"};
}

// CoreXml

inline CorvinaError LogicAssert_0xC18F5A72()
{
    return {0xC18F5A72, u"LogicException_LogicAssert_0xC18F5A72"};
}

// DOM

inline CorvinaError LogicAssert_0xD42E7B19()
{
    return {0xD42E7B19, u"LogicException_LogicAssert_0xD42E7B19"};
}

inline CorvinaError LogicAssert_0x6F0895AC()
{
    return {0x6F0895AC, u"LogicException_LogicAssert_0x6F0895AC"};
}

inline CorvinaError LogicAssert_0xB37C21E5()
{
    return {0xB37C21E5, u"LogicException_LogicAssert_0xB37C21E5"};
}

// DOMElement

inline CorvinaError LogicAssert_0x5B1D0C37()
{
    return {0x5B1D0C37, u"LogicException_LogicAssert_0x5B1D0C37"};
}

inline CorvinaError LogicAssert_0xC4A61D58()
{
    return {0xC4A61D58, u"LogicException_LogicAssert_0xC4A61D58"};
}

inline CorvinaError LogicAssert_0x7A94E2F1()
{
    return {0x7A94E2F1, u"LogicException_LogicAssert_0x7A94E2F1"};
}

inline CorvinaError LogicAssert_0x2C60B98D()
{
    return {0x2C60B98D, u"LogicException_LogicAssert_0x2C60B98D"};
}

inline CorvinaError LogicAssert_0x91F3D45A()
{
    return {0x91F3D45A, u"LogicException_LogicAssert_0x91F3D45A"};
}

inline CorvinaError LogicAssert_0x1F8C60E4()
{
    return {0x1F8C60E4, u"LogicException_LogicAssert_0x1F8C60E4"};
}

inline CorvinaError LogicAssert_0x3E5A1107()
{
    return {0x3E5A1107, u"LogicException_LogicAssert_0x3E5A1107"};
}

inline CorvinaError LogicAssert_0x48C6AC1A()
{
    return {0x48C6AC1A, u"LogicException_LogicAssert_0x48C6AC1A"};
}

inline CorvinaError LogicAssert_0x5333472D()
{
    return {0x5333472D, u"LogicException_LogicAssert_0x5333472D"};
}

inline CorvinaError LogicAssert_0x5D9FE240()
{
    return {0x5D9FE240, u"LogicException_LogicAssert_0x5D9FE240"};
}

inline CorvinaError LogicAssert_0x680C7D53()
{
    return {0x680C7D53, u"LogicException_LogicAssert_0x680C7D53"};
}

inline CorvinaError LogicAssert_0x72791866()
{
    return {0x72791866, u"LogicException_LogicAssert_0x72791866"};
}

inline CorvinaError LogicAssert_0x7CE5B379()
{
    return {0x7CE5B379, u"LogicException_LogicAssert_0x7CE5B379"};
}

inline CorvinaError LogicAssert_0x87524E8C()
{
    return {0x87524E8C, u"LogicException_LogicAssert_0x87524E8C"};
}

inline CorvinaError LogicAssert_0x91BEE99F()
{
    return {0x91BEE99F, u"LogicException_LogicAssert_0x91BEE99F"};
}

inline CorvinaError LogicAssert_0x9C2B84B2()
{
    return {0x9C2B84B2, u"LogicException_LogicAssert_0x9C2B84B2"};
}

inline CorvinaError LogicAssert_0xA6981FC5()
{
    return {0xA6981FC5, u"LogicException_LogicAssert_0xA6981FC5"};
}

inline CorvinaError LogicAssert_0xB104BAD8()
{
    return {0xB104BAD8, u"LogicException_LogicAssert_0xB104BAD8"};
}

inline CorvinaError LogicAssert_0xBB7155EB()
{
    return {0xBB7155EB, u"LogicException_LogicAssert_0xBB7155EB"};
}

inline CorvinaError LogicAssert_0xC5DDF0FE()
{
    return {0xC5DDF0FE, u"LogicException_LogicAssert_0xC5DDF0FE"};
}

inline CorvinaError LogicAssert_0xD04A8C11()
{
    return {0xD04A8C11, u"LogicException_LogicAssert_0xD04A8C11"};
}

inline CorvinaError LogicAssert_0xDAB72724()
{
    return {0xDAB72724, u"LogicException_LogicAssert_0xDAB72724"};
}

inline CorvinaError LogicAssert_0xE523C237()
{
    return {0xE523C237, u"LogicException_LogicAssert_0xE523C237"};
}

// DOMParser

inline CorvinaError LogicAssert_0x46AC9E8D()
{
    return {0x46AC9E8D, u"LogicException_LogicAssert_0x46AC9E8D"};
}

inline CorvinaError AutoGen_0x354BEE43()
{
    return {0x354BEE43, u"CorvinaException_AutoGen_0x354BEE43"};
}

// FileInputSource

inline CorvinaError InvalidEncoding_0xE19C2DF8()
{
    return {0xE19C2DF8, u"CorvinaException_InvalidEncoding_0xE19C2DF8"};
}

// StandaloneDOMElement

inline CorvinaError LogicAssert_0x16A1A876()
{
    return {0x16A1A876, u"LogicException_LogicAssert_0x16A1A876"};
}

inline CorvinaError LogicAssert_0xE9519449()
{
    return {0xE9519449, u"LogicException_LogicAssert_0xE9519449"};
}

inline CorvinaError LogicAssert_0x41228A24()
{
    return {0x41228A24, u"LogicException_LogicAssert_0x41228A24"};
}

inline CorvinaError LogicAssert_0xAD7AC3BE()
{
    return {0xAD7AC3BE, u"LogicException_LogicAssert_0xAD7AC3BE"};
}

inline CorvinaError LogicAssert_0x108BF60C()
{
    return {0x108BF60C, u"LogicException_LogicAssert_0x108BF60C"};
}

// XercesColonSanitizer

inline CorvinaError LogicAssert_0x83E9A0D6()
{
    return {0x83E9A0D6, u"LogicException_LogicAssert_0x83E9A0D6"};
}

inline CorvinaError LogicAssert_0x4D57F21B()
{
    return {0x4D57F21B, u"LogicException_LogicAssert_0x4D57F21B"};
}

inline CorvinaError LogicAssert_0xE2B6083F()
{
    return {0xE2B6083F, u"LogicException_LogicAssert_0xE2B6083F"};
}

// XercesXMLParser

inline CorvinaError LogicAssert_0xE60C9000()
{
    return {0xE60C9000, u"LogicException_LogicAssert_0xE60C9000"};
}

inline CorvinaError LogicAssert_0xC83A570E()
{
    return {0xC83A570E, u"LogicException_LogicAssert_0xC83A570E"};
}

inline CorvinaError LogicAssert_0xAB95E4EA()
{
    return {0xAB95E4EA, u"LogicException_LogicAssert_0xAB95E4EA"};
}

inline CorvinaError LogicAssert_0x9D18F6F8()
{
    return {0x9D18F6F8, u"LogicException_LogicAssert_0x9D18F6F8"};
}

inline CorvinaError LogicAssert_0x7C41D09B()
{
    return {0x7C41D09B, u"LogicException_LogicAssert_0x7C41D09B"};
}

// XMLDomFormatter

inline CorvinaError LogicAssert_0x5619328D()
{
    return {0x5619328D, u"LogicException_LogicAssert_0x5619328D"};
}

inline CorvinaError LogicAssert_0xE813A351()
{
    return {0xE813A351, u"LogicException_LogicAssert_0xE813A351"};
}

inline CorvinaError LogicAssert_0x9C70B807()
{
    return {0x9C70B807, u"LogicException_LogicAssert_0x9C70B807"};
}

inline CorvinaError LogicAssert_0x5C6709A4()
{
    return {0x5C6709A4, u"LogicException_LogicAssert_0x5C6709A4"};
}

inline CorvinaError LogicAssert_0x956FC18E()
{
    return {0x956FC18E, u"LogicException_LogicAssert_0x956FC18E"};
}

inline CorvinaError LogicAssert_0xBA49C527()
{
    return {0xBA49C527, u"LogicException_LogicAssert_0xBA49C527"};
}

inline CorvinaError LogicAssert_0xCE4F4D17()
{
    return {0xCE4F4D17, u"LogicException_LogicAssert_0xCE4F4D17"};
}

inline CorvinaError LogicAssert_0x2AF5921A()
{
    return {0x2AF5921A, u"LogicException_LogicAssert_0x2AF5921A"};
}

inline CorvinaError LogicAssert_0xD26E62DD()
{
    return {0xD26E62DD, u"LogicException_LogicAssert_0xD26E62DD"};
}

inline CorvinaError LogicAssert_0x968B6274()
{
    return {0x968B6274, u"LogicException_LogicAssert_0x968B6274"};
}

inline CorvinaError LogicAssert_0x0F7E4CE7()
{
    return {0x0F7E4CE7, u"LogicException_LogicAssert_0x0F7E4CE7"};
}

inline CorvinaError LogicAssert_0xE04AB21E()
{
    return {0xE04AB21E, u"LogicException_LogicAssert_0xE04AB21E"};
}

inline CorvinaError LogicAssert_0x32368D81()
{
    return {0x32368D81, u"LogicException_LogicAssert_0x32368D81"};
}

inline CorvinaError LogicAssert_0xE6086904()
{
    return {0xE6086904, u"LogicException_LogicAssert_0xE6086904"};
}

// XMLFormatter

inline CorvinaError LogicAssert_0x3B9E52D7()
{
    return {0x3B9E52D7, u"LogicException_LogicAssert_0x3B9E52D7"};
}

inline CorvinaError LogicAssert_0xF6B4AF4C()
{
    return {0xF6B4AF4C, u"LogicException_LogicAssert_0xF6B4AF4C"};
}

inline CorvinaError LogicAssert_0xF6AD402C()
{
    return {0xF6AD402C, u"LogicException_LogicAssert_0xF6AD402C"};
}

// XMLRangeTable

inline CorvinaError LogicAssert_0x1A238B43()
{
    return {0x1A238B43, u"LogicException_LogicAssert_0x1A238B43"};
}

inline CorvinaError LogicAssert_0x7DE85DF8()
{
    return {0x7DE85DF8, u"LogicException_LogicAssert_0x7DE85DF8"};
}

inline CorvinaError LogicAssert_0x9D698885()
{
    return {0x9D698885, u"LogicException_LogicAssert_0x9D698885"};
}

// XMLUtils

inline CorvinaError LogicAssert_0x69F39DBB()
{
    return {0x69F39DBB, u"LogicException_LogicAssert_0x69F39DBB"};
}

inline CorvinaError LogicAssert_0xF3D1E5C5()
{
    return {0xF3D1E5C5, u"LogicException_LogicAssert_0xF3D1E5C5"};
}

inline CorvinaError LogicAssert_0xA3E88D2C()
{
    return {0xA3E88D2C, u"LogicException_LogicAssert_0xA3E88D2C"};
}

inline CorvinaError LogicAssert_0xC2D03F8A()
{
    return {0xC2D03F8A, u"LogicException_LogicAssert_0xC2D03F8A"};
}

// XSDResourceResolver

inline CorvinaError LogicAssert_0xABCA807E()
{
    return {0xABCA807E, u"LogicException_LogicAssert_0xABCA807E"};
}

inline CorvinaError MissingVersionAttribute_0xCA8DC404()
{
    return {0xCA8DC404, u"DOMException_MissingVersionAttribute_0xCA8DC404"};
}

} // namespace KesErrorsError
