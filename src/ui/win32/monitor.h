// The monitor that a window is on. Functions that older Windows lacks are looked up at run time.
#pragma once

#include <windows.h>

// The monitor's dots per inch.
UINT dpi_of(HWND window);

// The monitor's area without the taskbar, in pixels of the whole desktop.
RECT work_area(HWND window);

// The size of a window that has a client area of the size `client`, in pixels.
SIZE framed_size(HWND window, SIZE client);
