// Test serial lines: a port the code under test opens and the device end of the same line, or a simulator on it.
#pragma once

#include <memory>
#include <string>

#include "platform/clock.h"
#include "platform/serial/port_backend.h"
#include "power/simulator/simulator_host.h"

namespace uc::test {

// Natively every line is a fresh pseudo-terminal mapped to port 10 + index. Under Wine a line is a
// pair of COM ports joined by socat (see tests/power/win/com-pairs.sh), given in UC_TEST_COM_PAIRS as
// "console:device,console:device,...".
// Also makes ports that no line uses fail to open (no fall-back to real devices).
void IsolateSerialPorts();
// False (with a reason) when this build cannot make lines (Windows without UC_TEST_COM_PAIRS).
bool LinesAvailable(std::string* why = nullptr);

struct RawLine {
    int port = -1;                                        // what the code under test opens
    std::unique_ptr<uc::serial::PortBackend> device;      // the far end
#ifndef _WIN32
    std::shared_ptr<void> hold;                           // keeps the pty's slave open
#endif
};
bool OpenRawLine(int index, RawLine& line);

// Starts `host` as the device end of line `index`; returns the port the code under test opens, or -1.
int StartSimulator(uc::power::sim::SimulatorHost& host, int index, int baud);

// The port number of line `index` without starting anything.
int LinePort(int index);

// Whether a second open of a busy port fails here (not under Wine, which does not enforce it).
bool PortsAreExclusive();

}  // namespace uc::test
