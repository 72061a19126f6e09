// The paged container of DWG files from R2004 on (AC1018, and AC1024 to
// AC1032 which keep it): an encrypted file header at 0x80 that locates the
// page map; the page map (page number to file address); the section map
// (each named section as a list of pages); and the pages themselves, each
// with an encrypted header, compressed, checksummed. The reader gives the
// named sections ("AcDb:Header", "AcDb:Classes", "AcDb:Handles",
// "AcDb:AcDbObjects"...) as decoded byte buffers. Damage is collected with
// the file offset where it was found; what can be read is kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

class OdDwgPagedFile {
 public:
  struct Page {
    uint32_t number = 0;
    uint32_t dataSize = 0;   // compressed bytes in the page
    uint64_t start = 0;      // where its data goes in the section
  };
  struct Section {
    std::string name;
    uint64_t size = 0;       // decoded size
    uint32_t maxPageSize = 0;
    bool compressed = true;
    uint32_t encrypted = 0;
    std::vector<Page> pages;
  };

  // Reads the file header, the page map and the section map. False when the
  // file cannot be read at all; problems() says why.
  bool open(const uint8_t* file, size_t size);
  // Decodes a section's pages into one buffer; empty when the file has no
  // such section. Pages that cannot be decoded are reported and left as
  // zeros.
  std::vector<uint8_t> section(const std::string& name);
  bool hasSection(const std::string& name) const { return m_sections.count(name) != 0; }
  const std::map<std::string, Section>& sections() const { return m_sections; }
  // The address in the file of a page (0 when the page map has no such page).
  uint64_t pageAddress(uint32_t number) const;
  int codePage() const { return m_codePage; }

  // Problems found, each with the file offset where it was found.
  const std::vector<std::pair<size_t, std::string>>& problems() const { return m_problems; }

 private:
  void problem(size_t offset, const std::string& what) { m_problems.emplace_back(offset, what); }
  // A page of the page map or section map: its 20-byte header, then its
  // compressed data. Returns the decoded data (empty on failure).
  std::vector<uint8_t> systemPage(uint64_t address, uint32_t expectedType, const char* what);
  bool readPageMap(const std::vector<uint8_t>& map);
  bool readSectionMap(const std::vector<uint8_t>& map);

  const uint8_t* m_file = nullptr;
  size_t m_size = 0;
  int m_codePage = 0;
  std::map<uint32_t, uint64_t> m_pages;  // page number to file address
  std::map<std::string, Section> m_sections;
  std::vector<std::pair<size_t, std::string>> m_problems;
};

// The checksum of pages (a 32-bit sum of two 16-bit running sums modulo
// 65521, the first over the bytes, the second over the first), continuing
// from `seed`.
uint32_t odDwgPageChecksum(uint32_t seed, const uint8_t* data, size_t size);
