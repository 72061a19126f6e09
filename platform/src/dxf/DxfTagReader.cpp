// The DXF tokenizer: ASCII and binary tags over an in-memory buffer.
#include "dxf/DxfTagReader.h"

#include <bit>
#include <charconv>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

using OdDxf::ValueType;

constexpr size_t kSentinelSize = 22;
// The sentinel from offset 7 on; its first 7 bytes are letters.
constexpr char kSentinelTail[] = " Binary DXF\r\n\x1a";  // followed by its terminating NUL
constexpr size_t kSentinelTailSize = sizeof(kSentinelTail);  // 15, the NUL included

bool isBlank(char ch) { return ch == ' ' || ch == '\t'; }

// Blank lines, a Ctrl-Z or NULs at the very end do not count as data.
bool onlyTrailingFiller(const char* from, const char* end) {
  for (; from < end; ++from) {
    const char ch = *from;
    if (!isBlank(ch) && ch != '\r' && ch != '\n' && ch != '\x1a' && ch != '\0') return false;
  }
  return true;
}

const char* lineEndOf(const char* from, const char* end) {
  const void* newline = std::memchr(from, '\n', static_cast<size_t>(end - from));
  return newline ? static_cast<const char*>(newline) : end;
}

// The text for "found '...'" in messages: printable ASCII, other bytes as \xNN.
std::string excerpt(const char* from, const char* to) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  constexpr size_t kMaxShown = 40;
  while (to > from && to[-1] == '\r') --to;
  std::string shown;
  for (const char* p = from; p < to && shown.size() < kMaxShown; ++p) {
    const auto byte = static_cast<unsigned char>(*p);
    if (byte >= 0x20 && byte < 0x7F) {
      shown += static_cast<char>(byte);
    } else {
      shown += "\\x";
      shown += kHex[byte >> 4];
      shown += kHex[byte & 15];
    }
  }
  if (static_cast<size_t>(to - from) > kMaxShown) shown += "...";
  return shown;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (isBlank(text.front()))) text.remove_prefix(1);
  while (!text.empty() && (isBlank(text.back()) || text.back() == '\r')) text.remove_suffix(1);
  return text;
}

int hexDigit(char ch) {
  if (ch >= '0' && ch <= '9') return ch - '0';
  if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
  if (ch >= 'a' && ch <= 'f') return ch - 'a' + 10;
  return -1;
}

// 1..16 hex digits.
bool parseHandle(std::string_view text, OdUInt64& value) {
  text = trimmed(text);
  if (text.empty() || text.size() > 16) return false;
  value = 0;
  for (char ch : text) {
    const int digit = hexDigit(ch);
    if (digit < 0) return false;
    value = value << 4 | static_cast<unsigned>(digit);
  }
  return true;
}

bool isHexData(std::string_view text) {
  if (text.size() % 2) return false;
  for (char ch : text) {
    if (hexDigit(ch) < 0) return false;
  }
  return true;
}

template <class T>
T loadLittleEndian(const char* bytes) {
  std::uint64_t bits = 0;
  for (size_t k = sizeof(T); k-- > 0;) bits = bits << 8 | static_cast<unsigned char>(bytes[k]);
  if constexpr (std::is_same_v<T, double>) {
    return std::bit_cast<double>(bits);
  } else {
    return static_cast<T>(static_cast<std::make_unsigned_t<T>>(bits));
  }
}

const char* typeName(ValueType type) {
  switch (type) {
    case ValueType::kDouble:
    case ValueType::kPoint: return "a real number";
    case ValueType::kBinary: return "hexadecimal data";
    default: return "an integer";
  }
}

// A number that is too large or too small for a double: from_chars reports
// it without a value; give it the infinity or zero it stands for.
double outOfRangeValue(const char* from, const char* to) {
  const bool negative = from < to && *from == '-';
  bool negativeExponent = false;
  for (const char* p = from; p < to; ++p) {
    if (*p == 'e' || *p == 'E') negativeExponent = p + 1 < to && p[1] == '-';
  }
  const double magnitude = negativeExponent ? 0.0 : std::numeric_limits<double>::infinity();
  return negative ? -magnitude : magnitude;
}

}  // namespace

