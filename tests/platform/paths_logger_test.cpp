// Folder service joins and overrides; logger entries, ring buffer, log file and folder creation.
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "platform/logger.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "support/temp_dir.h"

namespace {

#ifdef _WIN32
const wchar_t kSep = L'\\';
#else
const wchar_t kSep = L'/';
#endif

std::wstring Sep(std::wstring s) {
    for (wchar_t& c : s)
        if (c == L'/') c = kSep;
    return s;
}

TEST(Paths, FoldersResolveUnderRootUnlessSet) {
    zelPath::reset();
    zelPath::setRoot(Sep(L"/data/console/"));
    EXPECT_EQ(utilsExam::GetProtocolFile(L"ButtonStyles.xml"), Sep(L"/data/console/protocol/ButtonStyles.xml"));
    EXPECT_EQ(utilsExam::GetImage(L"status/battery1.png"), Sep(L"/data/console/images/status/battery1.png"));
    EXPECT_EQ(zelPath::getPath(23), Sep(L"/data/console/presets/factory"));
    EXPECT_EQ(zelPath::getPath(99, L"x"), Sep(L"/data/console/folder99/x"));
    zelPath::setPath(zelPath::Protocol, Sep(L"/elsewhere"));
    EXPECT_EQ(utilsExam::GetProtocolFile(L"\\a/b.xml"), Sep(L"/elsewhere/a/b.xml"));
    zelPath::setPath(zelPath::Protocol, L"");
    EXPECT_EQ(zelPath::getPath(zelPath::Protocol), Sep(L"/data/console/protocol"));
    zelPath::reset();
    EXPECT_FALSE(zelPath::getRoot().empty());
}

TEST(Logger, KeepsEntriesFormatsAndWritesTheFile) {
    uc::test::TempDir dir;
    zelLogger& log = zelLogger::Instance();
    log.ClearEntries();
    log.SetLogFile(dir.file(L"uc.log"));
    zelLogger::zelLogHelper("C:\\src\\StyleRepository.cpp", 42, zelLogger::Failure)(L"Could not load %s (%d)", L"x.xml", 7);
    UC_LOG(zelLogger::Detail)(L"detail %S", "narrow");
    log.SetLogFile(L"");
    const auto entries = log.Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].file, "StyleRepository.cpp");
    EXPECT_EQ(entries[0].line, 42);
    EXPECT_EQ(entries[0].type, 1);
    EXPECT_EQ(entries[0].text, L"Could not load x.xml (7)");
    EXPECT_EQ(entries[1].text, L"detail narrow");
    const std::string file = dir.read(L"uc.log");
    EXPECT_NE(file.find("[1] StyleRepository.cpp(42): Could not load x.xml (7)\n"), std::string::npos) << file;
    EXPECT_EQ(log.Count(L"Could not load"), 1u);
}

TEST(Logger, RingKeepsTheNewestAndSurvivesThreads) {
    zelLogger& log = zelLogger::Instance();
    log.ClearEntries();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 2000; ++i) UC_LOG(5)(L"t%d i%d", t, i);
        });
    for (auto& th : threads) th.join();
    const auto entries = log.Entries();
    EXPECT_EQ(entries.size(), zelLogger::RecentCapacity);
    UC_LOG(3)(L"last");
    EXPECT_EQ(log.Entries().back().text, L"last");
    EXPECT_EQ(log.Entries().size(), zelLogger::RecentCapacity);
    log.ClearEntries();
}

TEST(Logger, CheckPathCreatesMissingFolders) {
    uc::test::TempDir dir;
    const std::wstring deep = dir.file(Sep(L"a/b/c"));
    EXPECT_TRUE(zelLogger::checkPath(deep));
    EXPECT_TRUE(std::filesystem::is_directory(uc::ToFsPath(deep)));
    EXPECT_TRUE(zelLogger::checkPath(deep));
    const std::wstring file = dir.write(L"plain", "x");
    EXPECT_FALSE(zelLogger::checkPath(file));
    EXPECT_FALSE(zelLogger::checkPath(L""));
}

}  // namespace
