// The session writer and reader against each other in memory: layout limits, multi-extent files, imports, damage.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <fstream>

#include "export/simulator/file_tree.h"
#include "export/simulator/iso_format.h"
#include "export/simulator/iso_image.h"
#include "export/simulator/iso_names.h"
#include "export/simulator/iso_reader.h"
#include "platform/text.h"
#include "support/temp_dir.h"

namespace uc::disc {
namespace {

// A medium in memory: sessions are streamed into it at their start block.
struct Medium {
    std::vector<std::uint8_t> bytes;

    void Write(IsoImage& image, std::uint64_t limit = UINT64_MAX) {
        const std::uint64_t at = std::uint64_t(image.StartLba()) * kBlockSize;
        const std::uint64_t size = std::min(image.Bytes(), limit);
        bytes.resize(std::max<std::uint64_t>(bytes.size(), at + size));
        image.Rewind();
        std::size_t produced = 0;
        StreamError error;
        ASSERT_TRUE(image.Read(bytes.data() + at, static_cast<std::size_t>(size), produced, error)) << error.why;
        ASSERT_EQ(produced, size);
    }
    // Lays `tree` out at `start` into `image` and writes it.
    void Burn(const FileTree& tree, IsoImage& image, std::uint32_t start = 0) {
        std::string error;
        ASSERT_TRUE(image.Build(tree, start, {"V", "P", "A"}, 0, error)) << error;
        Write(image);
    }
    BlockReader Reader() {
        return [this](std::uint32_t lba, std::uint32_t count, std::uint8_t* out) {
            const std::uint64_t at = std::uint64_t(lba) * kBlockSize, n = std::uint64_t(count) * kBlockSize;
            if (at + n > bytes.size()) return false;
            std::memcpy(out, bytes.data() + at, static_cast<std::size_t>(n));
            return true;
        };
    }
    std::string Contents(const TreeNode& file) const {
        std::string out;
        for (const Extent& e : file.extents) out.append(reinterpret_cast<const char*>(&bytes[std::uint64_t(e.lba) * kBlockSize]), e.bytes);
        return out;
    }
};

std::vector<std::uint8_t> Bytes(const std::string& s) { return {s.begin(), s.end()}; }

SessionTree ReadBack(Medium& medium, std::uint32_t start = 0) {
    SessionTree tree;
    std::string error;
    EXPECT_TRUE(ReadSession(medium.Reader(), start, {}, tree, error)) << error;
    if (!tree.root) tree.root = std::make_unique<TreeNode>();  // a failed read fails the test without a crash
    return tree;
}

TEST(IsoImageTest, FullDirectoriesSpanBlocksWithoutSplittingARecord) {
    FileTree tree(false, true, true);
    TreeNode* folder = nullptr;
    ASSERT_TRUE(tree.AddFolder(tree.Root(), u"Many", &folder).ok);
    for (int i = 0; i < 300; ++i)
        ASSERT_TRUE(tree.AddMemory(*folder, Utf8ToUtf16("file number " + std::to_string(i) + " with a long name.txt"),
                                   Bytes("content " + std::to_string(i)), 0, nullptr).ok);
    IsoImage image;
    Medium medium;
    medium.Burn(tree, image);
    SessionTree back = ReadBack(medium);
    ASSERT_EQ(back.root->children.size(), 1u);
    const TreeNode& many = *back.root->children[0];
    ASSERT_EQ(many.children.size(), 300u);
    for (const auto& child : many.children) {
        const std::string name = Utf16ToUtf8(child->name);
        const std::string number = name.substr(12, name.find(' ', 12) - 12);
        EXPECT_EQ(medium.Contents(*child), "content " + number) << name;
    }
    EXPECT_TRUE(back.joliet);
}

TEST(IsoImageTest, WithoutJolietTheIsoNamesAreRead) {
    FileTree tree(false, false, false);
    ASSERT_TRUE(tree.AddMemory(tree.Root(), u"report final.pdf", Bytes("pdf"), 0, nullptr).ok);
    IsoImage image;
    Medium medium;
    medium.Burn(tree, image);
    SessionTree back = ReadBack(medium);
    EXPECT_FALSE(back.joliet);
    ASSERT_EQ(back.root->children.size(), 1u);
    EXPECT_EQ(back.root->children[0]->name, u"REPORT_F.PDF");
}

// "a" sorts before "B" in ISO 9660 ("A" < "B") but after it in Joliet (0x0042 < 0x0061): each path table
// keeps its own order, and every record's parent number and address match its own hierarchy.
TEST(IsoImageTest, JolietPathTableHasItsOwnOrder) {
    FileTree tree(false, true, true);
    TreeNode *a = nullptr, *b = nullptr;
    ASSERT_TRUE(tree.AddFolder(tree.Root(), u"a", &a).ok);
    ASSERT_TRUE(tree.AddFolder(tree.Root(), u"B", &b).ok);
    ASSERT_TRUE(tree.AddFolder(*a, u"in a", nullptr).ok);
    ASSERT_TRUE(tree.AddFolder(*b, u"in B", nullptr).ok);
    IsoImage image;
    Medium medium;
    medium.Burn(tree, image);
    const std::uint8_t* svd = &medium.bytes[17 * kBlockSize];
    const std::uint32_t tableBytes = GetLe32(svd + 132);
    const std::uint8_t* table = &medium.bytes[std::size_t(GetLe32(svd + 140)) * kBlockSize];
    std::vector<std::pair<std::u16string, std::uint16_t>> records;  // name, parent number
    for (std::size_t at = 0; at < tableBytes;) {
        const std::uint8_t length = table[at];
        std::u16string name;
        for (std::size_t k = 0; k + 1 < length; k += 2) name.push_back(static_cast<char16_t>((table[at + 8 + k] << 8) | table[at + 9 + k]));
        records.emplace_back(name, GetLe16(&table[at + 6]));
        // The directory the record names starts with its own "." record.
        const std::uint32_t lba = GetLe32(&table[at + 2]);
        EXPECT_EQ(GetLe32(&medium.bytes[std::size_t(lba) * kBlockSize + 2]), lba) << Utf16ToUtf8(name);
        at += 8 + length + length % 2;
    }
    const std::vector<std::pair<std::u16string, std::uint16_t>> expected = {
        {u"", 1}, {u"B", 1}, {u"a", 1}, {u"in B", 2}, {u"in a", 3}};
    EXPECT_EQ(records, expected);
}

// Only the metadata blocks are streamed: the data of a 4.5 GiB sparse file is never read.
TEST(IsoImageTest, FilesBeyondFourGibibytesGetSeveralExtents) {
    uc::test::TempDir temp;
    const std::filesystem::path big = uc::ToFsPath(temp.path()) / "big.raw";
    const std::uint64_t size = (std::uint64_t(9) << 29) + 1;
    { std::ofstream(big, std::ios::binary); }
    std::filesystem::resize_file(big, size);
    FileTree tree(false, true, true);
    ASSERT_TRUE(tree.AddFromDisk(tree.Root(), big, u"", nullptr).ok);
    IsoImage image;
    std::string error;
    ASSERT_TRUE(image.Build(tree, 0, {"V", "P", "A"}, 0, error));
    EXPECT_EQ(image.Blocks(), 25u + (size + 2047) / 2048);  // descriptors, tables, two directories each, data
    Medium medium;
    medium.Write(image, 25 * kBlockSize);
    medium.bytes.resize(std::uint64_t(image.Blocks()) * kBlockSize / 1024);  // the reader checks addresses, not data
    SessionTree back;
    ASSERT_TRUE(ReadSession([&](std::uint32_t lba, std::uint32_t count, std::uint8_t* out) {
        return lba + count <= 25 && medium.Reader()(lba, count, out);
    }, 0, {}, back, error)) << error;
    const TreeNode& file = *back.root->children.at(0);
    ASSERT_EQ(file.extents.size(), 2u);
    EXPECT_EQ(file.extents[0].bytes, kMaxExtentBytes);
    EXPECT_EQ(file.extents[1].lba, file.extents[0].lba + kMaxExtentBytes / kBlockSize);
    EXPECT_EQ(file.size, size);
}

// Each damage is refused with a reason, whatever the bytes; the undamaged image reads.
TEST(IsoReaderTest, DamagedSessionsAreRefusedWithAReason) {
    FileTree tree(false, true, true);
    TreeNode* sub = nullptr;
    ASSERT_TRUE(tree.AddFolder(tree.Root(), u"sub", &sub).ok);
    ASSERT_TRUE(tree.AddMemory(*sub, u"f.txt", Bytes("x"), 0, nullptr).ok);
    IsoImage image;
    Medium good;
    good.Burn(tree, image);
    ReadBack(good);
    // The Joliet descriptor (block 17) leads: its root record and the first directory it names.
    const std::size_t svd = 17 * kBlockSize, root = svd + 156;
    const std::uint32_t rootLba = GetLe32(&good.bytes[root + 2]);
    const std::size_t rootDir = std::size_t(rootLba) * kBlockSize, subRecord = rootDir + 68;
    struct Damage {
        const char* what;
        std::function<void(std::vector<std::uint8_t>&)> apply;
        const char* reason;
    };
    const Damage damages[] = {
        {"no descriptor", [](auto& b) { b[16 * kBlockSize + 1] = 'X'; }, "no ISO 9660"},
        {"no primary", [](auto& b) { b[16 * kBlockSize] = 3; }, "no primary"},
        {"block size", [=](auto& b) { PutBoth16(&b[svd + 128], 512); }, "2048"},
        {"root record", [=](auto& b) { b[root] = 0; }, "root"},
        {"short record", [=](auto& b) { b[subRecord] = 20; }, "damaged"},
        {"long name", [=](auto& b) { b[subRecord + 32] = 200; }, "runs past"},
        {"loop", [=](auto& b) { PutBoth32(&b[subRecord + 2], rootLba); }, "leads back"},
        {"outside", [=](auto& b) { PutBoth32(&b[subRecord + 2], 0x7FFFFFF0); }, "outside"},
        {"empty directory", [=](auto& b) { PutBoth32(&b[subRecord + 10], 0); }, "impossible size"},
        {"bad name", [=](auto& b) { b[subRecord + 34] = '/'; }, "unusable"},
        {"unreadable", [](auto& b) { b.resize(20 * kBlockSize); }, "cannot be read"},
    };
    for (const Damage& d : damages) {
        Medium bad = good;
        d.apply(bad.bytes);
        SessionTree out;
        std::string why;
        EXPECT_FALSE(ReadSession(bad.Reader(), 0, {}, out, why)) << d.what;
        EXPECT_NE(why.find(d.reason), std::string::npos) << d.what << ": " << why;
        EXPECT_EQ(out.root, nullptr) << d.what;
    }
    SessionLimits shallow;
    shallow.maxDepth = 0;
    SessionTree out;
    std::string error;
    EXPECT_FALSE(ReadSession(good.Reader(), 0, shallow, out, error));
    EXPECT_NE(error.find("deeper"), std::string::npos) << error;
}

}  // namespace
}  // namespace uc::disc
