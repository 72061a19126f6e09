// Writes groups (tags) of an ASCII DXF file into a growing memory buffer; the
// caller writes the buffer to disk.
//
// Use:
//   OdDxfTagWriter writer;
//   writer.setCodePage(OdDxf::stringCodePageOf(acadVer, dwgCodePage));
//   writer.writeString(0, L"SECTION");
//   writer.writePoint(10, x, y, z);
//   ...
//   file.write(writer.data());   // or std::string bytes = writer.release();
//
// Format of one tag: the group code right-aligned in 3 columns ("  0", " 10",
// "100", "1001"), a line end, the value, a line end. Line ends are "\r\n"
// unless setLineEnding(OdDxfTagWriter::LineEnding::kLf).
//
// Values:
// - doubles: the shortest text that reads back to the same double, always
//   with a decimal point ("1.0", "-0.0", "0.1", "1.0E+20"); non-finite
//   values come out as "nan"/"inf"/"-inf", which other programs may refuse.
// - integers (int16/int32/int64/bool codes): plain decimal.
// - handles: upper-case hex without leading zeros.
// - points: 2 or 3 tags (code, code + 10, code + 20).
// - binary chunks: upper-case hex. Files keep chunks to at most 127 bytes per
//   group (310..319, 1004); splitting longer data into several tags is the
//   caller's job, this writer writes what it is given.
// - strings: encoded in the writer's code page (set it from the file
//   version: UTF-8 for R2007 on, see OdDxf::stringCodePageOf). A character
//   the code page lacks is written as \U+XXXX (UTF-16 units; two escapes
//   above U+FFFF); CR and LF are written as \U+000D and \U+000A, since a
//   value is one line; a backslash that would read back as the start of an
//   escape is written as \U+005C. So OdDxfTagReader gives back exactly the
//   string written. textWasLossy() tells whether some character could not be
//   represented at all (NUL, which is dropped, a lone surrogate, or a value
//   beyond Unicode).
//
// The writer does not check that a value's type suits its group code; the
// typed write functions write what they are told.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "DxfTag.h"
#include "OdCodePage.h"

class OdDxfTagWriter {
 public:
  enum class LineEnding { kCrLf, kLf };

  OdDxfTagWriter() = default;
  explicit OdDxfTagWriter(int codePage, LineEnding lineEnding = LineEnding::kCrLf);

  // 65001 (kOdCodePageUtf8) for UTF-8, else a Windows code page number (default 1252).
  void setCodePage(int codePage) { m_converter = OdCodePageConverter(codePage); }
  int codePage() const { return m_converter.codePage(); }
  void setLineEnding(LineEnding lineEnding) { m_crlf = lineEnding == LineEnding::kCrLf; }
  // Reserves room for this many bytes of output in all.
  void reserve(size_t bytes) { m_buffer.reserve(bytes); }

  // ---- Writing

  void writeString(int code, std::wstring_view text);
  void writeString(int code, const OdString& text) { writeString(code, std::wstring_view(text.str())); }
  void writeString(int code, const wchar_t* text) { writeString(code, std::wstring_view(text)); }
  void writeString(int code, const std::wstring& text) { writeString(code, std::wstring_view(text)); }
  // Bytes written as they are (already encoded; must not hold line breaks).
  // Meant for ASCII keywords such as "SECTION" and for text copied unchanged.
  void writeRawString(int code, std::string_view bytes);
  void writeDouble(int code, double value);
  void writePoint(int code, double x, double y);
  void writePoint(int code, double x, double y, double z);
  void writeInt(int code, OdInt64 value);
  void writeBool(int code, bool value) { writeInt(code, value ? 1 : 0); }
  void writeHandle(int code, OdUInt64 handle);
  void writeBinary(int code, const OdUInt8* data, size_t size);
  void writeBinary(int code, const OdBinaryData& data) { writeBinary(code, data.data(), data.size()); }
  // Writes a tag by its type: points by dims, a handle with text (not valid
  // hex when read) as that text.
  void writeTag(const OdDxfTag& tag);

  // ---- Output

  std::string_view data() const { return m_buffer; }
  size_t size() const { return m_buffer.size(); }
  // Hands the output over and leaves the writer empty.
  std::string release();
  void clear() { m_buffer.clear(); }
  bool textWasLossy() const { return m_lossy; }

 private:
  void writeCode(int code);
  void endLine();
  void writeNumberLine(const char* text, const char* end);

  std::string m_buffer;
  OdCodePageConverter m_converter{kOdCodePageAnsi};
  bool m_crlf = true;
  bool m_lossy = false;
};

// Writes a tag by its type with a writer's typed calls (the text writer's,
// the tag stream's): points by dims, a handle with text (not valid hex when
// read) as that text.
template <class Writer>
void odDxfWriteTagWith(Writer& writer, const OdDxfTag& tag) {
  using OdDxf::ValueType;
  switch (tag.type) {
    case ValueType::kString: writer.writeString(tag.code, tag.s); break;
    case ValueType::kDouble: writer.writeDouble(tag.code, tag.x); break;
    case ValueType::kPoint:
      if (tag.dims == 2) writer.writePoint(tag.code, tag.x, tag.y);
      else writer.writePoint(tag.code, tag.x, tag.y, tag.z);
      break;
    case ValueType::kHandle:
      if (tag.s.isEmpty()) writer.writeHandle(tag.code, static_cast<OdUInt64>(tag.i));
      else writer.writeString(tag.code, tag.s);
      break;
    case ValueType::kBinary: writer.writeBinary(tag.code, tag.bin); break;
    default: writer.writeInt(tag.code, tag.i); break;
  }
}
