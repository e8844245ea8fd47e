// BalloonMessageService: what was shown is recorded (bounded), counted, logged and handed to the presenter.
#include <gtest/gtest.h>

#include <vector>

#include "platform/balloon.h"
#include "platform/logger.h"

namespace {

TEST(Balloon, RecordsPresentsAndLogs) {
    BalloonMessageService::ClearHistory();
    zelLogger::Instance().ClearEntries();
    std::vector<std::wstring> presented;
    BalloonMessageService::SetPresenter([&](const BalloonMessageService::Balloon& b) { presented.push_back(b.title); });
    BalloonMessageService("/src/power/battery_monitor.cpp", 42, true, 2)(5000, L"Title", L"a\nb");
    BalloonMessageService::SetPresenter(nullptr);
    BalloonMessageService(__FILE__, __LINE__, false, 1)(100, nullptr, nullptr);
    ASSERT_EQ(BalloonMessageService::Count(), 2u);
    const auto history = BalloonMessageService::History();
    EXPECT_EQ(history[0].file, "battery_monitor.cpp");
    EXPECT_EQ(history[0].line, 42);
    EXPECT_EQ(history[0].text, L"a\nb");
    EXPECT_EQ(history[1].title, L"") << "missing texts are empty, not a crash";
    EXPECT_EQ(presented, std::vector<std::wstring>{L"Title"}) << "only while a presenter is set";
    EXPECT_EQ(zelLogger::Instance().Count(L"Balloon (5000 ms): Title"), 1u);
}

TEST(Balloon, HistoryIsBoundedButTheCountIsNot) {
    BalloonMessageService::ClearHistory();
    const std::size_t n = BalloonMessageService::HistoryCapacity + 10;
    for (std::size_t i = 0; i < n; ++i)
        BalloonMessageService(__FILE__, __LINE__, true, 2)(1, std::to_wstring(i).c_str(), L"");
    EXPECT_EQ(BalloonMessageService::Count(), n);
    const auto history = BalloonMessageService::History();
    ASSERT_EQ(history.size(), BalloonMessageService::HistoryCapacity);
    EXPECT_EQ(history.front().title, L"10") << "oldest entries go first";
    EXPECT_EQ(history.back().title, std::to_wstring(n - 1));
    BalloonMessageService::ClearHistory();
    EXPECT_EQ(BalloonMessageService::Count(), 0u);
}

}  // namespace
