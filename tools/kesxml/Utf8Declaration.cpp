#include "Utf8Declaration.h"

#include <kesplatform/EncodingTable.h>
#include <kesplatform/XmlDeclaration.h>

std::string ToUtf8Declaration(std::string_view text)
{
    std::string written(text);
    const std::string_view encoding = XmlDeclaration::FindEncoding(text);
    if (!encoding.empty() && !EncodingTable::NamesUtf8(encoding)) {
        const auto offset = static_cast<std::size_t>(encoding.data() - text.data());
        written.replace(offset, encoding.size(), "UTF-8");
    }
    return written;
}
