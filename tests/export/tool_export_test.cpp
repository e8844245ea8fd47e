// uctool "export": sizes of a selection, usage errors, and burns into images through the simulated library, read
// back with xorriso (a reader no one here wrote) when it is installed.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "export_test_support.h"
#include "platform/text.h"
#include "support/tool_run.h"

namespace {
using namespace uc::test;
namespace fs = std::filesystem;

bool Contains(const std::wstring& text, const std::wstring& part) { return text.find(part) != std::wstring::npos; }

class ExportCommand : public testing::Test {
protected:
    ToolRun Export(const uctool::Args& args) { return RunTool(L"export", args); }
    TempDir dir;
    SampleArchive archive{dir};
};

TEST_F(ExportCommand, SizeListsWhatTheQueueWouldHoldAndItsTotal) {
    dir.write(L"loose/a.txt", std::string(3000, 'a'));
    const ToolRun r = Export({L"size", archive.patient, dir.file(L"loose")});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Contains(r.out, L"patient " + Dir(archive.patient)));
    EXPECT_TRUE(Contains(r.out, L"3000  " + dir.file(L"loose/a.txt")));
    EXPECT_TRUE(Contains(r.out, L"total: 8 files, ")) << r.out;
    EXPECT_TRUE(Contains(r.out, L" KB\n")) << r.out;
}

TEST_F(ExportCommand, BadUsageSaysHow) {
    const uctool::Args usage[] = {{}, {L"size"}, {L"burn", dir.path()},
                                  {L"burn", dir.path(), L"--image", dir.file(L"x.iso"), L"--convert", L"png"}};
    for (const auto& args : usage) EXPECT_EQ(Export(args).code, 2) << args.size();
    const ToolRun missing = Export({L"size", dir.file(L"nowhere")});
    EXPECT_EQ(missing.code, 1);
    EXPECT_TRUE(Contains(missing.err, L"is not a folder"));
    const ToolRun exists = Export({L"burn", dir.path(), L"--image", dir.write(L"taken.iso", "x")});
    EXPECT_EQ(exists.code, 1);
    EXPECT_TRUE(Contains(exists.err, L"--append")) << exists.err;
}

#ifndef _WIN32
// The image's files as xorriso lists them (Joliet names, one quoted path a line); "?" without xorriso.
std::string ListImage(const std::wstring& image) {
    if (std::system("xorriso -version >/dev/null 2>&1") != 0) return "?";
    std::string listing;
    if (FILE* p = ::popen(("xorriso -indev '" + uc::ToUtf8(image) + "' -find / -type f 2>/dev/null").c_str(), "r")) {
        char buffer[4096];
        while (std::fgets(buffer, sizeof buffer, p)) listing += buffer;
        ::pclose(p);
    }
    return listing;
}
bool Holds(const std::string& listing, const std::string& path) {
    return listing == "?" || listing.find(path) != std::string::npos;
}

TEST_F(ExportCommand, BurnsAnImageThatAThirdPartyReaderOpensAndAppendsASession) {
    const std::wstring image = dir.file(L"out/export.iso");
    fs::create_directories(uc::ToFsPath(dir.file(L"out")));
    ToolRun r = Export({L"burn", archive.patient, L"--image", image, L"--export-folder", L"Exports"});
    ASSERT_EQ(r.code, 0) << uc::ToUtf8(r.out) << uc::ToUtf8(r.err);
    EXPECT_TRUE(Contains(r.out, L"utilscontrols.burn.buildisomsg"));
    EXPECT_FALSE(fs::exists(uc::ToFsPath(image + L".staging")));
    std::string listing = ListImage(image);
    for (const char* f : {"'/Exports/", "/P1/patient.xml", "/P1/S1/img1.bmp", "/P1/S1/deep/er/clip.avi", "/P1/S2/rpt.xml"})
        EXPECT_TRUE(Holds(listing, f)) << f << " missing from\n" << listing;

    // A second session keeps the first one's files.
    dir.write(L"second/S9/study.xml", "<study/>");
    r = Export({L"burn", dir.file(L"second/S9"), L"--image", image, L"--append"});
    ASSERT_EQ(r.code, 0) << uc::ToUtf8(r.out) << uc::ToUtf8(r.err);
    listing = ListImage(image);
    EXPECT_TRUE(Holds(listing, "/P1/S1/img1.bmp") && Holds(listing, "/S9/study.xml")) << listing;
}

