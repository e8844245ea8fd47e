// The simulated library loaded by its real name: whole burns, appending, closed and rewritable media, faults.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>

#include "export/simulator/block_file.h"
#include "export/starburn_api.h"
#include "export/simulator/file_tree.h"
#include "export/simulator/iso_names.h"
#include "export/simulator/iso_reader.h"
#include "simulator/starburn_client.h"
#include "platform/text.h"
#include "support/temp_dir.h"

namespace uc::test {
namespace {

namespace fs = std::filesystem;
using disc::PathUtf8;

// Everything the image file shows to a reader: "path" -> contents ("/" for folders).
std::map<std::string, std::string> ReadImage(const fs::path& image, std::string* error = nullptr) {
    disc::BlockFile file;
    std::map<std::string, std::string> out;
    if (!file.Open(image, disc::BlockFile::Mode::Read)) return out;
    const disc::BlockReader read = [&](std::uint32_t lba, std::uint32_t count, std::uint8_t* into) {
        std::size_t got = 0;
        return file.ReadAt(std::uint64_t(lba) * 2048, into, count * 2048u, got) && got == count * 2048u;
    };
    disc::SessionTree session;
    std::string why;
    if (!disc::ReadSession(read, 0, {}, session, why)) {
        if (error) *error = why;
        return out;
    }
    std::function<void(const disc::TreeNode&, const std::string&)> walk = [&](const disc::TreeNode& n, const std::string& at) {
        for (const auto& c : n.children) {
            const std::string path = at + "/" + disc::Utf16ToUtf8(c->name);
            if (c->directory) {
                out[path] = "/";
                walk(*c, path);
                continue;
            }
            std::string bytes;
            for (const disc::Extent& e : c->extents) {
                std::string piece(e.bytes, '\0');
                std::size_t got = 0;
                file.ReadAt(std::uint64_t(e.lba) * 2048, piece.data(), piece.size(), got);
                bytes += piece;
            }
            out[path] = bytes;
        }
    };
    walk(*session.root, "");
    return out;
}

class DiscLibraryTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(client.Loaded()) << uc::ToUtf8(client.lib.Problem());
        root = uc::ToFsPath(temp.path());
        image = root / "disc.iso";
        Use("medium=cd-r");
    }
    void Use(const std::string& settings) { SetWriterSettings("image=" + PathUtf8(image) + ";" + settings); }
    // A new blank medium.
    void Fresh(const std::string& settings) {
        fs::remove(image);
        fs::remove(image.string() + ".medium");
        Use(settings);
    }
    fs::path Folder(const std::string& name, std::map<std::string, std::string> files) {
        const fs::path base = root / "source" / disc::PathFromUtf8(name);
        for (const auto& [rel, bytes] : files) {
            const fs::path p = base / disc::PathFromUtf8(rel);
            fs::create_directories(p.parent_path());
            std::ofstream(p, std::ios::binary) << bytes;
        }
        fs::create_directories(base);
        return base;
    }

    TempDir temp;
    StarBurnClient client;
    fs::path root, image;
};

TEST_F(DiscLibraryTest, BurnsATreeWithDeepLongAndNonAsciiNamesThatReadsBackExactly) {
    const std::string deep = "d1/d2/d3/d4/d5/d6/d7/d8/d9/d10/bottom.txt";
    const std::string longName = std::string(60, 'L') + ".dcm";  // 64 characters
    const fs::path study = Folder("Study 1", {{"IMG0001.JPG", std::string(5000, 'a')},
                                              {"empty.txt", ""},
                                              {"Patient M\xC3\xBCller \xE2\x82\xAC.xml", "<patient/>"},
                                              {longName, "long"},
                                              {deep, "deep"}});
    BurnOutcome r = client.Burn({study});
    ASSERT_TRUE(r.ok()) << r.step << ": " << r.text;

    std::string why;
    const auto files = ReadImage(image, &why);
    ASSERT_TRUE(why.empty()) << why;
    EXPECT_EQ(files.at("/Study 1/IMG0001.JPG"), std::string(5000, 'a'));
    EXPECT_EQ(files.at("/Study 1/empty.txt"), "");
    EXPECT_EQ(files.at("/Study 1/Patient M\xC3\xBCller \xE2\x82\xAC.xml"), "<patient/>");
    EXPECT_EQ(files.at("/Study 1/" + longName), "long");
    EXPECT_EQ(files.at("/Study 1/" + deep), "deep");
    EXPECT_EQ(files.size(), 16u);  // 5 files, 11 folders

    const DiscFacts disc = client.Inspect();
    ASSERT_TRUE(disc.outcome.ok());
    EXPECT_EQ(disc.type, DISC_TYPE_CDR);
    EXPECT_EQ(disc.info.discStatus, DISC_STATUS_INCOMPLETE);
    EXPECT_FALSE(disc.info.erasable);
    EXPECT_EQ(disc.next.nextWritableAddress, 304);  // CD tracks take at least 300 blocks, starts align to 16
    EXPECT_EQ(disc.next.freeBlocks, 359847 - 304);
}

