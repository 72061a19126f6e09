#include "dwg/DwgBitReader.h"

#include <cstring>

#include "OdCodePage.h"

void OdDwgBitReader::overrun(size_t wanted) const {
  throw OdDwgDecodeError("read of " + std::to_string(wanted) + " bits past the end of the data", m_pos);
}

void OdDwgBitReader::seekBit(size_t bit) {
  if (bit > m_bits) throw OdDwgDecodeError("seek past the end of the data", bit);
  m_pos = bit;
}

void OdDwgBitReader::badCode(const char* what) const { throw OdDwgDecodeError(what, m_pos - 2); }

uint64_t OdDwgBitReader::readBLL() {
  const unsigned bytes = readBits(3);
  uint64_t value = 0;
  for (unsigned i = 0; i < bytes; ++i) value |= static_cast<uint64_t>(readRC()) << (8 * i);
  return value;
}

double OdDwgBitReader::readDD(double defaultValue) {
  const unsigned code = readBB();
  if (code == 0) return defaultValue;
  if (code == 3) return readRD();
  uint8_t bytes[8];
  std::memcpy(bytes, &defaultValue, 8);
  if (code == 2) {
    bytes[4] = readRC();
    bytes[5] = readRC();
  }
  for (int i = 0; i < 4; ++i) bytes[i] = readRC();
  double value;
  std::memcpy(&value, bytes, 8);
  return value;
}

double OdDwgBitReader::readBT(bool r2000) {
  if (r2000 && readBit()) return 0.0;
  return readBD();
}

void OdDwgBitReader::readBE(bool r2000, double xyz[3]) {
  if (r2000 && readBit()) {
    xyz[0] = 0;
    xyz[1] = 0;
    xyz[2] = 1;
    return;
  }
  for (int i = 0; i < 3; ++i) xyz[i] = readBD();
}

uint64_t OdDwgBitReader::readMCUnsigned() {
  uint64_t value = 0;
  for (unsigned shift = 0;; shift += 7) {
    const uint8_t b = readRC();
    if (shift < 64) value |= static_cast<uint64_t>(b & 0x7F) << shift;
    if (!(b & 0x80)) return value;
    if (shift > 63) throw OdDwgDecodeError("modular char too long", m_pos);
  }
}

int64_t OdDwgBitReader::readMCSigned() {
  uint64_t value = 0;
  for (unsigned shift = 0;; shift += 7) {
    const uint8_t b = readRC();
    if (!(b & 0x80)) {
      // The last byte holds 6 bits of value and the sign.
      if (shift < 64) value |= static_cast<uint64_t>(b & 0x3F) << shift;
      // Negated in unsigned arithmetic, so a damaged value cannot overflow.
      return static_cast<int64_t>((b & 0x40) ? 0 - value : value);
    }
    if (shift < 64) value |= static_cast<uint64_t>(b & 0x7F) << shift;
    if (shift > 63) throw OdDwgDecodeError("modular char too long", m_pos);
  }
}

uint32_t OdDwgBitReader::readMS() {
  uint32_t value = 0;
  for (unsigned shift = 0; shift < 32; shift += 15) {
    const uint16_t word = readRS();
    value |= static_cast<uint32_t>(word & 0x7FFF) << shift;
    if (!(word & 0x8000)) return value;
  }
  throw OdDwgDecodeError("modular short too long", m_pos);
}

OdDwgHandleRef OdDwgBitReader::readH(uint64_t reference) {
  OdDwgHandleRef ref;
  const uint8_t head = readRC();
  ref.code = head >> 4;
  const unsigned count = head & 0x0F;
  if (count > 8) throw OdDwgDecodeError("handle longer than 8 bytes", m_pos - 8);
  uint64_t value = 0;
  for (unsigned i = 0; i < count; ++i) value = (value << 8) | readRC();
  switch (ref.code) {
    case 0x6: ref.value = reference + 1; break;
    case 0x8: ref.value = reference - 1; break;
    case 0xA: ref.value = reference + value; break;
    case 0xC: ref.value = reference - value; break;
    default: ref.value = value; break;
  }
  return ref;
}

