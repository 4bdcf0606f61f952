// The words in which an exception is reported, and the one place that tells the exceptions apart.
#pragma once

#include <string>

namespace veltrac {

// One reporter's words. %1 and %2 stand for the exception's two values; a file name follows its text.
struct TsExceptionTexts
{
    const char* createError;
    const char* openError;
    const char* notTsFile;
    const char* ioError;
    const char* noTimeColumn;
    const char* illSample;
    const char* illColumn;
    const char* illTime;
    // Written on a file opened for reading: with an offset, with a name, with neither. Null: as unknown.
    const char* readOnlyOffset;
    const char* readOnlyName;
    const char* readOnly;
    const char* unknown;
};

// To be called inside a catch block: the text of the exception in flight, in the local encoding. A
// std::exception speaks for itself.
std::string textOfCurrentException(const TsExceptionTexts& texts);

}  // namespace veltrac
