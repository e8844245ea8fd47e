// CCircularBuffer: fixed-capacity byte ring with peek, consume and bulk move, the receive buffer of serial links.
#pragma once

#include "platform/export.h"

// Not thread-safe: owners guard it with their own lock.
class UC_API CCircularBuffer {
public:
    explicit CCircularBuffer(unsigned int capacity);
    ~CCircularBuffer();
    CCircularBuffer(const CCircularBuffer&) = delete;
    CCircularBuffer& operator=(const CCircularBuffer&) = delete;

    unsigned int GetSize() const { return m_capacity; }
    unsigned int GetValidCount() const { return m_count; }
    unsigned int GetFreeCount() const { return m_capacity - m_count; }
    bool IsEmpty() const { return m_count == 0; }

    // Copies the first `count` buffered bytes to `dest` without removing them; false when fewer are buffered.
    bool Read(unsigned char* dest, unsigned int count) const;
    // The byte at `offset` from the front; false when not buffered.
    bool Peek(unsigned int offset, unsigned char& byte) const;
    // Drops `count` bytes from the front (all of them when fewer are buffered).
    void Consume(unsigned int count);
    // Appends bytes. When they do not fit, the oldest buffered bytes are dropped to make room (the newest
    // data wins); returns the number of bytes lost that way.
    unsigned int Write(const unsigned char* src, unsigned int count);
    // Moves every valid byte of `source` to the end of this buffer (same overflow rule as Write);
    // `source` is left empty. Returns the number of bytes moved.
    unsigned int ConsumeValid(CCircularBuffer& source);
    void Clear() { m_head = m_count = 0; }

private:
    unsigned char* m_data;
    unsigned int m_capacity;
    unsigned int m_head = 0;   // index of the oldest byte
    unsigned int m_count = 0;  // bytes held
};
