// Reads the bit-packed values of a DWG file: raw bytes, shorts, longs and
// doubles that need not start on a byte, the bit-coded forms (a 1- or
// 2-bit prefix that says whether the value follows in full, in one byte,
// or is one of a few common constants), modular chars and shorts, handle
// references and strings. Every read is bounds-checked: reading past the
// end of the data throws OdDwgDecodeError with the bit position, so a
// damaged file can never make the reader run outside its buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

#include "OdString.h"

struct OdDwgDecodeError : std::runtime_error {
  OdDwgDecodeError(const std::string& what, size_t bitPosition)
      : std::runtime_error(what), bit(bitPosition) {}
  size_t bit;  // bit position in the reader's data where decoding failed
};

// A handle reference: its code (what kind of reference, or how a relative
// handle is to be applied) and the handle it names once resolved.
// The versions of the file format, by the number in their first bytes
// ("AC1018" is 1018), for comparisons such as atLeast(kDwgR2004).
enum OdDwgVersion : int {
  kDwgR13 = 1012,
  kDwgR14 = 1014,
  kDwgR2000 = 1015,
  kDwgR2004 = 1018,
  kDwgR2007 = 1021,
  kDwgR2010 = 1024,
  kDwgR2013 = 1027,
  kDwgR2018 = 1032,
};

struct OdDwgHandleRef {
  uint8_t code = 0;
  uint64_t value = 0;  // absolute handle (relative codes already applied)
};

class OdDwgBitReader {
 public:
  OdDwgBitReader(const uint8_t* data, size_t size) : m_data(data), m_size(size), m_bits(size * 8) {}

  size_t bitPosition() const { return m_pos; }
  size_t bitSize() const { return m_bits; }
  // Moves to a bit position (at most the end of the data).
  void seekBit(size_t bit);
  // Limits reading to the first `bits` bits (never beyond the data).
  void limitBits(size_t bits) { if (bits < m_bits) m_bits = bits; }
  bool atEnd() const { return m_pos >= m_bits; }

