// Reads the groups (tags) of a DXF file, ASCII or binary, from a buffer that
// holds the whole file.
//
// Use:
//   std::string data = ...whole file...;
//   OdDxfTagReader reader(data);
//   while (reader.next()) {
//     switch (reader.code()) { ... reader.rawText(), reader.real(), reader.integer() ... }
//   }
//   if (reader.hasError()) report(reader.errorMessage());   // or reader.throwIfError()
//
// What one tag is:
// - code() and type(): the group code and the value type that the code
//   carries (OdDxf::valueTypeOf).
// - A point x code (OdDxf::isPointCode) followed by code + 10 and optionally
//   code + 20 is merged into one tag of type kPoint with dims() 2 or 3. An x
//   code without its y, and a lone y or z, are plain kDouble tags.
// - Numbers are parsed while reading (real(), x()/y()/z(), integer(),
//   handle()). Integers of any integer type are range-checked only against
//   64 bits, so a file's out-of-range value reaches the caller unchanged.
// - Strings are not decoded while reading: rawText() gives their bytes (a view
//   into the buffer), and string()/decodeText() decode them on request with the
//   reader's code page, \U+XXXX and \M+NXXXX escapes included. So the code
//   page may be set at any time, e.g. once the header's $ACADVER and
//   $DWGCODEPAGE are known (OdDxf::stringCodePageOf), and comparisons with
//   ASCII keywords (textIs("SECTION")) need no decoding at all.
// - Handles are hex text; handle() is its value and handleIsValid() tells
//   whether the text was 1..16 hex digits (an empty or broken handle is not a
//   read error: the object layer decides what it means).
// - Binary chunks (310..319, 1004): ASCII files hold them as hex text (checked
//   while reading), binary files as length-prefixed bytes; binary() gives
//   the bytes in both cases.
//
// ASCII files: "\r\n" and "\n" line ends; spaces and tabs around group codes
// and numbers are ignored; string values are kept as they stand (trailing
// spaces too; only the line end is removed). line() is the 1-based line of
// the tag's group code. A UTF-8 byte order mark at the start is skipped, and
// blank lines or a Ctrl-Z at the very end are taken as the end of the data.
//
// Binary files (recognised by their 22-byte sentinel): group codes of 2 bytes
// (R13 on) or of 1 byte with 255 announcing a 2-byte code (R12), told apart
// by the first tag (0 SECTION); little-endian numbers; zero-terminated
// strings; 1-byte booleans. offset() is the byte offset of the tag.
//
// Errors: reading stops at the first malformed tag; next() returns false,
// hasError() is true and errorMessage() names the place and what was
// expected, e.g. "line 1234: expected a group code, found 'xyz'" or
// "byte offset 5678: string of group code 1 has no terminator". Nothing in
// the input can make the reader crash or loop. errorCode() is eSyntaxError
// for malformed data and eDxfReadAborted for data that ends too early.
//
// End: by default the tag 0 EOF ends the data (what follows it, often junk,
// is not read; bytesAfterEof() tells how much there is).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "DxfTag.h"
#include "OdCodePage.h"
#include "OdResult.h"

class OdDxfTagReader {
 public:
  // data must stay unchanged and alive while the reader and the views it hands
  // out (rawText) are in use. Strings decode as code page 1252 until
  // setCodePage says otherwise.
  explicit OdDxfTagReader(std::string_view data);
  explicit OdDxfTagReader(const char* data) : OdDxfTagReader(std::string_view(data)) {}
  explicit OdDxfTagReader(const std::string& data) : OdDxfTagReader(std::string_view(data)) {}
  // A temporary would be gone before the first tag is read.
  explicit OdDxfTagReader(std::string&& data) = delete;
  OdDxfTagReader(const OdDxfTagReader&) = delete;
  OdDxfTagReader& operator=(const OdDxfTagReader&) = delete;

  // True when data starts with the binary DXF sentinel.
  static bool isBinaryDxf(std::string_view data);
  bool isBinary() const { return m_binary; }

  // ---- Moving through the tags

  // Reads the next tag. False at the end of the data or on an error.
  bool next();
  // Reads the next tag and stores it in tag (reusing tag's storage).
  bool next(OdDxfTag& tag);
  // Makes the next call of next() deliver the current tag again (one level:
  // calling it twice has the effect of calling it once).
  void pushBack();

  // ---- The current tag (valid after next() returned true)

