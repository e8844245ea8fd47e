// CSerialConnection over a real line: open/close, bytes both ways, Tokenize per read, closing from anywhere.
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/logger.h"
#include "platform/serial/serial_connection.h"
#include "platform/serial/test_line.h"

namespace {
using namespace std::chrono_literals;

// Collects every byte handed to Tokenize; optionally closes the port from inside it.
class Collector : public CSerialConnection {
public:
    ~Collector() override { Close(true); }
    std::vector<unsigned char> Taken() {
        std::lock_guard<std::mutex> g(m_mutex);
        return m_bytes;
    }
    int Calls() const { return m_calls; }
    std::atomic<bool> closeInside{false};
    std::atomic<unsigned> leaveBehind{0};  // bytes left in the buffer on every call

protected:
    void Tokenize(CCircularBuffer& received) override {
        ++m_calls;
        const unsigned keep = std::min(leaveBehind.load(), received.GetValidCount());
        const unsigned take = received.GetValidCount() - keep;
        std::vector<unsigned char> chunk(take);
        received.Read(chunk.data(), take);
        received.Consume(take);
        {
            std::lock_guard<std::mutex> g(m_mutex);
            m_bytes.insert(m_bytes.end(), chunk.begin(), chunk.end());
        }
        if (closeInside) Close(false);
    }

private:
    std::mutex m_mutex;
    std::vector<unsigned char> m_bytes;
    std::atomic<int> m_calls{0};
};

std::vector<unsigned char> ReadAll(uc::serial::PortBackend& device, std::size_t count) {
    std::vector<unsigned char> out;
    unsigned char chunk[256];
    while (out.size() < count) {
        const int n = device.Read(chunk, sizeof chunk);
        if (n <= 0) break;
        out.insert(out.end(), chunk, chunk + n);
    }
    return out;
}

class SerialConnectionTest : public testing::Test {
protected:
    void SetUp() override {
        std::string why;
        if (!uc::test::LinesAvailable(&why)) GTEST_SKIP() << why;
        ASSERT_TRUE(uc::test::OpenRawLine(0, line));
    }
    uc::test::RawLine line;
};

TEST_F(SerialConnectionTest, SendsAndReceivesInOrderAcrossChunks) {
    Collector c;
    ASSERT_TRUE(c.Open(line.port, 38400));
    EXPECT_TRUE(c.IsOpen());
    EXPECT_EQ(c.GetPort(), line.port);
    const unsigned char hello[] = {0x46, 0xE3, 0x00, 0x55};
    ASSERT_TRUE(c.SendData(hello, 4));
    EXPECT_EQ(ReadAll(*line.device, 4), std::vector<unsigned char>(hello, hello + 4));

    std::vector<unsigned char> expected;
    for (int i = 0; i < 20; ++i) {
        unsigned char chunk[3] = {static_cast<unsigned char>(i), 0xB9, 0xAA};
        ASSERT_TRUE(line.device->Write(chunk, 3));
        expected.insert(expected.end(), chunk, chunk + 3);
    }
    ASSERT_TRUE(c.WaitForReceivedCount(expected.size(), 10s));
    EXPECT_EQ(c.Taken(), expected);
    EXPECT_GE(c.Calls(), 1);
    EXPECT_TRUE(c.Close());
    EXPECT_FALSE(c.IsOpen());
    EXPECT_FALSE(c.Close()) << "second close reports it was not open";
    EXPECT_FALSE(c.SendData(hello, 4));
}

TEST_F(SerialConnectionTest, UnconsumedBytesStayForTheNextCall) {
    Collector c;
    c.leaveBehind = 2;
    ASSERT_TRUE(c.Open(line.port, 38400));
    const unsigned char a[] = {1, 2, 3};
    ASSERT_TRUE(line.device->Write(a, 3));
    ASSERT_TRUE(c.WaitForReceivedCount(3, 10s));
    EXPECT_EQ(c.Taken(), std::vector<unsigned char>({1}));
    c.leaveBehind = 0;
    const unsigned char b[] = {4};
    ASSERT_TRUE(line.device->Write(b, 1));
    ASSERT_TRUE(c.WaitForReceivedCount(4, 10s));
    EXPECT_EQ(c.Taken(), std::vector<unsigned char>({1, 2, 3, 4}));
}

TEST_F(SerialConnectionTest, OpenTwiceFailsAndReopenAfterCloseWorks) {
    Collector c;
    ASSERT_TRUE(c.Open(line.port, 38400));
    EXPECT_FALSE(c.Open(line.port, 38400));
    ASSERT_TRUE(c.Close());
    ASSERT_TRUE(c.Open(line.port, 2400));
    const unsigned char x[] = {7};
    ASSERT_TRUE(line.device->Write(x, 1));
    ASSERT_TRUE(c.WaitForReceivedCount(1, 10s));
    EXPECT_EQ(c.Taken(), std::vector<unsigned char>({7}));
}

TEST_F(SerialConnectionTest, ASecondConnectionCannotOpenABusyPort) {
    if (!uc::test::PortsAreExclusive()) GTEST_SKIP() << "this system lets a port be opened twice";
    Collector a, b;
    ASSERT_TRUE(a.Open(line.port, 38400));
    EXPECT_FALSE(b.Open(line.port, 38400));
    a.Close();
    EXPECT_TRUE(b.Open(line.port, 38400));
}

TEST_F(SerialConnectionTest, MissingPortFailsAndIsLogged) {
    zelLogger::Instance().ClearEntries();
    Collector c;
    EXPECT_FALSE(c.Open(uc::test::LinePort(0) + 77, 38400));
    EXPECT_FALSE(c.IsOpen());
    EXPECT_EQ(zelLogger::Instance().Count(L"CSerialConnection::Open - port"), 1u);
}

TEST_F(SerialConnectionTest, CloseFromInsideTokenizeDoesNotDeadlock) {
    Collector c;
    c.closeInside = true;
    ASSERT_TRUE(c.Open(line.port, 38400));
    const unsigned char x[] = {1};
    ASSERT_TRUE(line.device->Write(x, 1));
    ASSERT_TRUE(c.WaitForReceivedCount(1, 10s));
    EXPECT_FALSE(c.IsOpen());
    EXPECT_TRUE(c.Open(line.port, 38400)) << "the port can be opened again afterwards";
}

TEST_F(SerialConnectionTest, ConcurrentSendersNeverInterleaveAFrame) {
    Collector c;
    ASSERT_TRUE(c.Open(line.port, 38400));
    constexpr int kThreads = 4, kFrames = 50;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < kFrames; ++i) {
                unsigned char frame[4] = {0x46, static_cast<unsigned char>(t), static_cast<unsigned char>(i), 0x55};
                c.SendData(frame, 4);
            }
        });
    const auto got = ReadAll(*line.device, kThreads * kFrames * 4);
    for (auto& t : threads) t.join();
    ASSERT_EQ(got.size(), static_cast<std::size_t>(kThreads * kFrames * 4));
    for (std::size_t i = 0; i < got.size(); i += 4) {
        EXPECT_EQ(got[i], 0x46);
        EXPECT_EQ(got[i + 3], 0x55);
    }
}

}  // namespace
