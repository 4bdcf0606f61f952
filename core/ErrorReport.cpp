#include "core/ErrorReport.h"

namespace veltrac {

namespace {

ErrorListener listenerOfProcess = nullptr;

}  // namespace

void setErrorListener(ErrorListener listener) noexcept
{
    listenerOfProcess = listener;
}

void reportError(const char* text)
{
    if (listenerOfProcess != nullptr)
        listenerOfProcess(text);
}

}  // namespace veltrac
