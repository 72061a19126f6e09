#include "dwg/DwgR2007File.h"

#include <cstring>

#include "dwg/DwgBitReader.h"

namespace {

// The order of a literal run shorter than 32 bytes: the steps that write
// it, in output order, each {source start, kind}: kind 1-3 that many bytes
// in reverse order, 4 and 8 that many bytes as they are, 16 two pieces of
// 8 with the second written first.
struct LiteralStep {
  uint8_t start, kind;
};
constexpr LiteralStep kLiteralSteps[32][6] = {
    {},  // 0
    {{0, 1}},  // 1
    {{0, 2}},  // 2
    {{0, 3}},  // 3
    {{0, 4}},  // 4
    {{4, 1}, {0, 4}},  // 5
    {{5, 1}, {1, 4}, {0, 1}},  // 6
    {{5, 2}, {1, 4}, {0, 1}},  // 7
    {{0, 8}},  // 8
    {{8, 1}, {0, 8}},  // 9
    {{9, 1}, {1, 8}, {0, 1}},  // 10
    {{9, 2}, {1, 8}, {0, 1}},  // 11
    {{8, 4}, {0, 8}},  // 12
    {{12, 1}, {8, 4}, {0, 8}},  // 13
    {{13, 1}, {9, 4}, {1, 8}, {0, 1}},  // 14
    {{13, 2}, {9, 4}, {1, 8}, {0, 1}},  // 15
    {{0, 16}},  // 16
    {{9, 8}, {8, 1}, {0, 8}},  // 17
    {{17, 1}, {1, 16}, {0, 1}},  // 18
    {{16, 3}, {0, 16}},  // 19
    {{16, 4}, {0, 16}},  // 20
    {{20, 1}, {16, 4}, {0, 16}},  // 21
    {{20, 2}, {16, 4}, {0, 16}},  // 22
    {{20, 3}, {16, 4}, {0, 16}},  // 23
    {{16, 8}, {0, 16}},  // 24
    {{17, 8}, {16, 1}, {0, 16}},  // 25
    {{25, 1}, {17, 8}, {16, 1}, {0, 16}},  // 26
    {{25, 2}, {17, 8}, {16, 1}, {0, 16}},  // 27
    {{24, 4}, {16, 8}, {0, 16}},  // 28
    {{28, 1}, {24, 4}, {16, 8}, {0, 16}},  // 29
    {{28, 2}, {24, 4}, {16, 8}, {0, 16}},  // 30
    {{30, 1}, {26, 4}, {18, 8}, {10, 8}, {2, 8}, {0, 2}},  // 31
};

class Decompressor {
 public:
  // The output is written in place into a buffer of the stated size, cut
  // to what was written at the end.
  Decompressor(const uint8_t* src, size_t size, size_t expected)
      : m_src(src), m_end(size), m_expected(expected), m_out(expected) {}

  std::vector<uint8_t> run() {
    size_t length = 0;
    unsigned op = byte();
    if ((op & 0xF0) == 0x20) {
      // A first instruction of this form: two bytes of no use, then the
      // length of the first literal run in the low 3 bits.
      byte();
      byte();
      length = byte() & 7;
    }
    while (m_at < m_end) {
      if (length == 0) length = literalLength(op);
      literal(length);
      if (m_at >= m_end) break;
      op = byte();
      size_t offset = 0;
      instruction(op, offset, length);
      for (;;) {
        copy(offset, length);
        length = op & 7;
        if (length != 0 || m_at >= m_end) break;
        op = byte();
        if ((op >> 4) == 0) break;
        if ((op >> 4) == 0xF) op &= 0xF;
        instruction(op, offset, length);
      }
    }
    m_out.resize(m_size);
    return std::move(m_out);
  }

