// The ASCII DXF tag writer.
#include "dxf/DxfTagWriter.h"

#include <array>
#include <cstring>

#include "base/DxfNumberFormat.h"

namespace {

constexpr int kTabulatedCodes = 1072;  // 0..1071, every code a file uses

struct CodeText {
  char text[4];
  OdUInt8 size;
};

// "  0", " 10", "100", "1001": codes right-aligned in 3 columns.
CodeText codeText(int code) {
  CodeText result{};
  char digits[OdDxf::kNumberTextSize];
  const size_t count = static_cast<size_t>(OdDxf::formatInteger(digits, code) - digits);
  const size_t pad = count < 3 ? 3 - count : 0;
  std::memset(result.text, ' ', pad);
  std::memcpy(result.text + pad, digits, std::min(count, sizeof(result.text) - pad));
  result.size = static_cast<OdUInt8>(std::min(pad + count, sizeof(result.text)));
  return result;
}

const std::array<CodeText, kTabulatedCodes>& codeTexts() {
  static const std::array<CodeText, kTabulatedCodes> table = [] {
    std::array<CodeText, kTabulatedCodes> texts{};
    for (int code = 0; code < kTabulatedCodes; ++code) texts[static_cast<size_t>(code)] = codeText(code);
    return texts;
  }();
  return table;
}

}  // namespace

OdDxfTagWriter::OdDxfTagWriter(int codePage, LineEnding lineEnding)
    : m_converter(codePage), m_crlf(lineEnding == LineEnding::kCrLf) {}

std::string OdDxfTagWriter::release() {
  std::string out = std::move(m_buffer);
  m_buffer.clear();
  return out;
}

void OdDxfTagWriter::endLine() {
  if (m_crlf) m_buffer.append("\r\n", 2);
  else m_buffer += '\n';
}

void OdDxfTagWriter::writeCode(int code) {
  if (code >= 0 && code < kTabulatedCodes) {
    const CodeText& text = codeTexts()[static_cast<size_t>(code)];
    m_buffer.append(text.text, text.size);
  } else {
    char digits[OdDxf::kNumberTextSize];
    const char* end = OdDxf::formatInteger(digits, code);
    for (ptrdiff_t pad = 3 - (end - digits); pad > 0; --pad) m_buffer += ' ';
    m_buffer.append(digits, static_cast<size_t>(end - digits));
  }
  endLine();
}

void OdDxfTagWriter::writeNumberLine(const char* text, const char* end) {
  m_buffer.append(text, static_cast<size_t>(end - text));
  endLine();
}

void OdDxfTagWriter::writeString(int code, std::wstring_view text) {
  writeCode(code);
  if (m_converter.encode(text, m_buffer, OdCodePageConverter::Escaping::kDxfText)) {
    // Unmappable characters are escaped; only what no escape can carry is lost.
    for (wchar_t ch : text) {
      if (ch == 0 || static_cast<OdUInt32>(ch) > 0x10FFFF || (ch >= 0xD800 && ch <= 0xDFFF)) m_lossy = true;
    }
  }
  endLine();
}

void OdDxfTagWriter::writeRawString(int code, std::string_view bytes) {
  writeCode(code);
  m_buffer.append(bytes);
  endLine();
}

void OdDxfTagWriter::writeDouble(int code, double value) {
  writeCode(code);
  char text[OdDxf::kNumberTextSize];
  writeNumberLine(text, OdDxf::formatDouble(text, value));
}

void OdDxfTagWriter::writePoint(int code, double x, double y) {
  writeDouble(code, x);
  writeDouble(code + 10, y);
}

void OdDxfTagWriter::writePoint(int code, double x, double y, double z) {
  writeDouble(code, x);
  writeDouble(code + 10, y);
  writeDouble(code + 20, z);
}

void OdDxfTagWriter::writeInt(int code, OdInt64 value) {
  writeCode(code);
  char text[OdDxf::kNumberTextSize];
  writeNumberLine(text, OdDxf::formatInteger(text, value));
}

void OdDxfTagWriter::writeHandle(int code, OdUInt64 handle) {
  writeCode(code);
  char text[OdDxf::kNumberTextSize];
  writeNumberLine(text, OdDxf::formatHandle(text, handle));
}

void OdDxfTagWriter::writeBinary(int code, const OdUInt8* data, size_t size) {
  writeCode(code);
  OdDxf::appendHex(m_buffer, data, size);
  endLine();
}

void OdDxfTagWriter::writeTag(const OdDxfTag& tag) {
  using OdDxf::ValueType;
  switch (tag.type) {
    case ValueType::kString: writeString(tag.code, tag.s); break;
    case ValueType::kDouble: writeDouble(tag.code, tag.x); break;
    case ValueType::kPoint:
      if (tag.dims == 2) writePoint(tag.code, tag.x, tag.y);
      else writePoint(tag.code, tag.x, tag.y, tag.z);
      break;
    case ValueType::kHandle:
      if (tag.s.isEmpty()) writeHandle(tag.code, static_cast<OdUInt64>(tag.i));
      else writeString(tag.code, tag.s);
      break;
    case ValueType::kBinary: writeBinary(tag.code, tag.bin); break;
    default: writeInt(tag.code, tag.i); break;
  }
}
