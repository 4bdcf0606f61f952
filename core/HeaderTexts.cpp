#include "core/HeaderTexts.h"

#include "core/TsHeader.h"
#include "core/Utf8.h"

namespace veltrac {

std::string headerUtf8(const char* bytes)
{
    std::string_view raw = bytes == nullptr ? std::string_view() : std::string_view(bytes);
    while (!raw.empty() && static_cast<unsigned char>(raw.back()) <= ' ')
        raw.remove_suffix(1);
    return utf8OfBytes(raw);
}

std::string fittingDescription(std::string_view text, std::string_view unit)
{
    const std::string bracket =
        unit.empty() ? "" : cutTo(" [" + std::string(unit) + "]", kColumnDescription.width);
    return cutTo(text, kColumnDescription.width - bracket.size()) + bracket;
}

}  // namespace veltrac
