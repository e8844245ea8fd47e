// Random access to large files by 64-bit offsets: the simulated medium's image and the files put on a disc.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace uc::disc {

class BlockFile {
public:
    enum class Mode {
        Read,       // existing file, read only
        ReadWrite,  // created when missing, contents kept
    };

    BlockFile() = default;
    BlockFile(const BlockFile&) = delete;
    BlockFile& operator=(const BlockFile&) = delete;
    BlockFile(BlockFile&& other) noexcept;
    BlockFile& operator=(BlockFile&& other) noexcept;
    ~BlockFile();

    bool Open(const std::filesystem::path& path, Mode mode);
    void Close();
    bool IsOpen() const;

    // Reads up to `size` bytes at `offset`; `got` is short only at the end of the file.
    bool ReadAt(std::uint64_t offset, void* buffer, std::size_t size, std::size_t& got);
    bool WriteAt(std::uint64_t offset, const void* data, std::size_t size);
    bool Size(std::uint64_t& size);
    // First offset at or after `offset` that may hold data; a range before it is a hole and reads as zeros.
    // Where the system cannot tell, `offset` itself.
    std::uint64_t DataFrom(std::uint64_t offset);
    bool Truncate(std::uint64_t size);
    bool Flush();

    // The system's reason for the last failure, with its error number.
    const std::string& LastError() const { return m_error; }
    std::uint32_t LastErrorNumber() const { return m_errorNumber; }

private:
    void Fail(const char* what);

    std::intptr_t m_handle = -1;  // file descriptor, or HANDLE on Windows
    std::string m_error;
    std::uint32_t m_errorNumber = 0;
};

}  // namespace uc::disc