bool OdDxfTagReader::isBinaryDxf(std::string_view data) {
  if (data.size() < kSentinelSize) return false;
  for (size_t k = 0; k < 7; ++k) {
    const char ch = data[k];
    if (!((ch >= 'A' && ch <= 'Z') || (ch >= 'a' && ch <= 'z'))) return false;
  }
  return std::memcmp(data.data() + 7, kSentinelTail, kSentinelTailSize) == 0;
}

OdDxfTagReader::OdDxfTagReader(std::string_view data)
    : m_begin(data.data()), m_pos(data.data()), m_end(data.data() + data.size()) {
  if (isBinaryDxf(data)) {
    m_binary = true;
    m_pos += kSentinelSize;
    // The first tag is 0 SECTION: 00 00 'S' with 2-byte codes, 00 'S' with 1-byte codes.
    const auto* first = reinterpret_cast<const unsigned char*>(m_pos);
    const size_t left = static_cast<size_t>(m_end - m_pos);
    if (left >= 3 && first[0] == 0 && first[1] == 0 && first[2] == 'S') {
      m_shortCodes = false;
    } else if (left >= 2 && first[0] == 0 && first[1] == 'S') {
      m_shortCodes = true;
    } else {
      // Some other first tag: 255 only starts a 1-byte-code file; otherwise
      // take 2-byte codes when they make a known group code.
      m_shortCodes = left >= 1 && (first[0] == 255 || left < 2 || !OdDxf::isKnownCode(first[0] | first[1] << 8));
    }
  } else if (data.size() >= 3 && std::memcmp(data.data(), "\xEF\xBB\xBF", 3) == 0) {
    m_pos += 3;
  }
}

// ---------------------------------------------------------------------------
// Moving

bool OdDxfTagReader::next() {
  if (m_pushedBack) {
    m_pushedBack = false;
    return true;
  }
  if (m_state != State::kReading) return false;
  if (m_hasPending) {
    m_tag = m_pending;
    m_hasPending = false;
  } else {
    const Scan result = scan(m_tag);
    if (result != Scan::kTag) {
      m_state = result == Scan::kEnd ? State::kEnd : State::kError;
      return false;
    }
  }
  if (m_tag.type == ValueType::kPoint) mergePoint();
  if (m_stopAtEof && isEofTag()) m_state = State::kEnd;
  return true;
}

bool OdDxfTagReader::next(OdDxfTag& tag) {
  if (!next()) return false;
  getTag(tag);
  return true;
}

void OdDxfTagReader::pushBack() { m_pushedBack = true; }

bool OdDxfTagReader::isEofTag() const { return m_tag.code == 0 && textIs("EOF"); }

bool OdDxfTagReader::textIs(std::string_view keyword) const { return trimmed(m_tag.text) == keyword; }

void OdDxfTagReader::mergePoint() {
  RawTag& point = m_tag;
  const int xCode = point.code;
  point.type = ValueType::kDouble;  // until its y shows up
  point.dims = 0;
  point.y = point.z = 0.0;
  RawTag follower;
  if (!scanAhead(follower)) return;
  if (follower.code != xCode + 10) {
    m_pending = follower;
    m_hasPending = true;
    return;
  }
  point.type = ValueType::kPoint;
  point.dims = 2;
  point.y = follower.x;
  if (!scanAhead(follower)) return;
  if (follower.code != xCode + 20) {
    m_pending = follower;
    m_hasPending = true;
    return;
  }
  point.dims = 3;
  point.z = follower.x;
}

