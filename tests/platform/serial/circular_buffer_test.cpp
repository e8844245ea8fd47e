// CCircularBuffer: peeking, consuming, wrap-around, overflow and bulk moves.
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "platform/serial/circular_buffer.h"

namespace {

std::vector<unsigned char> Bytes(std::initializer_list<int> v) { return {v.begin(), v.end()}; }

TEST(CircularBuffer, ReadPeeksWithoutRemovingAndFailsWhenShort) {
    CCircularBuffer b(8);
    auto in = Bytes({1, 2, 3});
    b.Write(in.data(), 3);
    unsigned char out[4] = {};
    EXPECT_TRUE(b.Read(out, 3));
    EXPECT_EQ(out[2], 3);
    EXPECT_EQ(b.GetValidCount(), 3u);
    EXPECT_FALSE(b.Read(out, 4)) << "fewer bytes buffered than asked for";
    EXPECT_TRUE(b.Read(out, 0));
    unsigned char x = 0;
    EXPECT_TRUE(b.Peek(1, x));
    EXPECT_EQ(x, 2);
    EXPECT_FALSE(b.Peek(3, x));
}

TEST(CircularBuffer, WrapsAroundTheEndKeepingOrder) {
    CCircularBuffer b(5);
    for (int round = 0; round < 20; ++round) {
        unsigned char in[3] = {static_cast<unsigned char>(round), static_cast<unsigned char>(round + 1),
                               static_cast<unsigned char>(round + 2)};
        ASSERT_EQ(b.Write(in, 3), 0u);
        unsigned char out[3];
        ASSERT_TRUE(b.Read(out, 3));
        EXPECT_EQ(std::vector<unsigned char>(out, out + 3), std::vector<unsigned char>(in, in + 3));
        b.Consume(3);
        EXPECT_TRUE(b.IsEmpty());
    }
}

TEST(CircularBuffer, ConsumeMoreThanHeldEmptiesIt) {
    CCircularBuffer b(4);
    auto in = Bytes({9, 9});
    b.Write(in.data(), 2);
    b.Consume(10);
    EXPECT_EQ(b.GetValidCount(), 0u);
    EXPECT_EQ(b.GetFreeCount(), 4u);
}

TEST(CircularBuffer, OverflowDropsTheOldestBytes) {
    CCircularBuffer b(4);
    auto in = Bytes({1, 2, 3});
    b.Write(in.data(), 3);
    auto more = Bytes({4, 5, 6});
    EXPECT_EQ(b.Write(more.data(), 3), 2u);
    unsigned char out[4];
    ASSERT_TRUE(b.Read(out, 4));
    EXPECT_EQ(std::vector<unsigned char>(out, out + 4), Bytes({3, 4, 5, 6}));
    std::vector<unsigned char> big(10);
    std::iota(big.begin(), big.end(), 100);
    EXPECT_EQ(b.Write(big.data(), 10), 10u) << "4 held plus 6 of the new bytes are lost";
    ASSERT_TRUE(b.Read(out, 4));
    EXPECT_EQ(std::vector<unsigned char>(out, out + 4), Bytes({106, 107, 108, 109}));
}

TEST(CircularBuffer, ConsumeValidMovesEverythingAcrossTheSourcesWrap) {
    CCircularBuffer src(6), dst(16);
    auto a = Bytes({1, 2, 3, 4, 5});
    src.Write(a.data(), 5);
    src.Consume(4);
    auto b = Bytes({6, 7, 8, 9});
    src.Write(b.data(), 4);  // wraps: 5 at the end, 6..9 at the start
    auto d = Bytes({0});
    dst.Write(d.data(), 1);
    EXPECT_EQ(dst.ConsumeValid(src), 5u);
    EXPECT_TRUE(src.IsEmpty());
    unsigned char out[6];
    ASSERT_TRUE(dst.Read(out, 6));
    EXPECT_EQ(std::vector<unsigned char>(out, out + 6), Bytes({0, 5, 6, 7, 8, 9}));
    EXPECT_EQ(dst.ConsumeValid(dst), 0u) << "moving into itself is a no-op";
}

}  // namespace
