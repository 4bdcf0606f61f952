// Why a job on a ts-file has failed, in the user's words.
#pragma once

#include <string>

namespace veltrac {

// To be called inside a catch block: the middle of a sentence, such as "the file is read-only".
std::string reasonOfFailure();

}  // namespace veltrac
