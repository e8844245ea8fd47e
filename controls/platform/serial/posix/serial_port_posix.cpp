// POSIX serial back-end: termios line set-up, poll-based reads cancelled through a pipe, bounded writes.
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/posix/fd.h"
#include "platform/serial/port_backend.h"
#include "platform/serial/posix/pty.h"
#include "platform/serial/port_map.h"
#include "platform/text.h"

namespace uc::serial {
namespace {

speed_t SpeedFor(unsigned long baud) {
    switch (baud) {
        case 1200: return B1200;
        case 2400: return B2400;
        case 4800: return B4800;
        case 9600: return B9600;
        case 19200: return B19200;
        case 38400: return B38400;
        case 57600: return B57600;
        case 115200: return B115200;
        default: return 0;
    }
}

bool ApplyLine(int fd, const DCB& dcb, std::wstring& error) {
    termios tio{};
    if (::tcgetattr(fd, &tio) != 0) {
        error = L"not a terminal device";
        return false;
    }
    ::cfmakeraw(&tio);
    const speed_t speed = SpeedFor(dcb.BaudRate);
    if (!speed) {
        error = L"unsupported baud rate " + std::to_wstring(dcb.BaudRate);
        return false;
    }
    ::cfsetispeed(&tio, speed);
    ::cfsetospeed(&tio, speed);
    tio.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS);
    tio.c_cflag |= CLOCAL | CREAD;
    tio.c_cflag |= dcb.ByteSize == 5 ? CS5 : dcb.ByteSize == 6 ? CS6 : dcb.ByteSize == 7 ? CS7 : CS8;
    if (dcb.Parity == 1) tio.c_cflag |= PARENB | PARODD;
    if (dcb.Parity == 2) tio.c_cflag |= PARENB;
    if (dcb.StopBits == 2) tio.c_cflag |= CSTOPB;
    if (dcb.fOutxCtsFlow) tio.c_cflag |= CRTSCTS;
    if (dcb.fOutX) tio.c_iflag |= IXON;
    if (dcb.fInX) tio.c_iflag |= IXOFF;
    tio.c_cc[VMIN] = 1;
    tio.c_cc[VTIME] = 0;
    if (::tcsetattr(fd, TCSANOW, &tio) != 0) {
        error = L"line set-up refused";
        return false;
    }
    return true;
}

class PosixPort final : public PortBackend {
public:
    PosixPort(UniqueFd fd, UniqueFd cancelRead, UniqueFd cancelWrite, bool locked)
        : m_fd(std::move(fd)), m_cancelRead(std::move(cancelRead)), m_cancelWrite(std::move(cancelWrite)),
          m_locked(locked) {}
    ~PosixPort() override {
        if (m_locked) ::flock(m_fd.get(), LOCK_UN);
    }

    int Read(unsigned char* dest, unsigned int capacity) override {
        for (;;) {
            pollfd fds[2] = {{m_fd.get(), POLLIN, 0}, {m_cancelRead.get(), POLLIN, 0}};
            const int r = ::poll(fds, 2, -1);
            if (r < 0) {
                if (errno == EINTR) continue;
                return -1;
            }
            if (fds[1].revents) return 0;
            if (fds[0].revents & POLLIN) {
                const ssize_t n = ::read(m_fd.get(), dest, capacity);
                if (n > 0) return static_cast<int>(n);
                if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
                return -1;  // end of file or error: the device is gone
            }
            if (fds[0].revents & (POLLHUP | POLLERR | POLLNVAL)) return -1;
        }
    }

    bool Write(const unsigned char* bytes, unsigned int count) override {
        unsigned int done = 0;
        while (done < count) {
            const ssize_t n = ::write(m_fd.get(), bytes + done, count - done);
            if (n > 0) {
                done += static_cast<unsigned int>(n);
                continue;
            }
            if (n < 0 && errno == EINTR) continue;
            if (n < 0 && errno == EAGAIN) {
                pollfd p{m_fd.get(), POLLOUT, 0};
                if (::poll(&p, 1, 1000) <= 0 || !(p.revents & POLLOUT)) return false;
                continue;
            }
            return false;
        }
        return true;
    }

    void CancelRead() override {
        const char c = 1;
        (void)!::write(m_cancelWrite.get(), &c, 1);
    }

private:
    UniqueFd m_fd;
    UniqueFd m_cancelRead;
    UniqueFd m_cancelWrite;
    bool m_locked;
};

std::unique_ptr<PortBackend> MakeBackend(UniqueFd fd, bool locked) {
    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC | O_NONBLOCK) != 0) return nullptr;
    return std::make_unique<PosixPort>(std::move(fd), UniqueFd(pipeFds[0]), UniqueFd(pipeFds[1]), locked);
}

}  // namespace

void DefaultLineSetup(DCB& dcb, int baud) {
    dcb = DCB{};
    dcb.BaudRate = static_cast<unsigned long>(baud);
}

std::unique_ptr<PortBackend> OpenPortBackend(int port, const DCB& dcb, std::wstring& error) {
    const std::wstring path = PortDevicePath(port);
    if (path.empty()) {
        error = L"no device behind port " + std::to_wstring(port) + L" (no mapping, no " + GetPortDirectory() + L"/com" +
                std::to_wstring(port) + L")";
        return nullptr;
    }
    UniqueFd fd(::open(ToUtf8(path).c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (!fd) {
        error = path + L": " + FromUtf8(std::strerror(errno));
        return nullptr;
    }
    // A port is one program's at a time, as on Windows.
    if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
        error = path + L": in use by another program";
        return nullptr;
    }
    if (!ApplyLine(fd.get(), dcb, error)) {
        error = path + L": " + error;
        return nullptr;
    }
    ::tcflush(fd.get(), TCIFLUSH);
    auto backend = MakeBackend(std::move(fd), true);
    if (!backend) error = L"no pipe for the receiving thread";
    return backend;
}

std::unique_ptr<PortBackend> AdoptDescriptor(UniqueFd fd) {
    if (!fd) return nullptr;
    const int flags = ::fcntl(fd.get(), F_GETFL);
    ::fcntl(fd.get(), F_SETFL, flags | O_NONBLOCK);
    return MakeBackend(std::move(fd), false);
}

}  // namespace uc::serial
