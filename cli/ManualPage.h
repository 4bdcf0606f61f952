// The manual page and the completion of bash, made from the very texts of the help.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/Verb.h"

namespace CLI {
class App;
}

namespace veltrac {

// "man": the manual page, in the man macros; "bash": the completion. Throws UsageError for other names.
std::string writtenPage(const std::string& which, const CLI::App& app,
                        const std::vector<std::unique_ptr<Verb>>& verbs);

}  // namespace veltrac