  int code() const { return m_tag.code; }
  OdDxf::ValueType type() const { return m_tag.type; }
  int dims() const { return m_tag.dims; }           // 2 or 3 for points, else 0
  double real() const { return m_tag.x; }           // kDouble (and a point's x)
  double x() const { return m_tag.x; }
  double y() const { return m_tag.y; }
  double z() const { return m_tag.z; }              // 0 for 2-dimensional points
  OdInt64 integer() const { return m_tag.integer; } // kInt16/kInt32/kInt64/kBool
  bool boolean() const { return m_tag.integer != 0; }
  OdUInt64 handle() const { return static_cast<OdUInt64>(m_tag.integer); }  // 0 if not valid
  bool handleIsValid() const { return m_tag.handleValid; }
  // The undecoded bytes of a string or handle value; of a binary chunk in an
  // ASCII file, its hex text; in a binary file, its bytes. Empty for numbers.
  std::string_view rawText() const { return m_tag.text; }
  // True when the raw text, less blanks around it, is keyword ("SECTION",
  // "ENDSEC", "$ACADVER"): the cheap test for ASCII keywords.
  bool textIs(std::string_view keyword) const;
  // The decoded string value (also works for handles: their text).
  OdString string() const;
  void string(std::wstring& out) const;  // replaces out's content
  // The bytes of a binary chunk (replaces out's content).
  void binary(OdBinaryData& out) const;
  // The whole tag as a value (reusing tag's storage).
  void getTag(OdDxfTag& tag) const;

  // Position of the current tag: 1-based line of its group code (ASCII) or
  // byte offset of its group code (binary; also kept for ASCII).
  int line() const { return m_tag.line; }
  size_t offset() const { return m_tag.offset; }
  // "line 12" or "byte offset 345", to start messages about the current tag.
  std::string where() const;

  // ---- Strings

  // 65001 (kOdCodePageUtf8) for UTF-8, else a Windows code page number.
  void setCodePage(int codePage) { m_converter = OdCodePageConverter(codePage); }
  int codePage() const { return m_converter.codePage(); }
  // Whether \U+XXXX and \M+NXXXX escapes are decoded (on by default).
  void setDecodeEscapes(bool decode) { m_decodeEscapes = decode; }
  // Decodes bytes as the reader decodes strings, appending to out.
  void decodeText(std::string_view raw, std::wstring& out) const;

  // ---- End and errors

  // Whether the tag 0 EOF ends the data (default true).
  void setStopAtEof(bool stop) { m_stopAtEof = stop; }
  // True once the data ended without an error.
  bool atEnd() const { return m_state == State::kEnd; }
  bool hasError() const { return m_state == State::kError; }
  OdResult errorCode() const { return m_errorCode; }
  // Empty without an error; the message in UTF-8.
  const std::string& errorMessage() const { return m_errorMessage; }
  // Throws OdError(errorCode(), errorMessage()) when there is an error.
  void throwIfError() const;
  // After the data ended at 0 EOF: bytes that follow it, less trailing white space.
  size_t bytesAfterEof() const;

 private:
  enum class State { kReading, kEnd, kError };
  enum class Scan { kTag, kEnd, kError };

  struct RawTag {
    int code = 0;
    OdDxf::ValueType type = OdDxf::ValueType::kString;
    OdUInt8 dims = 0;
    bool handleValid = false;
    double x = 0, y = 0, z = 0;
    OdInt64 integer = 0;
    std::string_view text;
    int line = 0;
    size_t offset = 0;
  };

  Scan scan(RawTag& tag);
  Scan scanAscii(RawTag& tag);
  Scan scanBinary(RawTag& tag);
  Scan parseAsciiValue(RawTag& tag, const char* value, const char* valueEnd);
  Scan readBinaryValue(RawTag& tag);
  void mergePoint();
  bool scanAhead(RawTag& tag);
  bool isEofTag() const;
  Scan fail(OdResult code, const std::string& message);
  Scan failAtLine(int line, const std::string& message);
  Scan failAtOffset(size_t offset, const std::string& message);

  const char* m_begin;
  const char* m_pos;
  const char* m_end;
  int m_line = 1;              // line at m_pos (ASCII)
  bool m_binary = false;
  bool m_shortCodes = false;   // binary R12: 1-byte group codes
  bool m_stopAtEof = true;
  bool m_decodeEscapes = true;
  bool m_pushedBack = false;
  bool m_hasPending = false;
  State m_state = State::kReading;
  RawTag m_tag;
  RawTag m_pending;            // read ahead while looking for a point's y or z
  OdCodePageConverter m_converter{kOdCodePageAnsi};
  OdResult m_errorCode = eOk;
  std::string m_errorMessage;
};
