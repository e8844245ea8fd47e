// The platform side of a serial port as CSerialConnection uses it: blocking read with cancel, bounded write.
#pragma once

#include <memory>
#include <string>

#include "platform/serial/line_settings.h"

namespace uc::serial {

class PortBackend {
public:
    virtual ~PortBackend() = default;
    // Blocks until bytes arrive, the port fails or CancelRead is called.
    // Returns the number of bytes read (> 0), 0 after CancelRead, -1 when the port failed (device gone).
    virtual int Read(unsigned char* dest, unsigned int capacity) = 0;
    // Writes all bytes or fails; never blocks for more than about a second.
    virtual bool Write(const unsigned char* bytes, unsigned int count) = 0;
    // Makes the pending and every later Read return 0. Safe from any thread.
    virtual void CancelRead() = 0;
};

// Opens port `port` (see port_map.h for what the number means) with `dcb` applied, or null with `error` set.
std::unique_ptr<PortBackend> OpenPortBackend(int port, const DCB& dcb, std::wstring& error);

// Fills `dcb` with the default line set-up: `baud`, 8 data bits, no parity, one stop bit, no flow
// control, DTR and RTS raised.
void DefaultLineSetup(DCB& dcb, int baud);

}  // namespace uc::serial
