// FTDIPort: the first serial device of FTDI's vendor id.
#include "platform/serial/ftdi_port.h"

#include "platform/serial/usb_serial_lookup.h"

int FTDIPort::GetCOMPortNum() { return uc::serial::FindUsbSerialPortOfVendor(VendorId); }
