// The DWG file structure: bit-coded values worked out by hand, the objects
// of every R13-R2000 corpus drawing against an independent reader, and
// damaged files that must be reported, never crash.
#include <gtest/gtest.h>

#include "DbProxy.h"

#include <cstring>

#include "DbBlockTableRecord.h"
#include "DbSymbolTable.h"
#include "DbPolyline.h"
#include "DwgRead.h"
#include "dwg/DwgFile.h"
#include "dwg/DwgR2007File.h"
#include "dwg_files.h"

namespace {

TEST(DwgBitReader, BitCodedValuesAsWorkedOutByHand) {
  // BS "01" + RC 0x2A = 42; BS "10" = 0; BS "11" = 256; BD "01" = 1.0;
  // B 1; BL "00" + RL 0x00012345.
  // Bits: 01 00101010 10 11 01 1 00 01000101 00100011 00000001 00000000
  const uint8_t data[] = {0x4A, 0xAD, 0x88, 0xA4, 0x60, 0x20, 0x00, 0x00};
  OdDwgBitReader r(data, sizeof data);
  EXPECT_EQ(r.readBS(), 42);
  EXPECT_EQ(r.readBS(), 0);
  EXPECT_EQ(r.readBS(), 256);
  EXPECT_EQ(r.readBD(), 1.0);
  EXPECT_TRUE(r.readBit());
  EXPECT_EQ(r.readBL(), 0x12345);
}

TEST(DwgBitReader, RawValuesOffTheByteBoundaryAndNearTheEnd) {
  // Bits "101", RS 0xBEEF, RL 0x12345678, RD -1.5, then "11": every raw value
  // starts 3 bits into a byte, and the double's second half lies in the last
  // 5 bytes, where no whole 8-byte word can be loaded.
  const uint8_t data[] = {0xBD, 0xF7, 0xCF, 0x0A, 0xC6, 0x82, 0x40, 0x00, 0x00, 0x00, 0x00, 0x00, 0x1F, 0x17, 0xF8};
  OdDwgBitReader r(data, sizeof data);
  EXPECT_EQ(r.readBits(3), 5u);
  EXPECT_EQ(r.readRS(), 0xBEEF);
  EXPECT_EQ(r.readRL(), 0x12345678u);
  EXPECT_EQ(r.readRD(), -1.5);
  EXPECT_EQ(r.readBB(), 3u);
  EXPECT_EQ(r.readBits(3), 0u);
  EXPECT_THROW(r.readBit(), OdDwgDecodeError);

  // Bit "1", the bytes "ABCDEFGHIJK", then the text "Caf\xE9\0xy" in code
  // page 1252: a run of bytes one bit off the byte boundary, and a text that
  // ends at its NUL with its last character outside ASCII.
  const uint8_t text[] = {0xA0, 0xA1, 0x21, 0xA2, 0x22, 0xA3, 0x23, 0xA4, 0x24, 0xA5,
                          0x25, 0xA1, 0xB0, 0xB3, 0x74, 0x80, 0x3C, 0x3C, 0x80};
  OdDwgBitReader t(text, sizeof text);
  EXPECT_TRUE(t.readBit());
  uint8_t bytes[11];
  t.readBytes(bytes, sizeof bytes);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes), sizeof bytes), "ABCDEFGHIJK");
  EXPECT_EQ(t.readText(7, 1252), OdString(L"Caf\u00E9"));
  EXPECT_EQ(t.bitPosition(), 1u + 18 * 8);
  EXPECT_THROW(t.readBytes(bytes, 1), OdDwgDecodeError);

  // Carets and control characters come coded as a DXF file holds them: a
  // caret "^ ", a tab "^I" (9 + 64 is 'I'), a line feed "^J"; in an ASCII
  // text, in a code-page text with a letter outside ASCII, and in UTF-16
  // units (R2007 on).
  const uint8_t coded[] = {'x', '^', '2', '\t', 'y', 0xE9, '^', '\n', 'x', 0, '^', 0, '\n', 0, 0xE9, 0};
  OdDwgBitReader c(coded, sizeof coded);
  EXPECT_EQ(c.readText(5, 1252), OdString(L"x^ 2^Iy"));
  EXPECT_EQ(c.readText(3, 1252), OdString(L"\u00E9^ ^J"));
  std::wstring units;
  c.readUnits(4, units);
  EXPECT_EQ(units, L"x^ ^J\u00E9");
}