void OdDwgBitReader::useStringStreamEndingAt(size_t endBit) {
  if (endBit == 0 || endBit > m_bits) throw OdDwgDecodeError("string stream end outside the data", endBit);
  const size_t saved = m_pos;
  m_strings = true;
  m_stringPos = m_stringEnd = m_stringPos0 = 0;
  m_pos = endBit - 1;
  if (!readBit()) {
    m_pos = saved;
    return;  // no strings
  }
  if (endBit < 17) throw OdDwgDecodeError("string stream size outside the data", endBit);
  size_t at = endBit - 17;
  m_pos = at;
  size_t size = readRS();
  if (size & 0x8000) {
    if (at < 16) throw OdDwgDecodeError("string stream size outside the data", at);
    at -= 16;
    m_pos = at;
    size = (size & 0x7FFF) | (static_cast<size_t>(readRS()) << 15);
  }
  m_pos = saved;
  if (size > at) throw OdDwgDecodeError("string stream larger than the data", at);
  m_stringPos = m_stringPos0 = at - size;
  m_stringEnd = at;
}

namespace {

// Strings are held as a DXF file codes them: a caret as "^ ", a control
// character as a caret and the letter 64 above it ("^J" for a line feed).
// NUL is left to the callers (a text ends at it, or it is dropped).
bool needsCarets(wchar_t c) { return c == L'^' || (c > 0 && c < L' '); }

void codeCarets(std::wstring& text) {
  size_t first = 0;
  while (first < text.size() && !needsCarets(text[first])) ++first;
  if (first == text.size()) return;
  std::wstring coded(text, 0, first);
  coded.reserve(text.size() + 8);
  for (size_t i = first; i < text.size(); ++i) {
    const wchar_t c = text[i];
    if (!needsCarets(c)) {
      coded += c;
    } else {
      coded += L'^';
      coded += c == L'^' ? L' ' : static_cast<wchar_t>(c + L'@');
    }
  }
  text = std::move(coded);
}

}  // namespace