 private:
  unsigned byte() {
    if (m_at >= m_end) throw OdDwgDecodeError("compressed data ends inside an instruction", m_at * 8);
    return m_src[m_at++];
  }
  size_t literalLength(unsigned op) {
    size_t length = op + 8;
    if (length == 0x17) {
      unsigned n = byte();
      length += n;
      if (n == 0xFF) {
        do {
          n = byte();
          n |= byte() << 8;
          length += n;
        } while (n == 0xFFFF);
      }
    }
    return length;
  }
  // Room for n more bytes: where they go.
  uint8_t* grow(size_t n) {
    if (n > m_expected - m_size) throw OdDwgDecodeError("compressed data expands past its stated size", m_at * 8);
    uint8_t* at = m_out.data() + m_size;
    m_size += n;
    return at;
  }
  void literal(size_t length) {
    if (length > m_end - m_at) throw OdDwgDecodeError("literal run past the end of the compressed data", m_at * 8);
    uint8_t* out = grow(length);
    const uint8_t* s = m_src + m_at;
    m_at += length;
    // Whole blocks of 32 bytes: four pieces of 8 in reverse order.
    for (; length >= 32; length -= 32, s += 32, out += 32) {
      for (int piece = 0; piece < 4; ++piece) std::memcpy(out + 8 * piece, s + 8 * (3 - piece), 8);
    }
    if (!length) return;
    for (const LiteralStep& step : kLiteralSteps[length]) {
      const uint8_t* p = s + step.start;
      switch (step.kind) {
        case 1: case 2: case 3:
          for (int i = step.kind - 1; i >= 0; --i) *out++ = p[i];
          break;
        case 4: case 8:
          std::memcpy(out, p, step.kind);
          out += step.kind;
          break;
        case 16:
          std::memcpy(out, p + 8, 8);
          std::memcpy(out + 8, p, 8);
          out += 16;
          break;
        default: break;  // the end of the steps
      }
    }
  }
  void instruction(unsigned& op, size_t& offset, size_t& length) {
    switch (op >> 4) {
      case 0: {
        length = (op & 0xF) + 0x13;
        offset = byte();
        op = byte();
        length += (op >> 3) & 0x10;
        offset += ((op & 0x78) << 5) + 1;
        break;
      }
      case 1: {
        length = (op & 0xF) + 3;
        offset = byte();
        op = byte();
        offset += ((op & 0xF8) << 5) + 1;
        break;
      }
      case 2: {
        offset = byte();
        offset |= byte() << 8;
        length = op & 7;
        if ((op & 8) == 0) {
          op = byte();
          length += op & 0xF8;
        } else {
          ++offset;
          length += byte() << 3;
          op = byte();
          length += ((op & 0xF8) << 8) + 0x100;
        }
        break;
      }
      default: {
        length = op >> 4;
        offset = op & 0xF;
        op = byte();
        offset += ((op & 0xF8) << 1) + 1;
        break;
      }
    }
  }
  void copy(size_t offset, size_t length) {
    if (offset == 0 || offset > m_size) throw OdDwgDecodeError("back reference before the start of the data", m_at * 8);
    uint8_t* out = grow(length);
    const uint8_t* from = out - offset;
    // A copy that overlaps the bytes it produces repeats them: byte by byte.
    if (offset >= length) std::memcpy(out, from, length);
    else for (size_t i = 0; i < length; ++i) out[i] = from[i];
  }

  const uint8_t* m_src;
  size_t m_end, m_expected;
  size_t m_at = 0;
  std::vector<uint8_t> m_out;
  size_t m_size = 0;  // bytes of m_out written
};

uint64_t le64(const uint8_t* p) {
  uint64_t v = 0;
  for (int i = 7; i >= 0; --i) v = (v << 8) | p[i];
  return v;
}

// The fields of the decoded file header that the reader uses (all 8-byte
// little-endian values at these offsets).
enum HeaderField : size_t {
  kFileSize = 0x08, kPagesMapCorrection = 0x18, kPagesMapOffset = 0x38, kPagesMapSizeCompressed = 0x50,
  kPagesMapSizeUncompressed = 0x58, kSectionsMapSizeCompressed = 0xB0, kSectionsMapId = 0xC0,
  kSectionsMapSizeUncompressed = 0xC8, kSectionsMapCorrection = 0xD8, kHeaderFieldsSize = 0x110,
};

// Pages are placed from the end of the file header.
constexpr size_t kPagesStart = 0x480;
constexpr size_t kCodedHeaderAt = 0x80, kCodedHeaderSize = 0x3D8;

struct Page {
  uint64_t offset = 0, size = 0;
};

class Reader {
 public:
  Reader(const std::vector<uint8_t>& file, const std::function<void(size_t, const std::string&)>& problem)
      : m_file(file), m_problem(problem) {}

