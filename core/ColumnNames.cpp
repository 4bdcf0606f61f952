#include "core/ColumnNames.h"

#include <algorithm>

#include "core/Utf8.h"

namespace veltrac {

std::string columnNameApart(const std::string& wanted, std::span<const std::string> taken)
{
    std::string name = cutTo(wanted, kColumnNameLength);
    for (int number = 2; std::find(taken.begin(), taken.end(), name) != taken.end(); ++number) {
        const std::string tail = "~" + std::to_string(number);
        name = cutTo(wanted, kColumnNameLength - tail.size()) + tail;
    }
    return name;
}

}  // namespace veltrac
