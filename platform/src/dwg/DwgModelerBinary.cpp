#include "dwg/DwgModelerBinary.h"

#include <charconv>
#include <cstring>
#include <map>
#include <string_view>
#include <vector>

namespace oddwg {
namespace {

// The words of a record's true/false values, in the order they come. A
// bound pair ("I" infinite / "F" finite) is followed, when finite, by its
// value, which is a token of its own.
struct Flag {
  const char* no;
  const char* yes;
};
constexpr Flag kSense{"forward", "reversed"}, kBound{"I", "F"}, kSenseV{"forward_v", "reverse_v"};

const std::map<std::string, std::vector<Flag>>& flagWords() {
  static const std::map<std::string, std::vector<Flag>> kWords = {
      {"face", {kSense, {"single", "double"}, {"out", "in"}}},
      {"coedge", {kSense}},
      {"edge", {kSense}},
      {"straight-curve", {kBound, kBound}},
      {"ellipse-curve", {kBound, kBound}},
      {"plane-surface", {kSenseV, kBound, kBound, kBound, kBound}},
      {"sphere-surface", {kSenseV, kBound, kBound, kBound, kBound}},
      {"torus-surface", {kSenseV, kBound, kBound, kBound, kBound}},
      // The base ellipse's bounds, then the surface's sense and bounds.
      {"cone-surface", {kBound, kBound, kSense, kBound, kBound, kBound, kBound}},
      {"transform", {{"no_rotate", "rotate"}, {"no_reflect", "reflect"}, {"no_shear", "shear"}}},
  };
  return kWords;
}

// A double as the text form writes it: 19 significant digits, no trailing
// zeros (printf's "%.19g"; to_chars gives the same exact digits without
// parsing a format, a third of a solid's conversion when done by printf).
void appendDouble(std::string& out, double value) {
  char text[40];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 19).ptr;
  out.append(text, end);
}

// An integer in decimal.
void appendInt(std::string& out, long long value) {
  char text[24];
  out.append(text, std::to_chars(text, text + sizeof text, value).ptr);
}

class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
  size_t at() const { return m_at; }
  bool atEnd() const { return m_at >= m_size; }
  bool ok() const { return m_error.empty(); }
  const std::string& error() const { return m_error; }
  void fail(const std::string& why) {
    if (m_error.empty()) m_error = why + " at byte " + std::to_string(m_at);
  }
  uint8_t byte() { return need(1) ? m_data[m_at++] : 0; }
  uint32_t u32() { return little<uint32_t>(); }
  int32_t i32() { return static_cast<int32_t>(u32()); }
  double f64() {
    const uint64_t bits = little<uint64_t>();
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
  }
  std::string chars(size_t n) {
    if (!need(n)) return {};
    std::string s(reinterpret_cast<const char*>(m_data + m_at), n);
    m_at += n;
    return s;
  }

 private:
  // An unsigned integer of the value's size, least significant byte first.
  template <typename T>
  T little() {
    if (!need(sizeof(T))) return 0;
    T v = 0;
    for (size_t i = 0; i < sizeof(T); ++i) v |= static_cast<T>(m_data[m_at + i]) << (8 * i);
    m_at += sizeof(T);
    return v;
  }
  bool need(size_t n) {
    if (n <= m_size - m_at) return true;
    fail("binary modeler data ends early");
    m_at = m_size;
    return false;
  }
  const uint8_t* m_data;
  size_t m_size;
  size_t m_at = 0;
  std::string m_error;
};

enum Tag : uint8_t {
  kChar = 2, kShort = 3, kLong = 4, kFloat = 5, kDouble = 6, kString1 = 7, kString2 = 8, kString4 = 9,
  kTrue = 10, kFalse = 11, kPointer = 12, kName = 13, kNamePart = 14, kOpen = 15, kClose = 16,
  kEnd = 17, kLiteral = 18, kPosition = 19, kVector = 20, kEnum = 21,
};

// One record: its name (parts joined by '-') and its tokens, written as one line.
class RecordWriter {
 public:
  explicit RecordWriter(Reader& in) : m_in(in) {}

  // Reads the record's name; false (without failing) at the end of the data.
  bool name(std::string& name) {
    name.clear();
    for (;;) {
      if (m_in.atEnd()) {
        m_in.fail("binary modeler data without its end record");
        return false;
      }
      const uint8_t tag = m_in.byte();
      if (tag != kName && tag != kNamePart) {
        m_in.fail("record without a name (tag " + std::to_string(tag) + ")");
        return false;
      }
      name += m_in.chars(m_in.byte());
      if (tag == kName) return m_in.ok();
      name += '-';
    }
  }

