// Windows has no pseudo-terminals: simulators there serve on a COM port (StartOnPort).
#include "power/simulator/simulator_host.h"

namespace uc::power::sim {

bool SimulatorHost::StartPty() { return false; }

}  // namespace uc::power::sim
