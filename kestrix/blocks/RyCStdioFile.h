// The encoded line-oriented text file: wide text converted to bytes by an
// encoding setting and back.
//
// Encodings: 1 the ANSI code page (the host's ANSICODEPAGE, double-byte
// pages included), 2 UTF-8, 3 UTF-16 little-endian, 4 UTF-16 big-endian.
//
// Escape flag (on by default), encoding 1 only: a character the code page
// lacks is written as "\U+XXXX" (upper-case hexadecimal UTF-16 code units;
// two escapes for a character beyond U+FFFF), never approximated by a
// look-alike. Reading takes "\U+xxxx" or "\u+xxxx" (hexadecimal digits of
// either case) as that code unit (two escapes forming a surrogate pair give
// one character) and "\M+Nxxxx" or "\m+Nxxxx" as the double-byte character
// xxxx of the code page N selects (1 = 932, 2 = 950, 3 = 949, 4 = 1361,
// 5 = 936). A backslash that starts no valid escape (nor "\U+0000") stays a
// literal backslash; so that such a backslash written in a value comes back
// as itself, a backslash followed by U, u, M or m and a plus sign is written
// as "\U+005C". With the flag off, unmappable characters are written as
// "?" and escapes are read as they stand.
//
// Line-end flag (off by default): a line feed is written as carriage return
// and line feed (the code units 13, 10 for UTF-16), and a carriage return
// followed by a line feed is read as one line feed. This comes on top of
// text mode, which does the same at the level of the file.
//
// UTF-16 files in text mode are translated per code unit (a byte 0x0A inside
// a code unit is no line feed).
#pragma once

#include <string>

#include "OdCodePage.h"
#include "RyStdioFile.h"

class RyCStdioFile : public CStdioFile {
 public:
  enum Encoding : int { kAnsi = 1, kUtf8 = 2, kUtf16LittleEndian = 3, kUtf16BigEndian = 4 };

  explicit RyCStdioFile(int encoding = kAnsi, bool escape = true, bool lineEnds = false);

  int encoding() const { return m_encoding; }
  void setEncoding(int encoding);
  bool escape() const { return m_escape; }
  void setEscape(bool on) { m_escape = on; }
  bool lineEnds() const { return m_lineEnds; }
  void setLineEnds(bool on) { m_lineEnds = on; }
  // The code page of encoding 1.
  int ansiCodePage() const { return m_ansi.codePage(); }

  BOOL Open(LPCWSTR fileName, UINT openFlags) override;
  BOOL ReadString(OdString& line) override;
  void WriteString(LPCWSTR text) override;

  // For a file opened for reading and not read yet: a byte-order mark sets
  // the encoding it stands for and is passed over. Without one the encoding
  // stays as it is: the bytes are never guessed at, since text of the ANSI
  // code page can look like UTF-8 by chance. Returns the encoding in force.
  int detectEncoding();
  // Whether the text still to be read holds a NUL character (a NUL byte in
  // the 8-bit encodings, a NUL code unit in UTF-16) within its first 64 KiB:
  // such a file is no text file. The read position is kept.
  bool looksBinary();

 private:
  std::string encode(const wchar_t* text, size_t length) const;
  void writeUtf16(const wchar_t* text, size_t length);
  bool readUtf16Line(std::u16string& units);
  int readUtf16Unit();
  void decodeEscapes(std::wstring& text) const;

  int m_encoding;
  bool m_escape;
  bool m_lineEnds;
  OdCodePageConverter m_ansi;
  int m_peekedUnit = -1;  // a UTF-16 code unit read ahead, or -1
};