  bool read(OdDwgR2007Sections& out) {
    if (m_file.size() < kPagesStart) {
      m_problem(0, "R2007 file shorter than its file header");
      return false;
    }
    std::vector<uint8_t> header;
    try {
      header = fileHeader();
    } catch (const OdDwgDecodeError& e) {
      m_problem(kCodedHeaderAt, std::string("R2007 file header: ") + e.what());
      return false;
    }
    const auto field = [&](HeaderField f) { return le64(header.data() + f); };
    out.fileSize = field(kFileSize);
    std::vector<uint8_t> pageMap;
    try {
      pageMap = systemPage(field(kPagesMapOffset), field(kPagesMapSizeCompressed), field(kPagesMapSizeUncompressed),
                           field(kPagesMapCorrection));
    } catch (const OdDwgDecodeError& e) {
      m_problem(kPagesStart + field(kPagesMapOffset), std::string("R2007 page map: ") + e.what());
      return false;
    }
    // Pairs of (size, number): pages follow one another from the start of
    // the page area; a negative number is a gap.
    uint64_t at = 0;
    for (size_t i = 0; i + 16 <= pageMap.size(); i += 16) {
      const uint64_t size = le64(&pageMap[i]);
      const int64_t number = static_cast<int64_t>(le64(&pageMap[i + 8]));
      if (number > 0) m_pages[static_cast<uint64_t>(number)] = Page{at, size};
      if (size > m_file.size()) {
        m_problem(kPagesStart + field(kPagesMapOffset), "R2007 page map names a page larger than the file");
        break;
      }
      at += size;
    }
    const auto sectionsPage = m_pages.find(field(kSectionsMapId));
    if (sectionsPage == m_pages.end()) {
      m_problem(kPagesStart + field(kPagesMapOffset), "R2007 page map lacks the section map's page");
      return false;
    }
    std::vector<uint8_t> sectionMap;
    try {
      sectionMap = systemPage(sectionsPage->second.offset, field(kSectionsMapSizeCompressed),
                              field(kSectionsMapSizeUncompressed), field(kSectionsMapCorrection));
    } catch (const OdDwgDecodeError& e) {
      m_problem(kPagesStart + sectionsPage->second.offset, std::string("R2007 section map: ") + e.what());
      return false;
    }
    sections(sectionMap, kPagesStart + sectionsPage->second.offset, out);
    if (out.byName.empty()) m_problem(kPagesStart + sectionsPage->second.offset, "R2007 section map names none of the drawing's sections");
    return !out.byName.empty();
  }

 private:
  std::vector<uint8_t> fileHeader() {
    // Three code words of 239 data bytes; the decoded data starts with
    // CRC, key, CRC of the compressed data, then the compressed size
    // (negative: stored uncompressed) and a second length.
    const std::vector<uint8_t> data = odDwgRsDeinterleave(m_file.data() + kCodedHeaderAt, 3, 239);
    const int32_t compressed = static_cast<int32_t>(le64(&data[0x18]) & 0xFFFFFFFFu);
    std::vector<uint8_t> fields;
    if (compressed < 0) {
      const size_t n = static_cast<size_t>(-static_cast<int64_t>(compressed));
      if (n > data.size() - 0x20) throw OdDwgDecodeError("implausible header data size", 0x18 * 8);
      fields.assign(data.begin() + 0x20, data.begin() + 0x20 + n);
    } else {
      if (static_cast<size_t>(compressed) > data.size() - 0x20) throw OdDwgDecodeError("implausible header data size", 0x18 * 8);
      fields = odDwgR2007Decompress(data.data() + 0x20, static_cast<size_t>(compressed), kHeaderFieldsSize);
    }
    if (fields.size() < kHeaderFieldsSize) throw OdDwgDecodeError("file header data too short", 0x20 * 8);
    return fields;
  }

  // A system page (page map, section map): code words of 239 data bytes,
  // repeated `correction` times, then compressed.
  std::vector<uint8_t> systemPage(uint64_t offset, uint64_t compressed, uint64_t uncompressed, uint64_t correction) {
    if (compressed > m_file.size() || uncompressed > (uint64_t{1} << 28) || correction == 0 || correction > 64) {
      throw OdDwgDecodeError("implausible system page sizes", 0);
    }
    const uint64_t coded = ((compressed + 7) & ~uint64_t{7}) * correction;
    const uint64_t blocks = (coded + 238) / 239;
    return page(offset, blocks, 239, compressed, uncompressed);
  }

  std::vector<uint8_t> page(uint64_t offset, uint64_t blocks, size_t dataBytes, uint64_t compressed, uint64_t uncompressed) {
    if (offset > m_file.size() - kPagesStart || blocks > (m_file.size() - kPagesStart - offset) / 255) {
      throw OdDwgDecodeError("page runs past the end of the file", 0);
    }
    const std::vector<uint8_t> data = odDwgRsDeinterleave(m_file.data() + kPagesStart + offset, blocks, dataBytes);
    if (compressed > data.size()) throw OdDwgDecodeError("compressed size larger than the page", 0);
    if (compressed >= uncompressed) return std::vector<uint8_t>(data.begin(), data.begin() + uncompressed);
    std::vector<uint8_t> out = odDwgR2007Decompress(data.data(), compressed, uncompressed);
    if (out.size() != uncompressed) throw OdDwgDecodeError("page expands to fewer bytes than stated", compressed * 8);
    return out;
  }

