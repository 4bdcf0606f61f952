// How the main window's table shows ts-files: their order, and their sample times.
#pragma once

#include <QString>

#include <string>
#include <vector>

#include "core/TsDirectory.h"

namespace veltrac {

// The ts-files of the working directory by name, with 9.ts before 10.ts. Those whose names are no text in the
// system's encoding (from another system, such as Latin-1 umlauts where names are UTF-8) are counted in
// `foreign` and left out: no text of Qt's leads back to them.
std::vector<std::string> shownTsFiles(int& foreign);

// A sample time as the table shows it: three decimals beyond one second, else four.
QString sampleTimeText(double sampleTime);
// The same in full, with the rate where times are times: "4.5351473e-05 s, 22.05 kHz".
QString sampleTimeTip(const TsFileRecord& record);

}  // namespace veltrac