  // Reads the tokens up to the record's end and appends its line to `out`
  // (written there as it is read; taken back if the record is not whole).
  void body(const std::string& name, std::string& out) {
    auto words = flagWords().find(name);
    const std::vector<Flag>* flags = words == flagWords().end() ? nullptr : &words->second;
    size_t flag = 0;
    const size_t start = out.size();
    std::string part;
    out += name;
    auto word = [&](std::string_view w) {
      out += ' ';
      out += w;
    };
    auto integer = [&](long long v) {
      out += ' ';
      appendInt(out, v);
    };
    auto number = [&](double v) {
      out += ' ';
      appendDouble(out, v);
    };
    while (m_in.ok()) {
      const uint8_t tag = m_in.byte();
      switch (tag) {
        case kChar: integer(static_cast<int8_t>(m_in.byte())); break;
        case kShort: {
          const int lo = m_in.byte(), hi = m_in.byte();
          integer(static_cast<int16_t>(lo | hi << 8));
          break;
        }
        case kLong: integer(m_in.i32()); break;
        case kFloat: {
          const uint32_t bits = m_in.u32();
          float f;
          std::memcpy(&f, &bits, sizeof f);
          number(f);
          break;
        }
        case kDouble: number(m_in.f64()); break;
        case kString1: case kString2: case kString4: case kLiteral: {
          const size_t n = tag == kString2 ? (m_in.byte() | m_in.byte() << 8) : tag == kString4 ? m_in.u32() : m_in.byte();
          out += " @";
          appendInt(out, static_cast<long long>(n));
          out += ' ';
          out += m_in.chars(n);
          break;
        }
        case kTrue: case kFalse:
          if (!flags || flag >= flags->size()) {
            m_in.fail("true/false value " + std::to_string(flag + 1) + " of a " + name + " record has no known words");
            break;
          }
          word(tag == kTrue ? (*flags)[flag].yes : (*flags)[flag].no);
          ++flag;
          break;
        case kPointer:
          out += " $";
          appendInt(out, m_in.i32());
          break;
        case kNamePart: part += m_in.chars(m_in.byte()) + "-"; break;
        case kName:
          word(part);
          out += m_in.chars(m_in.byte());
          part.clear();
          break;
        case kOpen: word("{"); break;
        case kClose: word("}"); break;
        case kPosition: case kVector:
          for (int i = 0; i < 3; ++i) number(m_in.f64());
          break;
        case kEnum: m_in.fail("enumeration in a " + name + " record"); break;
        case kEnd:
          out += " #\n";
          return;
        default: m_in.fail("unknown tag " + std::to_string(tag) + " in a " + name + " record"); break;
      }
    }
    out.resize(start);
  }

 private:
  Reader& m_in;
};

}  // namespace

OdModelerText odModelerBinaryToText(const uint8_t* data, size_t size) {
  OdModelerText result;
  Reader in(data, size);
  static const char kMagic[] = "ACIS BinaryFile";
  if (in.chars(sizeof kMagic - 1) != kMagic) {
    result.error = "binary modeler data without its signature";
    return result;
  }
  const int32_t version = in.i32();
  in.i32();  // the record count: the text gives the count of records written
  const int32_t bodies = in.i32(), flags = in.i32();
  // Product, modeler version and date, each with its length; then the
  // size of a unit in millimetres and the two tolerances.
  std::string product;
  for (int i = 0; i < 3 && in.ok(); ++i) {
    const uint8_t tag = in.byte();
    if (tag != kString1) in.fail("header string expected");
    const std::string s = in.chars(in.byte());
    product += (i ? " " : "") + std::to_string(s.size()) + (s.empty() ? "" : " " + s);
  }
  std::string reals;
  for (int i = 0; i < 3 && in.ok(); ++i) {
    if (in.byte() != kDouble) in.fail("header real expected");
    if (i) reals += ' ';
    appendDouble(reals, in.f64());
  }
  std::string lines, name;
  RecordWriter records(in);
  while (in.ok() && records.name(name)) {
    if (name.rfind("End-of-", 0) == 0) break;
    records.body(name, lines);
    ++result.records;
  }
  if (!in.ok()) {
    result.error = in.error();
    return result;
  }
  result.text = std::to_string(version) + " " + std::to_string(result.records) + " " + std::to_string(bodies) + " " +
                std::to_string(flags) + "\n" + product + "\n" + reals + "\n" + lines;
  result.used = in.at();
  result.ok = true;
  return result;
}

std::string odModelerTextEncoded(const std::string& text) {
  std::string coded = text;
  for (char& c : coded) c = odModelerCharEncoded(c);
  return coded;
}

}  // namespace oddwg
