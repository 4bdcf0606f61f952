// Why a transfer to or from a file has failed, in the user's words.
#pragma once

#include <string>

namespace veltrac {

// To be called inside a catch block: the middle of a sentence, such as "the file is write-protected" or "the
// disk took no more (is it full?)". Knows the TS exceptions, std::system_error and std::exception.
std::string reasonOfFailure();

}  // namespace veltrac
