#include "core/Variable.h"

std::string_view unitIn(std::string_view description)
{
    const std::size_t end = description.rfind(']');
    if (end == std::string_view::npos)
        return {};
    const std::size_t begin = description.rfind('[', end);
    return begin == std::string_view::npos ? std::string_view{}
                                           : description.substr(begin + 1, end - begin - 1);
}
