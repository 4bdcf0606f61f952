#include "formula/FormulaFile.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>

#include "core/LineReader.h"
#include "core/SafeChange.h"

namespace veltrac {

namespace {

bool holdsComposed(std::string_view line)
{
    static constexpr std::string_view kWord = "composed";
    const auto same = [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; };
    return std::search(line.begin(), line.end(), kWord.begin(), kWord.end(), same) != line.end();
}

}  // namespace

void writeFormulaFile(const std::filesystem::path& file, const std::string& formula)
{
    PendingFile pending(file);
    std::ofstream out(pending.path(), std::ios::binary);
    out << "**Ts-Edit Documentation**\n\n  Composed function: \n   " << formula << "\n\n";
    out.close();
    if (!out)
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), file.string());
    pending.commit();
}

std::optional<std::string> readFormulaFile(const std::filesystem::path& file)
{
    LineReader lines(file, kFormulaBytes);
    std::optional<std::string> formula;
    bool isNext = false;
    while (lines.next()) {
        if (isNext) {
            formula = std::string(lines.text());
            // Lines of other systems end in a carriage return.
            if (formula->ends_with('\r'))
                formula->pop_back();
        }
        isNext = holdsComposed(lines.text());
    }
    return formula;
}

}  // namespace veltrac
