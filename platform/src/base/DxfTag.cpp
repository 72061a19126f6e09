// Group-code value types and the tag value helpers.
#include "DxfTag.h"

#include <array>
#include <bit>

#include "OdCodePage.h"
#include "base/DxfNumberFormat.h"

namespace OdDxf {
namespace {

constexpr int kLastCode = 1071;
constexpr OdUInt8 kUnknown = 0xFF;

struct CodeRange {
  int first, last;
  ValueType type;
};

// The classic DXF group-code ranges (5, the entity handle, breaks the string
// range 0..9). Point x codes are listed as kPoint; their
// y and z codes (x + 10, x + 20) stay kDouble.
constexpr CodeRange kRanges[] = {
    {0, 4, ValueType::kString},       {5, 5, ValueType::kHandle},       {6, 9, ValueType::kString},
    {10, 18, ValueType::kPoint},      {19, 39, ValueType::kDouble},
    {40, 59, ValueType::kDouble},     {60, 79, ValueType::kInt16},      {90, 99, ValueType::kInt32},
    {100, 102, ValueType::kString},   {105, 105, ValueType::kHandle},   {110, 112, ValueType::kPoint},
    {113, 149, ValueType::kDouble},   {160, 169, ValueType::kInt64},    {170, 179, ValueType::kInt16},
    {210, 210, ValueType::kPoint},    {211, 239, ValueType::kDouble},   {270, 289, ValueType::kInt16},
    {290, 299, ValueType::kBool},     {300, 309, ValueType::kString},   {310, 319, ValueType::kBinary},
    {320, 369, ValueType::kHandle},   {370, 389, ValueType::kInt16},    {390, 399, ValueType::kHandle},
    {400, 409, ValueType::kInt16},    {410, 419, ValueType::kString},   {420, 429, ValueType::kInt32},
    {430, 439, ValueType::kString},   {440, 459, ValueType::kInt32},    {460, 469, ValueType::kDouble},
    {470, 479, ValueType::kString},   {480, 481, ValueType::kHandle},   {999, 999, ValueType::kString},
    {1000, 1003, ValueType::kString}, {1004, 1004, ValueType::kBinary}, {1005, 1005, ValueType::kHandle},
    {1006, 1009, ValueType::kString}, {1010, 1013, ValueType::kPoint},  {1014, 1059, ValueType::kDouble},
    {1060, 1070, ValueType::kInt16},  {1071, 1071, ValueType::kInt32},
};

constexpr std::array<OdUInt8, kLastCode + 1> makeTypeTable() {
  std::array<OdUInt8, kLastCode + 1> table{};
  for (auto& entry : table) entry = kUnknown;
  for (const CodeRange& range : kRanges) {
    for (int code = range.first; code <= range.last; ++code) table[code] = static_cast<OdUInt8>(range.type);
  }
  return table;
}

constexpr std::array<OdUInt8, kLastCode + 1> kTypeTable = makeTypeTable();

OdUInt8 rawTypeOf(int code) { return code >= 0 && code <= kLastCode ? kTypeTable[code] : kUnknown; }

bool isIntegerType(ValueType type) {
  return type == ValueType::kInt16 || type == ValueType::kInt32 || type == ValueType::kInt64 ||
         type == ValueType::kBool;
}

}  // namespace

ValueType valueTypeOf(int code) {
  const OdUInt8 type = rawTypeOf(code);
  return type == kUnknown ? ValueType::kString : static_cast<ValueType>(type);
}

bool isPointCode(int code) { return rawTypeOf(code) == static_cast<OdUInt8>(ValueType::kPoint); }

bool isKnownCode(int code) { return rawTypeOf(code) != kUnknown; }

int stringCodePageOf(std::wstring_view acadVer, std::wstring_view dwgCodePage) {
  // "AC1021" and later; the versions compare as text of equal length.
  if (acadVer.size() == 6 && acadVer.substr(0, 2) == L"AC" && acadVer >= std::wstring_view(L"AC1021")) {
    return kOdCodePageUtf8;
  }
  const int codePage = odCodePageFromDxfName(dwgCodePage);
  return codePage != kOdCodePageNone && odIsCodePageSupported(codePage) ? codePage : kOdCodePageAnsi;
}

}  // namespace OdDxf

