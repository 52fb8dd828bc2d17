#include <kescorexml/XMLTokens.h>

namespace XMLTokens {

const char16_t* const attrVersion = u"version";
const char16_t* const tagPack = u"pack";
const char16_t* const tagTuple = u"tuple";
const char16_t* const tagValue = u"value";
const char16_t* const valueFalse = u"false";
const char16_t* const valueTrue = u"true";

} // namespace XMLTokens
