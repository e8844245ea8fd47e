// The folder tree of one disc session: folders and files from disk, from memory or imported from an earlier session.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace uc::disc {

// Where a file's bytes lie on a medium: `blocks` logical blocks from `lba`, `bytes` of them used.
struct Extent {
    std::uint32_t lba = 0;
    std::uint32_t bytes = 0;
};

struct TreeNode {
    enum class Origin { Virtual, Disk, Memory, Imported };

    std::u16string name;  // Joliet name; the root's is empty
    bool directory = false;
    Origin origin = Origin::Virtual;
    std::filesystem::path source;                             // Disk: the file to copy
    std::shared_ptr<const std::vector<std::uint8_t>> memory;  // Memory: the bytes
    std::vector<Extent> extents;                              // Imported: where the bytes already are
    std::uint64_t size = 0;
    std::int64_t modified = 0;  // seconds since 1970 UTC

    TreeNode* parent = nullptr;
    std::vector<std::unique_ptr<TreeNode>> children;

    TreeNode* Find(std::u16string_view childName) const;
};

// How the tree settles a new node whose name is taken in its folder.
enum class Collision { SkipNew = 0, ReplaceOld = 1, RenameNew = 2, MergeFolders = 3 };

// Told about every node added, every name collision (it may change the settlement) and every file or
// folder left out (unreadable or a name Joliet cannot hold, when bad items are ignored).
struct TreeEvents {
    std::function<void(const std::u16string& path)> added;
    std::function<void(const std::u16string& name, const TreeNode& old, bool newIsDirectory, Collision& settle)> collision;
    std::function<void(const std::u16string& path, const std::string& why)> ignored;
};

struct TreeResult {
    bool ok = true;
    bool tooLong = false;         // a name longer than Joliet allows
    std::uint32_t systemError = 0;
    std::string why;
};

class FileTree {
public:
    FileTree(bool ignoreInvalid, bool level2, bool joliet);

    TreeNode& Root() { return *m_root; }
    const TreeNode& Root() const { return *m_root; }
    bool IsLevel2() const { return m_level2; }
    bool IsJoliet() const { return m_joliet; }
    void SetEvents(TreeEvents events) { m_events = std::move(events); }

    // Adds a file, or a folder with everything below it, from disk under `parent` (renamed to `newName`
    // when that is not empty). Unreadable items and names Joliet cannot hold fail the call, or are left
    // out (and reported) when the tree ignores invalid items.
    TreeResult AddFromDisk(TreeNode& parent, const std::filesystem::path& source, const std::u16string& newName,
                           TreeNode** added);
    TreeResult AddFolder(TreeNode& parent, const std::u16string& name, TreeNode** added);
    TreeResult AddMemory(TreeNode& parent, const std::u16string& name, std::vector<std::uint8_t> bytes,
                         std::int64_t modified, TreeNode** added);
    // Adds a node built elsewhere (an imported session's entry, with its children).
    TreeResult AddNode(TreeNode& parent, std::unique_ptr<TreeNode> node, TreeNode** added);

    // Deepest folder level, the root being level 1 (ISO 9660 readers are only required to go to 8).
    int Level() const;
    std::uint64_t NodeCount() const;

private:
    TreeResult Insert(TreeNode& parent, std::unique_ptr<TreeNode> node, TreeNode** added);
    TreeResult Walk(TreeNode& node, const std::filesystem::path& folder);
    std::u16string PathOf(const TreeNode& node, std::u16string_view leaf = {}) const;

    std::unique_ptr<TreeNode> m_root;
    bool m_ignoreInvalid;
    bool m_level2;
    bool m_joliet;
    TreeEvents m_events;
};

// Paths as UTF-8 text and back, on every platform.
std::string PathUtf8(const std::filesystem::path& path);
std::filesystem::path PathFromUtf8(const std::string& text);

// Modification time of a file on disk as seconds since 1970 UTC (0 when unknown).
std::int64_t FileModifiedTime(const std::filesystem::path& path);

}  // namespace uc::disc
