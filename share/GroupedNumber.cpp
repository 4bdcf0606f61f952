#include "share/GroupedNumber.h"

#include "core/NumberTexts.h"

namespace veltrac {

QString groupedNumber(std::uint64_t number)
{
    return QString::fromStdString(groupedDigits(number));
}

}  // namespace veltrac
