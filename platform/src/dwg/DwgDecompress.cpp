#include "dwg/DwgDecompress.h"

#include <algorithm>
#include <cstring>

namespace {

// The compressed stream with its read position; every read is checked.
class Source {
 public:
  Source(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
  size_t position() const { return m_pos; }
  bool atEnd() const { return m_pos >= m_size; }
  uint8_t peek() const { need(1); return m_data[m_pos]; }
  uint8_t next() { need(1); return m_data[m_pos++]; }
  const uint8_t* take(size_t n) {
    need(n);
    const uint8_t* at = m_data + m_pos;
    m_pos += n;
    return at;
  }
  [[noreturn]] void fail(const char* what) const { throw OdDwgDecodeError(what, m_pos * 8); }

  // A length that goes on in bytes of zero: each adds 255, the first
  // non-zero byte ends it.
  size_t longLength() {
    size_t length = 0;
    uint8_t b;
    while ((b = next()) == 0) length += 0xFF;
    return length + b;
  }
  // A literal run before the next opcode: a byte of 0x01-0x0F is a run of
  // that many plus 3 bytes, 0x00 a long run (0x0F + the long length + 3).
  // A byte from 0x10 on is the next opcode: no run.
  size_t literalLength() {
    if (atEnd()) return 0;
    const uint8_t b = peek();
    if (b >= 0x10) return 0;
    ++m_pos;
    if (b == 0) return 0x0F + longLength() + 3;
    return b + 3u;
  }
  // The two bytes of a copy's distance: 14 bits of distance, and in the low
  // two bits of the first the count of literal bytes after the copy.
  size_t twoByteOffset(size_t& literals) {
    const uint8_t first = next(), second = next();
    literals = first & 3;
    return (first >> 2) | (static_cast<size_t>(second) << 6);
  }

 private:
  void need(size_t n) const {
    if (n > m_size - m_pos) throw OdDwgDecodeError("compressed data ends inside an opcode", m_pos * 8);
  }
  const uint8_t* m_data;
  size_t m_size;
  size_t m_pos = 0;
};

}  // namespace

size_t odDwgDecompress(const uint8_t* src, size_t size, uint8_t* dst, size_t capacity) {
  Source in(src, size);
  size_t out = 0;
  auto literals = [&](size_t n) {
    if (n > capacity - out) in.fail("literal run past the end of the page");
    std::memcpy(dst + out, in.take(n), n);
    out += n;
  };
  literals(in.literalLength());
  while (!in.atEnd()) {
    const uint8_t op = in.next();
    size_t length = 0, distance = 0, following = 0;
    if (op == 0x11) return out;  // the end of the stream
    if (op < 0x10) in.fail("literal length where an opcode belongs");
    if (op == 0x10) {
      length = in.longLength() + 9;
      distance = in.twoByteOffset(following) + 0x3FFF;
    } else if (op < 0x20) {
      length = (op & 0x0F) + 2;
      distance = in.twoByteOffset(following) + 0x3FFF;
    } else if (op == 0x20) {
      length = in.longLength() + 0x21;
      distance = in.twoByteOffset(following);
    } else if (op < 0x40) {
      length = op - 0x1Eu;
      distance = in.twoByteOffset(following);
    } else {
      length = (op >> 4) - 1u;
      distance = (static_cast<size_t>(in.next()) << 2) | ((op & 0x0C) >> 2);
      following = op & 3;
    }
    // The copy starts distance + 1 bytes back and may overlap what it writes.
    if (distance >= out) in.fail("copy from before the start of the page");
    if (length > capacity - out) in.fail("copy past the end of the page");
    const uint8_t* from = dst + out - distance - 1;
    uint8_t* to = dst + out;
    // An overlapping copy repeats the last distance + 1 bytes: copied in
    // pieces that never overlap, each twice the one before.
    const size_t period = distance + 1;
    for (size_t done = 0; done < length;) {
      const size_t n = std::min(length - done, done + period);
      std::memcpy(to + done, from, n);
      done += n;
    }
    out += length;
    literals(following ? following : in.literalLength());
  }
  return out;
}
