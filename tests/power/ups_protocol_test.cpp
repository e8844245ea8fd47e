// The UPS's pure rules: reply extraction at the carriage return, level parsing and averaging, levels, port order.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/serial/circular_buffer.h"
#include "power/ups_protocol.h"

namespace {
namespace ups = uc::power::ups;
using R = ups::ReplyResult;

struct Buf {
    CCircularBuffer b{2048};
    explicit Buf(const std::string& s) { Add(s); }
    void Add(const std::string& s) { b.Write(reinterpret_cast<const unsigned char*>(s.data()), static_cast<unsigned>(s.size())); }
    R Take(unsigned length, std::string& out) {
        unsigned char reply[16] = {};
        unsigned size = 0;
        auto r = ups::TakeReply(b, length, reply, size);
        out.assign(reinterpret_cast<char*>(reply), size);
        return r;
    }
};

TEST(UpsReplies, CutAtTheCarriageReturnWithinTheAllowedLength) {
    const struct {
        const char* in;
        unsigned length;
        R result;
        const char* reply;
        unsigned left;
    } cases[] = {
        {"85\r1\r", 3, R::Reply, "85", 2}, {"\r", 3, R::Reply, "", 0},       {"100\r", 3, R::Reply, "100", 0},
        {"OK\r", 2, R::Reply, "OK", 0},     {"OKX\r", 2, R::TooLong, "", 0}, {"1234\rXY", 3, R::TooLong, "", 0},
        {"10", 3, R::NeedMore, "", 2},      {"", 1, R::NoData, "", 0},
    };
    for (const auto& c : cases) {
        Buf b(c.in);
        std::string s = "x";
        EXPECT_EQ(b.Take(c.length, s), c.result) << c.in;
        EXPECT_EQ(s, c.reply) << c.in;
        EXPECT_EQ(b.b.GetValidCount(), c.left) << c.in << ": the carriage return is consumed, a too-long reply whole";
    }
    Buf b("10");
    std::string s;
    ASSERT_EQ(b.Take(3, s), R::NeedMore);
    b.Add("0\r");
    ASSERT_EQ(b.Take(3, s), R::Reply);
    EXPECT_EQ(s, "100") << "a partial reply is completed by what follows";
}

TEST(UpsLevels, ParseAverageAndWarn) {
    const std::pair<const char*, int> parsed[] = {{"85", 85}, {"-5", -5}, {"7x", 7}, {" +9", 9}, {"", -99}, {"OK", -99}};
    for (auto [text, want] : parsed) {
        int v = -99;
        EXPECT_EQ(ups::ParseBatteryLevel(text, v), want != -99) << text << ": no digits is no reading, not 0 %";
        EXPECT_EQ(v, want) << text;
    }
    EXPECT_EQ(ups::AverageLevel({50, 60}), 55);
    EXPECT_EQ(ups::AverageLevel({33, 33, 34}), 33) << "truncated";
    EXPECT_EQ(ups::AverageLevel({101, -5}), -1);
    EXPECT_EQ(ups::AverageLevel({}), -1);
    EXPECT_EQ(ups::AverageLevel({0, 100, 101}), 50);
    const std::pair<int, int> levels[] = {{35, 0}, {34, 1}, {20, 1}, {19, 2}, {10, 2}, {9, 3}, {-1, 3}};
    for (auto [percent, level] : levels) EXPECT_EQ(ups::WarningLevelFor(percent, 35, 20, 10), level) << percent;
    EXPECT_EQ(ups::PowerSourceFromReply("1"), 1);
    EXPECT_EQ(ups::PowerSourceFromReply("0"), 0);
    EXPECT_EQ(ups::PowerSourceFromReply("2"), 2);
    EXPECT_EQ(ups::PowerSourceFromReply(""), 2);
}

TEST(UpsPorts, SavedPortFirstThenTheScanWithoutExcludedPorts) {
    auto order = ups::PortSearchOrder(5, 3, 7);
    ASSERT_EQ(order.size(), 1u + 21u - 3u);
    EXPECT_EQ(order.front(), 5);
    EXPECT_EQ(order[1], 0);
    EXPECT_EQ(order.back(), 20);
    for (int excluded : {3, 7}) EXPECT_EQ(std::count(order.begin(), order.end(), excluded), 0) << excluded;
    EXPECT_EQ(std::count(order.begin(), order.end(), 5), 1);
    order = ups::PortSearchOrder(4, 4, -1);
    EXPECT_EQ(order.front(), 0) << "a saved port equal to the touch screen's is never tried";
    EXPECT_EQ(order.size(), 20u);
    order = ups::PortSearchOrder(255, 255, -1);
    ASSERT_EQ(order.size(), 21u);
    for (int i = 0; i <= 20; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    EXPECT_EQ(ups::PortSearchOrder(30, 255, -1).front(), 30) << "a saved port beyond the scan is still tried";
}

}  // namespace
