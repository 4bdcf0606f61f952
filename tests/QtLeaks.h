// Qt's offscreen platform never frees its one screen. For main functions alone.
#pragma once

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libqoffscreen\nleak:QScreen::QScreen\nleak:QPlatformScreen\nleak:handleScreenAdded\n";
}
