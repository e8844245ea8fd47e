// Images from the simulated library, read by a reader nobody here wrote (xorriso): every name and every byte.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "export/simulator/file_tree.h"
#include "export/simulator/iso_names.h"
#include "simulator/starburn_client.h"
#include "platform/text.h"
#include "support/temp_dir.h"

namespace uc::test {
namespace {

namespace fs = std::filesystem;
using disc::PathUtf8;

// Path below `root` -> size for every file, "/" for every folder.
std::map<std::string, std::string> Listing(const fs::path& root) {
    std::map<std::string, std::string> out;
    for (const auto& e : fs::recursive_directory_iterator(root))
        out[PathUtf8(fs::relative(e.path(), root))] = e.is_directory() ? "/" : std::to_string(fs::file_size(e.path()));
    return out;
}

// Byte-for-byte comparison in chunks. Ranges that are holes in both files read as zeros in both and are
// skipped, so sparse multi-gigabyte files compare in moments.
bool SameBytes(const fs::path& a, const fs::path& b) {
    const int x = ::open(a.c_str(), O_RDONLY), y = ::open(b.c_str(), O_RDONLY);
    struct stat sx {}, sy {};
    bool same = x >= 0 && y >= 0 && ::fstat(x, &sx) == 0 && ::fstat(y, &sy) == 0 && sx.st_size == sy.st_size;
    std::vector<char> p(1 << 20), q(1 << 20);
    for (off_t at = 0; same && at < sx.st_size;) {
        const off_t dx = ::lseek(x, at, SEEK_DATA), dy = ::lseek(y, at, SEEK_DATA);
        const off_t next = std::min(dx < 0 ? sx.st_size : dx, dy < 0 ? sy.st_size : dy);
        if (next > at) {  // a hole in both files up to `next`
            at = next;
            continue;
        }
        const auto n = static_cast<std::size_t>(std::min<off_t>(static_cast<off_t>(p.size()), sx.st_size - at));
        same = ::pread(x, p.data(), n, at) == static_cast<ssize_t>(n) && ::pread(y, q.data(), n, at) == static_cast<ssize_t>(n) &&
               std::memcmp(p.data(), q.data(), n) == 0;
        at += static_cast<off_t>(n);
    }
    if (x >= 0) ::close(x);
    if (y >= 0) ::close(y);
    return same;
}

class XorrisoReadTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("xorriso -version >/dev/null 2>&1") != 0) GTEST_SKIP() << "xorriso is not installed (scripts/setup.sh installs it)";
        ASSERT_TRUE(client.Loaded());
        root = uc::ToFsPath(temp.path());
        image = root / "disc.iso";
        SetWriterSettings("image=" + PathUtf8(image) + ";medium=dvd+r");
    }
    // Extracts the whole image with Joliet names into a fresh folder.
    fs::path Extract(const std::string& name) {
        const fs::path out = root / name;
        const std::string command = "xorriso -abort_on FAILURE -joliet on -indev '" + PathUtf8(image) +
                                    "' -osirrox on:sparse=1m -extract / '" + PathUtf8(out) + "' >'" +
                                    PathUtf8(root / (name + ".log")) + "' 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0) << std::ifstream(root / (name + ".log")).rdbuf();
        return out;
    }
    void ExpectSameTree(const fs::path& source, const fs::path& copy) {
        EXPECT_EQ(Listing(source), Listing(copy));
        for (const auto& e : fs::recursive_directory_iterator(source)) {
            if (e.is_regular_file()) {
                EXPECT_TRUE(SameBytes(e.path(), copy / fs::relative(e.path(), source))) << PathUtf8(e.path());
            }
        }
    }

    TempDir temp;
    StarBurnClient client;
    fs::path root, image;
};

