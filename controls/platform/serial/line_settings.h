// DCB: the line settings a serial connection applies when it opens (the Win32 structure on Windows, an equivalent elsewhere).
#pragma once

#ifdef _WIN32
// The full structure: the portable connection code creates DCBs by value.
#include <windows.h>
#else
// The subset of the Win32 DCB the POSIX back-end maps onto termios; same field names and constants.
struct DCB {
    unsigned long BaudRate = 9600;
    unsigned char ByteSize = 8;   // 5 to 8
    unsigned char Parity = 0;     // 0 none, 1 odd, 2 even
    unsigned char StopBits = 0;   // 0 one, 2 two
    bool fOutxCtsFlow = false;    // RTS/CTS hardware flow control
    bool fOutX = false;           // XON/XOFF on output
    bool fInX = false;            // XON/XOFF on input
    unsigned char fDtrControl = 1;  // 0 off, 1 raised while open
    unsigned char fRtsControl = 1;  // 0 off, 1 raised while open
};
#endif