TEST(DwgBitReader, ModularCharsHandlesAndDefaults) {
  // Unsigned MC 0x82 0x01 = 2 + (1 << 7) = 130; signed MC 0x85 0x4B:
  // 5 + (0x0B << 7) = 1413, sign bit set -> -1413.
  const uint8_t mc[] = {0x82, 0x01, 0x85, 0x4B};
  OdDwgBitReader m(mc, sizeof mc);
  EXPECT_EQ(m.readMCUnsigned(), 130u);
  EXPECT_EQ(m.readMCSigned(), -1413);

  // Handle 0x52 0x01 0x0F: code 5, two bytes, 0x010F. Relative code 6 is
  // the reference plus one; code 0xC with one byte 0x03 the reference minus 3.
  const uint8_t h[] = {0x52, 0x01, 0x0F, 0x60, 0xC1, 0x03};
  OdDwgBitReader hr(h, sizeof h);
  OdDwgHandleRef a = hr.readH(0x40);
  EXPECT_EQ(a.code, 5);
  EXPECT_EQ(a.value, 0x10Fu);
  EXPECT_EQ(hr.readH(0x40).value, 0x41u);
  EXPECT_EQ(hr.readH(0x40).value, 0x3Du);

  // DD "00" keeps the default; "01" replaces the default's low 4 bytes.
  double expected = 2.5;
  uint8_t bytes[8];
  std::memcpy(bytes, &expected, 8);
  bytes[0] = 0x11; bytes[1] = 0x22; bytes[2] = 0x33; bytes[3] = 0x44;
  std::memcpy(&expected, bytes, 8);
  // Bits: 00 01 00010001 00100010 00110011 01000100 (then padding)
  const uint8_t dd[] = {0x11, 0x12, 0x23, 0x34, 0x40};
  OdDwgBitReader d(dd, sizeof dd);
  EXPECT_EQ(d.readDD(2.5), 2.5);
  EXPECT_EQ(d.readDD(2.5), expected);

  // Reading past the end throws with the position instead of reading on.
  const uint8_t one[] = {0xFF};
  OdDwgBitReader short1(one, 1);
  EXPECT_THROW(short1.readRS(), OdDwgDecodeError);
}

bool notListedByTheIndependentReader(const std::string& entity) {
  static const char* const kTypes[] = {"TRACE:", "HELIX:", "ARC_DIMENSION:", "LIGHT:", "REGION:", "POLYFACE:",
                                       "PDFUNDERLAY:"};
  for (const char* type : kTypes) {
    if (entity.rfind(type, 0) == 0) return true;
  }
  return false;
}

// For one drawing: what the object map and the common data give, per block.
IndependentDump ourListing(const OdDwgFile& file) {
  IndependentDump ours;
  ours.version = file.versionName();
  std::map<uint64_t, std::string> blockNames;
  uint64_t modelSpace = 0, paperSpace = 0;
  for (const OdDwgObject& o : file.objects()) {
    if (o.type == 0x33) ours.layers.insert(o.recordName.toUtf8());
    if (o.type != 0x31) continue;
    std::string name = o.recordName.toUtf8();
    for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    blockNames[o.handle] = name;
    if (name == "*MODEL_SPACE") modelSpace = o.handle;
    if (name == "*PAPER_SPACE") paperSpace = o.handle;
  }
  for (const auto& [handle, name] : blockNames) ours.blocks[name];
  for (const OdDwgObject& o : file.objects()) {
    if (!o.entity || !o.decoded) continue;
    // Polyface meshes are told apart: the independent reader leaves them out.
    const std::string type = o.type == 0x1D ? "POLYFACE" : o.dxfName.toUtf8();
    if (type == "VERTEX" || type == "SEQEND" || type == "ATTRIB" || type == "BLOCK" || type == "ENDBLK") continue;
    const uint64_t block = o.entMode == 2 ? modelSpace : o.entMode == 1 ? paperSpace : o.owner;
    if (!blockNames.count(block)) continue;  // an object of a class marked as entity, owned by a dictionary
    char handle[24];
    std::snprintf(handle, sizeof handle, "%llX", static_cast<unsigned long long>(o.handle));
    ours.blocks[blockNames[block]].insert(type + ":" + handle);
  }
  return ours;
}

class DwgCorpusStructure : public ::testing::TestWithParam<std::string> {};