// Every name and byte, and after a second session the old files beside the new.
TEST_F(XorrisoReadTest, EveryJolietNameAndByteMatchesTheSourceInEverySession) {
    const fs::path src = root / "src" / "Export";
    WritePatternFile(src / "IMG0001.JPG", 3 * 1024 * 1024 + 17, 1);
    WritePatternFile(src / "Patient M\xC3\xBCller \xE6\x82\xA3\xE8\x80\x85.xml", 2048, 2);  // exactly one block
    WritePatternFile(src / (std::string(59, 'n') + ".dcm"), 2047, 3);                        // 63 characters
    WritePatternFile(src / "empty.txt", 0, 4);
    WritePatternFile(src / "same name.txt", 10, 5);
    WritePatternFile(src / "Same_Name.txt", 11, 6);  // one ISO 9660 identifier for both; Joliet keeps them apart
    WritePatternFile(src / "a/b/c/d/e/f/g/h/i/j/deep file.bin", 70000, 7);
    fs::create_directories(src / "empty folder");
    BurnOutcome r = client.Burn({src});
    ASSERT_TRUE(r.ok()) << r.step << ": " << r.text;
    ExpectSameTree(root / "src", Extract("out"));

    WritePatternFile(root / "src" / "Study 2" / "second.bin", 100000, 8);
    r = client.Burn({root / "src" / "Study 2"}, /*append=*/true);
    ASSERT_TRUE(r.ok()) << r.step << ": " << r.text;
    ExpectSameTree(root / "src", Extract("appended"));
}

// A 4.5 GiB file takes two ISO 9660 level 3 extents, the first ending past 2 GiB and just short of 4 GiB.
// The source is sparse with marks at the edges and the image is written sparse, so this costs little disk;
// xorriso reports the size it reads from the directory records and cuts out the bytes around every mark.
TEST_F(XorrisoReadTest, FileOverFourGibibytesSurvivesWhole) {
    const fs::path src = root / "big" / "Video" / "five.raw";
    fs::create_directories(src.parent_path());
    const std::uint64_t size = (std::uint64_t(9) << 29) + 1;  // 4.5 GiB
    const std::uint64_t marks[] = {0, std::uint64_t(1) << 31, (std::uint64_t(1) << 32) - 2051, std::uint64_t(1) << 32, size - 5};
    { std::ofstream(src, std::ios::binary); }
    fs::resize_file(src, size);
    {
        std::fstream f(src, std::ios::binary | std::ios::in | std::ios::out);
        for (std::uint64_t at : marks) {
            f.seekp(static_cast<std::streamoff>(at));
            f.write("MARK!", 5);
        }
    }
    SetWriterSettings("image=" + PathUtf8(image) + ";medium=bd-r");  // more than a DVD holds
    BurnOutcome r = client.Burn({src.parent_path()});
    ASSERT_TRUE(r.ok()) << r.step << ": " << r.text;

    // xorriso reads the directory records: the size and where each extent lies.
    const std::string command = "xorriso -abort_on FAILURE -joliet on -indev '" + PathUtf8(image) +
                                "' -lsdl /Video/five.raw -- -find /Video/five.raw -exec report_lba -- >'" +
                                PathUtf8(root / "log") + "' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << std::ifstream(root / "log").rdbuf();
    std::ifstream log(root / "log");
    std::vector<std::pair<std::uint64_t, std::uint64_t>> extents;  // start block, blocks
    bool sized = false;
    for (std::string line; std::getline(log, line);) {
        sized = sized || line.find(" " + std::to_string(size) + " ") != std::string::npos;
        unsigned long long lba = 0, blocks = 0, bytes = 0;
        if (std::sscanf(line.c_str(), "File data lba: %*d , %llu , %llu , %llu ,", &lba, &blocks, &bytes) == 3)
            extents.emplace_back(lba, blocks), sized = sized && bytes == size;
    }
    EXPECT_TRUE(sized);
    ASSERT_EQ(extents.size(), 2u);
    EXPECT_EQ(extents[0].second + extents[1].second, (size + 2047) / 2048);
    const std::uint64_t firstBytes = extents[0].second * 2048;
    EXPECT_GT(firstBytes, std::uint64_t(1) << 31);
    // The bytes at every mark, read where xorriso says the file lies, match the source.
    std::ifstream source(src, std::ios::binary), disc(image, std::ios::binary);
    for (std::uint64_t at : marks) {
        const bool second = at >= firstBytes;
        const std::uint64_t where = (second ? extents[1].first : extents[0].first) * 2048 + (second ? at - firstBytes : at);
        char expected[5], actual[5];
        source.seekg(static_cast<std::streamoff>(at));
        source.read(expected, 5);
        disc.seekg(static_cast<std::streamoff>(where));
        disc.read(actual, 5);
        EXPECT_EQ(std::string(actual, 5), std::string(expected, 5)) << "at " << at;
    }
}

}  // namespace
}  // namespace uc::test
