#include <kesplatform/EncodingTable.h>

#include <algorithm>

const EncodingTable::Scheme* EncodingTable::FindByByteOrderMark(std::string_view bytes) noexcept
{
    const auto found =
        std::find_if(std::begin(c_schemes), std::end(c_schemes),
                     [&](const Scheme& e) { return bytes.starts_with(e.byteOrderMark); });
    return found == std::end(c_schemes) ? nullptr : found;
}

bool EncodingTable::NamesUtf8(std::string_view name) noexcept
{
    return EqualsName(name, "UTF-8") || EqualsName(name, "UTF8");
}
