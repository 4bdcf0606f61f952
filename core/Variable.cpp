#include "core/Variable.h"

using namespace veltrac;

std::string_view veltrac::unitIn(std::string_view description)
{
    const std::size_t end = description.rfind(']');
    if (end == std::string_view::npos)
        return {};
    const std::size_t begin = description.rfind('[', end);
    if (begin == std::string_view::npos)
        return {};
    const std::string_view unit = description.substr(begin + 1, end - begin - 1);
    const std::size_t first = unit.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string_view{}
                                           : unit.substr(first, unit.find_last_not_of(' ') + 1 - first);
}