// Reads a tag ahead; on failure the position is left as it was, so that the
// next call of next() meets the same end or error.
bool OdDxfTagReader::scanAhead(RawTag& tag) {
  const char* pos = m_pos;
  const int line = m_line;
  if (scan(tag) == Scan::kTag) return true;
  m_pos = pos;
  m_line = line;
  m_errorCode = eOk;
  m_errorMessage.clear();
  return false;
}

OdDxfTagReader::Scan OdDxfTagReader::scan(RawTag& tag) {
  tag.dims = 0;
  tag.handleValid = false;
  tag.x = tag.y = tag.z = 0.0;
  tag.integer = 0;
  return m_binary ? scanBinary(tag) : scanAscii(tag);
}

// ---------------------------------------------------------------------------
// ASCII

OdDxfTagReader::Scan OdDxfTagReader::scanAscii(RawTag& tag) {
  const char* p = m_pos;
  const char* const end = m_end;
  if (p >= end) return Scan::kEnd;
  tag.line = m_line;
  tag.offset = static_cast<size_t>(p - m_begin);
  while (p < end && isBlank(*p)) ++p;
  const bool negative = p < end && *p == '-';
  if (negative) ++p;
  int code = 0;
  int digits = 0;
  while (p < end && static_cast<unsigned>(*p - '0') < 10) {
    if (digits < 6) code = code * 10 + (*p - '0');
    ++digits;
    ++p;
  }
  while (p < end && (isBlank(*p) || *p == '\r')) ++p;
  if (digits == 0 || digits > 5 || (p < end && *p != '\n')) {
    if (digits == 0 && !negative && onlyTrailingFiller(m_pos, end)) return Scan::kEnd;
    return failAtLine(tag.line,
                      "expected a group code, found '" + excerpt(m_pos, lineEndOf(m_pos, end)) + "'");
  }
  if (negative) code = -code;
  if (p >= end || p + 1 >= end) {
    return fail(eDxfReadAborted, "line " + std::to_string(tag.line + 1) +
                                     ": unexpected end of file, expected the value of group code " +
                                     std::to_string(code));
  }
  if (!OdDxf::isKnownCode(code)) return failAtLine(tag.line, "unknown group code " + std::to_string(code));
  tag.code = code;
  tag.type = OdDxf::valueTypeOf(code);
  ++m_line;
  return parseAsciiValue(tag, p + 1, end);
}

OdDxfTagReader::Scan OdDxfTagReader::parseAsciiValue(RawTag& tag, const char* value, const char* end) {
  const int valueLine = m_line;
  const char* afterNumber = value;
  switch (tag.type) {
    case ValueType::kString:
    case ValueType::kHandle:
    case ValueType::kBinary: {
      const char* lineEnd = lineEndOf(value, end);
      const char* textEnd = lineEnd > value && lineEnd[-1] == '\r' ? lineEnd - 1 : lineEnd;
      tag.text = std::string_view(value, static_cast<size_t>(textEnd - value));
      m_pos = lineEnd < end ? lineEnd + 1 : end;
      ++m_line;
      if (tag.type == ValueType::kHandle) {
        OdUInt64 handle = 0;
        tag.handleValid = parseHandle(tag.text, handle);
        tag.integer = static_cast<OdInt64>(handle);
      } else if (tag.type == ValueType::kBinary) {
        tag.text = trimmed(tag.text);
        if (!isHexData(tag.text)) break;  // reported below
      }
      return Scan::kTag;
    }
    case ValueType::kDouble:
    case ValueType::kPoint: {
      const char* p = value;
      while (p < end && isBlank(*p)) ++p;
      if (p < end && *p == '+') ++p;
      const auto result = std::from_chars(p, end, tag.x);
      if (result.ec == std::errc::invalid_argument) break;
      if (result.ec == std::errc::result_out_of_range) tag.x = outOfRangeValue(p, result.ptr);
      afterNumber = result.ptr;
      tag.text = {};
      break;
    }
    default: {
      const char* p = value;
      while (p < end && isBlank(*p)) ++p;
      if (p < end && *p == '+') ++p;
      const auto result = std::from_chars(p, end, tag.integer);
      if (result.ec != std::errc()) break;
      afterNumber = result.ptr;
      tag.text = {};
      break;
    }
  }
  if (afterNumber != value) {
    // Only blanks may follow the number on its line.
    const char* p = afterNumber;
    while (p < end && (isBlank(*p) || *p == '\r')) ++p;
    if (p >= end || *p == '\n') {
      m_pos = p < end ? p + 1 : end;
      ++m_line;
      return Scan::kTag;
    }
  }
  return failAtLine(valueLine, std::string("expected ") + typeName(tag.type) + " for group code " +
                                   std::to_string(tag.code) + ", found '" +
                                   excerpt(value, lineEndOf(value, end)) + "'");
}

