#include "converters/STLCourse.h"

#include <algorithm>
#include <cmath>

namespace veltrac {

STLCourse courseOf(const std::vector<STLRow>& rows, std::size_t column)
{
    STLCourse course;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const STLToken& before = rows[i - 1].cells[column];
        const STLToken& now = rows[i].cells[column];
        if (before.kind != STLKind::Number || now.kind != STLKind::Number)
            continue;
        ++course.pairs;
        course.risen += now.value > before.value ? 1 : 0;
        course.fallen += now.value < before.value ? 1 : 0;
    }
    return course;
}

bool areWhole(const std::vector<STLRow>& data, std::size_t column, double least, double most)
{
    return !data.empty() && std::all_of(data.begin(), data.end(), [&](const STLRow& row) {
        const STLToken& cell = row.cells[column];
        return cell.kind == STLKind::Number && cell.value == std::floor(cell.value) && cell.value >= least &&
               cell.value <= most;
    });
}

}  // namespace veltrac
