// Test lines natively: fresh pseudo-terminals mapped to port numbers 10 and up.
#include <cstdlib>
#include <sstream>
#include <vector>

#include "platform/serial/port_map.h"
#include "platform/serial/test_line.h"
#include "platform/text.h"
#include "platform/serial/posix/pty.h"

namespace uc::test {

void IsolateSerialPorts() {
    uc::serial::SetPortFallbackPattern(L"");
    uc::serial::SetPortDirectory(L"/nonexistent/uc-test-serial");
}

bool LinesAvailable(std::string*) { return true; }

int LinePort(int index) { return 10 + index; }

bool OpenRawLine(int index, RawLine& line) {
    IsolateSerialPorts();
    uc::serial::PtyPair pair;
    if (!uc::serial::OpenPty(pair)) return false;
    line.port = LinePort(index);
    uc::serial::MapPort(line.port, uc::FromUtf8(pair.slavePath));
    line.hold = std::make_shared<uc::UniqueFd>(std::move(pair.slave));
    line.device = uc::serial::AdoptDescriptor(std::move(pair.master));
    return line.device != nullptr;
}

int StartSimulator(uc::power::sim::SimulatorHost& host, int index, int) {
    IsolateSerialPorts();
    if (!host.StartPty()) return -1;
    uc::serial::MapPort(LinePort(index), host.DevicePath());
    return LinePort(index);
}

bool PortsAreExclusive() { return true; }

}  // namespace uc::test
