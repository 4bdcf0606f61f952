#include "calc/SpectrogramCuts.h"

#include <vector>

#include "core/ColumnCopy.h"
#include "core/HeaderTexts.h"
#include "core/TSFILE.h"
#include "core/Variable.h"

namespace veltrac {

void writeSpectrumAt(TSFILE& picture, std::uint32_t sample, double step, const std::string& when,
                     TSFILE& target)
{
    std::vector<float> levels(picture.columns());
    picture.readRow(sample, levels.data());
    std::vector<float> rows;
    rows.reserve(2 * levels.size());
    for (std::size_t k = 0; k < levels.size(); ++k) {
        rows.push_back(static_cast<float>(static_cast<double>(k + 1) * step));
        rows.push_back(levels[k]);
    }
    const std::string unit(unitIn(headerUtf8(picture.columnDescription(1))));
    target.description(picture.description());
    target.dt(static_cast<float>(step));
    target.timeUnit("Frequency[Hz]");
    target.columnName(1, "Freq");
    target.columnDescription(1, "Frequency [Hz]");
    target.columnName(2, "Level");
    target.columnDescription(2, fittingDescription("Spectrum at " + when, unit).c_str());
    target.stampColumn(1);
    target.stampColumn(2);
    target.writeRows(1, static_cast<std::uint32_t>(levels.size()), rows.data());
}

JobOutcome writeCourse(TSFILE& picture, std::uint32_t column, TSFILE& target, const Progress& progress)
{
    target.copyHeader(picture);
    target.columnName(1, std::string(picture.columnName(column)).c_str());
    target.columnDescription(1, std::string(picture.columnDescription(column)).c_str());
    target.stampColumn(1);
    return copyColumnValues(picture, column, target, 1, picture.samples(), progress);
}

}  // namespace veltrac
