// uctool "export": sizes of a selection, usage errors, and a burn into an image through the simulated library,
// read back with xorriso (a reader no one here wrote) when it is installed.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "command.h"
#include "export_test_support.h"
#include "platform/text.h"

namespace {
using namespace uc::test;

struct Result {
    int code;
    std::wstring out, err;
};

Result Tool(uctool::Args args) {
    std::wostringstream out, err;
    const int code = uctool::Dispatch(args, out, err);
    return {code, out.str(), err.str()};
}

bool Contains(const std::wstring& text, const std::wstring& part) { return text.find(part) != std::wstring::npos; }

TEST(ExportCommand, SizeListsWhatTheQueueWouldHoldAndItsTotal) {
    TempDir dir;
    SampleArchive archive(dir);
    dir.write(L"loose/a.txt", std::string(3000, 'a'));
    const Result r = Tool({L"export", L"size", archive.patient, dir.file(L"loose")});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Contains(r.out, L"patient " + Dir(archive.patient)));
    EXPECT_TRUE(Contains(r.out, L"3000  " + dir.file(L"loose/a.txt")));
    EXPECT_TRUE(Contains(r.out, L"total: 8 files, ")) << r.out;
    EXPECT_TRUE(Contains(r.out, L" KB\n")) << r.out;
}

TEST(ExportCommand, BadUsageSaysHow) {
    TempDir dir;
    EXPECT_EQ(Tool({L"export"}).code, 2);
    EXPECT_EQ(Tool({L"export", L"size"}).code, 2);
    EXPECT_EQ(Tool({L"export", L"burn", dir.path()}).code, 2);  // no image
    EXPECT_EQ(Tool({L"export", L"burn", dir.path(), L"--image", dir.file(L"x.iso"), L"--convert", L"png"}).code, 2);
    const Result missing = Tool({L"export", L"size", dir.file(L"nowhere")});
    EXPECT_EQ(missing.code, 1);
    EXPECT_TRUE(Contains(missing.err, L"is not a folder"));
    dir.write(L"taken.iso", "x");
    const Result exists = Tool({L"export", L"burn", dir.path(), L"--image", dir.file(L"taken.iso")});
    EXPECT_EQ(exists.code, 1);
    EXPECT_TRUE(Contains(exists.err, L"--append")) << exists.err;
}

#ifndef _WIN32
// Lists the image's Joliet tree with xorriso; empty when xorriso is not installed.
std::string ListImage(const std::wstring& image) {
    const std::string command = "xorriso -indev '" + uc::ToUtf8(image) + "' -find / -type f 2>/dev/null";
    std::string listing;
    if (FILE* p = ::popen(command.c_str(), "r")) {
        char buffer[4096];
        while (std::fgets(buffer, sizeof buffer, p)) listing += buffer;
        ::pclose(p);
    }
    return listing;
}

TEST(ExportCommand, BurnsAnImageThatAThirdPartyReaderOpensAndAppendsASession) {
    TempDir dir;
    SampleArchive archive(dir);
    const std::wstring image = dir.file(L"out/export.iso");
    std::filesystem::create_directories(uc::ToFsPath(dir.file(L"out")));
    Result r = Tool({L"export", L"burn", archive.patient, L"--image", image, L"--export-folder", L"Exports"});
    ASSERT_EQ(r.code, 0) << uc::ToUtf8(r.out) << uc::ToUtf8(r.err);
    EXPECT_TRUE(Contains(r.out, L"utilscontrols.burn.buildisomsg"));
    EXPECT_FALSE(std::filesystem::exists(uc::ToFsPath(image + L".staging")));

    if (std::system("xorriso -version >/dev/null 2>&1") != 0) GTEST_SKIP() << "xorriso is not installed";
    std::string listing = ListImage(image);
    for (const char* f : {"/P1/patient.xml", "/P1/S1/img1.bmp", "/P1/S1/deep/er/clip.avi", "/P1/S2/rpt.xml"})
        EXPECT_NE(listing.find(f), std::string::npos) << f << " missing from\n" << listing;
    EXPECT_NE(listing.find("'/Exports/"), std::string::npos) << listing;

    // A second session keeps the first one's files.
    dir.write(L"second/S9/study.xml", "<study/>");
    r = Tool({L"export", L"burn", dir.file(L"second/S9"), L"--image", image, L"--append"});
    ASSERT_EQ(r.code, 0) << uc::ToUtf8(r.out) << uc::ToUtf8(r.err);
    listing = ListImage(image);
    EXPECT_NE(listing.find("/P1/S1/img1.bmp"), std::string::npos) << listing;
    EXPECT_NE(listing.find("/S9/study.xml"), std::string::npos) << listing;
}

