// Reads the folder tree of an ISO 9660 session (Joliet names when present) from a medium someone may have written.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "export/simulator/file_tree.h"

namespace uc::disc {

// Reads `count` blocks starting at absolute `lba` into `out` (count * 2048 bytes); false when they are unreadable.
using BlockReader = std::function<bool(std::uint32_t lba, std::uint32_t count, std::uint8_t* out)>;

struct SessionLimits {
    int maxDepth = 64;                          // folders nested deeper are refused
    std::uint64_t maxEntries = 1000000;         // entries in the whole tree
    std::uint32_t maxDirectoryBytes = 16u << 20;  // one directory's extent
};

struct SessionTree {
    std::unique_ptr<TreeNode> root;  // Imported nodes: files carry their extents, folders their children
    bool joliet = false;             // names came from the Joliet hierarchy
    std::uint32_t volumeBlocks = 0;  // volume space size of the session's descriptor
};

// Walks the session whose first block is `startLba`: its volume descriptors at startLba + 16, then
// its directories. Every length, address and name is checked against the volume and `limits`, and a
// folder that leads back to one of its ancestors is refused. On failure `error` says what was wrong.
bool ReadSession(const BlockReader& read, std::uint32_t startLba, const SessionLimits& limits, SessionTree& out,
                 std::string& error);

}  // namespace uc::disc
