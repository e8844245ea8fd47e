// BlockFile over Win32 file handles (overlapped offsets, so positions beyond 4 GiB work on both targets).
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "export/simulator/block_file.h"

namespace uc::disc {

namespace {
HANDLE AsHandle(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }
const std::intptr_t kNone = reinterpret_cast<std::intptr_t>(INVALID_HANDLE_VALUE);

OVERLAPPED At(std::uint64_t offset) {
    OVERLAPPED where{};
    where.Offset = static_cast<DWORD>(offset);
    where.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return where;
}
}  // namespace

BlockFile::BlockFile(BlockFile&& other) noexcept : m_handle(std::exchange(other.m_handle, kNone)) {}

BlockFile& BlockFile::operator=(BlockFile&& other) noexcept {
    if (this != &other) {
        Close();
        m_handle = std::exchange(other.m_handle, kNone);
    }
    return *this;
}

BlockFile::~BlockFile() { Close(); }

void BlockFile::Fail(const char* what) {
    m_errorNumber = ::GetLastError();
    char text[64];
    std::snprintf(text, sizeof text, " (Windows error %lu)", static_cast<unsigned long>(m_errorNumber));
    m_error = std::string(what) + text;
}

bool BlockFile::Open(const std::filesystem::path& path, Mode mode) {
    Close();
    const DWORD access = mode == Mode::Read ? GENERIC_READ : (GENERIC_READ | GENERIC_WRITE);
    const DWORD disposition = mode == Mode::Read ? OPEN_EXISTING : OPEN_ALWAYS;
    HANDLE h = ::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        Fail(("cannot open '" + path.string() + "'").c_str());
        m_handle = kNone;
        return false;
    }
    m_handle = reinterpret_cast<std::intptr_t>(h);
    return true;
}

void BlockFile::Close() {
    if (m_handle != kNone && m_handle != -1) ::CloseHandle(AsHandle(m_handle));
    m_handle = kNone;
}

bool BlockFile::IsOpen() const { return m_handle != kNone && m_handle != -1; }

bool BlockFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t size, std::size_t& got) {
    got = 0;
    auto* out = static_cast<char*>(buffer);
    while (got < size) {
        const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(size - got, 1u << 30));
        OVERLAPPED where = At(offset + got);
        DWORD n = 0;
        if (!::ReadFile(AsHandle(m_handle), out + got, chunk, &n, &where)) {
            if (::GetLastError() == ERROR_HANDLE_EOF) break;
            Fail("read failed");
            return false;
        }
        if (n == 0) break;
        got += n;
    }
    return true;
}

bool BlockFile::WriteAt(std::uint64_t offset, const void* data, std::size_t size) {
    const auto* in = static_cast<const char*>(data);
    std::size_t done = 0;
    while (done < size) {
        const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(size - done, 1u << 30));
        OVERLAPPED where = At(offset + done);
        DWORD n = 0;
        if (!::WriteFile(AsHandle(m_handle), in + done, chunk, &n, &where)) {
            Fail("write failed");
            return false;
        }
        done += n;
    }
    return true;
}

bool BlockFile::Size(std::uint64_t& size) {
    LARGE_INTEGER value{};
    if (!::GetFileSizeEx(AsHandle(m_handle), &value)) {
        Fail("cannot size file");
        return false;
    }
    size = static_cast<std::uint64_t>(value.QuadPart);
    return true;
}

// Allocated-range queries need FSCTL support from the file system; reading through holes is always right.
std::uint64_t BlockFile::DataFrom(std::uint64_t offset) { return offset; }

bool BlockFile::Truncate(std::uint64_t size) {
    LARGE_INTEGER where{};
    where.QuadPart = static_cast<LONGLONG>(size);
    if (!::SetFilePointerEx(AsHandle(m_handle), where, nullptr, FILE_BEGIN) || !::SetEndOfFile(AsHandle(m_handle))) {
        Fail("cannot truncate file");
        return false;
    }
    return true;
}

bool BlockFile::Flush() {
    if (!::FlushFileBuffers(AsHandle(m_handle))) {
        Fail("cannot flush file");
        return false;
    }
    return true;
}

}  // namespace uc::disc
