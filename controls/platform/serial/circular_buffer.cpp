// Byte ring of the serial links.
#include "platform/serial/circular_buffer.h"

#include <algorithm>
#include <cstring>

CCircularBuffer::CCircularBuffer(unsigned int capacity)
    : m_data(new unsigned char[capacity ? capacity : 1]), m_capacity(capacity ? capacity : 1) {}

CCircularBuffer::~CCircularBuffer() { delete[] m_data; }

bool CCircularBuffer::Read(unsigned char* dest, unsigned int count) const {
    if (count > m_count) return false;
    if (count == 0) return true;
    if (!dest) return false;
    const unsigned int first = std::min(count, m_capacity - m_head);
    std::memcpy(dest, m_data + m_head, first);
    if (count > first) std::memcpy(dest + first, m_data, count - first);
    return true;
}

bool CCircularBuffer::Peek(unsigned int offset, unsigned char& byte) const {
    if (offset >= m_count) return false;
    byte = m_data[(m_head + offset) % m_capacity];
    return true;
}

void CCircularBuffer::Consume(unsigned int count) {
    count = std::min(count, m_count);
    m_head = (m_head + count) % m_capacity;
    m_count -= count;
    if (m_count == 0) m_head = 0;
}

unsigned int CCircularBuffer::Write(const unsigned char* src, unsigned int count) {
    if (count == 0 || !src) return 0;
    unsigned int lost = 0;
    if (count > m_capacity) {
        // Only the newest `capacity` bytes can be kept.
        lost = m_count + (count - m_capacity);
        src += count - m_capacity;
        count = m_capacity;
        m_head = m_count = 0;
    } else if (count > GetFreeCount()) {
        const unsigned int drop = count - GetFreeCount();
        Consume(drop);
        lost = drop;
    }
    unsigned int tail = (m_head + m_count) % m_capacity;
    const unsigned int first = std::min(count, m_capacity - tail);
    std::memcpy(m_data + tail, src, first);
    if (count > first) std::memcpy(m_data, src + first, count - first);
    m_count += count;
    return lost;
}

unsigned int CCircularBuffer::ConsumeValid(CCircularBuffer& source) {
    if (&source == this) return 0;
    const unsigned int moved = source.m_count;
    // The source holds at most two contiguous runs.
    const unsigned int first = std::min(source.m_count, source.m_capacity - source.m_head);
    Write(source.m_data + source.m_head, first);
    if (moved > first) Write(source.m_data, moved - first);
    source.Clear();
    return moved;
}
