// Raw pseudo-terminal pairs.
#include "platform/serial/posix/pty.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>

namespace uc::serial {

bool OpenPty(PtyPair& pair) {
    UniqueFd master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!master || ::grantpt(master.get()) != 0 || ::unlockpt(master.get()) != 0) return false;
    char name[128];
    if (::ptsname_r(master.get(), name, sizeof name) != 0) return false;
    UniqueFd slave(::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!slave) return false;
    termios tio{};
    if (::tcgetattr(slave.get(), &tio) != 0) return false;
    ::cfmakeraw(&tio);
    ::tcsetattr(slave.get(), TCSANOW, &tio);
    const int flags = ::fcntl(master.get(), F_GETFL);
    ::fcntl(master.get(), F_SETFL, flags | O_NONBLOCK);
    pair.master = std::move(master);
    pair.slave = std::move(slave);
    pair.slavePath = name;
    return true;
}

}  // namespace uc::serial
