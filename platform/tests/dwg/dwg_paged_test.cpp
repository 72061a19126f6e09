// The paged container of R2004 on: the page decompression on streams worked
// out by hand, the container of every paged corpus drawing, and damaged
// R2004 files that must be reported, never crash.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "DwgRead.h"
#include "dwg/DwgDecompress.h"
#include "dwg/DwgFile.h"
#include "dwg/DwgPagedFile.h"
#include "dwg_files.h"

namespace {

std::string decompressed(const std::vector<uint8_t>& stream, size_t capacity = 1 << 16) {
  std::vector<uint8_t> out(capacity);
  const size_t n = odDwgDecompress(stream.data(), stream.size(), out.data(), out.size());
  return std::string(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(n));
}

TEST(DwgDecompress, StreamsWorkedOutByHand) {
  // 0x01: a literal run of 1 + 3 bytes "ABCD". 0x5C: a copy of (5 - 1) = 4
  // bytes, distance (0x00 << 2 | (0x5C & 0x0C) >> 2) = 3, so from 3 + 1
  // bytes back: "ABCD"; no literals (low bits 0) and 0x22 is no literal
  // length. 0x22: a copy of 0x22 - 0x1E = 4 bytes; its two offset bytes
  // 0x02 0x00 give distance 0 (the last byte, repeated: "DDDD") and 2
  // literals "xy". 0x11 ends the stream.
  EXPECT_EQ(decompressed({0x01, 'A', 'B', 'C', 'D', 0x5C, 0x00, 0x22, 0x02, 0x00, 'x', 'y', 0x11}), "ABCDABCDDDDDxy");

  // A long literal run: 0x00, one 0x00 (adds 255), then 5: 15 + 255 + 5 + 3
  // = 278 bytes. Then 0x20 with long length 2: a copy of 0x21 + 2 = 35
  // bytes at distance 1 ("ba" repeated), no literals.
  std::vector<uint8_t> stream = {0x00, 0x00, 0x05};
  std::string expected;
  for (int i = 0; i < 278; ++i) expected += static_cast<char>('a' + i % 2);
  stream.insert(stream.end(), expected.begin(), expected.end());
  for (int i = 0; i < 35; ++i) expected += expected[expected.size() - 2];
  stream.insert(stream.end(), {0x20, 0x02, 0x04, 0x00, 0x11});
  EXPECT_EQ(decompressed(stream), expected);

  // Far copies: 0x10 with long length 1 copies 1 + 9 = 10 bytes from
  // 0x3FFF + offset + 1 bytes back: after 0x4000 literals (0x00, 64 zero
  // bytes and 0x2E: 15 + 64 * 255 + 46 + 3), offset 0 copies from the start.
  std::vector<uint8_t> far = {0x00};
  far.insert(far.end(), 64, 0x00);
  far.push_back(0x2E);
  std::string farExpected;
  for (int i = 0; i < 0x4000; ++i) farExpected += static_cast<char>(i % 251);
  far.insert(far.end(), farExpected.begin(), farExpected.end());
  farExpected += farExpected.substr(0, 10);
  far.insert(far.end(), {0x10, 0x01, 0x00, 0x00, 0x11});
  EXPECT_EQ(decompressed(far), farExpected);
}

TEST(DwgDecompress, DamagedStreamsThrowWithTheirPosition) {
  // A copy from before the start: distance 19 after 4 bytes.
  try {
    decompressed({0x01, 'A', 'B', 'C', 'D', 0x5C, 0x04, 0x11});
    ADD_FAILURE() << "a copy from before the start was made";
  } catch (const OdDwgDecodeError& e) {
    EXPECT_EQ(e.bit, 7u * 8);  // after the opcode's second byte
  }
  // Cut inside an opcode, and output past the room given.
  EXPECT_THROW(decompressed({0x01, 'A', 'B', 'C', 'D', 0x22, 0x02}), OdDwgDecodeError);
  EXPECT_THROW(decompressed({0x01, 'A', 'B', 'C', 'D', 0x5C, 0x00, 0x11}, 6), OdDwgDecodeError);
  // A literal length byte where an opcode belongs (after a copy whose own
  // low bits gave its one literal).
  EXPECT_THROW(decompressed({0x01, 'A', 'B', 'C', 'D', 0x5D, 0x00, 'z', 0x05}), OdDwgDecodeError);
}

TEST(DwgPagedFile, PageChecksumAsWorkedOutByHand) {
  // "abc": the first sum 97 + 98 + 99 = 294, the second 97 + 195 + 294 = 586.
  const uint8_t abc[] = {'a', 'b', 'c'};
  EXPECT_EQ(odDwgPageChecksum(0, abc, 3), (586u << 16) | 294u);
  // Continued from a seed: its low half starts the first sum, its high half the second.
  EXPECT_EQ(odDwgPageChecksum((10u << 16) | 6u, abc, 1), ((10u + 103u) << 16) | 103u);
}

// Every paged drawing of the corpus (R2004 to R2018): the container reads
// without a problem and gives the sections the objects are read from, each
// beginning where its format says.
TEST(DwgPagedFile, EveryPagedCorpusFileReadsClean) {
  const std::vector<std::string> files = dwgFilesOfVersions({"AC1018", "AC1024", "AC1027", "AC1032"});
  ASSERT_GE(files.size(), 60u);
  const uint8_t headerSentinel[] = {0xCF, 0x7B, 0x1F, 0x23, 0xFD, 0xDE, 0x38, 0xA9};
  const uint8_t classesSentinel[] = {0x8D, 0xA1, 0xC4, 0xB8, 0xC4, 0xA9, 0xF8, 0xC5};
  for (const std::string& name : files) {
    const std::vector<uint8_t> bytes = readBytes(dwgCorpusDir() + "/" + name);
    OdDwgPagedFile paged;
    ASSERT_TRUE(paged.open(bytes.data(), bytes.size())) << name;
    const std::vector<uint8_t> header = paged.section("AcDb:Header"), classes = paged.section("AcDb:Classes");
    const std::vector<uint8_t> objects = paged.section("AcDb:AcDbObjects"), handles = paged.section("AcDb:Handles");
    EXPECT_TRUE(paged.problems().empty()) << name << ": " << paged.problems().front().second;
    ASSERT_GT(header.size(), 16u) << name;
    ASSERT_GT(classes.size(), 16u) << name;
    EXPECT_EQ(std::memcmp(header.data(), headerSentinel, 8), 0) << name;
    EXPECT_EQ(std::memcmp(classes.data(), classesSentinel, 8), 0) << name;
    // The objects section starts with 0x0DCA; the object map's first piece
    // gives its size big-endian, at most 2032.
    ASSERT_GT(objects.size(), 4u) << name;
    EXPECT_EQ(objects[0] | (objects[1] << 8), 0x0DCA) << name;
    ASSERT_GT(handles.size(), 2u) << name;
    EXPECT_LE((handles[0] << 8) | handles[1], 2032) << name;
  }
}

TEST(DwgPagedFile, DamagedR2004FilesAreReportedNotFatal) {
  const std::vector<uint8_t> original = readBytes(dwgCorpusDir() + "/2004_Line.dwg");
  OdDwgFile intact;
  ASSERT_TRUE(intact.open(original));
  ASSERT_TRUE(intact.problems().empty()) << intact.problems().front();

  // A byte of the first objects page flipped: its checksum fails and is
  // reported with the page's address; the drawing still opens.
  OdDwgPagedFile paged;
  ASSERT_TRUE(paged.open(original.data(), original.size()));
  const uint64_t page = paged.pageAddress(paged.sections().at("AcDb:AcDbObjects").pages.at(0).number);
  ASSERT_GT(page, 0u);
  std::vector<uint8_t> flipped = original;
  flipped[page + 32 + 200] ^= 0x10;
  OdDwgFile hurt;
  EXPECT_TRUE(hurt.open(flipped));
  char where[64];
  std::snprintf(where, sizeof where, "offset 0x%llX: section AcDb:AcDbObjects", static_cast<unsigned long long>(page));
  ASSERT_FALSE(hurt.problems().empty());
  EXPECT_NE(hurt.problems().front().find(where), std::string::npos) << hurt.problems().front();
  EXPECT_NE(hurt.problems().front().find("checksum"), std::string::npos) << hurt.problems().front();

  // The file header at 0x80 damaged: refused, with the reason.
  std::vector<uint8_t> header = original;
  header[0x80] ^= 0xFF;
  OdDwgFile refused;
  EXPECT_FALSE(refused.open(header));
  EXPECT_NE(refused.problems().front().find("offset 0x80"), std::string::npos) << refused.problems().front();
  EXPECT_THROW(odDwgReadBuffer(std::string_view(reinterpret_cast<const char*>(header.data()), header.size())), OdError);

  // Cut at many lengths: refused or read with problems, never a crash.
  for (size_t length = 0; length < original.size(); length += 1231) {
    OdDwgFile cut;
    if (!cut.open(std::vector<uint8_t>(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(length)))) {
      EXPECT_FALSE(cut.problems().empty());
    }
  }
  // Bytes flipped all over: through the whole reader, read or refused.
  for (size_t step = 0; step < 24; ++step) {
    std::vector<uint8_t> bytes = original;
    for (size_t i = 0x60 + step * 37; i < bytes.size(); i += 900 + step * 13) bytes[i] ^= static_cast<uint8_t>(1u << (step % 8));
    try {
      odDwgReadBuffer(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    } catch (const OdError&) {
    }
  }
}

}  // namespace
