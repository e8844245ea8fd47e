// Reads the folder tree of an ISO 9660 / Joliet session.
#include "export/simulator/iso_reader.h"

#include <cstring>
#include <set>
#include <vector>

#include "export/simulator/iso_format.h"
#include "export/simulator/iso_names.h"

namespace uc::disc {

namespace {

struct Walker {
    const BlockReader& read;
    const SessionLimits& limits;
    bool joliet;
    std::uint32_t volumeBlocks;
    std::uint64_t entries = 0;
    std::set<std::uint32_t> visiting;  // extents of the folders on the current path
    std::string error;

    bool Fail(std::string why) {
        error = std::move(why);
        return false;
    }

    std::u16string NameOf(const std::uint8_t* id, std::size_t length) {
        std::u16string name;
        if (joliet) {
            for (std::size_t i = 0; i + 1 < length; i += 2) name.push_back(static_cast<char16_t>((id[i] << 8) | id[i + 1]));
        } else {
            for (std::size_t i = 0; i < length; ++i) name.push_back(static_cast<char16_t>(id[i]));
        }
        // "NAME.EXT;1" -> "NAME.EXT"; a bare trailing dot ("NAME.;1") goes too.
        const auto semicolon = name.rfind(u';');
        if (semicolon != std::u16string::npos) name.resize(semicolon);
        if (!name.empty() && name.back() == u'.') name.pop_back();
        return name;
    }

    bool Directory(TreeNode& folder, std::uint32_t lba, std::uint32_t bytes, int depth) {
        if (depth > limits.maxDepth) return Fail("folders are nested deeper than " + std::to_string(limits.maxDepth));
        if (bytes == 0 || bytes > limits.maxDirectoryBytes) return Fail("a directory has an impossible size");
        const std::uint32_t blocks = (bytes + kBlockSize - 1) / kBlockSize;
        if (lba >= volumeBlocks || blocks > volumeBlocks - lba) return Fail("a directory lies outside the volume");
        if (!visiting.insert(lba).second) return Fail("a directory leads back to one of its parents");
        std::vector<std::uint8_t> data(static_cast<std::size_t>(blocks) * kBlockSize);
        if (!read(lba, blocks, data.data())) return Fail("the directory at block " + std::to_string(lba) + " cannot be read");

        TreeNode* pending = nullptr;  // a multi-extent file still collecting extents
        std::size_t at = 0;
        while (at < bytes) {
            const std::uint8_t length = data[at];
            if (length == 0) {  // rest of this block is padding
                at = (at / kBlockSize + 1) * kBlockSize;
                continue;
            }
            if (length < 34 || at % kBlockSize + length > kBlockSize)
                return Fail("a directory record is damaged (block " + std::to_string(lba + at / kBlockSize) + ")");
            const std::uint8_t* r = &data[at];
            at += length;
            const std::uint8_t idLength = r[32];
            if (33u + idLength > length) return Fail("a directory record's name runs past its end");
            const std::uint32_t extent = GetLe32(r + 2);
            const std::uint32_t size = GetLe32(r + 10);
            const std::uint8_t flags = r[25];
            if (idLength == 1 && (r[33] == 0 || r[33] == 1)) {  // "." and ".."
                continue;
            }
            if (++entries > limits.maxEntries) return Fail("the session holds more entries than allowed");
            std::u16string name = NameOf(r + 33, idLength);
            const std::string problem = JolietNameProblem(name);
            if (!problem.empty()) return Fail("an entry's name is unusable: " + problem);
            const std::int64_t date = GetRecordDate(r + 18);
            if (flags & kFlagDirectory) {
                pending = nullptr;
                auto node = std::make_unique<TreeNode>();
                node->name = std::move(name);
                node->directory = true;
                node->origin = TreeNode::Origin::Imported;
                node->modified = date;
                node->parent = &folder;
                TreeNode& child = *node;
                folder.children.push_back(std::move(node));
                if (!Directory(child, extent, size, depth + 1)) return false;
                continue;
            }
            const std::uint32_t blocksUsed = (size + kBlockSize - 1) / kBlockSize;
            if (size > 0 && (extent >= volumeBlocks || blocksUsed > volumeBlocks - extent))
                return Fail("the file '" + Utf16ToUtf8(name) + "' lies outside the volume");
            if (pending && SameName(pending->name, name)) {
                pending->extents.push_back({extent, size});
                pending->size += size;
            } else {
                auto node = std::make_unique<TreeNode>();
                node->name = std::move(name);
                node->origin = TreeNode::Origin::Imported;
                node->modified = date;
                node->extents.push_back({extent, size});
                node->size = size;
                node->parent = &folder;
                pending = node.get();
                folder.children.push_back(std::move(node));
            }
            if (!(flags & kFlagMultiExtent)) pending = nullptr;
        }
        visiting.erase(lba);
        return true;
    }
};

}  // namespace

bool ReadSession(const BlockReader& read, std::uint32_t startLba, const SessionLimits& limits, SessionTree& out,
                 std::string& error) {
    out = SessionTree();
    std::uint8_t block[kBlockSize];
    const std::uint8_t* primary = nullptr;
    std::vector<std::uint8_t> pvd, svd;
    for (std::uint32_t i = 0; i < 32; ++i) {
        const std::uint32_t lba = startLba + kSystemAreaBlocks + i;
        if (lba < startLba || !read(lba, 1, block)) {
            error = "the session's volume descriptors cannot be read";
            return false;
        }
        if (std::memcmp(block + 1, "CD001", 5) != 0) {
            error = "no ISO 9660 volume descriptor at block " + std::to_string(lba);
            return false;
        }
        if (block[0] == 255) break;
        if (block[0] == 1 && pvd.empty()) pvd.assign(block, block + kBlockSize);
        // Joliet: a supplementary descriptor with a UCS-2 escape sequence (%/@, %/C or %/E).
        if (block[0] == 2 && svd.empty() && block[88] == 0x25 && block[89] == 0x2F &&
            (block[90] == 0x40 || block[90] == 0x43 || block[90] == 0x45))
            svd.assign(block, block + kBlockSize);
    }
    if (pvd.empty()) {
        error = "the session has no primary volume descriptor";
        return false;
    }
    const std::vector<std::uint8_t>& chosen = svd.empty() ? pvd : svd;
    primary = chosen.data();
    if (GetLe16(primary + 128) != kBlockSize) {
        error = "the session's logical blocks are not 2048 bytes";
        return false;
    }
    Walker walker{read, limits, !svd.empty(), GetLe32(primary + 80), 0, {}, {}};
    const std::uint8_t* root = primary + 156;
    if (root[0] != 34 || !(root[25] & kFlagDirectory)) {
        error = "the session's root directory record is damaged";
        return false;
    }
    out.root = std::make_unique<TreeNode>();
    out.root->directory = true;
    out.root->origin = TreeNode::Origin::Imported;
    out.root->modified = GetRecordDate(root + 18);
    out.joliet = walker.joliet;
    out.volumeBlocks = walker.volumeBlocks;
    if (!walker.Directory(*out.root, GetLe32(root + 2), GetLe32(root + 10), 0)) {
        error = walker.error;
        out.root.reset();
        return false;
    }
    return true;
}

}  // namespace uc::disc
