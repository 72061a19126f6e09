// Text forms of DXF values, shared by the tag writer and OdDxfTag::valueText.
#pragma once

#include <charconv>
#include <cstddef>
#include <string>

#include "OdaCommon.h"

namespace OdDxf {

// Room that every format* function below may need.
constexpr size_t kNumberTextSize = 32;

// The shortest text that reads back as the same double, always with a decimal
// point so that every reader takes it for a real: 1 -> "1.0", -0 -> "-0.0",
// 1e20 -> "1.0E+20", 0.1 -> "0.1". Non-finite values give "nan", "inf", "-inf".
inline char* formatDouble(char* out, double value) {
  char* end = std::to_chars(out, out + kNumberTextSize, value).ptr;
  bool hasPoint = false;
  char* exponent = end;
  for (char* p = out; p < end; ++p) {
    if (*p == '.') hasPoint = true;
    else if (*p == 'e') { *p = 'E'; exponent = p; }
    else if (*p == 'n' || *p == 'i') return end;  // nan, inf
  }
  if (hasPoint) return end;
  // "1" -> "1.0", "1E+20" -> "1.0E+20"
  std::char_traits<char>::move(exponent + 2, exponent, static_cast<size_t>(end - exponent));
  exponent[0] = '.';
  exponent[1] = '0';
  return end + 2;
}

inline char* formatInteger(char* out, OdInt64 value) {
  return std::to_chars(out, out + kNumberTextSize, value).ptr;
}

// Upper-case hex without leading zeros ("0" for zero).
inline char* formatHandle(char* out, OdUInt64 value) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  char digits[16];
  int count = 0;
  do {
    digits[count++] = kHex[value & 15];
    value >>= 4;
  } while (value);
  while (count) *out++ = digits[--count];
  return out;
}

// Upper-case hex of the bytes, appended to out.
inline void appendHex(std::string& out, const OdUInt8* data, size_t size) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  const size_t start = out.size();
  out.resize(start + 2 * size);
  char* p = out.data() + start;
  for (size_t k = 0; k < size; ++k) {
    *p++ = kHex[data[k] >> 4];
    *p++ = kHex[data[k] & 15];
  }
}

}  // namespace OdDxf