  // Raw values (little-endian, starting at any bit).
  // The common reads are defined here, so that the decoders' calls inline.
  bool readBit() {  // B
    need(1);
    const bool bit = (m_data[m_pos >> 3] >> (7 - (m_pos & 7))) & 1;
    ++m_pos;
    return bit;
  }
  unsigned readBits(unsigned n) {  // up to 32 bits, most significant first
    need(n);
    if (n == 0) return 0;
    const auto value = static_cast<unsigned>(peek(n));
    m_pos += n;
    return value;
  }
  uint8_t readRC() {
    need(8);
    const size_t byte = m_pos >> 3;
    const unsigned shift = m_pos & 7;
    m_pos += 8;
    // A byte that does not start on a byte boundary ends in the next byte,
    // which lies within the data since 8 bits were there to read.
    if (shift == 0) return m_data[byte];
    return static_cast<uint8_t>((m_data[byte] << shift) | (m_data[byte + 1] >> (8 - shift)));
  }
  uint16_t readRS() {
    need(16);
    const auto bigEndian = static_cast<uint16_t>(peek(16));
    m_pos += 16;
    return static_cast<uint16_t>((bigEndian >> 8) | (bigEndian << 8));
  }
  uint32_t readRL() {
    need(32);
    const auto bigEndian = static_cast<uint32_t>(peek(32));
    m_pos += 32;
    return __builtin_bswap32(bigEndian);
  }
  double readRD() {
    need(64);
    const uint64_t high = peek(32);
    m_pos += 32;
    const uint64_t bits = __builtin_bswap64((high << 32) | peek(32));
    m_pos += 32;
    double value;
    std::memcpy(&value, &bits, 8);
    return value;
  }
  // n raw bytes into out: copied where the position is on a byte boundary,
  // shifted eight at a time where it is not.
  void readBytes(uint8_t* out, size_t n) {
    if (m_pos > m_bits) overrun(8);
    if (n > (m_bits - m_pos) / 8) {
      // Reported where reading byte by byte would stop: at the first byte missing.
      m_pos += (m_bits - m_pos) / 8 * 8;
      overrun(8);
    }
    if (n == 0) return;
    const size_t byte = m_pos >> 3;
    const unsigned shift = m_pos & 7;
    m_pos += n * 8;
    if (shift == 0) {
      std::memcpy(out, m_data + byte, n);
      return;
    }
    // Byte i is the end of data byte i and the start of byte i + 1, both
    // within the data, since the last one holds the final bits read.
    size_t i = 0;
    for (; i + 8 <= n && m_size - (byte + i) >= 9; i += 8) {
      uint64_t word;
      std::memcpy(&word, m_data + byte + i, 8);
      word = (__builtin_bswap64(word) << shift) | (m_data[byte + i + 8] >> (8 - shift));
      word = __builtin_bswap64(word);
      std::memcpy(out + i, &word, 8);
    }
    for (; i < n; ++i) out[i] = static_cast<uint8_t>((m_data[byte + i] << shift) | (m_data[byte + i + 1] >> (8 - shift)));
  }
  // Bit-coded values.
  unsigned readBB() { return readBits(2); }
  int16_t readBS() {
    switch (readBB()) {
      case 0: return static_cast<int16_t>(readRS());
      case 1: return readRC();
      case 2: return 0;
      default: return 256;
    }
  }
  int32_t readBL() {
    switch (readBB()) {
      case 0: return static_cast<int32_t>(readRL());
      case 1: return readRC();
      case 2: return 0;
      default: badCode("invalid bit-coded long");
    }
  }
  double readBD() {
    switch (readBB()) {
      case 0: return readRD();
      case 1: return 1.0;
      case 2: return 0.0;
      default: badCode("invalid bit-coded double");
    }
  }
  // A 64-bit length (BLL): 3 bits give the count of bytes that follow,
  // least significant first.
  uint64_t readBLL();
  // A double coded against a default (DD): 2 bits say whether it is the
  // default, the default with its low 4 bytes replaced, with 6 bytes
  // replaced, or a full raw double.
  double readDD(double defaultValue);
  // Thickness and extrusion: from R2000 on, one bit says "the usual value".
  double readBT(bool r2000);
  void readBE(bool r2000, double xyz[3]);
  // Modular char (7 bits a byte, high bit: more follows) and modular short.
  uint64_t readMCUnsigned();
  int64_t readMCSigned();
  uint32_t readMS();
  // A handle: a byte of code and length, then the handle's bytes, most
  // significant first. Relative codes (6, 8, 0xA, 0xC) are resolved
  // against `reference` (the handle of the object being read).
  OdDwgHandleRef readH(uint64_t reference = 0);
  // A string in the form of the file's version: R13-R2004 a bit-coded
  // length and that many bytes in the drawing's code page; R2007 on (once
  // a string stream is set) a bit-coded length and that many UTF-16 units,
  // read from the string stream. Trailing NULs are dropped.
  OdString readTV(int codePage);
  // `length` raw bytes of text in the code page; the text ends at the first
  // NUL. Texts are given as DXF codes them: a caret as "^ ", a control
  // character as a caret and a letter ("^I" for a tab), as the platform
  // holds the strings it reads from DXF files.
  OdString readText(size_t length, int codePage);
  // The same into out, whose storage is reused (no allocation once it is large enough).
  void readText(size_t length, int codePage, std::wstring& out);
  // `count` RS, each a UTF-16 unit, into out as one character each (with
  // carets and control characters coded as readText codes them).
  void readUnits(size_t count, std::wstring& out);
  // R2007 on: strings are read from their own stream. The stream ends
  // where the data ends (`endBit`, the bit position of the handles): the
  // bit before says whether there are strings, the 16 bits before that
  // their size in bits (high bit set: 16 more bits before them hold the
  // size's high part), and the strings come just before the size.
  void useStringStreamEndingAt(size_t endBit);
  // Colours (CMC) depend on the file's version: see OdDwgFile::readCMC.
  // Skips whole bytes (for blobs whose contents are not needed).
  void skipBytes(size_t n);
  // R2007 on, once the string stream is set: where it begins (so where the
  // data before it ends) and the bits of it not read yet.
  size_t stringStreamStart() const { return m_strings && m_stringEnd ? m_stringPos0 : m_bits; }
  size_t stringBitsLeft() const { return m_stringEnd > m_stringPos ? m_stringEnd - m_stringPos : 0; }

 private:
  [[noreturn]] void overrun(size_t wanted) const;
  // A 2-bit code that has no meaning for the value read (reported at the code).
  [[noreturn]] void badCode(const char* what) const;
  void need(size_t bits) const { if (bits > m_bits - (m_pos < m_bits ? m_pos : m_bits) || m_pos > m_bits) overrun(bits); }
  // The next n bits (1 to 57) as a number, the first bit most significant,
  // without moving; the caller has checked that they are there. Whole
  // words are loaded where the data has 8 bytes left from the position.
  uint64_t peek(unsigned n) const {
    const size_t byte = m_pos >> 3;
    uint64_t word = 0;
    if (m_size - byte >= 8) {
      std::memcpy(&word, m_data + byte, 8);
      word = __builtin_bswap64(word);
    } else {
      for (size_t i = 0; byte + i < m_size; ++i) word |= static_cast<uint64_t>(m_data[byte + i]) << (56 - 8 * i);
    }
    return (word << (m_pos & 7)) >> (64 - n);
  }

  const uint8_t* m_data;
  size_t m_size;  // bytes of data
  size_t m_bits;
  size_t m_pos = 0;
  bool m_strings = false;           // strings come from the string stream
  size_t m_stringPos = 0, m_stringEnd = 0;
  size_t m_stringPos0 = 0;          // where the string stream begins
};
