// Lays a FileTree out as an ISO 9660 + Joliet session and streams it.
#include "export/simulator/iso_image.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <set>

#include "export/simulator/iso_format.h"
#include "export/simulator/iso_names.h"

namespace uc::disc {

namespace {

struct Entry {
    const TreeNode* node;
    std::vector<std::uint8_t> id;  // identifier bytes as recorded
};

struct Directory {
    const TreeNode* node;
    std::size_t parent;  // index of the parent directory (itself for the root)
    std::vector<Entry> iso, joliet;
    std::uint32_t isoBlock = 0, isoBytes = 0, jolietBlock = 0, jolietBytes = 0;
};

std::uint32_t BlocksFor(std::uint64_t bytes) { return static_cast<std::uint32_t>((bytes + kBlockSize - 1) / kBlockSize); }

std::size_t RecordLength(std::size_t idLength) { return 33 + idLength + (idLength % 2 == 0 ? 1 : 0); }

std::vector<std::uint8_t> JolietId(std::u16string_view name) {
    std::vector<std::uint8_t> id;
    for (char16_t c : name) {
        id.push_back(static_cast<std::uint8_t>(c >> 8));
        id.push_back(static_cast<std::uint8_t>(c & 0xFF));
    }
    return id;
}

// Extents of a file written in this session: contiguous pieces of at most kMaxExtentBytes.
std::size_t ExtentCount(const TreeNode& node) {
    if (node.origin == TreeNode::Origin::Imported) return std::max<std::size_t>(1, node.extents.size());
    return node.size == 0 ? 1 : static_cast<std::size_t>((node.size + kMaxExtentBytes - 1) / kMaxExtentBytes);
}

// Bytes a directory takes: records never straddle a block.
std::uint32_t DirectoryBytes(const std::vector<Entry>& entries) {
    std::uint32_t used = 2 * 34;  // "." and ".."
    for (const Entry& e : entries) {
        const std::size_t length = RecordLength(e.id.size());
        const std::size_t count = e.node->directory ? 1 : ExtentCount(*e.node);
        for (std::size_t i = 0; i < count; ++i) {
            if (used % kBlockSize + length > kBlockSize) used += kBlockSize - used % kBlockSize;
            used += static_cast<std::uint32_t>(length);
        }
    }
    return BlocksFor(used) * kBlockSize;
}

void PutRecord(std::vector<std::uint8_t>& out, std::uint32_t lba, std::uint32_t bytes, std::uint8_t flags,
               std::int64_t date, const std::uint8_t* id, std::size_t idLength) {
    const std::size_t length = RecordLength(idLength);
    const std::size_t inBlock = out.size() % kBlockSize;
    if (inBlock + length > kBlockSize) out.resize(out.size() + kBlockSize - inBlock, 0);
    const std::size_t at = out.size();
    out.resize(at + length, 0);
    std::uint8_t* r = out.data() + at;
    r[0] = static_cast<std::uint8_t>(length);
    PutBoth32(r + 2, lba);
    PutBoth32(r + 10, bytes);
    PutRecordDate(r + 18, date);
    r[25] = flags;
    PutBoth16(r + 28, 1);
    r[32] = static_cast<std::uint8_t>(idLength);
    std::memcpy(r + 33, id, idLength);
}

// a-characters for the primary descriptor's texts, d-characters for its volume identifier.
void PutText(std::uint8_t* p, std::size_t field, const std::string& text, bool dOnly) {
    std::memset(p, ' ', field);
    for (std::size_t i = 0; i < field && i < text.size(); ++i) {
        char c = text[i];
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
        const bool d = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        const bool a = d || std::strchr(" !\"%&'()*+,-./:;<=>?", c) != nullptr;
        p[i] = static_cast<std::uint8_t>((dOnly ? d : a) && c != '\0' ? c : '_');
    }
}

void PutUcs2Text(std::uint8_t* p, std::size_t field, const std::string& text) {
    std::memset(p, 0, field);
    const std::u16string wide = Utf8ToUtf16(text);
    std::size_t i = 0;
    for (; i < wide.size() && 2 * i + 1 < field; ++i) PutBe16(p + 2 * i, wide[i]);
    for (; 2 * i + 1 < field; ++i) PutBe16(p + 2 * i, u' ');
}

}  // namespace

bool IsoImage::Build(const FileTree& tree, std::uint32_t startLba, const VolumeTexts& texts, std::int64_t now,
                     std::string& error) {
    *this = IsoImage();
    const bool joliet = tree.IsJoliet();

    // Directories breadth first, children sorted: the order path tables require.
    std::vector<Directory> dirs;
    dirs.push_back({&tree.Root(), 0, {}, {}});
    for (std::size_t i = 0; i < dirs.size(); ++i) {
        const TreeNode& node = *dirs[i].node;
        std::set<std::string> taken;
        std::vector<const TreeNode*> ordered;
        for (const auto& child : node.children) ordered.push_back(child.get());
        // Folders first get the short identifiers, so a file never pushes a folder to a "~N" name.
        std::stable_sort(ordered.begin(), ordered.end(),
                         [](const TreeNode* a, const TreeNode* b) { return a->directory && !b->directory; });
        for (const TreeNode* child : ordered) {
            std::string id = IsoIdentifier(child->name, child->directory, tree.IsLevel2(), taken);
            if (!child->directory) id += ";1";
            dirs[i].iso.push_back({child, std::vector<std::uint8_t>(id.begin(), id.end())});
            if (joliet) dirs[i].joliet.push_back({child, JolietId(child->name)});
        }
        auto byId = [](const Entry& a, const Entry& b) { return a.id < b.id; };
        std::sort(dirs[i].iso.begin(), dirs[i].iso.end(), byId);
        std::sort(dirs[i].joliet.begin(), dirs[i].joliet.end(), byId);
        // Collected first: pushing onto `dirs` may move dirs[i] and its entry lists.
        std::vector<const TreeNode*> subfolders;
        for (const Entry& e : dirs[i].iso)
            if (e.node->directory) subfolders.push_back(e.node);
        for (const TreeNode* folder : subfolders) dirs.push_back({folder, i, {}, {}});
        if (dirs.size() > 65535) {
            error = "more than 65535 folders do not fit the path table";
            return false;
        }
    }
    std::map<const TreeNode*, std::size_t> dirIndex;
    for (std::size_t i = 0; i < dirs.size(); ++i) dirIndex[dirs[i].node] = i;
    // Path tables list folders level by level, sorted by parent number, then name; Joliet names sort
    // differently from the ISO 9660 ones, so the Joliet table has an order (and numbers) of its own.
    std::vector<std::size_t> isoOrder(dirs.size()), jolietOrder{0};
    for (std::size_t i = 0; i < dirs.size(); ++i) isoOrder[i] = i;
    for (std::size_t k = 0; joliet && k < jolietOrder.size(); ++k)
        for (const Entry& e : dirs[jolietOrder[k]].joliet)
            if (e.node->directory) jolietOrder.push_back(dirIndex[e.node]);

    // Path tables (same record sizes for both byte orders).
    auto pathTableBytes = [&](bool forJoliet) {
        std::uint64_t bytes = 0;
        for (std::size_t i = 0; i < dirs.size(); ++i) {
            std::size_t idLength = 1;
            if (i > 0) {
                const Directory& parent = dirs[dirs[i].parent];
                const auto& list = forJoliet ? parent.joliet : parent.iso;
                for (const Entry& e : list)
                    if (e.node == dirs[i].node) idLength = e.id.size();
            }
            bytes += 8 + idLength + (idLength % 2);
        }
        return bytes;
    };
    const std::uint64_t isoTableBytes = pathTableBytes(false);
    const std::uint64_t jolietTableBytes = joliet ? pathTableBytes(true) : 0;

    std::uint32_t block = kSystemAreaBlocks;
    const std::uint32_t pvdBlock = block++;
    const std::uint32_t svdBlock = joliet ? block++ : 0;
    const std::uint32_t terminatorBlock = block++;
    m_descriptorEnd = block;
    const std::uint32_t isoL = block, isoM = isoL + BlocksFor(isoTableBytes);
    block = isoM + BlocksFor(isoTableBytes);
    const std::uint32_t jolL = block, jolM = jolL + BlocksFor(jolietTableBytes);
    block = jolM + BlocksFor(jolietTableBytes);
    for (Directory& d : dirs) {
        d.isoBytes = DirectoryBytes(d.iso);
        d.isoBlock = block;
        block += d.isoBytes / kBlockSize;
    }
    if (joliet)
        for (Directory& d : dirs) {
            d.jolietBytes = DirectoryBytes(d.joliet);
            d.jolietBlock = block;
            block += d.jolietBytes / kBlockSize;
        }
    // File data in directory order; empty files point at the terminator block.
    std::map<const TreeNode*, std::uint32_t> fileBlock;
    for (const Directory& d : dirs)
        for (const Entry& e : d.iso) {
            const TreeNode& n = *e.node;
            if (n.directory || n.origin == TreeNode::Origin::Imported) continue;
            if (n.size == 0) {
                fileBlock[&n] = terminatorBlock;
                continue;
            }
            fileBlock[&n] = block;
            Segment s{n.origin == TreeNode::Origin::Memory ? Segment::Kind::Memory : Segment::Kind::File, block, n.size, 0, &n};
            m_segments.push_back(s);
            const std::uint64_t end = static_cast<std::uint64_t>(block) + BlocksFor(n.size) + std::uint64_t(startLba);
            if (end > 0x7FFFFFFFull) {
                error = "the session does not fit below 4 TiB of logical blocks";
                return false;
            }
            block += BlocksFor(n.size);
        }
    m_blocks = block;
    m_start = startLba;
    const std::uint32_t volumeBlocks = startLba + m_blocks;

    // Directory contents.
    auto emitDirectory = [&](const Directory& d, bool forJoliet) {
        std::vector<std::uint8_t> out;
        const Directory& parent = dirs[d.parent];
        const std::uint32_t self = startLba + (forJoliet ? d.jolietBlock : d.isoBlock);
        const std::uint32_t selfBytes = forJoliet ? d.jolietBytes : d.isoBytes;
        const std::uint32_t up = startLba + (forJoliet ? parent.jolietBlock : parent.isoBlock);
        const std::uint32_t upBytes = forJoliet ? parent.jolietBytes : parent.isoBytes;
        const std::uint8_t dot = 0, dotdot = 1;
        PutRecord(out, self, selfBytes, kFlagDirectory, d.node->modified, &dot, 1);
        PutRecord(out, up, upBytes, kFlagDirectory, parent.node->modified, &dotdot, 1);
        for (const Entry& e : forJoliet ? d.joliet : d.iso) {
            const TreeNode& n = *e.node;
            if (n.directory) {
                const Directory& child = dirs[dirIndex[&n]];
                PutRecord(out, startLba + (forJoliet ? child.jolietBlock : child.isoBlock),
                          forJoliet ? child.jolietBytes : child.isoBytes, kFlagDirectory, n.modified, e.id.data(),
                          e.id.size());
                continue;
            }
            std::vector<Extent> extents;
            if (n.origin == TreeNode::Origin::Imported) {
                extents = n.extents;
                if (extents.empty()) extents.push_back({startLba + terminatorBlock, 0});
            } else {
                std::uint32_t at = startLba + fileBlock[&n];
                std::uint64_t left = n.size;
                do {
                    const std::uint64_t piece = std::min(left, kMaxExtentBytes);
                    extents.push_back({at, static_cast<std::uint32_t>(piece)});
                    at += BlocksFor(piece);
                    left -= piece;
                } while (left > 0);
            }
            for (std::size_t k = 0; k < extents.size(); ++k)
                PutRecord(out, extents[k].lba, extents[k].bytes, k + 1 < extents.size() ? kFlagMultiExtent : 0,
                          n.modified, e.id.data(), e.id.size());
        }
        out.resize(selfBytes, 0);
        return out;
    };
    auto addMeta = [&](std::uint32_t at, std::vector<std::uint8_t> bytes) {
        Segment s{Segment::Kind::Meta, at, bytes.size(), m_meta.size(), nullptr};
        m_meta.push_back(std::move(bytes));
        m_segments.push_back(s);
    };

    // Path tables: little-endian (L) and big-endian (M) copies.
    auto emitPathTable = [&](bool forJoliet, bool bigEndian) {
        const std::vector<std::size_t>& order = forJoliet ? jolietOrder : isoOrder;
        std::vector<std::size_t> number(dirs.size());
        for (std::size_t k = 0; k < order.size(); ++k) number[order[k]] = k + 1;
        std::vector<std::uint8_t> out;
        for (std::size_t i : order) {
            std::vector<std::uint8_t> id{0};
            if (i > 0)
                for (const Entry& e : forJoliet ? dirs[dirs[i].parent].joliet : dirs[dirs[i].parent].iso)
                    if (e.node == dirs[i].node) id = e.id;
            const std::size_t at = out.size();
            out.resize(at + 8 + id.size() + id.size() % 2, 0);
            std::uint8_t* r = out.data() + at;
            r[0] = static_cast<std::uint8_t>(id.size());
            const std::uint32_t lba = startLba + (forJoliet ? dirs[i].jolietBlock : dirs[i].isoBlock);
            const auto parentNumber = static_cast<std::uint16_t>(number[dirs[i].parent]);
            if (bigEndian) {
                PutBe32(r + 2, lba);
                PutBe16(r + 6, parentNumber);
            } else {
                PutLe32(r + 2, lba);
                PutLe16(r + 6, parentNumber);
            }
            std::memcpy(r + 8, id.data(), id.size());
        }
        return out;
    };

    auto descriptor = [&](bool forJoliet) {
        std::vector<std::uint8_t> d(kBlockSize, 0);
        d[0] = forJoliet ? 2 : 1;
        std::memcpy(&d[1], "CD001", 5);
        d[6] = 1;
        const std::string volumeId = texts.volumeSet.empty() ? "CDROM" : texts.volumeSet;
        if (forJoliet) {
            PutUcs2Text(&d[8], 32, "");
            PutUcs2Text(&d[40], 32, volumeId);
            d[88] = 0x25, d[89] = 0x2F, d[90] = 0x45;  // "%/E": UCS-2 level 3
        } else {
            PutText(&d[8], 32, "", false);
            PutText(&d[40], 32, volumeId, true);
        }
        PutBoth32(&d[80], volumeBlocks);
        PutBoth16(&d[120], 1);
        PutBoth16(&d[124], 1);
        PutBoth16(&d[128], kBlockSize);
        const std::uint64_t tableBytes = forJoliet ? jolietTableBytes : isoTableBytes;
        PutBoth32(&d[132], static_cast<std::uint32_t>(tableBytes));
        PutLe32(&d[140], startLba + (forJoliet ? jolL : isoL));
        PutBe32(&d[148], startLba + (forJoliet ? jolM : isoM));
        std::vector<std::uint8_t> root;
        const std::uint8_t dot = 0;
        PutRecord(root, startLba + (forJoliet ? dirs[0].jolietBlock : dirs[0].isoBlock),
                  forJoliet ? dirs[0].jolietBytes : dirs[0].isoBytes, kFlagDirectory, tree.Root().modified, &dot, 1);
        std::memcpy(&d[156], root.data(), 34);
        const std::string* fields[] = {&texts.volumeSet, &texts.publisher, &texts.publisher, &texts.application};
        for (int i = 0; i < 4; ++i) {
            if (forJoliet)
                PutUcs2Text(&d[190 + 128 * i], 128, *fields[i]);
            else
                PutText(&d[190 + 128 * i], 128, *fields[i], false);
        }
        for (int i = 0; i < 3; ++i) {
            if (forJoliet)
                PutUcs2Text(&d[702 + 37 * i], 37, "");
            else
                PutText(&d[702 + 37 * i], 37, "", false);
        }
        PutVolumeDate(&d[813], now);
        PutVolumeDate(&d[830], now);
        std::memset(&d[847], '0', 16);  // no expiration or effective date
        std::memset(&d[864], '0', 16);
        d[881] = 1;
        return d;
    };

    addMeta(pvdBlock, descriptor(false));
    if (joliet) addMeta(svdBlock, descriptor(true));
    std::vector<std::uint8_t> terminator(kBlockSize, 0);
    terminator[0] = 255;
    std::memcpy(&terminator[1], "CD001", 5);
    terminator[6] = 1;
    addMeta(terminatorBlock, std::move(terminator));
    addMeta(isoL, emitPathTable(false, false));
    addMeta(isoM, emitPathTable(false, true));
    if (joliet) {
        addMeta(jolL, emitPathTable(true, false));
        addMeta(jolM, emitPathTable(true, true));
    }
    for (const Directory& d : dirs) addMeta(d.isoBlock, emitDirectory(d, false));
    if (joliet)
        for (const Directory& d : dirs) addMeta(d.jolietBlock, emitDirectory(d, true));
    std::sort(m_segments.begin(), m_segments.end(), [](const Segment& a, const Segment& b) { return a.block < b.block; });
    m_built = true;
    return true;
}

void IsoImage::Rewind() {
    m_position = 0;
    m_segment = 0;
    m_file.Close();
    m_fileNode = nullptr;
}

bool IsoImage::Fill(const Segment& segment, std::uint64_t offset, std::uint8_t* out, std::size_t size,
                    StreamError& error) {
    // Bytes past the content, up to the end of its last block, are zero.
    const std::size_t content = offset >= segment.bytes ? 0 : static_cast<std::size_t>(std::min<std::uint64_t>(size, segment.bytes - offset));
    std::memset(out + content, 0, size - content);
    if (content == 0) return true;
    switch (segment.kind) {
    case Segment::Kind::Meta:
        std::memcpy(out, m_meta[segment.meta].data() + offset, content);
        return true;
    case Segment::Kind::Memory:
        std::memcpy(out, segment.node->memory->data() + offset, content);
        return true;
    case Segment::Kind::File: {
        if (m_fileNode != segment.node) {
            m_file.Close();
            m_fileNode = nullptr;
            std::uint64_t size = 0;
            if (!m_file.Open(segment.node->source, BlockFile::Mode::Read) || !m_file.Size(size)) {
                error = {m_file.LastErrorNumber(), m_file.LastError()};
                return false;
            }
            if (size < segment.bytes) {
                error = {0, "'" + PathUtf8(segment.node->source) + "' became shorter while it was being written"};
                return false;
            }
            m_fileNode = segment.node;
        }
        // Holes in a sparse source are zeros: no need to read them.
        const std::uint64_t data = std::min<std::uint64_t>(m_file.DataFrom(offset), offset + content);
        const std::size_t skip = static_cast<std::size_t>(data - offset);
        std::memset(out, 0, skip);
        if (skip == content) return true;
        std::size_t got = 0;
        if (!m_file.ReadAt(data, out + skip, content - skip, got)) {
            error = {m_file.LastErrorNumber(), m_file.LastError() + " ('" + PathUtf8(segment.node->source) + "')"};
            return false;
        }
        if (got != content - skip) {
            error = {0, "'" + PathUtf8(segment.node->source) + "' became shorter while it was being written"};
            return false;
        }
        return true;
    }
    }
    return false;
}

bool IsoImage::Read(std::uint8_t* out, std::size_t size, std::size_t& produced, StreamError& error) {
    produced = 0;
    const std::uint64_t total = Bytes();
    while (produced < size && m_position < total) {
        const std::uint64_t want = std::min<std::uint64_t>(size - produced, total - m_position);
        while (m_segment < m_segments.size() &&
               (static_cast<std::uint64_t>(m_segments[m_segment].block) * kBlockSize +
                static_cast<std::uint64_t>(BlocksFor(m_segments[m_segment].bytes)) * kBlockSize) <= m_position)
            ++m_segment;
        std::size_t step;
        if (m_segment < m_segments.size() && static_cast<std::uint64_t>(m_segments[m_segment].block) * kBlockSize <= m_position) {
            const Segment& s = m_segments[m_segment];
            const std::uint64_t begin = static_cast<std::uint64_t>(s.block) * kBlockSize;
            const std::uint64_t end = begin + static_cast<std::uint64_t>(BlocksFor(s.bytes)) * kBlockSize;
            step = static_cast<std::size_t>(std::min(want, end - m_position));
            if (!Fill(s, m_position - begin, out + produced, step, error)) return false;
        } else {
            // A gap (system area): zeros up to the next segment.
            const std::uint64_t next = m_segment < m_segments.size()
                                           ? static_cast<std::uint64_t>(m_segments[m_segment].block) * kBlockSize
                                           : total;
            step = static_cast<std::size_t>(std::min(want, next - m_position));
            std::memset(out + produced, 0, step);
        }
        produced += step;
        m_position += step;
    }
    return true;
}

}  // namespace uc::disc