// The erase/append table against the simulated library: the medium's state decides, the answers come from flags.
TEST_F(ExportCommand, TheMediumDecidesBetweenWritingAppendingAndErasing) {
    dir.write(L"second/S9/study.xml", "<study/>");
    const struct {
        const wchar_t* medium;
        std::vector<std::wstring> flags;
        bool keepsFirst;  // the first session's files are still in the image
    } cases[] = {
        {L"cd-rw", {L"--append"}, true},              // appendable rewritable, answered No: append
        {L"cd-rw", {L"--append", L"--erase"}, false}, // answered Yes: erase, then write
        {L"dvd-r", {L"--append"}, true},              // appendable write-once: append without asking
    };
    int n = 0;
    for (const auto& c : cases) {
        const std::wstring image = dir.file(L"m" + std::to_wstring(n++) + L".iso");
        ASSERT_EQ(Export({L"burn", archive.patient, L"--image", image, L"--medium", c.medium}).code, 0);
        uctool::Args second = {L"burn", dir.file(L"second/S9"), L"--image", image, L"--medium", c.medium};
        second.insert(second.end(), c.flags.begin(), c.flags.end());
        const ToolRun r = Export(second);
        EXPECT_EQ(r.code, 0) << uc::ToUtf8(c.medium) << uc::ToUtf8(r.err);
        const std::string listing = ListImage(image);
        EXPECT_TRUE(Holds(listing, "/S9/study.xml")) << listing;
        EXPECT_TRUE(listing == "?" || (listing.find("/P1/S1/img1.bmp") != std::string::npos) == c.keepsFirst)
            << uc::ToUtf8(c.medium) << listing;
    }
    // A closed write-once disc is refused and left as it was.
    const std::wstring image = dir.file(L"closed.iso");
    ASSERT_EQ(Export({L"burn", archive.patient, L"--image", image}).code, 0);
    fs::remove(uc::ToFsPath(image + L".medium"));  // the image alone, given as a closed disc
    const auto size = fs::file_size(uc::ToFsPath(image));
    ::setenv("UC_STARBURN_SET", "state=closed", 1);
    const ToolRun r = Export({L"burn", dir.file(L"second/S9"), L"--image", image, L"--append"});
    ::unsetenv("UC_STARBURN_SET");
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(Contains(r.out, L"utilscontrols.burn.readonlymsg")) << uc::ToUtf8(r.out);
    EXPECT_EQ(fs::file_size(uc::ToFsPath(image)), size);
}

TEST_F(ExportCommand, AFailedBurnLeavesNoImageBehind) {
    const std::wstring image = dir.file(L"failed.iso");
    for (const char* fault : {"fault.no-medium=yes", "fault.write-error=50%", "fault.close=yes", "capacity=20"}) {
        ::setenv("UC_STARBURN_SET", fault, 1);
        const ToolRun r = Export({L"burn", archive.patient, L"--image", image, L"--medium", L"cd-r"});
        EXPECT_EQ(r.code, 1) << fault;
        EXPECT_TRUE(Contains(r.err, L"the burn failed")) << fault;
        EXPECT_FALSE(fs::exists(uc::ToFsPath(image)) || fs::exists(uc::ToFsPath(image + L".medium"))) << fault;
    }
    ::unsetenv("UC_STARBURN_SET");
}
#endif

}  // namespace
