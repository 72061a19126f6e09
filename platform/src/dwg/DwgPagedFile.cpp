#include "dwg/DwgPagedFile.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

#include "dwg/DwgDecompress.h"

namespace {

constexpr uint32_t kPageMapType = 0x41630E3B;
constexpr uint32_t kSectionMapType = 0x4163003B;
constexpr uint32_t kDataPageType = 0x4163043B;
constexpr uint32_t kDataPageMask = 0x4164536B;  // XOR of a data page's header, with its address
constexpr size_t kHeaderAt = 0x80, kHeaderSize = 0x6C;
constexpr uint64_t kPagesStart = 0x100;  // the first page, and the base of the page map's address
// A section never needs more than this many bytes decoded: a bound against
// damaged sizes that would ask for huge buffers.
constexpr uint64_t kMaxSection = uint64_t(1) << 30;

uint32_t le32(const uint8_t* p) { return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24); }
uint64_t le64(const uint8_t* p) { return le32(p) | (static_cast<uint64_t>(le32(p + 4)) << 32); }

std::string hex(uint64_t value) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(value));
  return text;
}

uint32_t crc32(const uint8_t* data, size_t size) {
  static const auto table = [] {
    std::array<uint32_t, 256> t{};
    for (uint32_t i = 0; i < 256; ++i) {
      uint32_t c = i;
      for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
      t[i] = c;
    }
    return t;
  }();
  uint32_t c = 0xFFFFFFFFu;
  for (size_t i = 0; i < size; ++i) c = table[(c ^ data[i]) & 0xFF] ^ (c >> 8);
  return c ^ 0xFFFFFFFFu;
}

// Bytes read in order from a decoded map, with a check on every read.
struct MapReader {
  const std::vector<uint8_t>& bytes;
  size_t at = 0;
  bool has(size_t n) const { return n <= bytes.size() - at; }
  uint32_t rl() { const uint32_t v = le32(bytes.data() + at); at += 4; return v; }
  uint64_t rll() { const uint64_t v = le64(bytes.data() + at); at += 8; return v; }
};

}  // namespace

uint32_t odDwgPageChecksum(uint32_t seed, const uint8_t* data, size_t size) {
  uint32_t sum1 = seed & 0xFFFF, sum2 = seed >> 16;
  while (size) {
    // 5552 bytes is the most that can be summed before the modulo without
    // the 32-bit sums overflowing.
    const size_t chunk = std::min<size_t>(size, 0x15B0);
    size -= chunk;
    for (size_t i = 0; i < chunk; ++i) {
      sum1 += data[i];
      sum2 += sum1;
    }
    data += chunk;
    sum1 %= 0xFFF1;
    sum2 %= 0xFFF1;
  }
  return (sum2 << 16) | (sum1 & 0xFFFF);
}

uint64_t OdDwgPagedFile::pageAddress(uint32_t number) const {
  auto it = m_pages.find(number);
  return it == m_pages.end() ? 0 : it->second;
}

