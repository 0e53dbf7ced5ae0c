// The dots per inch of the monitor that a window is on. What older systems lack is looked up when
// it is asked for.
#pragma once

#include <windows.h>

UINT dpi_of(HWND window);

// The size of a window whose client area has the size of `client`, in pixels.
SIZE framed_size(HWND window, SIZE client);

// The pixels of a length in twips.
int pixels(int twips, UINT dpi);
