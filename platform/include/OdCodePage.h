// Text in Windows code pages ("ANSI" text) and the escapes that drawing files
// use for characters their code page lacks.
//
// Code pages are named by their Windows numbers: 1252 (Western), 1250..1258,
// 874 (Thai), 932 (Japanese Shift-JIS), 936 (Simplified Chinese GBK), 949
// (Korean Wansung), 950 (Traditional Chinese Big5), 1361 (Korean Johab), the
// DOS pages 437, 850, 852, 855, 857, 860..866, 869, the ISO 8859 pages as
// 28591..28599/28603/28605, 10000 (Mac Roman) and 65001 (UTF-8).
//
// Conversions go through tables that are built once per code page from the C
// library's iconv (one iconv descriptor per code page, opened while the table
// is built and closed after): a 256-entry table for the single bytes and one
// 256-entry row per lead byte of a double-byte page, plus the reverse map for
// encoding. So conversions never depend on iconv state, are exact inverses of
// each other (no "best fit" substitutions such as 'e' for 'é') and are fast.
// Tables are shared by all threads; building them is serialised.
//
// Escapes (decoded by the *Escapes functions and the converter's decode):
//   \U+XXXX   a UTF-16 code unit in hex; a high and a low surrogate written as
//             two escapes in a row combine into one character.
//   \M+NXXXX  a double-byte character: the two bytes XXXX (hex, lead byte
//             first) in the code page that N selects: 1 = 932, 2 = 950,
//             3 = 949, 4 = 1361, 5 = 936.
// An escape that does not stand for a valid character (a lone surrogate,
// U+0000, a byte pair that the code page lacks) is kept as the escape text.
#pragma once

#include <string>
#include <string_view>

#include "OdString.h"

inline constexpr int kOdCodePageNone = 0;     // unknown or not given
inline constexpr int kOdCodePageAnsi = 1252;  // the usual default of drawing files without a code page
inline constexpr int kOdCodePageUtf8 = 65001;

// "ANSI_1252" -> 1252, "DOS437" -> 437, "ISO8859-1" -> 28591, "BIG5" -> 950,
// "GB2312" -> 936, "KSC5601" -> 949, "JOHAB" -> 1361, "MACINTOSH" -> 10000,
// "UTF8"/"UTF-8" -> 65001. Case-insensitive. "ASCII" gives 1252, because files
// marked ASCII commonly hold Western text. Unknown names give kOdCodePageNone.
int odCodePageFromDxfName(std::wstring_view name);
// The name that drawing files use for the code page: 1252 -> "ANSI_1252",
// 437 -> "DOS437", 28591 -> "ISO8859-1", 10000 -> "MACINTOSH", 65001 -> "UTF8".
// Empty for a number without such a name.
OdString odDxfNameOfCodePage(int codePage);
// True when this system can convert the code page (iconv knows it).
bool odIsCodePageSupported(int codePage);

// Bytes in the code page to wide text. A double-byte character is decoded as a
// whole; an invalid byte (or an invalid lead/trail pair: then only the lead
// byte) becomes U+FFFD. Escapes are not decoded. An unsupported code page
// decodes ASCII and turns every other byte into U+FFFD.
std::wstring odDecodeCodePage(std::string_view bytes, int codePage);

// Wide text to bytes in the code page. A character the code page lacks becomes
// "\U+XXXX" (upper-case hex UTF-16 units; two escapes for characters above
// U+FFFF) when escapeUnmappable is set, otherwise '?'. *lossy (when given)
// tells whether any character was unmappable.
std::string odEncodeCodePage(std::wstring_view text, int codePage, bool escapeUnmappable,
                             bool* lossy = nullptr);

// Replaces the \U+XXXX and \M+NXXXX escapes in wide text by the characters
// they stand for. Returns true when anything was replaced.
bool odDecodeUnicodeEscapes(std::wstring& text);

struct OdCodePageTable;

// A converter bound to one code page: the form for repeated conversions
// (readers, writers), since it looks the tables up once. Cheap to copy.
class OdCodePageConverter {
 public:
  // How encode() treats characters that cannot stand as they are.
  enum class Escaping {
    kNone,         // unmappable characters become '?'
    kUnmappable,   // unmappable characters become \U+XXXX
    // For one line of a DXF file: unmappable characters, CR and LF become
    // \U+XXXX, and a backslash that would otherwise read back as the start of
    // an escape becomes \U+005C, so that decoding with escapes gives the text
    // back. NUL cannot be stored in a DXF string: it is dropped (and reported
    // as unmappable).
    kDxfText,
  };

  explicit OdCodePageConverter(int codePage = kOdCodePageAnsi);

  int codePage() const { return m_codePage; }
  bool isUtf8() const { return m_table == nullptr; }
  bool isSupported() const;

  // Appends the decoded bytes to out. With decodeEscapes, escapes are decoded
  // in the same pass; they are recognised only at character boundaries (a
  // backslash that is the trail byte of a double-byte character is not one).
  void decode(std::string_view bytes, std::wstring& out, bool decodeEscapes) const;
  // Appends the encoded text to out. Returns true when some character was
  // unmappable (escaped or replaced by '?').
  bool encode(std::wstring_view text, std::string& out, Escaping escaping) const;

 private:
  int m_codePage;
  const OdCodePageTable* m_table;  // null for UTF-8
};
