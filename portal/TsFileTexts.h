// How the windows show ts-files: their order, and the numbers of their headers.
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

// The shortest text that reads back as the same float.
QString floatText(float v);
// A sample time as the table shows it: three decimals beyond one second, else four.
QString sampleTimeText(double sampleTime);
// The same in full, with the rate where times are times: "4.5351473e-05 s, 22.05 kHz".
QString sampleTimeTip(const TsFileRecord& record);

}  // namespace veltrac