// ---------------------------------------------------------------------------
// Binary

OdDxfTagReader::Scan OdDxfTagReader::scanBinary(RawTag& tag) {
  const auto* p = reinterpret_cast<const unsigned char*>(m_pos);
  const size_t left = static_cast<size_t>(m_end - m_pos);
  if (left == 0) return Scan::kEnd;
  tag.line = 0;
  tag.offset = static_cast<size_t>(m_pos - m_begin);
  int code;
  size_t used;
  if (m_shortCodes) {
    code = p[0];
    used = 1;
    if (code == 255) {
      code = left >= 3 ? loadLittleEndian<OdInt16>(m_pos + 1) : 0;
      used = 3;
    }
  } else {
    code = left >= 2 ? loadLittleEndian<OdInt16>(m_pos) : 0;
    used = 2;
  }
  if (used > left) {
    return fail(eDxfReadAborted, "byte offset " + std::to_string(tag.offset) + ": unexpected end of file in a group code");
  }
  if (!OdDxf::isKnownCode(code)) return failAtOffset(tag.offset, "unknown group code " + std::to_string(code));
  tag.code = code;
  tag.type = OdDxf::valueTypeOf(code);
  m_pos += used;
  return readBinaryValue(tag);
}

OdDxfTagReader::Scan OdDxfTagReader::readBinaryValue(RawTag& tag) {
  const size_t left = static_cast<size_t>(m_end - m_pos);
  const auto need = [&](size_t size) { return size <= left; };
  const auto truncated = [&](size_t size) {
    return fail(eDxfReadAborted, "byte offset " + std::to_string(tag.offset) + ": unexpected end of file in the " +
                                     std::to_string(size) + "-byte value of group code " +
                                     std::to_string(tag.code));
  };
  tag.text = {};
  switch (tag.type) {
    case ValueType::kString:
    case ValueType::kHandle: {
      const void* zero = std::memchr(m_pos, '\0', left);
      if (!zero) {
        return fail(eDxfReadAborted, "byte offset " + std::to_string(tag.offset) + ": string of group code " +
                                         std::to_string(tag.code) + " has no terminator");
      }
      tag.text = std::string_view(m_pos, static_cast<size_t>(static_cast<const char*>(zero) - m_pos));
      m_pos = static_cast<const char*>(zero) + 1;
      if (tag.type == ValueType::kHandle) {
        OdUInt64 handle = 0;
        tag.handleValid = parseHandle(tag.text, handle);
        tag.integer = static_cast<OdInt64>(handle);
      }
      return Scan::kTag;
    }
    case ValueType::kBinary: {
      if (!need(1)) return truncated(1);
      const size_t size = static_cast<unsigned char>(*m_pos);
      if (!need(1 + size)) return truncated(1 + size);
      tag.text = std::string_view(m_pos + 1, size);
      m_pos += 1 + size;
      return Scan::kTag;
    }
    case ValueType::kDouble:
    case ValueType::kPoint:
      if (!need(8)) return truncated(8);
      tag.x = loadLittleEndian<double>(m_pos);
      m_pos += 8;
      return Scan::kTag;
    case ValueType::kInt16:
      if (!need(2)) return truncated(2);
      tag.integer = loadLittleEndian<OdInt16>(m_pos);
      m_pos += 2;
      return Scan::kTag;
    case ValueType::kInt32:
      if (!need(4)) return truncated(4);
      tag.integer = loadLittleEndian<OdInt32>(m_pos);
      m_pos += 4;
      return Scan::kTag;
    case ValueType::kInt64:
      if (!need(8)) return truncated(8);
      tag.integer = loadLittleEndian<OdInt64>(m_pos);
      m_pos += 8;
      return Scan::kTag;
    case ValueType::kBool:
      if (!need(1)) return truncated(1);
      tag.integer = static_cast<unsigned char>(*m_pos);
      m_pos += 1;
      return Scan::kTag;
  }
  return failAtOffset(tag.offset, "unknown group code " + std::to_string(tag.code));
}

