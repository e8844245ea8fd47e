// Fuzzes the session reader used when appending: the input is a medium's blocks, as someone else may have written them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "export/simulator/iso_format.h"
#include "export/simulator/iso_reader.h"

namespace {
std::size_t Count(const uc::disc::TreeNode& node) {
    std::size_t n = 1;
    for (const auto& child : node.children) n += Count(*child);
    return n;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace uc::disc;
    // Blocks past the input are unreadable, as unwritten blocks on a medium are.
    const BlockReader read = [&](std::uint32_t lba, std::uint32_t count, std::uint8_t* out) {
        const std::uint64_t begin = std::uint64_t(lba) * kBlockSize, bytes = std::uint64_t(count) * kBlockSize;
        if (count > 512 || begin + bytes > size + kBlockSize - 1) return false;
        const std::size_t have = begin >= size ? 0 : static_cast<std::size_t>(std::min<std::uint64_t>(bytes, size - begin));
        std::memcpy(out, data + begin, have);
        std::memset(out + have, 0, static_cast<std::size_t>(bytes) - have);
        return true;
    };
    SessionLimits limits;
    limits.maxEntries = 20000;
    limits.maxDirectoryBytes = 1u << 20;
    SessionTree tree;
    std::string error;
    const bool ok = ReadSession(read, 0, limits, tree, error);
    if (ok && (!tree.root || Count(*tree.root) > limits.maxEntries + 1)) std::abort();
    if (!ok && (error.empty() || tree.root)) std::abort();
    return 0;
}
