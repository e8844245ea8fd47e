// UPS replies, levels and the port search order, free of I/O.
#include "power/ups_protocol.h"

#include <algorithm>

#include "platform/serial/circular_buffer.h"

namespace uc::power::ups {

ReplyResult TakeReply(CCircularBuffer& buffer, unsigned int replyLength, unsigned char* reply, unsigned int& size) {
    size = 0;
    const unsigned int n = buffer.GetValidCount();
    if (n == 0) return ReplyResult::NoData;
    const unsigned int m = std::min(n, replyLength + 1);
    std::vector<unsigned char> peek(m);
    if (!buffer.Read(peek.data(), m)) return ReplyResult::ReadError;
    for (unsigned int i = 0; i < m; ++i) {
        if (peek[i] != CarriageReturn) continue;
        std::copy(peek.begin(), peek.begin() + i, reply);
        size = i;
        buffer.Consume(i + 1);
        return ReplyResult::Reply;
    }
    if (m > replyLength) {
        // Too long to be a reply: drop it whole rather than resynchronise in the middle of it.
        buffer.Consume(n);
        return ReplyResult::TooLong;
    }
    return ReplyResult::NeedMore;
}

int PowerSourceFromReply(const std::string& reply) {
    if (reply == "1") return 1;
    if (reply == "0") return 0;
    return 2;
}

bool ParseBatteryLevel(const std::string& reply, int& value) {
    std::size_t i = 0;
    while (i < reply.size() && (reply[i] == ' ' || reply[i] == '\t')) ++i;
    bool negative = false;
    if (i < reply.size() && (reply[i] == '+' || reply[i] == '-')) negative = reply[i++] == '-';
    const std::size_t first = i;
    long v = 0;
    while (i < reply.size() && reply[i] >= '0' && reply[i] <= '9' && v < 100000) v = v * 10 + (reply[i++] - '0');
    // Text without a digit is no reading at all (not 0 %, which would raise a false critical warning).
    if (i == first) return false;
    value = static_cast<int>(negative ? -v : v);
    return true;
}

int AverageLevel(const std::vector<int>& values) {
    int sum = 0, count = 0;
    for (int v : values)
        if (v >= 0 && v <= 100) {
            sum += v;
            ++count;
        }
    return count ? sum / count : -1;
}

int WarningLevelFor(int percent, int one, int two, int three) {
    if (percent < three) return 3;
    if (percent < two) return 2;
    if (percent < one) return 1;
    return 0;
}

std::vector<int> PortSearchOrder(int savedPort, int touchScreenPort, int ftdiPort) {
    std::vector<int> order;
    if (savedPort != NoPort && savedPort != touchScreenPort) order.push_back(savedPort);
    for (int p = 0; p <= LastScannedPort; ++p) {
        if (savedPort != NoPort && p == savedPort) continue;
        if (touchScreenPort != NoPort && p == touchScreenPort) continue;
        if (ftdiPort >= 0 && p == ftdiPort) continue;
        order.push_back(p);
    }
    return order;
}

}  // namespace uc::power::ups