OdString OdDwgBitReader::readTV(int codePage) {
  if (m_strings) {
    // UTF-16 units from the string stream, with its own position.
    const size_t savedPos = m_pos, savedBits = m_bits;
    m_pos = m_stringPos;
    m_bits = m_stringEnd;
    std::wstring text;
    try {
      const size_t length = static_cast<uint16_t>(readBS());
      need(length * 16);
      text.reserve(length);
      for (size_t i = 0; i < length; ++i) {
        unsigned unit = readRS();
        // A surrogate pair makes one character.
        if (unit >= 0xD800 && unit < 0xDC00 && i + 1 < length) {
          const unsigned low = readRS();
          ++i;
          if (low >= 0xDC00 && low < 0xE000) unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
        text += static_cast<wchar_t>(unit);
      }
    } catch (...) {
      m_pos = savedPos;
      m_bits = savedBits;
      throw;
    }
    m_stringPos = m_pos;
    m_pos = savedPos;
    m_bits = savedBits;
    while (!text.empty() && text.back() == L'\0') text.pop_back();
    // Characters kept as "\U+XXXX" from older versions are characters here.
    for (size_t at = text.find(L"\\U+"); at != std::wstring::npos && at + 7 <= text.size(); at = text.find(L"\\U+", at + 1)) {
      unsigned value = 0;
      bool hexDigits = true;
      for (size_t i = at + 3; i < at + 7; ++i) {
        const wchar_t h = text[i];
        const int digit = h >= L'0' && h <= L'9' ? h - L'0' : h >= L'A' && h <= L'F' ? h - L'A' + 10 : h >= L'a' && h <= L'f' ? h - L'a' + 10 : -1;
        if (digit < 0) { hexDigits = false; break; }
        value = value * 16 + static_cast<unsigned>(digit);
      }
      if (hexDigits && value != 0) text.replace(at, 7, 1, static_cast<wchar_t>(value));
    }
    codeCarets(text);
    return OdString(std::move(text));
  }
  const size_t length = static_cast<uint16_t>(readBS());
  need(length * 8);
  return readText(length, codePage);
}

OdString OdDwgBitReader::readText(size_t length, int codePage) {
  std::wstring text;
  readText(length, codePage, text);
  return OdString(std::move(text));
}

void OdDwgBitReader::readText(size_t length, int codePage, std::wstring& out) {
  // Short texts (names, most values) need no allocation for their bytes.
  uint8_t local[256];
  std::string heap;
  uint8_t* bytes = local;
  if (length > sizeof local && m_pos <= m_bits && length <= (m_bits - m_pos) / 8) {
    heap.resize(length);
    bytes = reinterpret_cast<uint8_t*>(heap.data());
  }
  readBytes(bytes, length);
  const auto* nul = static_cast<const uint8_t*>(std::memchr(bytes, 0, length));
  const size_t size = nul ? static_cast<size_t>(nul - bytes) : length;
  // The converter of the last code page is kept: looking its tables up
  // again for every text would cost more than most conversions. So is
  // whether the page gives the ASCII bytes as themselves (most do): then a
  // text of ASCII bytes only, the usual case, needs no table.
  struct LastPage {
    OdCodePageConverter converter{kOdCodePageAnsi};
    bool asciiAsItself = true;
  };
  thread_local LastPage last;
  if (last.converter.codePage() != codePage) {
    last.converter = OdCodePageConverter(codePage);
    char ascii[128];
    for (int i = 0; i < 128; ++i) ascii[i] = static_cast<char>(i);
    std::wstring decoded;
    last.converter.decode(std::string_view(ascii, sizeof ascii), decoded, false);
    last.asciiAsItself = decoded.size() == 128;
    for (size_t i = 0; i < decoded.size() && last.asciiAsItself; ++i) last.asciiAsItself = decoded[i] == static_cast<wchar_t>(i);
  }
  uint8_t high = 0;
  bool carets = false;
  for (size_t i = 0; i < size; ++i) {
    high |= bytes[i];
    carets |= bytes[i] < ' ' || bytes[i] == '^';
  }
  if (last.asciiAsItself && high < 0x80) {
    out.resize(size);
    for (size_t i = 0; i < size; ++i) out[i] = static_cast<wchar_t>(bytes[i]);
  } else {
    out.clear();
    last.converter.decode(std::string_view(reinterpret_cast<const char*>(bytes), size), out, false);
    carets = true;  // a code page may give a caret or a control character for other bytes
  }
  if (carets) codeCarets(out);
}

void OdDwgBitReader::readUnits(size_t count, std::wstring& out) {
  // The units are read as bytes (eight at a time) into the far half of
  // out's storage and widened from the front: character i is written over
  // bytes 4i to 4i+3, all before byte 2 * count + 2i, where unit i starts.
  static_assert(sizeof(wchar_t) == 4, "two units' bytes fit in one character");
  if (m_pos > m_bits || count > (m_bits - m_pos) / 16) overrun(count * 16);
  out.resize(count);
  auto* storage = reinterpret_cast<uint8_t*>(out.data());
  uint8_t* units = storage + 2 * count;
  readBytes(units, 2 * count);
  bool carets = false;
  for (size_t i = 0; i < count; ++i) {
    const auto unit = static_cast<wchar_t>(units[2 * i] | (units[2 * i + 1] << 8));
    out[i] = unit;
    carets |= needsCarets(unit);
  }
  if (carets) codeCarets(out);
}

void OdDwgBitReader::skipBytes(size_t n) {
  if (n > (m_bits - m_pos) / 8) overrun(n * 8);
  m_pos += n * 8;
}