OdDxfTag OdDxfTag::str(int code, const OdString& value) {
  OdDxfTag tag;
  tag.code = static_cast<OdInt16>(code);
  tag.type = OdDxf::ValueType::kString;
  tag.s = value;
  return tag;
}

OdDxfTag OdDxfTag::real(int code, double value) {
  OdDxfTag tag;
  tag.code = static_cast<OdInt16>(code);
  tag.type = OdDxf::ValueType::kDouble;
  tag.x = value;
  return tag;
}

OdDxfTag OdDxfTag::point(int code, double x, double y, double z, int dims) {
  OdDxfTag tag;
  tag.code = static_cast<OdInt16>(code);
  tag.type = OdDxf::ValueType::kPoint;
  tag.dims = static_cast<OdUInt8>(dims == 2 ? 2 : 3);
  tag.x = x;
  tag.y = y;
  tag.z = tag.dims == 3 ? z : 0.0;
  return tag;
}

OdDxfTag OdDxfTag::integer(int code, OdInt64 value) {
  OdDxfTag tag;
  tag.code = static_cast<OdInt16>(code);
  const OdDxf::ValueType byCode = OdDxf::valueTypeOf(code);
  tag.type = OdDxf::isIntegerType(byCode) ? byCode : OdDxf::ValueType::kInt64;
  tag.i = value;
  return tag;
}

OdDxfTag OdDxfTag::handle(int code, OdUInt64 value) {
  OdDxfTag tag;
  tag.code = static_cast<OdInt16>(code);
  tag.type = OdDxf::ValueType::kHandle;
  tag.i = static_cast<OdInt64>(value);
  return tag;
}

OdDxfTag OdDxfTag::binary(int code, const OdBinaryData& value) {
  OdDxfTag tag;
  tag.code = static_cast<OdInt16>(code);
  tag.type = OdDxf::ValueType::kBinary;
  tag.bin = value;
  return tag;
}

namespace {

bool sameDouble(double a, double b) { return std::bit_cast<OdUInt64>(a) == std::bit_cast<OdUInt64>(b); }

}  // namespace

bool OdDxfTag::operator==(const OdDxfTag& other) const {
  if (code != other.code || type != other.type) return false;
  switch (type) {
    case OdDxf::ValueType::kString: return s == other.s;
    case OdDxf::ValueType::kDouble: return sameDouble(x, other.x);
    case OdDxf::ValueType::kPoint:
      return dims == other.dims && sameDouble(x, other.x) && sameDouble(y, other.y) &&
             (dims != 3 || sameDouble(z, other.z));
    case OdDxf::ValueType::kHandle: return i == other.i && s == other.s;
    case OdDxf::ValueType::kBinary: return bin == other.bin;
    default: return i == other.i;
  }
}

OdString OdDxfTag::valueText() const {
  char text[3 * OdDxf::kNumberTextSize + 4];
  char* end = text;
  switch (type) {
    case OdDxf::ValueType::kString: return s;
    case OdDxf::ValueType::kDouble: end = OdDxf::formatDouble(text, x); break;
    case OdDxf::ValueType::kPoint:
      end = OdDxf::formatDouble(end, x);
      *end++ = ',';
      end = OdDxf::formatDouble(end, y);
      if (dims == 3) {
        *end++ = ',';
        end = OdDxf::formatDouble(end, z);
      }
      break;
    case OdDxf::ValueType::kHandle:
      if (!s.isEmpty()) return s;
      end = OdDxf::formatHandle(text, static_cast<OdUInt64>(i));
      break;
    case OdDxf::ValueType::kBinary: {
      std::string hex;
      OdDxf::appendHex(hex, bin.data(), bin.size());
      return OdString(hex);
    }
    default: end = OdDxf::formatInteger(text, i); break;
  }
  return OdString(std::string(text, end));
}