TEST_P(DwgCorpusStructure, EntitiesAndHandlesAgreeWithTheIndependentReader) {
  const std::string path = dwgCorpusDir() + "/" + GetParam();
  OdDwgFile file;
  ASSERT_TRUE(file.open(readBytes(path)));
  IndependentDump theirs = independentDump(path);
  ASSERT_TRUE(theirs.ok) << "the independent reader gave nothing for " << path;
  IndependentDump ours = ourListing(file);
  EXPECT_EQ(ours.version, theirs.version);
  EXPECT_EQ(ours.layers, theirs.layers);
  for (const auto& [block, entities] : theirs.blocks) {
    std::vector<std::string> onlyOurs, onlyTheirs;
    std::set_difference(ours.blocks[block].begin(), ours.blocks[block].end(), entities.begin(), entities.end(),
                        std::back_inserter(onlyOurs));
    std::set_difference(entities.begin(), entities.end(), ours.blocks[block].begin(), ours.blocks[block].end(),
                        std::back_inserter(onlyTheirs));
    // The independent reader leaves out the types it cannot convert.
    onlyOurs.erase(std::remove_if(onlyOurs.begin(), onlyOurs.end(), notListedByTheIndependentReader), onlyOurs.end());
    EXPECT_EQ(onlyOurs, std::vector<std::string>()) << "block " << block;
    EXPECT_EQ(onlyTheirs, std::vector<std::string>()) << "block " << block;
  }
  for (const auto& [block, entities] : ours.blocks) {
    EXPECT_TRUE(theirs.blocks.count(block)) << "block " << block << " unknown to the independent reader";
  }
}