bool OdDwgPagedFile::open(const uint8_t* file, size_t size) {
  m_file = file;
  m_size = size;
  if (size < kHeaderAt + kHeaderSize) {
    problem(0, "file too short for the file header of a paged DWG file");
    return false;
  }
  m_codePage = file[0x13] | (file[0x14] << 8);
  // The header at 0x80 is XORed with a byte sequence from a linear
  // congruential generator (seed 1, times 0x343FD plus 0x269EC3, byte 2 of
  // the state).
  uint8_t h[kHeaderSize];
  uint32_t seed = 1;
  for (size_t i = 0; i < kHeaderSize; ++i) {
    seed = seed * 0x343FD + 0x269EC3;
    h[i] = file[kHeaderAt + i] ^ static_cast<uint8_t>(seed >> 16);
  }
  if (std::memcmp(h, "AcFssFcAJMB", 12) != 0) {
    problem(kHeaderAt, "the file header does not decrypt to its signature");
    return false;
  }
  const uint32_t stored = le32(h + 0x68);
  std::memset(h + 0x68, 0, 4);
  if (crc32(h, kHeaderSize) != stored) problem(kHeaderAt + 0x68, "file header CRC does not match; read on");
  const uint32_t pageMapId = le32(h + 0x50);
  const uint64_t pageMapAt = le64(h + 0x54) + kPagesStart;
  const uint32_t sectionMapId = le32(h + 0x5C);
  (void)pageMapId;
  const std::vector<uint8_t> pageMap = systemPage(pageMapAt, kPageMapType, "page map");
  if (pageMap.empty() || !readPageMap(pageMap)) return false;
  const uint64_t sectionMapAt = pageAddress(sectionMapId);
  if (!sectionMapAt) {
    problem(pageMapAt, "the page map has no page " + std::to_string(sectionMapId) + " for the section map");
    return false;
  }
  const std::vector<uint8_t> sectionMap = systemPage(sectionMapAt, kSectionMapType, "section map");
  return !sectionMap.empty() && readSectionMap(sectionMap);
}

std::vector<uint8_t> OdDwgPagedFile::systemPage(uint64_t address, uint32_t expectedType, const char* what) {
  // Type, decoded size, compressed size, compression (2: compressed), checksum.
  if (address > m_size || m_size - address < 20) {
    problem(address, std::string(what) + " outside the file");
    return {};
  }
  const uint8_t* p = m_file + address;
  const uint32_t type = le32(p), decodedSize = le32(p + 4), compressedSize = le32(p + 8);
  const uint32_t compression = le32(p + 12), checksum = le32(p + 16);
  if (type != expectedType) {
    problem(address, std::string(what) + ": page type " + hex(type) + " where " + hex(expectedType) + " belongs");
    return {};
  }
  if (compressedSize > m_size - address - 20 || decodedSize > kMaxSection || decodedSize > 4096 * (uint64_t(compressedSize) + 16)) {
    problem(address, std::string(what) + ": implausible sizes");
    return {};
  }
  uint8_t head[20];
  std::memcpy(head, p, 20);
  std::memset(head + 16, 0, 4);
  if (odDwgPageChecksum(odDwgPageChecksum(0, head, 20), p + 20, compressedSize) != checksum) {
    problem(address, std::string(what) + ": checksum does not match; read on");
  }
  std::vector<uint8_t> out(decodedSize);
  try {
    if (compression == 2) {
      odDwgDecompress(p + 20, compressedSize, out.data(), out.size());
    } else {
      std::memcpy(out.data(), p + 20, std::min<size_t>(compressedSize, decodedSize));
    }
  } catch (const OdDwgDecodeError& e) {
    problem(address + 20 + e.bit / 8, std::string(what) + ": " + e.what());
    return {};
  }
  return out;
}

bool OdDwgPagedFile::readPageMap(const std::vector<uint8_t>& map) {
  // Pairs of page number and page size, the pages one after the other from
  // 0x100; a negative number is a gap, with four more longs.
  MapReader r{map};
  uint64_t address = kPagesStart;
  while (r.has(8)) {
    const int32_t number = static_cast<int32_t>(r.rl());
    const uint32_t size = r.rl();
    if (number < 0) {
      if (!r.has(16)) break;
      r.at += 16;
    } else if (number > 0) {
      m_pages.emplace(static_cast<uint32_t>(number), address);
    }
    address += size;
  }
  if (m_pages.empty()) problem(kPagesStart, "the page map lists no pages");
  return !m_pages.empty();
}

