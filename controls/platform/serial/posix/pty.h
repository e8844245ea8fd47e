// Pseudo-terminal pairs for the device simulators and tests, and adopting a descriptor as a port back-end.
#pragma once

#include <memory>
#include <string>

#include "platform/posix/fd.h"
#include "platform/serial/port_backend.h"

namespace uc::serial {

struct PtyPair {
    UniqueFd master;
    // Held open by the creator so the master never sees a hang-up while no client has the port open.
    UniqueFd slave;
    std::string slavePath;  // what a client opens, e.g. /dev/pts/3
};

// Creates a pseudo-terminal in raw mode (no echo, no line editing, no CR/LF translation). False on failure.
bool OpenPty(PtyPair& pair);

// Wraps an open descriptor (a pty master) in the same back-end a serial port uses.
std::unique_ptr<PortBackend> AdoptDescriptor(UniqueFd fd);

}  // namespace uc::serial
