#include <kescorexml/XMLTokens.h>

namespace XMLTokens {

const TString attrVersion(u"version");
const TString tagPack(u"pack");
const TString tagTuple(u"tuple");
const TString tagValue(u"value");
const TString valueFalse(u"false");
const TString valueTrue(u"true");

} // namespace XMLTokens