bool OdDwgPagedFile::readSectionMap(const std::vector<uint8_t>& map) {
  // Count, 2, 0x7400, 0, count; then per section: RLL size, RL page count,
  // RL largest page, RL unused, RL compressed (2) or not (1), RL number, RL
  // encrypted, 64 bytes of name; and per page RL number, RL data size, RLL
  // where its data goes in the section.
  MapReader r{map};
  if (!r.has(20)) {
    problem(0, "section map too short");
    return false;
  }
  const uint32_t count = r.rl();
  r.at += 16;
  for (uint32_t i = 0; i < count && r.has(32 + 64); ++i) {
    Section s;
    s.size = r.rll();
    const uint32_t pages = r.rl();
    s.maxPageSize = r.rl();
    r.rl();
    s.compressed = r.rl() == 2;
    r.rl();
    s.encrypted = r.rl();
    const char* name = reinterpret_cast<const char*>(map.data() + r.at);
    s.name.assign(name, strnlen(name, 64));
    r.at += 64;
    if (!r.has(static_cast<uint64_t>(pages) * 16)) {
      problem(0, "section map: the pages of " + s.name + " run past its end");
      return !m_sections.empty();
    }
    for (uint32_t k = 0; k < pages; ++k) {
      Page page;
      page.number = r.rl();
      page.dataSize = r.rl();
      page.start = r.rll();
      s.pages.push_back(page);
    }
    if (!s.name.empty()) m_sections.emplace(s.name, std::move(s));
  }
  return true;
}

std::vector<uint8_t> OdDwgPagedFile::section(const std::string& name) {
  auto it = m_sections.find(name);
  if (it == m_sections.end()) return {};
  const Section& s = it->second;
  // Every page decodes to at most the section's page size; the buffer holds
  // them all, then is cut to the section's size.
  uint64_t room = 0;
  for (const Page& page : s.pages) {
    if (page.start <= kMaxSection) room = std::max(room, page.start + s.maxPageSize);
  }
  if (s.size > room || room > kMaxSection || room > 4096 * (uint64_t(m_size) + 4096)) {
    problem(0, "section " + name + ": implausible size " + std::to_string(s.size));
    return {};
  }
  std::vector<uint8_t> out(room);
  for (const Page& page : s.pages) {
    const uint64_t address = pageAddress(page.number);
    const std::string where = "section " + name + ", page " + std::to_string(page.number);
    if (!address || address > m_size || m_size - address < 32) {
      problem(address, where + ": not in the file");
      continue;
    }
    // The header: type, section number, compressed size, page size, start
    // in the section, unused, header checksum, data checksum; each long
    // XORed with a mask made from the page's address.
    uint32_t f[8];
    const uint32_t mask = kDataPageMask ^ static_cast<uint32_t>(address);
    for (int i = 0; i < 8; ++i) f[i] = le32(m_file + address + 4 * i) ^ mask;
    if (f[0] != kDataPageType) {
      problem(address, where + ": not a data page");
      continue;
    }
    const uint32_t compressedSize = f[2];
    if (compressedSize > m_size - address - 32) {
      problem(address, where + ": data runs past the end of the file");
      continue;
    }
    const uint8_t* data = m_file + address + 32;
    const uint32_t dataChecksum = odDwgPageChecksum(0, data, compressedSize);
    uint8_t head[32];
    for (int i = 0; i < 8; ++i) {
      const uint32_t v = i == 6 ? 0 : f[i];
      for (int b = 0; b < 4; ++b) head[4 * i + b] = static_cast<uint8_t>(v >> (8 * b));
    }
    if (dataChecksum != f[7] || odDwgPageChecksum(dataChecksum, head, 32) != f[6]) {
      problem(address, where + ": checksum does not match; read on");
    }
    if (page.start > out.size() || s.maxPageSize > out.size() - page.start) {
      problem(address, where + ": starts outside its section");
      continue;
    }
    uint8_t* to = out.data() + page.start;
    const size_t capacity = s.maxPageSize;
    try {
      if (s.compressed) odDwgDecompress(data, compressedSize, to, capacity);
      else std::memcpy(to, data, std::min<size_t>(compressedSize, capacity));
    } catch (const OdDwgDecodeError& e) {
      problem(address + 32 + e.bit / 8, where + ": " + e.what());
    }
  }
  out.resize(s.size);
  return out;
}
