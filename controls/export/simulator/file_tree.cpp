// The folder tree of one disc session.
#include "export/simulator/file_tree.h"

#include <algorithm>
#include <chrono>
#include <system_error>

#include "export/simulator/iso_names.h"

namespace uc::disc {

namespace fs = std::filesystem;

TreeNode* TreeNode::Find(std::u16string_view childName) const {
    for (const auto& child : children)
        if (SameName(child->name, childName)) return child.get();
    return nullptr;
}

std::string PathUtf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

fs::path PathFromUtf8(const std::string& text) { return fs::path(std::u8string(text.begin(), text.end())); }

std::int64_t FileModifiedTime(const fs::path& path) {
    std::error_code ec;
    const auto when = fs::last_write_time(path, ec);
    if (ec) return 0;
    // file_clock and system_clock differ by a fixed epoch offset; measure it once against now.
    const auto sys = std::chrono::system_clock::now() + (when - fs::file_time_type::clock::now());
    return std::chrono::duration_cast<std::chrono::seconds>(sys.time_since_epoch()).count();
}

FileTree::FileTree(bool ignoreInvalid, bool level2, bool joliet)
    : m_root(std::make_unique<TreeNode>()), m_ignoreInvalid(ignoreInvalid), m_level2(level2), m_joliet(joliet) {
    m_root->directory = true;
    m_root->modified = std::chrono::duration_cast<std::chrono::seconds>(
                           std::chrono::system_clock::now().time_since_epoch()).count();
}

std::u16string FileTree::PathOf(const TreeNode& node, std::u16string_view leaf) const {
    std::u16string path;
    for (const TreeNode* n = &node; n && n->parent; n = n->parent) path = u"/" + n->name + path;
    if (!leaf.empty()) path += u"/" + std::u16string(leaf);
    return path.empty() ? u"/" : path;
}

TreeResult FileTree::Insert(TreeNode& parent, std::unique_ptr<TreeNode> node, TreeNode** added) {
    if (added) *added = nullptr;
    if (!parent.directory) return {false, false, 0, "'" + Utf16ToUtf8(parent.name) + "' is a file, not a folder"};
    TreeNode* old = parent.Find(node->name);
    if (old) {
        // Imported entries give way to new ones; folders meet by merging; the caller's callback may decide otherwise.
        Collision settle = old->directory && node->directory ? Collision::MergeFolders
                                                             : Collision::ReplaceOld;
        if (m_events.collision) m_events.collision(node->name, *old, node->directory, settle);
        switch (settle) {
        case Collision::SkipNew:
            return {};
        case Collision::MergeFolders:
            if (old->directory && node->directory) {
                for (auto& child : node->children) {
                    child->parent = nullptr;
                    TreeResult r = Insert(*old, std::move(child), nullptr);
                    if (!r.ok) return r;
                }
                if (added) *added = old;
                return {};
            }
            [[fallthrough]];
        case Collision::ReplaceOld:
            for (auto& child : parent.children)
                if (child.get() == old) {
                    node->parent = &parent;
                    child = std::move(node);
                    if (added) *added = child.get();
                    if (m_events.added) m_events.added(PathOf(*child));
                    return {};
                }
            break;
        case Collision::RenameNew: {
            const std::u16string original = node->name;
            for (int n = 2; parent.Find(node->name); ++n) {
                const auto dot = node->directory ? std::u16string::npos : original.rfind(u'.');
                const std::u16string tail = u" (" + Utf8ToUtf16(std::to_string(n)) + u")";
                node->name = dot == std::u16string::npos || dot == 0
                                 ? original + tail
                                 : original.substr(0, dot) + tail + original.substr(dot);
            }
            if (!JolietNameProblem(node->name).empty())
                return {false, true, 0, "no free name for '" + Utf16ToUtf8(original) + "' within Joliet's limits"};
            break;
        }
        }
    }
    node->parent = &parent;
    parent.children.push_back(std::move(node));
    TreeNode* placed = parent.children.back().get();
    if (added) *added = placed;
    if (m_events.added) m_events.added(PathOf(*placed));
    return {};
}

TreeResult FileTree::AddNode(TreeNode& parent, std::unique_ptr<TreeNode> node, TreeNode** added) {
    return Insert(parent, std::move(node), added);
}

TreeResult FileTree::AddFolder(TreeNode& parent, const std::u16string& name, TreeNode** added) {
    const std::string problem = JolietNameProblem(name);
    if (!problem.empty()) return {false, name.size() > kJolietMaxNameUnits, 0, problem};
    auto node = std::make_unique<TreeNode>();
    node->name = name;
    node->directory = true;
    node->modified = m_root->modified;
    return Insert(parent, std::move(node), added);
}

TreeResult FileTree::AddMemory(TreeNode& parent, const std::u16string& name, std::vector<std::uint8_t> bytes,
                               std::int64_t modified, TreeNode** added) {
    const std::string problem = JolietNameProblem(name);
    if (!problem.empty()) return {false, name.size() > kJolietMaxNameUnits, 0, problem};
    auto node = std::make_unique<TreeNode>();
    node->name = name;
    node->origin = TreeNode::Origin::Memory;
    node->size = bytes.size();
    node->memory = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    node->modified = modified;
    return Insert(parent, std::move(node), added);
}

TreeResult FileTree::AddFromDisk(TreeNode& parent, const fs::path& source, const std::u16string& newName,
                                 TreeNode** added) {
    if (added) *added = nullptr;
    std::error_code ec;
    fs::path clean = source;
    if (!clean.has_filename()) clean = clean.parent_path();  // "C:\folder\" names the folder
    const auto status = fs::status(clean, ec);
    if (ec || !fs::exists(status))
        return {false, false, static_cast<std::uint32_t>(ec.value()), "cannot find '" + source.string() + "'"};
    auto node = std::make_unique<TreeNode>();
    node->name = newName.empty() ? Utf8ToUtf16(PathUtf8(clean.filename())) : newName;
    const std::string problem = JolietNameProblem(node->name);
    if (!problem.empty()) return {false, node->name.size() > kJolietMaxNameUnits, 0, problem};
    node->modified = FileModifiedTime(clean);
    if (fs::is_directory(status)) {
        node->directory = true;
        node->origin = TreeNode::Origin::Disk;
        node->source = clean;
        TreeNode* placed = nullptr;
        TreeResult r = Insert(parent, std::move(node), &placed);
        if (!r.ok || !placed) return r;
        if (added) *added = placed;
        return Walk(*placed, clean);
    }
    node->origin = TreeNode::Origin::Disk;
    node->source = clean;
    node->size = fs::file_size(clean, ec);
    if (ec) return {false, false, static_cast<std::uint32_t>(ec.value()), "cannot read '" + clean.string() + "'"};
    return Insert(parent, std::move(node), added);
}

TreeResult FileTree::Walk(TreeNode& node, const fs::path& folder) {
    std::error_code ec;
    fs::directory_iterator it(folder, ec), end;
    if (ec) {
        TreeResult r{false, false, static_cast<std::uint32_t>(ec.value()), "cannot list '" + folder.string() + "'"};
        if (!m_ignoreInvalid) return r;
        if (m_events.ignored) m_events.ignored(PathOf(node), r.why);
        return {};
    }
    for (; it != end; it.increment(ec)) {
        if (ec) break;
        const fs::path entry = it->path();
        const std::u16string name = Utf8ToUtf16(PathUtf8(entry.filename()));
        TreeNode* child = nullptr;
        TreeResult r = AddFromDisk(node, entry, name, &child);
        if (!r.ok) {
            if (!m_ignoreInvalid) return r;
            if (m_events.ignored) m_events.ignored(PathOf(node, name), r.why);
        }
    }
    if (ec) return {false, false, static_cast<std::uint32_t>(ec.value()), "cannot list '" + folder.string() + "'"};
    return {};
}

namespace {
int Depth(const TreeNode& node, int level) {
    int deepest = level;
    for (const auto& child : node.children)
        if (child->directory) deepest = std::max(deepest, Depth(*child, level + 1));
    return deepest;
}
std::uint64_t Count(const TreeNode& node) {
    std::uint64_t n = 1;
    for (const auto& child : node.children) n += Count(*child);
    return n;
}
}  // namespace

int FileTree::Level() const { return Depth(*m_root, 1); }
std::uint64_t FileTree::NodeCount() const { return Count(*m_root); }

}  // namespace uc::disc