// The drawing as opened: every entity of the types read so far is where the
// independent reader has it, with its handle, and none is missing.
TEST_P(DwgCorpusStructure, OpenedDrawingHoldsTheIndependentReadersEntities) {
  const std::string path = dwgCorpusDir() + "/" + GetParam();
  const std::vector<uint8_t> bytes = readBytes(path);
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDwgReadBuffer(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), &report);
  IndependentDump theirs = independentDump(path);
  ASSERT_TRUE(theirs.ok);
  // The types decoded, and those kept as proxies (by their class).
  std::set<std::string> kRead = {"LINE", "CIRCLE", "ARC",   "POINT", "TEXT", "ATTDEF",   "INSERT",   "LWPOLYLINE", "SOLID",
                                 "3DFACE", "ELLIPSE", "RAY", "XLINE", "MTEXT", "POLYLINE", "DIMENSION", "SPLINE", "MLINE", "3DSOLID", "REGION", "BODY", "HATCH", "LEADER", "VIEWPORT"};
  auto typeOf = [](const std::string& entity) { return entity.substr(0, entity.find(':')); };
  // Modeler entities are held whichever form their data has: converted
  // from the binary form, or kept as proxies of their class when it cannot be.
  std::map<std::string, std::multiset<std::string>> ours;
  OdDbObjectPtr table = db->getBlockTableId().openObject();
  for (const OdDbObjectId& id : static_cast<OdDbSymbolTable*>(table.get())->recordIds()) {
    OdDbObjectPtr object = id.openObject();
    auto* block = static_cast<OdDbBlockTableRecord*>(object.get());
    std::string name = block->getName().toUtf8();
    for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (const OdDbObjectId& entity : block->entityIds()) {
      OdDbObjectPtr e = entity.openObject();
      // Polyface meshes are told apart: the independent reader leaves them out.
      std::string type = dynamic_cast<OdDbPolyFaceMesh*>(e.get()) ? "POLYFACE" : e->dxfName().toUtf8();
      if (auto* proxy = dynamic_cast<OdDbProxyEntity*>(e.get())) {
        type = proxy->originalClassName().toUtf8();
        kRead.insert(type);
      }
      ours[name].insert(type + ":" + entity.handle().ascii().toUtf8());
    }
  }
  // No entity of the file is dropped unnoticed: each one its object map and
  // common data place in a block is in the drawing, or the report names its
  // type as not read yet.
  OdDwgFile file;
  ASSERT_TRUE(file.open(bytes));
  std::set<std::string> held;
  for (const auto& [block, entities] : ours)
    for (const std::string& e : entities) held.insert(e.substr(e.find(':') + 1));
  for (const auto& [block, entities] : ourListing(file).blocks) {
    for (const std::string& e : entities) {
      if (held.count(e.substr(e.find(':') + 1))) continue;
      const std::string tail = " " + typeOf(e) + " object";
      const bool reported = std::any_of(report.repairs.begin(), report.repairs.end(), [&](const OdString& line) {
        return line.toUtf8().find(tail) != std::string::npos && line.toUtf8().find("not read yet") != std::string::npos;
      });
      EXPECT_TRUE(reported) << e << " of block " << block << " is missing";
    }
  }
  int compared = 0;
  for (const auto& [block, entities] : theirs.blocks) {
    std::multiset<std::string> expected;
    for (const std::string& e : entities) {
      if (kRead.count(typeOf(e))) expected.insert(e);
    }
    std::multiset<std::string> got;
    for (const std::string& e : ours[block]) {
      if (kRead.count(typeOf(e)) && !notListedByTheIndependentReader(e)) got.insert(e);
    }
    compared += static_cast<int>(expected.size());
    std::vector<std::string> missing, extra;
    std::set_difference(expected.begin(), expected.end(), got.begin(), got.end(), std::back_inserter(missing));
    std::set_difference(got.begin(), got.end(), expected.begin(), expected.end(), std::back_inserter(extra));
    EXPECT_EQ(missing, std::vector<std::string>()) << "block " << block;
    EXPECT_EQ(extra, std::vector<std::string>()) << "block " << block;
  }
  // A drawing whose entities the independent reader all leaves out holds
  // them, each of such a type.
  if (compared == 0) {
    int held = 0;
    for (const auto& [block, entities] : ours) {
      for (const std::string& e : entities) {
        EXPECT_TRUE(!kRead.count(typeOf(e)) || notListedByTheIndependentReader(e)) << e;
        ++held;
      }
    }
    EXPECT_GT(held, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Corpus, DwgCorpusStructure, ::testing::ValuesIn(dwgR13To2000Files()),
                         [](const auto& info) { return dwgTestName(info.param); });
INSTANTIATE_TEST_SUITE_P(R2007, DwgCorpusStructure, ::testing::ValuesIn(dwgR2007Files()),
                         [](const auto& info) { return dwgTestName(info.param); });
INSTANTIATE_TEST_SUITE_P(R2010On, DwgCorpusStructure, ::testing::ValuesIn(dwgR2010OnFilesRead()),
                         [](const auto& info) { return dwgTestName(info.param); });

TEST(DwgR2007Pages, ReedSolomonWordsDeinterleaved) {
  // Two code words stored byte by byte in turn: byte k of the page is byte
  // k / 2 of word k % 2. Keeping 3 data bytes of each word gives
  // word 0: 0, 2, 4 and word 1: 1, 3, 5.
  std::vector<uint8_t> page(2 * 255);
  for (size_t k = 0; k < page.size(); ++k) page[k] = static_cast<uint8_t>(k);
  EXPECT_EQ(odDwgRsDeinterleave(page.data(), 2, 3), (std::vector<uint8_t>{0, 2, 4, 1, 3, 5}));
}

TEST(DwgR2007Pages, DecompressionAsWorkedOutByHand) {
  // 0x20 first: two bytes of no use, then 0x02 & 7 = a literal of 2 bytes,
  // stored reversed ("00 70" -> 70 00). 0x60: copy 6 bytes from 1 back
  // (offset 0 + ((0x03 & 0xF8) << 1) + 1), and 0x03 & 7 = a literal of 3
  // bytes, reversed (80 24 01). 0x58: copy 5 bytes from 8 + 0 + 1 = 9
  // back. Result: the 64-bit values 0x70 and 0x12480.
  const uint8_t packed[] = {0x20, 0x00, 0x00, 0x02, 0x00, 0x70, 0x60, 0x03, 0x01, 0x24, 0x80, 0x58, 0x00};
  EXPECT_EQ(odDwgR2007Decompress(packed, sizeof packed, 16),
            (std::vector<uint8_t>{0x70, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x24, 0x01, 0, 0, 0, 0, 0}));
  // A literal of 0x09 + 8 = 17 bytes is cut into 8, 1, 8 bytes written in
  // reverse order: the UTF-16 text "AcDb:File" of a section map.
  const uint8_t literal[] = {0x09, 0x00, 0x46, 0x00, 0x69, 0x00, 0x6C, 0x00, 0x65, 0x3A,
                             0x41, 0x00, 0x63, 0x00, 0x44, 0x00, 0x62, 0x00};
  const std::vector<uint8_t> text = odDwgR2007Decompress(literal, sizeof literal, 17);
  EXPECT_EQ(std::string(text.begin(), text.end()), std::string("A\0c\0D\0b\0:\0F\0i\0l\0e", 17));
  // Damage is an error, never a read outside the data: a copy from before
  // the start, output beyond the stated size, an instruction cut short.
  const uint8_t backwards[] = {0x20, 0x00, 0x00, 0x01, 0x41, 0x60, 0x40};
  EXPECT_THROW(odDwgR2007Decompress(backwards, sizeof backwards, 16), OdDwgDecodeError);
  EXPECT_THROW(odDwgR2007Decompress(packed, sizeof packed, 10), OdDwgDecodeError);
  EXPECT_THROW(odDwgR2007Decompress(packed, 7, 16), OdDwgDecodeError);
}

TEST(DwgDamagedFiles, TruncatedAndFlippedR2007FilesAreReportedNotFatal) {
  const std::vector<uint8_t> original = readBytes(dwgCorpusDir() + "/2007_Line.dwg");
  ASSERT_GT(original.size(), 0x1000u);
  OdDwgFile intact;
  ASSERT_TRUE(intact.open(original));
  for (size_t length = 0; length < original.size(); length += 1499) {
    OdDwgFile cut;
    std::vector<uint8_t> part(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(length));
    if (cut.open(part)) EXPECT_LE(cut.objects().size(), intact.objects().size());
    else EXPECT_FALSE(cut.problems().empty());
  }
  // A byte of a data page changed: the parity is not used to correct it,
  // so the page decodes to other bytes or fails; either way the file opens
  // or is refused with a reason, and whatever is wrong is reported.
  for (size_t step = 0; step < 24; ++step) {
    std::vector<uint8_t> flipped = original;
    for (size_t i = 0x480 + step * 97; i < flipped.size(); i += 2000 + step) flipped[i] ^= static_cast<uint8_t>(1u << (step % 8));
    OdDwgFile f;
    if (!f.open(flipped)) EXPECT_FALSE(f.problems().empty());
  }
  // The coded file header overwritten: refused, with the offset named.
  std::vector<uint8_t> header = original;
  for (size_t i = 0x80; i < 0x80 + 0x3D8; ++i) header[i] = 0xFF;
  OdDwgFile noHeader;
  EXPECT_FALSE(noHeader.open(header));
  ASSERT_FALSE(noHeader.problems().empty());
  EXPECT_NE(noHeader.problems().front().find("offset 0x80"), std::string::npos) << noHeader.problems().front();
}
INSTANTIATE_TEST_SUITE_P(R2004, DwgCorpusStructure, ::testing::ValuesIn(dwgR2004Files()),
                         [](const auto& info) { return dwgTestName(info.param); });

TEST(DwgDamagedFiles, TruncatedAndFlippedFilesAreReportedNotFatal) {
  const std::vector<uint8_t> original = readBytes(dwgCorpusDir() + "/2000_entities-2d.dwg");
  ASSERT_GT(original.size(), 1000u);
  OdDwgFile intact;
  ASSERT_TRUE(intact.open(original));
  EXPECT_TRUE(intact.problems().empty()) << intact.problems().front();

  // Cut at many lengths: either refused or read with problems, never a crash.
  for (size_t length = 0; length < original.size(); length += 997) {
    OdDwgFile cut;
    std::vector<uint8_t> part(original.begin(), original.begin() + static_cast<std::ptrdiff_t>(length));
    if (cut.open(part)) EXPECT_LE(cut.objects().size(), intact.objects().size());
    else EXPECT_FALSE(cut.problems().empty());
  }
  // One object's bytes overwritten: that object is named with its offset,
  // the others are still read.
  const OdDwgObject* line = intact.find(0x2C);
  ASSERT_NE(line, nullptr);
  std::vector<uint8_t> damaged = original;
  for (size_t i = 0; i < 6; ++i) damaged[line->start + i] = 0xFF;
  OdDwgFile hurt;
  ASSERT_TRUE(hurt.open(damaged));
  ASSERT_FALSE(hurt.problems().empty());
  char offset[32];
  std::snprintf(offset, sizeof offset, "offset 0x%zX", line->offset);
  EXPECT_NE(hurt.problems().front().find(offset), std::string::npos) << hurt.problems().front();
  EXPECT_FALSE(hurt.find(0x2C)->decoded);
  // The object's CRC no longer matches its bytes; no other object's does.
  size_t crcProblems = 0;
  for (const std::string& p : hurt.problems()) crcProblems += p.find("CRC does not match") != std::string::npos;
  EXPECT_EQ(crcProblems, 1u);
  EXPECT_TRUE(hurt.find(0x2D)->decoded);
  // Bytes flipped all over the file: no crash, no hang.
  for (size_t step = 0; step < 40; ++step) {
    std::vector<uint8_t> flipped = original;
    for (size_t i = step * 131; i < flipped.size(); i += 1500 + step) flipped[i] ^= static_cast<uint8_t>(1u << (step % 8));
    OdDwgFile f;
    f.open(flipped);
  }
}

}  // namespace