TEST_F(DiscLibraryTest, AppendedSessionKeepsOldFilesAndReplacesRenewedOnes) {
    const fs::path first = Folder("A", {{"one.txt", "first one"}, {"keep/two.txt", "two"}});
    ASSERT_TRUE(client.Burn({first}).ok());
    const fs::path second = Folder("B", {{"three.txt", std::string(70000, 'c')}});
    const fs::path renewed = Folder("2/A", {{"One.TXT", "second one"}});  // names differing only in case are one
    BurnOutcome r = client.Burn({second, renewed}, /*append=*/true);
    ASSERT_TRUE(r.ok()) << r.step << ": " << r.text;

    const auto files = ReadImage(image);
    EXPECT_EQ(files.at("/A/One.TXT"), "second one");
    EXPECT_EQ(files.count("/A/one.txt"), 0u);
    EXPECT_EQ(files.at("/A/keep/two.txt"), "two");
    EXPECT_EQ(files.at("/B/three.txt"), std::string(70000, 'c'));

    EXPECT_EQ(client.Inspect().info.sessions, 2);
}

TEST_F(DiscLibraryTest, ClosedDiscTakesNoSessionUnlessItIsRestrictedOverwrite) {
    const fs::path a = Folder("A", {{"a.txt", "a"}});
    ASSERT_TRUE(client.Burn({a}, false, /*close=*/true).ok());
    const DiscFacts disc = client.Inspect();
    EXPECT_EQ(disc.info.discStatus, DISC_STATUS_COMPLETE);
    EXPECT_EQ(disc.next.freeBlocks, 0);
    BurnOutcome r = client.Burn({a}, true);
    EXPECT_EQ(r.step, "TrackAtOnceFromTree");
    EXPECT_EQ(r.exception, EN_SCSI_CDB_FAILED);
    EXPECT_EQ(r.senseKey, 0x05);

    Fresh("medium=dvd-rw-ro");
    ASSERT_TRUE(client.Burn({a}, false, true).ok());
    r = client.Burn({Folder("B", {{"b.txt", "b"}})}, true);
    ASSERT_TRUE(r.ok()) << r.step << ": " << r.text;
    EXPECT_EQ(ReadImage(image).count("/A/a.txt"), 1u);
}

TEST_F(DiscLibraryTest, RewritableMediaEraseAndWriteOnceMediaRefuse) {
    ASSERT_TRUE(client.Burn({Folder("A", {{"a.txt", "a"}})}).ok());
    BurnOutcome r = client.Erase();
    EXPECT_EQ(r.exception, EN_INVALID_STATE) << r.text;
    Fresh("medium=cd-rw");
    ASSERT_TRUE(client.Burn({Folder("A", {{"a.txt", "a"}})}).ok());
    ASSERT_TRUE(client.Erase().ok());
    const DiscFacts disc = client.Inspect();
    EXPECT_EQ(disc.info.discStatus, DISC_STATUS_EMPTY);
    EXPECT_TRUE(disc.info.erasable);
    EXPECT_EQ(fs::file_size(image), 0u);
}

TEST_F(DiscLibraryTest, FaultsFailTheRightStepAndLeaveNoReadableHalfSession) {
    const struct {
        const char* settings;
        const char* step;
        EXCEPTION_NUMBER exception;
        std::uint8_t senseKey;
        bool imageReadable;  // what a reader sees in the medium afterwards
    } cases[] = {
        {"fault.no-medium=yes", "TestUnitReady", EN_SCSI_CDB_FAILED, 0x02, false},
        {"medium=none", "TestUnitReady", EN_SCSI_CDB_FAILED, 0x02, false},
        {"fault.write-error=50%", "TrackAtOnceFromTree", EN_SCSI_CDB_FAILED, 0x03, false},
        {"fault.write-error=0", "TrackAtOnceFromTree", EN_SCSI_CDB_FAILED, 0x03, false},
        {"fault.close=yes", "CloseSession", EN_SCSI_CDB_FAILED, 0x03, false},
        {"fault.free-blocks=10", "TrackAtOnceFromTree", EN_FILE_TOO_BIG, 0, false},
        {"tao=no", "TrackAtOnceFromTree", EN_SCSI_CDB_FAILED, 0x05, false},
        {"medium=dvd-rom", "TrackAtOnceFromTree", EN_SCSI_CDB_FAILED, 0x05, false},
        {"fault.opc=yes;fault.speeds=yes", "", EN_SUCCESS, 0, true},  // neither is part of this flow's failure
    };
    const fs::path study = Folder("S", {{"big.bin", std::string(300000, 'x')}});
    for (const auto& c : cases) {
        Fresh(std::string("medium=dvd+r;") + c.settings);
        BurnOutcome r = client.Burn({study});
        EXPECT_EQ(r.step, c.step) << c.settings << ": " << r.text;
        EXPECT_EQ(r.exception, c.exception) << c.settings;
        EXPECT_FALSE(c.exception != EN_SUCCESS && r.text.empty()) << c.settings;
        EXPECT_EQ(r.senseKey, c.senseKey) << c.settings;
        std::string why;
        EXPECT_EQ(!ReadImage(image, &why).empty(), c.imageReadable) << c.settings << ": " << why;
    }
}

