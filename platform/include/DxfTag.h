// One group of a DXF file or of an entity-data list: a group code and its
// value. The value's type follows from the group code (the classic ranges).
// Points are one tag: the x code carries x, y and (when present) z.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "OdString.h"

namespace OdDxf {

enum class ValueType : OdUInt8 {
  kString,   // text (also 100 subclass markers, 102 control strings, 1000 xdata strings)
  kDouble,   // one real number
  kPoint,    // x, y and optionally z
  kInt16,
  kInt32,
  kInt64,
  kBool,     // 290..299: stored as an integer 0/1
  kHandle,   // hexadecimal handle text: 5, 105, 320..369, 390..399, 480/481, 1005
  kBinary,   // hexadecimal chunk: 310..319, 1004
};

// The type of the value that a group code carries.
ValueType valueTypeOf(int code);
// True for the x code of a point (10..18, 110..112, 210, 1010..1013 and the like).
bool isPointCode(int code);
// True for the group codes that DXF files may carry (0..1071 less the unused
// ranges). valueTypeOf reports kString for the others.
bool isKnownCode(int code);

// The code page that a file's strings are written in: UTF-8 from $ACADVER
// AC1021 (R2007) on, before that the one named by $DWGCODEPAGE (1252 when
// it is empty or unknown). Pass the header values as read (empty if absent).
int stringCodePageOf(std::wstring_view acadVer, std::wstring_view dwgCodePage);

}  // namespace OdDxf

struct OdDxfTag {
  OdInt16 code = 0;
  OdUInt8 dims = 0;      // points: 2 or 3
  OdDxf::ValueType type = OdDxf::ValueType::kString;
  double x = 0, y = 0, z = 0;  // a single double is x
  OdInt64 i = 0;         // integers, booleans, handles
  OdString s;            // strings; for a handle, the text when it was not valid hex (then i is 0)
  OdBinaryData bin;      // binary chunks

  OdDxfTag() = default;
  static OdDxfTag str(int code, const OdString& value);
  static OdDxfTag real(int code, double value);
  static OdDxfTag point(int code, double x, double y, double z, int dims = 3);
  static OdDxfTag integer(int code, OdInt64 value);  // int16/int32/int64/bool by code
  static OdDxfTag handle(int code, OdUInt64 value);
  static OdDxfTag binary(int code, const OdBinaryData& value);

  // Same code, type and value; doubles compare bit for bit (so -0.0 differs
  // from 0.0, and a NaN equals the same NaN), points compare the dims used.
  bool operator==(const OdDxfTag& other) const;
  bool operator!=(const OdDxfTag& other) const { return !(*this == other); }
  // The value as it would stand in a DXF file (for messages and tests); a
  // point gives its coordinates separated by commas.
  OdString valueText() const;
};

using OdDxfTagList = std::vector<OdDxfTag>;
