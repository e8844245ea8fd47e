// Lays a FileTree out as one ISO 9660 session with a Joliet hierarchy and streams its bytes block by block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "export/simulator/block_file.h"
#include "export/simulator/file_tree.h"

namespace uc::disc {

struct VolumeTexts {
    std::string volumeSet;    // also the volume identifier
    std::string publisher;    // publisher and data preparer
    std::string application;
};

// Why streaming stopped: a source file that vanished, shrank or could not be read.
struct StreamError {
    std::uint32_t systemError = 0;
    std::string why;
};

// The session starts at `startLba` (the medium's next writable address): 16 empty blocks, the primary
// and Joliet volume descriptors and the terminator, both path tables of both hierarchies, the directories,
// then the file data in directory order. Only metadata is held in memory (a few hundred bytes per entry);
// file contents are read from their sources while streaming, so memory does not grow with the data.
// Files of more than 4 GiB - 2 KiB are split into several extents (ISO 9660 level 3). Imported nodes
// keep their extents in the earlier session; their bytes are not part of this one.
// The tree must outlive the image and stay unchanged while it is in use.
class IsoImage {
public:
    bool Build(const FileTree& tree, std::uint32_t startLba, const VolumeTexts& texts, std::int64_t now,
               std::string& error);
    bool IsBuilt() const { return m_built; }

    std::uint32_t StartLba() const { return m_start; }
    std::uint32_t Blocks() const { return m_blocks; }
    std::uint64_t Bytes() const { return static_cast<std::uint64_t>(m_blocks) * kBlockSizeBytes; }
    // Blocks [16, DescriptorEnd()) of the session hold its volume descriptors.
    std::uint32_t DescriptorEnd() const { return m_descriptorEnd; }

    // Fills `out` with the next bytes of the session; `produced` is short only at its end.
    bool Read(std::uint8_t* out, std::size_t size, std::size_t& produced, StreamError& error);
    void Rewind();
    std::uint64_t Position() const { return m_position; }

    static constexpr std::uint32_t kBlockSizeBytes = 2048;

private:
    struct Segment {
        enum class Kind { Meta, File, Memory } kind;
        std::uint32_t block = 0;  // relative to the session start
        std::uint64_t bytes = 0;  // bytes of content; the rest of its last block is zero
        std::size_t meta = 0;     // index into m_meta
        const TreeNode* node = nullptr;
    };

    bool Fill(const Segment& segment, std::uint64_t offset, std::uint8_t* out, std::size_t size, StreamError& error);

    bool m_built = false;
    std::uint32_t m_start = 0;
    std::uint32_t m_blocks = 0;
    std::uint32_t m_descriptorEnd = 0;
    std::vector<std::vector<std::uint8_t>> m_meta;
    std::vector<Segment> m_segments;  // ascending, not overlapping; gaps read as zeros

    std::uint64_t m_position = 0;
    std::size_t m_segment = 0;
    BlockFile m_file;
    const TreeNode* m_fileNode = nullptr;
};

}  // namespace uc::disc
