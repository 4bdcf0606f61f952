#include "filter/fid_report.h"

#include <cstdarg>
#include <cstdio>

#include "filter/fid.h"

namespace veltrac {

namespace {
FidErrorHandler g_handler = nullptr;
}

void fidReport(const char* format, ...)
{
    char text[1024];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (g_handler)
        g_handler(text);
    std::fprintf(stderr, "fid error: %s\n", text);
}

}  // namespace veltrac

void fid_set_error_handler(FidErrorHandler handler)
{
    veltrac::g_handler = handler;
}

const char* fid_version()
{
    return "0.9.9";
}
