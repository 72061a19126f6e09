// Tags held in memory as values, for a producer of objects that is not a
// file (the DWG converter): it writes tags with the calls of the ASCII tag
// writer, and the DXF reader takes them back as they were written, with no
// number formatting or parsing and no code-page round trip in between.
//
// Use:
//   OdDxfTagStream tags;
//   tags.writeString(0, L"SECTION");
//   tags.writePoint(10, x, y, z);
//   ...
//   OdDbDatabasePtr db = odDxfReadTags(tags, &report);
//
// A record holds the group code, the kind of value written and the value in
// binary form: doubles bit for bit, integers and handles in 64 bits, strings
// as wide characters, binary chunks as bytes.
//
// OdDxfTagStreamReader gives the reader exactly the tags that reading the
// same calls written as DXF text would give:
// - the value's type follows the group code (OdDxf::valueTypeOf), as in a
//   file: an integer written for a real code reads as that real, and a value
//   whose text would not parse for its code (a real for an integer code, a
//   name for a handle code, an unknown code) goes the way of the text, so
//   that it gives the text reader's tag or its error;
// - point codes merge as in a file: an x code followed by its y (and z)
//   doubles is one point, a point of a code that is no point code is its
//   separate doubles;
// - line() counts the lines the tags would take as text (two per group),
//   so that the reader's messages name the same places;
// - a string loses the NUL characters a DXF line cannot hold.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "DxfFile.h"
#include "DxfTag.h"
#include "OdResult.h"

class OdDxfTagStream {
 public:
  OdDxfTagStream() = default;

  // ---- Writing: the calls of OdDxfTagWriter

  void writeString(int code, std::wstring_view text);
  void writeString(int code, const OdString& text) { writeString(code, std::wstring_view(text.str())); }
  void writeString(int code, const wchar_t* text) { writeString(code, std::wstring_view(text)); }
  void writeString(int code, const std::wstring& text) { writeString(code, std::wstring_view(text)); }
  void writeDouble(int code, double value);
  void writePoint(int code, double x, double y);
  void writePoint(int code, double x, double y, double z);
  void writeInt(int code, OdInt64 value);
  void writeBool(int code, bool value) { writeInt(code, value ? 1 : 0); }
  void writeHandle(int code, OdUInt64 handle);
  void writeBinary(int code, const OdUInt8* data, size_t size);
  void writeBinary(int code, const OdBinaryData& data) { writeBinary(code, data.data(), data.size()); }
  // Writes a tag by its type, as OdDxfTagWriter::writeTag does.
  void writeTag(const OdDxfTag& tag);

  // ---- The records

  // Hands the records over and leaves the stream empty.
  OdDxfTagStream release();
  void clear() { m_bytes.clear(); }
  // Room for `bytes` bytes of records, so that a large output grows once.
  void reserve(size_t bytes) { m_bytes.reserve(bytes); }
  // Drops the records written after the first `bytes` bytes (a size() taken earlier).
  void truncate(size_t bytes) { if (bytes < m_bytes.size()) m_bytes.resize(bytes); }
  bool empty() const { return m_bytes.empty(); }
  size_t size() const { return m_bytes.size(); }  // bytes held
  // Appends the records of other.
  OdDxfTagStream& operator+=(const OdDxfTagStream& other) {
    m_bytes += other.m_bytes;
    return *this;
  }

  // What a record holds after its group code.
  enum class Kind : OdUInt8 { kString, kDouble, kPoint2, kPoint3, kInteger, kHandle, kBinary };

 private:
  friend class OdDxfTagStreamReader;
  void start(int code, Kind kind);
  template <class T>
  void put(const T& value);

  std::string m_bytes;
};

// Reads the tags of a stream with the interface of OdDxfTagReader that the
// DXF reader uses. The stream must outlive the reader and stay unchanged.
class OdDxfTagStreamReader {
 public:
  explicit OdDxfTagStreamReader(const OdDxfTagStream& tags);
  OdDxfTagStreamReader(const OdDxfTagStreamReader&) = delete;
  OdDxfTagStreamReader& operator=(const OdDxfTagStreamReader&) = delete;

  // Reads the next tag into tag (reusing its storage). False at the end of
  // the records, after 0 EOF (unless setStopAtEof(false)) or on an error.
  bool next(OdDxfTag& tag);
  // Makes the next call of next() deliver the current tag again.
  void pushBack();

  int line() const { return m_tagLine; }
  std::string where() const { return "line " + std::to_string(m_tagLine); }
  bool isBinary() const { return false; }
  // Strings are held decoded: the code page changes nothing.
  void setCodePage(int) {}
  void setStopAtEof(bool stop) { m_stopAtEof = stop; }
  bool atEnd() const { return m_state == State::kEnd; }
  bool hasError() const { return m_state == State::kError; }
  OdResult errorCode() const { return m_errorCode; }
  const std::string& errorMessage() const { return m_errorMessage; }
  // Records after 0 EOF are not read; nothing counts as junk after it.
  size_t bytesAfterEof() const { return 0; }

 private:
  enum class State { kReading, kEnd, kError };
  using Kind = OdDxfTagStream::Kind;

  struct Record {
    int code = 0;
    Kind kind = Kind::kString;
    const char* value = nullptr;  // the value's bytes
    const char* end = nullptr;    // the next record
  };
  bool peek(const char* at, Record& record) const;
  // The value of a double or integer record as a real.
  static double realOf(const Record& record);
  void decode(const Record& record, OdDxfTag& tag);
  // A value whose type does not match its code: written as text and read
  // back by the text reader, so that it reads as it would from a file.
  bool decodeAsText(const Record& record, OdDxfTag& tag);
  // An x followed by its y (and z) doubles becomes one point.
  void mergePoint(OdDxfTag& tag);
  bool fail(const std::string& message);

  const char* m_begin;
  const char* m_pos;
  const char* m_end;
  const char* m_tagStart;  // where the current tag's records start
  int m_textTags = 0;      // groups before m_pos, as text
  int m_tagTextTags = 0;   // the same at m_tagStart
  int m_tagLine = 0;
  bool m_stopAtEof = true;
  State m_state = State::kReading;
  OdResult m_errorCode = eOk;
  std::string m_errorMessage;
};

// Reads a drawing from tags in memory as odDxfReadBuffer reads a file's
// data: the same objects, repairs and report.
OdDbDatabasePtr odDxfReadTags(const OdDxfTagStream& tags, OdDxfReadReport* report = nullptr);
