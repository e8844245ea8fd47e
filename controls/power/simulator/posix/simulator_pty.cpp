// Simulators on a fresh pseudo-terminal (POSIX).
#include <memory>

#include "platform/serial/posix/pty.h"
#include "platform/text.h"
#include "power/simulator/simulator_host.h"

namespace uc::power::sim {

bool SimulatorHost::StartPty() {
    uc::serial::PtyPair pair;
    if (!uc::serial::OpenPty(pair)) return false;
    auto backend = uc::serial::AdoptDescriptor(std::move(pair.master));
    if (!backend) return false;
    // The slave stays open here so the device side never reads a hang-up while no client is connected.
    auto held = std::make_shared<uc::UniqueFd>(std::move(pair.slave));
    return Begin(std::move(backend), uc::FromUtf8(pair.slavePath), [held] { held->reset(); });
}

}  // namespace uc::power::sim
