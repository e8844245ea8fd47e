// The UPS's pure rules: reply extraction at the carriage return, level parsing and averaging, levels, port order.
#include <gtest/gtest.h>

#include <string>

#include "platform/serial/circular_buffer.h"
#include "power/ups_protocol.h"

namespace {
namespace ups = uc::power::ups;

struct Buf {
    CCircularBuffer b{2048};
    explicit Buf(const std::string& s) { Add(s); }
    void Add(const std::string& s) { b.Write(reinterpret_cast<const unsigned char*>(s.data()), static_cast<unsigned>(s.size())); }
    ups::ReplyResult Take(unsigned length, std::string& out) {
        unsigned char reply[16] = {};
        unsigned size = 0;
        auto r = ups::TakeReply(b, length, reply, size);
        out.assign(reinterpret_cast<char*>(reply), size);
        return r;
    }
};

TEST(UpsReplies, CutAtTheCarriageReturnWhichIsConsumed) {
    Buf b("85\r1\r");
    std::string s;
    ASSERT_EQ(b.Take(3, s), ups::ReplyResult::Reply);
    EXPECT_EQ(s, "85");
    ASSERT_EQ(b.Take(1, s), ups::ReplyResult::Reply);
    EXPECT_EQ(s, "1");
    EXPECT_EQ(b.Take(1, s), ups::ReplyResult::NoData);
}

TEST(UpsReplies, EmptyReplyIsAReply) {
    Buf b("\r");
    std::string s = "x";
    ASSERT_EQ(b.Take(3, s), ups::ReplyResult::Reply);
    EXPECT_EQ(s, "");
}

TEST(UpsReplies, PartialReplyWaitsForMore) {
    Buf b("10");
    std::string s;
    EXPECT_EQ(b.Take(3, s), ups::ReplyResult::NeedMore);
    EXPECT_EQ(b.b.GetValidCount(), 2u);
    b.Add("0\r");
    ASSERT_EQ(b.Take(3, s), ups::ReplyResult::Reply);
    EXPECT_EQ(s, "100");
}

TEST(UpsReplies, TooLongReplyIsDiscardedWhole) {
    Buf b("1234\rXY");
    std::string s;
    EXPECT_EQ(b.Take(3, s), ups::ReplyResult::TooLong);
    EXPECT_TRUE(b.b.IsEmpty()) << "everything buffered goes, not just the first bytes";
    Buf ok("OK\r");
    ASSERT_EQ(ok.Take(2, s), ups::ReplyResult::Reply);
    Buf longer("OKX\r");
    EXPECT_EQ(longer.Take(2, s), ups::ReplyResult::TooLong);
}

TEST(UpsReplies, ReplyOfExactlyTheAllowedLength) {
    Buf b("100\r");
    std::string s;
    ASSERT_EQ(b.Take(3, s), ups::ReplyResult::Reply);
    EXPECT_EQ(s, "100");
}

TEST(UpsLevels, ParseAverageAndIgnoreOutOfRange) {
    int v = 0;
    EXPECT_TRUE(ups::ParseBatteryLevel("85", v));
    EXPECT_EQ(v, 85);
    EXPECT_TRUE(ups::ParseBatteryLevel("-5", v));
    EXPECT_EQ(v, -5);
    EXPECT_TRUE(ups::ParseBatteryLevel("7x", v));
    EXPECT_EQ(v, 7);
    EXPECT_FALSE(ups::ParseBatteryLevel("", v));
    EXPECT_FALSE(ups::ParseBatteryLevel("OK", v)) << "no digits is no reading, not 0 %";
    EXPECT_EQ(ups::AverageLevel({50, 60}), 55);
    EXPECT_EQ(ups::AverageLevel({33, 33, 34}), 33) << "truncated";
    EXPECT_EQ(ups::AverageLevel({101, -5}), -1);
    EXPECT_EQ(ups::AverageLevel({}), -1);
    EXPECT_EQ(ups::AverageLevel({0, 100, 101}), 50);
}

TEST(UpsLevels, WarningLevelsWithTheDefaultThresholds) {
    EXPECT_EQ(ups::WarningLevelFor(35, 35, 20, 10), 0);
    EXPECT_EQ(ups::WarningLevelFor(34, 35, 20, 10), 1);
    EXPECT_EQ(ups::WarningLevelFor(20, 35, 20, 10), 1);
    EXPECT_EQ(ups::WarningLevelFor(19, 35, 20, 10), 2);
    EXPECT_EQ(ups::WarningLevelFor(10, 35, 20, 10), 2);
    EXPECT_EQ(ups::WarningLevelFor(9, 35, 20, 10), 3);
    EXPECT_EQ(ups::WarningLevelFor(-1, 35, 20, 10), 3) << "no reading is critical";
}

TEST(UpsLevels, PowerSourceReplies) {
    EXPECT_EQ(ups::PowerSourceFromReply("1"), 1);
    EXPECT_EQ(ups::PowerSourceFromReply("0"), 0);
    EXPECT_EQ(ups::PowerSourceFromReply("2"), 2);
    EXPECT_EQ(ups::PowerSourceFromReply(""), 2);
}

TEST(UpsPorts, SavedPortFirstThenTheScanWithoutExcludedPorts) {
    auto order = ups::PortSearchOrder(5, 3, 7);
    ASSERT_EQ(order.front(), 5);
    EXPECT_EQ(std::count(order.begin(), order.end(), 5), 1);
    EXPECT_EQ(std::count(order.begin(), order.end(), 3), 0);
    EXPECT_EQ(std::count(order.begin(), order.end(), 7), 0);
    EXPECT_EQ(order.size(), 1u + 21u - 3u);
    EXPECT_EQ(order[1], 0);
    EXPECT_EQ(order.back(), 20);
}

TEST(UpsPorts, SavedPortEqualToTouchScreenIsNeverTried) {
    auto order = ups::PortSearchOrder(4, 4, -1);
    EXPECT_EQ(order.front(), 0);
    EXPECT_EQ(std::count(order.begin(), order.end(), 4), 0);
    EXPECT_EQ(order.size(), 20u);
}

TEST(UpsPorts, NothingSavedNothingExcluded) {
    auto order = ups::PortSearchOrder(255, 255, -1);
    ASSERT_EQ(order.size(), 21u);
    for (int i = 0; i <= 20; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    EXPECT_EQ(ups::PortSearchOrder(30, 255, -1).front(), 30) << "a saved port beyond the scan is still tried";
}

}  // namespace