// The erase/append table against the simulated library: the medium's state decides, the answers come from flags.
TEST(ExportCommand, TheMediumDecidesBetweenWritingAppendingAndErasing) {
    TempDir dir;
    SampleArchive archive(dir);
    dir.write(L"second/S9/study.xml", "<study/>");
    struct Case {
        const wchar_t* medium;
        std::vector<std::wstring> flags;
        int code;
        bool keepsFirst;  // the first session's files are still in the image
    } cases[] = {
        {L"cd-rw", {L"--append"}, 0, true},             // appendable rewritable, answered No: append
        {L"cd-rw", {L"--append", L"--erase"}, 0, false}, // answered Yes: erase, then write
        {L"dvd-r", {L"--append"}, 0, true},             // appendable write-once: append without asking
    };
    int n = 0;
    for (const Case& c : cases) {
        const std::wstring image = dir.file(L"m" + std::to_wstring(n++) + L".iso");
        ASSERT_EQ(Tool({L"export", L"burn", archive.patient, L"--image", image, L"--medium", c.medium}).code, 0);
        uctool::Args second = {L"export", L"burn", dir.file(L"second/S9"), L"--image", image, L"--medium", c.medium};
        second.insert(second.end(), c.flags.begin(), c.flags.end());
        const Result r = Tool(second);
        EXPECT_EQ(r.code, c.code) << uc::ToUtf8(c.medium) << uc::ToUtf8(r.err);
        if (std::system("xorriso -version >/dev/null 2>&1") != 0) continue;
        const std::string listing = ListImage(image);
        EXPECT_NE(listing.find("/S9/study.xml"), std::string::npos) << listing;
        EXPECT_EQ(listing.find("/P1/S1/img1.bmp") != std::string::npos, c.keepsFirst) << uc::ToUtf8(c.medium) << listing;
    }
    // A closed write-once disc is refused and left as it was.
    const std::wstring image = dir.file(L"closed.iso");
    ASSERT_EQ(Tool({L"export", L"burn", archive.patient, L"--image", image}).code, 0);
    std::filesystem::remove(uc::ToFsPath(image + L".medium"));  // the image alone, given as a closed disc
    const auto size = std::filesystem::file_size(uc::ToFsPath(image));
    ::setenv("UC_STARBURN_SET", "state=closed", 1);
    const Result r = Tool({L"export", L"burn", dir.file(L"second/S9"), L"--image", image, L"--append"});
    ::unsetenv("UC_STARBURN_SET");
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(Contains(r.out, L"utilscontrols.burn.readonlymsg")) << uc::ToUtf8(r.out);
    EXPECT_EQ(std::filesystem::file_size(uc::ToFsPath(image)), size);
}

TEST(ExportCommand, AFailedBurnLeavesNoImageBehind) {
    TempDir dir;
    SampleArchive archive(dir);
    const std::wstring image = dir.file(L"failed.iso");
    for (const char* fault : {"fault.no-medium=yes", "fault.write-error=50%", "fault.close=yes", "capacity=20"}) {
        ::setenv("UC_STARBURN_SET", fault, 1);
        const Result r = Tool({L"export", L"burn", archive.patient, L"--image", image, L"--medium", L"cd-r"});
        EXPECT_EQ(r.code, 1) << fault;
        EXPECT_TRUE(Contains(r.err, L"the burn failed")) << fault;
        EXPECT_FALSE(std::filesystem::exists(uc::ToFsPath(image))) << fault;
        EXPECT_FALSE(std::filesystem::exists(uc::ToFsPath(image + L".medium"))) << fault;
    }
    ::unsetenv("UC_STARBURN_SET");
}
#endif

}  // namespace
