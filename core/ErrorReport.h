// Where the program's parts without a window report errors in words.
#pragma once

namespace veltrac {

// Hears a report; the text is the caller's and valid during the call alone.
using ErrorListener = void (*)(const char* text);

// The one listener of the process; null (as at first): nobody. Called on the thread that reports.
void setErrorListener(ErrorListener listener) noexcept;
void reportError(const char* text);

}  // namespace veltrac