// ---------------------------------------------------------------------------
// Values

OdString OdDxfTagReader::string() const {
  std::wstring text;
  string(text);
  return OdString(std::move(text));
}

void OdDxfTagReader::string(std::wstring& out) const {
  out.clear();
  decodeText(m_tag.text, out);
}

void OdDxfTagReader::decodeText(std::string_view raw, std::wstring& out) const {
  m_converter.decode(raw, out, m_decodeEscapes);
}

void OdDxfTagReader::binary(OdBinaryData& out) const {
  const std::string_view text = m_tag.text;
  if (m_binary) {
    out.assign(text.begin(), text.end());
    return;
  }
  out.resize(text.size() / 2);
  for (size_t k = 0; k < out.size(); ++k) {
    out[k] = static_cast<OdUInt8>(hexDigit(text[2 * k]) << 4 | hexDigit(text[2 * k + 1]));
  }
}

void OdDxfTagReader::getTag(OdDxfTag& tag) const {
  tag.code = static_cast<OdInt16>(m_tag.code);
  tag.type = m_tag.type;
  tag.dims = m_tag.dims;
  tag.x = m_tag.x;
  tag.y = m_tag.y;
  tag.z = m_tag.z;
  tag.i = m_tag.integer;
  tag.s.str().clear();
  tag.bin.clear();
  switch (m_tag.type) {
    case ValueType::kString: decodeText(m_tag.text, tag.s.str()); break;
    case ValueType::kHandle:
      // Text that is no handle (an empty one, or a name where a file puts
      // one) is kept as the text it is, so that it is written back unchanged.
      if (!m_tag.handleValid) {
        tag.type = ValueType::kString;
        decodeText(m_tag.text, tag.s.str());
      }
      break;
    case ValueType::kBinary: binary(tag.bin); break;
    default: break;
  }
}

std::string OdDxfTagReader::where() const {
  return m_binary ? "byte offset " + std::to_string(m_tag.offset) : "line " + std::to_string(m_tag.line);
}

// ---------------------------------------------------------------------------
// End and errors

size_t OdDxfTagReader::bytesAfterEof() const {
  if (m_state != State::kEnd) return 0;
  const char* end = m_end;
  while (end > m_pos && onlyTrailingFiller(end - 1, end)) --end;
  return static_cast<size_t>(end - m_pos);
}

void OdDxfTagReader::throwIfError() const {
  if (hasError()) throw OdError(m_errorCode, OdString(m_errorMessage));
}

OdDxfTagReader::Scan OdDxfTagReader::fail(OdResult code, const std::string& message) {
  m_errorCode = code;
  m_errorMessage = message;
  return Scan::kError;
}

OdDxfTagReader::Scan OdDxfTagReader::failAtLine(int line, const std::string& message) {
  return fail(eSyntaxError, "line " + std::to_string(line) + ": " + message);
}

OdDxfTagReader::Scan OdDxfTagReader::failAtOffset(size_t offset, const std::string& message) {
  return fail(eSyntaxError, "byte offset " + std::to_string(offset) + ": " + message);
}