TEST_F(DiscLibraryTest, UnitBecomingReadyAnswersReadyLater) {
    Use("fault.not-ready=2");
    uc::exporting::DiscObject burner = nullptr;
    ASSERT_TRUE(client.lib.CreateBurner({}, burner, nullptr).ok());
    for (int i = 0; i < 2; ++i) {
        const auto r = client.lib.TestUnitReady(burner);
        EXPECT_EQ(r.exception, EN_SCSI_CDB_FAILED);
        EXPECT_EQ(r.senseKey * 0x10000 + r.asc * 0x100 + r.ascq, 0x020401);  // "becoming ready"
    }
    const auto ready = client.lib.TestUnitReady(burner);
    EXPECT_TRUE(ready.ok() && ready.senseKey == 0);
    client.lib.Destroy(burner);
    EXPECT_EQ(burner, nullptr);
}

TEST_F(DiscLibraryTest, BadInputGivesClearFailures) {
    // A configuration mistake names its line; nothing is opened.
    Use("medium=floppy");
    BurnOutcome r = client.Burn({root});
    EXPECT_EQ(r.step, "Create");
    EXPECT_NE(r.text.find("floppy"), std::string::npos) << r.text;

    // A device that does not exist.
    Use("devices=1");
    uc::exporting::DiscObject burner = nullptr, tree = nullptr, added = nullptr;
    EXPECT_EQ(client.lib.CreateBurner({0, 0, 3, 0}, burner, nullptr).exception, EN_NOT_FOUND);
    EXPECT_EQ(burner, nullptr);
    EXPECT_EQ(client.lib.FindDevices().size(), 1u);

    // Names Joliet cannot hold, missing sources, and a source that vanishes between building and writing.
    ASSERT_TRUE(client.lib.CreateTree(tree).ok());
    EXPECT_EQ(client.lib.AddFolder(tree, nullptr, std::string(65, 'n'), added).exception, EN_PATH_TOO_LONG);
    r.text = client.lib.AddFromDisk(tree, nullptr, PathUtf8(root / "no such folder"), "", added).text;
    EXPECT_NE(r.text.find("no such folder"), std::string::npos) << r.text;
    const fs::path vanishing = Folder("V", {{"gone.bin", std::string(10000, 'g')}});
    ASSERT_TRUE(client.lib.AddFromDisk(tree, nullptr, PathUtf8(vanishing), "", added).ok());
    ASSERT_TRUE(client.lib.BuildImage(tree, 0, "V", "V", "V").ok());
    fs::remove(vanishing / "gone.bin");
    ASSERT_TRUE(client.lib.CreateBurner({}, burner, nullptr).ok());
    r.text = client.lib.TrackAtOnceFromTree(burner, tree, true).text;
    EXPECT_NE(r.text.find("gone.bin"), std::string::npos) << r.text;
    client.lib.Destroy(tree);
    client.lib.Destroy(burner);
    EXPECT_TRUE(ReadImage(image).empty());
}

TEST_F(DiscLibraryTest, AnImageFromElsewhereCanBeTheAppendableDiscAndADamagedStateIsRefused) {
    ASSERT_TRUE(client.Burn({Folder("Old", {{"old.txt", "old"}})}).ok());
    fs::remove(image.string() + ".medium");  // only the image is left, as if another program had written it
    Use("medium=dvd+r;state=appendable");
    BurnOutcome r = client.Burn({Folder("New", {{"new.txt", "new"}})}, /*append=*/true);
    ASSERT_TRUE(r.ok()) << r.step << ": " << r.text;
    const auto files = ReadImage(image);
    EXPECT_EQ(files.at("/Old/old.txt"), "old");
    EXPECT_EQ(files.at("/New/new.txt"), "new");

    std::ofstream(image.string() + ".medium") << "medium dvd+r\ntrack 0 zz\n";
    r = client.Burn({root / "source"}, true);
    EXPECT_EQ(r.step, "Create");
    EXPECT_EQ(r.exception, EN_UNRECOGNIZED_MEDIA);
    EXPECT_NE(r.text.find("line 2"), std::string::npos) << r.text;
}

}  // namespace
}  // namespace uc::test
