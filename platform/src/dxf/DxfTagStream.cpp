// Tags in memory: records written by the converters, read by the DXF reader.
#include "dxf/DxfTagStream.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "dxf/DxfTagReader.h"
#include "dxf/DxfTagWriter.h"

using OdDxf::ValueType;
using Kind = OdDxfTagStream::Kind;

namespace {

// A record: the group code (2 bytes), the kind (1 byte), then the value:
// 8 bytes for a double, an integer or a handle, 16 or 24 for a point, and a
// 4-byte count followed by the wide characters or bytes of a string or chunk.
constexpr size_t kHeadSize = 3;

template <class T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

// "EOF" with blanks around it, as the text reader compares keywords.
bool isEofText(std::wstring_view text) {
  while (!text.empty() && (text.front() == L' ' || text.front() == L'\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == L' ' || text.back() == L'\t' || text.back() == L'\r')) text.remove_suffix(1);
  return text == L"EOF";
}

// The type of each group code from 0 to 1071 (the codes of records), or
// none for a code that has no meaning: looked up for every record.
struct CodeType {
  bool known;
  ValueType type;
};
CodeType codeTypeOf(int code) {
  constexpr int kCodes = 1072;
  static const auto kTypes = [] {
    std::array<CodeType, kCodes> types{};
    for (int c = 0; c < kCodes; ++c) types[static_cast<size_t>(c)] = {OdDxf::isKnownCode(c), OdDxf::valueTypeOf(c)};
    return types;
  }();
  if (code >= 0 && code < kCodes) return kTypes[static_cast<size_t>(code)];
  return {OdDxf::isKnownCode(code), OdDxf::valueTypeOf(code)};
}

bool isIntegerType(ValueType type) {
  return type == ValueType::kInt16 || type == ValueType::kInt32 || type == ValueType::kInt64 ||
         type == ValueType::kBool;
}

}  // namespace

// ---------------------------------------------------------------- writing

void OdDxfTagStream::start(int code, Kind kind) {
  // A stream released after every object starts again empty: room for a whole object at once.
  if (m_bytes.capacity() < 64) m_bytes.reserve(1024);
  const auto code16 = static_cast<OdInt16>(code);
  char head[kHeadSize];
  std::memcpy(head, &code16, 2);
  head[2] = static_cast<char>(kind);
  m_bytes.append(head, kHeadSize);
}

template <class T>
void OdDxfTagStream::put(const T& value) {
  m_bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

void OdDxfTagStream::writeString(int code, std::wstring_view text) {
  start(code, Kind::kString);
  if (std::wmemchr(text.data(), L'\0', text.size()) == nullptr) {
    put(static_cast<OdUInt32>(text.size()));
    m_bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    return;
  }
  std::wstring kept(text);
  std::erase(kept, L'\0');  // a line of text cannot hold it
  put(static_cast<OdUInt32>(kept.size()));
  m_bytes.append(reinterpret_cast<const char*>(kept.data()), kept.size() * sizeof(wchar_t));
}

void OdDxfTagStream::writeDouble(int code, double value) {
  start(code, Kind::kDouble);
  put(value);
}

void OdDxfTagStream::writePoint(int code, double x, double y) {
  if (!OdDxf::isPointCode(code)) {
    writeDouble(code, x);
    writeDouble(code + 10, y);
    return;
  }
  start(code, Kind::kPoint2);
  put(x);
  put(y);
}

void OdDxfTagStream::writePoint(int code, double x, double y, double z) {
  if (!OdDxf::isPointCode(code)) {
    writeDouble(code, x);
    writeDouble(code + 10, y);
    writeDouble(code + 20, z);
    return;
  }
  start(code, Kind::kPoint3);
  put(x);
  put(y);
  put(z);
}

void OdDxfTagStream::writeInt(int code, OdInt64 value) {
  start(code, Kind::kInteger);
  put(value);
}

void OdDxfTagStream::writeHandle(int code, OdUInt64 handle) {
  start(code, Kind::kHandle);
  put(handle);
}

void OdDxfTagStream::writeBinary(int code, const OdUInt8* data, size_t size) {
  start(code, Kind::kBinary);
  put(static_cast<OdUInt32>(size));
  m_bytes.append(reinterpret_cast<const char*>(data), size);
}

void OdDxfTagStream::writeTag(const OdDxfTag& tag) { odDxfWriteTagWith(*this, tag); }

OdDxfTagStream OdDxfTagStream::release() {
  OdDxfTagStream out;
  out.m_bytes = std::move(m_bytes);
  m_bytes.clear();
  return out;
}

// ---------------------------------------------------------------- reading

OdDxfTagStreamReader::OdDxfTagStreamReader(const OdDxfTagStream& tags)
    : m_begin(tags.m_bytes.data()), m_pos(m_begin), m_end(m_begin + tags.m_bytes.size()), m_tagStart(m_begin) {}

bool OdDxfTagStreamReader::peek(const char* at, Record& record) const {
  if (static_cast<size_t>(m_end - at) < kHeadSize) return false;
  record.code = load<OdInt16>(at);
  record.kind = static_cast<Kind>(at[2]);
  record.value = at + kHeadSize;
  size_t size = 0;
  switch (record.kind) {
    case Kind::kDouble:
    case Kind::kInteger:
    case Kind::kHandle: size = 8; break;
    case Kind::kPoint2: size = 16; break;
    case Kind::kPoint3: size = 24; break;
    case Kind::kString:
    case Kind::kBinary: {
      if (m_end - record.value < 4) return false;
      const auto count = load<OdUInt32>(record.value);
      size = 4 + count * (record.kind == Kind::kString ? sizeof(wchar_t) : 1);
      break;
    }
    default: return false;
  }
  if (static_cast<size_t>(m_end - record.value) < size) return false;
  record.end = record.value + size;
  return true;
}

double OdDxfTagStreamReader::realOf(const Record& record) {
  return record.kind == Kind::kInteger ? static_cast<double>(load<OdInt64>(record.value)) : load<double>(record.value);
}

bool OdDxfTagStreamReader::fail(const std::string& message) {
  m_state = State::kError;
  m_errorCode = eSyntaxError;
  m_errorMessage = message;
  return false;
}

bool OdDxfTagStreamReader::next(OdDxfTag& tag) {
  if (m_state != State::kReading) return false;
  m_tagStart = m_pos;
  m_tagTextTags = m_textTags;
  m_tagLine = 1 + 2 * m_textTags;
  Record record;
  if (m_pos == m_end) {
    m_state = State::kEnd;
    return false;
  }
  if (!peek(m_pos, record)) return fail(where() + ": damaged tag record");
  m_pos = record.end;
  ++m_textTags;
  decode(record, tag);
  if (m_state == State::kError) return false;
  if (m_stopAtEof && tag.code == 0 && tag.type == ValueType::kString && isEofText(tag.s.str())) {
    m_state = State::kEnd;
  }
  return true;
}

void OdDxfTagStreamReader::pushBack() {
  m_pos = m_tagStart;
  m_textTags = m_tagTextTags;
  if (m_state == State::kEnd) m_state = State::kReading;
}

void OdDxfTagStreamReader::decode(const Record& record, OdDxfTag& tag) {
  const auto [known, type] = codeTypeOf(record.code);
  tag.code = static_cast<OdInt16>(record.code);
  tag.type = type;
  tag.dims = 0;
  tag.x = tag.y = tag.z = 0;
  tag.i = 0;
  tag.s.str().clear();
  tag.bin.clear();
  if (!known) {
    decodeAsText(record, tag);  // refused as the text reader refuses it
    return;
  }
  switch (record.kind) {
    case Kind::kString:
      if (type == ValueType::kString) {
        const auto count = load<OdUInt32>(record.value);
        std::wstring& text = tag.s.str();
        text.resize(count);
        std::memcpy(text.data(), record.value + 4, count * sizeof(wchar_t));
        return;
      }
      break;
    case Kind::kDouble:
    case Kind::kInteger:
      if (type == ValueType::kDouble) {
        tag.x = realOf(record);
        return;
      }
      if (type == ValueType::kPoint) {
        tag.x = realOf(record);
        mergePoint(tag);
        return;
      }
      if (record.kind == Kind::kInteger && isIntegerType(type)) {
        tag.i = load<OdInt64>(record.value);
        return;
      }
      break;
    case Kind::kPoint2:
    case Kind::kPoint3:
      // Written only for point codes.
      tag.x = load<double>(record.value);
      tag.y = load<double>(record.value + 8);
      tag.dims = 2;
      if (record.kind == Kind::kPoint3) {
        tag.z = load<double>(record.value + 16);
        tag.dims = 3;
        m_textTags += 2;
      } else {
        ++m_textTags;
        mergePoint(tag);
      }
      return;
    case Kind::kHandle:
      if (type == ValueType::kHandle) {
        tag.i = load<OdInt64>(record.value);
        return;
      }
      break;
    case Kind::kBinary:
      if (type == ValueType::kBinary) {
        const auto count = load<OdUInt32>(record.value);
        const auto* bytes = reinterpret_cast<const OdUInt8*>(record.value + 4);
        tag.bin.assign(bytes, bytes + count);
        return;
      }
      break;
  }
  decodeAsText(record, tag);
}

void OdDxfTagStreamReader::mergePoint(OdDxfTag& tag) {
  // tag holds x (dims 0: a lone double so far) or x and y (dims 2).
  for (int dims = tag.dims ? 2 : 1; dims < 3; ++dims) {
    Record follower;
    if (!peek(m_pos, follower) || follower.code != tag.code + 10 * dims ||
        (follower.kind != Kind::kDouble && follower.kind != Kind::kInteger)) {
      break;
    }
    (dims == 1 ? tag.y : tag.z) = realOf(follower);
    tag.type = ValueType::kPoint;
    tag.dims = static_cast<OdUInt8>(dims + 1);
    m_pos = follower.end;
    ++m_textTags;
  }
  if (tag.dims == 0) tag.type = ValueType::kDouble;
}

bool OdDxfTagStreamReader::decodeAsText(const Record& record, OdDxfTag& tag) {
  OdDxfTagWriter writer(kOdCodePageUtf8, OdDxfTagWriter::LineEnding::kLf);
  switch (record.kind) {
    case Kind::kString: {
      const auto count = load<OdUInt32>(record.value);
      std::wstring text(count, L'\0');
      std::memcpy(text.data(), record.value + 4, count * sizeof(wchar_t));
      writer.writeString(record.code, text);
      break;
    }
    case Kind::kDouble: writer.writeDouble(record.code, load<double>(record.value)); break;
    case Kind::kInteger: writer.writeInt(record.code, load<OdInt64>(record.value)); break;
    case Kind::kHandle: writer.writeHandle(record.code, load<OdUInt64>(record.value)); break;
    case Kind::kBinary:
      writer.writeBinary(record.code, reinterpret_cast<const OdUInt8*>(record.value + 4), load<OdUInt32>(record.value));
      break;
    default: break;  // points are written for point codes only
  }
  const std::string text(writer.data());
  OdDxfTagReader reader(text);
  reader.setCodePage(kOdCodePageUtf8);
  reader.setStopAtEof(false);
  if (reader.next(tag)) return true;
  // "line 2: expected ..." names the place in the one-tag text: name the stream's.
  const std::string& message = reader.errorMessage();
  int line = 0;
  const size_t colon = message.find(": ");
  if (message.rfind("line ", 0) == 0 && colon != std::string::npos) line = std::atoi(message.c_str() + 5);
  fail(line ? "line " + std::to_string(m_tagLine + line - 1) + message.substr(colon) : where() + ": " + message);
  m_errorCode = reader.errorCode() == eOk ? eSyntaxError : reader.errorCode();
  return false;
}
