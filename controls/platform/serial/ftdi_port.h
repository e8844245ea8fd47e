// FTDIPort: the COM port of the console's FTDI serial device, which the UPS search must leave alone.
#pragma once

#include "platform/export.h"

class UC_API FTDIPort {
public:
    static constexpr unsigned short VendorId = 0x0403;
    // Port number of the first FTDI serial device present, or -1 when there is none.
    static int GetCOMPortNum();
};