  void sections(const std::vector<uint8_t>& map, size_t mapOffset, OdDwgR2007Sections& out) {
    // Per section: 8 values of 8 bytes (data size, largest page, encryption,
    // hash, name length in bytes, unknown, encoding, page count), the name
    // in UTF-16, then per page 7 values (offset in the section, page size,
    // page number, data size, compressed size, checksum, CRC).
    size_t at = 0;
    while (at + 64 <= map.size()) {
      const uint64_t dataSize = le64(&map[at]);
      const uint64_t nameBytes = le64(&map[at + 32]);
      const uint64_t encoding = le64(&map[at + 48]);
      const uint64_t pageCount = le64(&map[at + 56]);
      at += 64;
      if (nameBytes > map.size() - at || pageCount > (map.size() - at - nameBytes) / 56) {
        m_problem(mapOffset, "R2007 section map entry runs past the map");
        return;
      }
      std::string name;
      for (size_t i = 0; i + 1 < nameBytes; i += 2) {
        const unsigned c = map[at + i] | (map[at + i + 1] << 8);
        if (c == 0) break;
        name += c < 0x80 ? static_cast<char>(c) : '?';
      }
      at += nameBytes;
      const bool wanted = name == "AcDb:Header" || name == "AcDb:Classes" || name == "AcDb:Handles" || name == "AcDb:AcDbObjects";
      const size_t pagesAt = at;
      at += pageCount * 56;
      if (!wanted || name.empty()) continue;
      if (dataSize > (uint64_t{1} << 31)) {
        m_problem(mapOffset, "R2007 section " + name + ": implausible size");
        continue;
      }
      std::vector<uint8_t>& bytes = out.byName[name];
      bytes.assign(dataSize, 0);
      for (uint64_t p = 0; p < pageCount; ++p) {
        const uint8_t* entry = &map[pagesAt + p * 56];
        const uint64_t offset = le64(entry), number = le64(entry + 16), size = le64(entry + 24), compressed = le64(entry + 32);
        const auto page = m_pages.find(number);
        if (page == m_pages.end()) {
          m_problem(mapOffset, "R2007 section " + name + ": page " + std::to_string(number) + " not in the page map");
          continue;
        }
        if (offset > dataSize || size > dataSize - offset) {
          m_problem(kPagesStart + page->second.offset, "R2007 section " + name + ": page outside the section's size");
          continue;
        }
        try {
          std::vector<uint8_t> data;
          if (encoding == 4) {
            // Code words of 251 data bytes, as many as the page holds.
            data = this->page(page->second.offset, page->second.size / 255, 251, compressed, size);
          } else {
            if (page->second.offset > m_file.size() - kPagesStart || page->second.size > m_file.size() - kPagesStart - page->second.offset ||
                compressed > page->second.size) {
              throw OdDwgDecodeError("page runs past the end of the file", 0);
            }
            const uint8_t* raw = m_file.data() + kPagesStart + page->second.offset;
            data = compressed >= size ? std::vector<uint8_t>(raw, raw + size) : odDwgR2007Decompress(raw, compressed, size);
          }
          std::memcpy(bytes.data() + offset, data.data(), std::min<size_t>(data.size(), size));
        } catch (const OdDwgDecodeError& e) {
          m_problem(kPagesStart + page->second.offset, "R2007 section " + name + ", page " + std::to_string(number) + ": " + e.what());
        }
      }
    }
  }

  const std::vector<uint8_t>& m_file;
  const std::function<void(size_t, const std::string&)>& m_problem;
  std::map<uint64_t, Page> m_pages;
};

}  // namespace

std::vector<uint8_t> odDwgRsDeinterleave(const uint8_t* in, size_t blocks, size_t dataBytes) {
  std::vector<uint8_t> out(blocks * dataBytes);
  for (size_t block = 0; block < blocks; ++block) {
    for (size_t j = 0; j < dataBytes; ++j) out[block * dataBytes + j] = in[j * blocks + block];
  }
  return out;
}

std::vector<uint8_t> odDwgR2007Decompress(const uint8_t* src, size_t size, size_t expectedSize) {
  if (size == 0) return {};
  return Decompressor(src, size, expectedSize).run();
}

bool odDwgReadR2007Sections(const std::vector<uint8_t>& file, OdDwgR2007Sections& out,
                            const std::function<void(size_t, const std::string&)>& problem) {
  return Reader(file, problem).read(out);
}
