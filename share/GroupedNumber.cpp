#include "share/GroupedNumber.h"

namespace veltrac {

QString groupedNumber(std::uint64_t number)
{
    QString text = QString::number(number);
    for (int i = static_cast<int>(text.size()) - 3; i > 0; i -= 3)
        text.insert(i, QLatin1Char(' '));
    return text;
}

}  // namespace veltrac
