// The modeler's binary save form turned into its text form. From R2007 on a
// DWG file keeps the modeler data of regions, bodies and solids as the
// binary form (format 2), where DXF and the platform keep the text form.
//
// The binary form is a header ("ACIS BinaryFile", four 32-bit integers:
// version, record count, body count, flags; then three tagged strings and
// three tagged doubles) and a stream of tagged tokens. Each token is a tag
// byte and its value: 4 long, 6 double, 7/8/9 string (1-, 2- or 4-byte
// length), 10/11 true/false, 12 pointer, 13/14 identifier (the last and
// the leading parts of a name), 15/16 subtype braces, 17 end of record,
// 19/20 position/vector (3 doubles), 21 enumeration. Records follow one
// another up to the "End-of-ACIS-data" (or "-ASM-") record.
//
// The text form writes each record on a line: its name, its tokens
// separated by spaces, and "#". A true/false carries no words in the binary
// form: the text writes them by what they mean in the record (forward /
// reversed, single / double, a finite or infinite bound, …), so the
// converter knows the records whose flags it can name; a record it does
// not know, or an enumeration whose names it does not know, fails the
// conversion rather than writing what a reader would misread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace oddwg {

struct OdModelerText {
  bool ok = false;
  std::string text;   // the text form: three header lines, then one line per record
  std::string error;  // why the conversion failed
  size_t used = 0;    // bytes of the binary form read, up to its end record
  int records = 0;    // records written
};

// Converts the binary form at `data` (it may be followed by other data: the
// conversion stops after the end record).
OdModelerText odModelerBinaryToText(const uint8_t* data, size_t size);

// The coding the modeler text has in DWG and DXF files: every character
// from '!' to '~' becomes 159 minus its code; spaces and the rest stay.
inline char odModelerCharEncoded(char c) { return c > ' ' && c <= '~' ? static_cast<char>(159 - c) : c; }
std::string odModelerTextEncoded(const std::string& text);

}  // namespace oddwg
