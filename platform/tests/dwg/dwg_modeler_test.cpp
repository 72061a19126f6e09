// The modeler's binary form turned into its text form: tokens and records
// worked out by hand, data that cannot be named refused, and every entity
// of the corpus that holds the binary form checked token by token against
// an independent reader of that form (python3-ezdxf's binary dump).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <fstream>

#include "DbDatabase.h"
#include "DbModelerGeometry.h"
#include "DbProxy.h"
#include "DxfFile.h"
#include "dwg/DwgFile.h"
#include "dwg/DwgModelerBinary.h"
#include "dwg_files.h"

namespace {

// Builds binary data token by token.
struct Sab {
  std::vector<uint8_t> bytes;
  Sab& raw(const std::string& s) { bytes.insert(bytes.end(), s.begin(), s.end()); return *this; }
  Sab& u8(uint8_t v) { bytes.push_back(v); return *this; }
  Sab& i32(int32_t v) {
    for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<uint8_t>(static_cast<uint32_t>(v) >> (8 * i)));
    return *this;
  }
  Sab& f64(double v) {
    uint8_t b[8];
    std::memcpy(b, &v, 8);
    bytes.insert(bytes.end(), b, b + 8);
    return *this;
  }
  Sab& tagged(uint8_t tag, const std::string& s) { return u8(tag).u8(static_cast<uint8_t>(s.size())).raw(s); }
  Sab& pointer(int32_t v) { return u8(12).i32(v); }
  Sab& integer(int32_t v) { return u8(4).i32(v); }
  Sab& real(double v) { return u8(6).f64(v); }
  Sab& triple(uint8_t tag, double x, double y, double z) { return u8(tag).f64(x).f64(y).f64(z); }
  Sab& header() {
    raw("ACIS BinaryFile").i32(21200).i32(0).i32(1).i32(26);
    tagged(7, "abc").tagged(7, "v1").tagged(7, "");
    return real(1.0).real(0.25).real(-2.5);
  }
  Sab& end() { return tagged(14, "End").tagged(14, "of").tagged(14, "ACIS").tagged(13, "data"); }
};

TEST(DwgModelerBinary, TokensAndRecordsWorkedOutByHand) {
  Sab sab;
  sab.header();
  sab.tagged(13, "body").pointer(-1).integer(-1).pointer(1).u8(17);
  // A bounded line: position, direction, then a finite start (true and its
  // value) and an infinite end (false).
  sab.tagged(14, "straight").tagged(13, "curve").pointer(-1).integer(7).triple(19, 1, 2.5, -3).triple(20, 0, 0, 1);
  sab.u8(10).real(0.25).u8(11).u8(17);
  sab.tagged(13, "face").pointer(2).u8(11).u8(10).u8(10).tagged(7, "a b").u8(17);
  sab.end();
  const size_t end = sab.bytes.size();
  sab.u8(0xC7).u8(0xCA);  // what follows the data in the object
  const oddwg::OdModelerText t = oddwg::odModelerBinaryToText(sab.bytes.data(), sab.bytes.size());
  ASSERT_TRUE(t.ok) << t.error;
  EXPECT_EQ(t.text,
            "21200 3 1 26\n"
            "3 abc 2 v1 0\n"
            "1 0.25 -2.5\n"
            "body $-1 -1 $1 #\n"
            "straight-curve $-1 7 1 2.5 -3 0 0 1 F 0.25 I #\n"
            "face $2 forward double in @3 a b #\n");
  EXPECT_EQ(t.records, 3);
  EXPECT_EQ(t.used, end);
  // Doubles keep 19 digits: the tolerance of the corpus data reads as in its twins.
  Sab tolerance;
  tolerance.header();
  tolerance.tagged(13, "point").real(1e-6).real(-0.0).u8(17).end();
  const oddwg::OdModelerText p = oddwg::odModelerBinaryToText(tolerance.bytes.data(), tolerance.bytes.size());
  ASSERT_TRUE(p.ok) << p.error;
  EXPECT_NE(p.text.find("\npoint 9.999999999999999547e-07 -0 #\n"), std::string::npos) << p.text;

  // The coding of DWG and DXF files: '2' (50) is 'm' (109), '~' and '!' swap, spaces and line ends stay.
  EXPECT_EQ(oddwg::odModelerTextEncoded("21200 a~!\n"), "mnmoo >!~\n");
}

TEST(DwgModelerBinary, DataItCannotNameIsRefused) {
  auto convert = [](const std::function<void(Sab&)>& records) {
    Sab sab;
    sab.header();
    records(sab);
    return oddwg::odModelerBinaryToText(sab.bytes.data(), sab.bytes.size());
  };
  // A true/false in a record whose words are not known, or past the known ones.
  EXPECT_NE(convert([](Sab& s) { s.tagged(13, "loop").u8(10).u8(17).end(); }).error.find("loop"), std::string::npos);
  EXPECT_FALSE(convert([](Sab& s) { s.tagged(13, "coedge").u8(10).u8(10).u8(17).end(); }).ok);
  // An enumeration, whose names the binary form does not carry.
  EXPECT_FALSE(convert([](Sab& s) { s.tagged(13, "attrib").u8(21).i32(2).u8(17).end(); }).ok);
  // Cut in a value, or without its end record.
  Sab cut;
  cut.header();
  cut.tagged(13, "point").u8(6).u8(0).u8(0);
  EXPECT_FALSE(oddwg::odModelerBinaryToText(cut.bytes.data(), cut.bytes.size()).ok);
  EXPECT_FALSE(convert([](Sab& s) { s.tagged(13, "point").real(1).u8(17); }).ok);
  EXPECT_TRUE(convert([](Sab& s) { s.tagged(13, "point").real(1).u8(17).end(); }).ok);
  const uint8_t text[] = "400 26 1 0\n";
  EXPECT_FALSE(oddwg::odModelerBinaryToText(text, sizeof text).ok);
}

// Checks pairs of files (binary data, our text) with python3-ezdxf's dump of
// the binary form: per record its name, then its values in order (pointers,
// integers, doubles, vectors, strings, braces, true/false by the side of the
// word written); the header's version, body count, flags, strings and reals.
const char* const kChecker = R"PY(
import sys, ast
from ezdxf.acis.api import dump_sab_as_text
YES = {'reversed', 'double', 'in', 'F', 'reverse_v', 'rotate', 'reflect', 'shear'}
NO = {'forward', 'single', 'out', 'I', 'forward_v', 'no_rotate', 'no_reflect', 'no_shear'}
def tokens(line):
    out, i = [], 0
    while i < len(line):
        if line[i] == ' ':
            i += 1
            continue
        j = line.find(' ', i)
        j = len(line) if j < 0 else j
        t = line[i:j]
        if t.startswith('@') and t[1:].isdigit():
            n = int(t[1:])
            out.append(('S', line[j + 1:j + 1 + n]))
            i = j + 1 + n
        else:
            out.append(('W', t))
            i = j
    return out
def check(sab, text):
    at = sab.find(b'\x0e\x03End\x0e\x02of\x0e')
    sab = sab[:sab.find(b'\x0d\x04data', at) + 6]
    dump = list(dump_sab_as_text(sab))
    lines = text.split('\n')
    head = dump[0].split()
    ours = lines[0].split()
    records = [[]]
    for d in dump[3:]:
        if d.startswith('-----'):
            records.append([])
        else:
            records[-1].append(d.split(' = ', 1))
    records = [r for r in records if r and r[0][1] != 'End-of-ACIS-data' and r[0][1] != 'End-of-ASM-data']
    if [ours[0], ours[2], ours[3]] != [head[0], head[2], head[3]] or int(ours[1]) != len(records):
        return 'header ' + lines[0] + ' / ' + dump[0]
    if lines[1].split() != [w[1:] if w.startswith('@') else w for w in dump[1].split()]:
        return 'product ' + lines[1] + ' / ' + dump[1]
    if [float(x) for x in lines[2].split()] != [float(x) for x in dump[2].split()]:
        return 'reals ' + lines[2]
    body = [l for l in lines[3:] if l]
    if len(body) != len(records):
        return 'records %d / %d' % (len(body), len(records))
    for n, (line, record) in enumerate(zip(body, records)):
        t = tokens(line)
        if t[0] != ('W', record[0][1]) or t[-1] != ('W', '#'):
            return 'record %d: %s' % (n, line)
        t = t[1:-1]
        for key, value in record[1:]:
            want = []
            if key == 'POINTER': want = [('W', '$' + value)]
            elif key in ('INT', 'ENUM'): want = [int(value)]
            elif key == 'DOUBLE': want = [float(value)]
            elif key.endswith('_VEC'): want = [float(x) for x in ast.literal_eval(value)]
            elif key == 'STR': want = [('S', value)]
            elif key == 'ENTITY_TYPE': want = [('W', value)]
            elif key == 'SUBTYPE_START': want = [('W', '{')]
            elif key == 'SUBTYPE_END': want = [('W', '}')]
            elif key in ('BOOL_TRUE', 'BOOL_FALSE'): want = [YES if key == 'BOOL_TRUE' else NO]
            else: return 'record %d: unknown %s' % (n, key)
            for w in want:
                if not t: return 'record %d ends early: %s' % (n, line)
                kind, got = t.pop(0)
                if isinstance(w, set): ok = kind == 'W' and got in w
                elif isinstance(w, (int, float)): ok = kind == 'W' and float(got) == w
                else: ok = (kind, got) == w
                if not ok: return 'record %d: %s for %s %s in %s' % (n, got, key, value, line)
        if t: return 'record %d has more: %s' % (n, line)
    return 'ok %d' % len(records)
args = sys.argv[1:]
for i in range(0, len(args), 2):
    print(check(open(args[i], 'rb').read(), open(args[i + 1], encoding='latin-1').read()))
)PY";

// What a command prints, its errors included.
std::string output(const std::string& command) {
  std::string out;
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (!pipe) return out;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
  pclose(pipe);
  return out;
}

// The plain text of a modeler entity, whose lines the platform holds as a
// DXF file does: coded, with a caret written "^ " and a control character
// as a caret and a letter.
std::string plainText(const OdDbModelerGeometry* m) {
  std::string text;
  for (const auto& line : m->modelerData()) {
    if (line.code == 1 && !text.empty()) text += '\n';
    const std::string coded = line.text.toUtf8();
    for (size_t i = 0; i < coded.size(); ++i) {
      char c = coded[i];
      if (c == '^' && i + 1 < coded.size()) c = coded[++i] == ' ' ? '^' : static_cast<char>(coded[i] - '@');
      text += c > ' ' && c <= '~' ? static_cast<char>(159 - c) : c;
    }
  }
  return text + '\n';
}

TEST(DwgModelerCorpus, EveryBinaryFormEntityAgreesWithAnIndependentReader) {
  const auto dir = std::filesystem::temp_directory_path() / ("dwg_modeler_" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  std::ofstream(dir / "check.py") << kChecker;
  int converted = 0, proxies = 0;
  for (const std::string& name : dwgFilesOfVersions({"AC1021", "AC1024", "AC1027", "AC1032"})) {
    const std::string path = dwgCorpusDir() + "/" + name;
    OdDwgFile file;
    if (!file.open(readBytes(path))) continue;
    std::string command = "/usr/bin/python3 '" + (dir / "check.py").string() + "'";
    int pairs = 0;
    OdDbDatabasePtr db;
    for (const OdDwgObject& o : file.objects()) {
      if (!o.decoded || o.type < 0x25 || o.type > 0x27) continue;
      OdDwgBitReader d = file.objectReader(o);
      d.seekBit(o.dataBit);
      if (d.readBit()) continue;
      d.readBit();
      if (d.readBS() != 2) continue;
      std::vector<uint8_t> bytes;
      while (d.bitSize() - d.bitPosition() >= 8) bytes.push_back(d.readRC());
      if (db.isNull()) db = odDxfReadFile(OdString(path.c_str()));
      OdDbObjectPtr object = db->getOdDbObjectId(OdDbHandle(o.handle), false).openObject();
      ASSERT_FALSE(object.isNull()) << name << " " << o.handle << " dropped";
      // Not converted: kept whole as a proxy of its class.
      if (auto* proxy = dynamic_cast<OdDbProxyEntity*>(object.get())) {
        EXPECT_EQ(proxy->originalClassName(), o.dxfName);
        ++proxies;
        continue;
      }
      auto* modeler = dynamic_cast<OdDbModelerGeometry*>(object.get());
      ASSERT_NE(modeler, nullptr) << name << " " << o.handle;
      const std::string stem = (dir / (name + "_" + std::to_string(o.handle))).string();
      std::ofstream(stem + ".sab", std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
      std::ofstream(stem + ".txt", std::ios::binary) << plainText(modeler);
      command += " '" + stem + ".sab' '" + stem + ".txt'";
      ++pairs;
    }
    if (pairs == 0) continue;
    const std::string out = output(command);
    int ok = 0;
    for (size_t at = 0; at < out.size(); at = out.find('\n', at) + 1) {
      ok += out.compare(at, 3, "ok ") == 0;
      if (out.find('\n', at) == std::string::npos) break;
    }
    EXPECT_EQ(ok, pairs) << name << ":\n" << out;
    converted += pairs;
  }
  std::filesystem::remove_all(dir);
  // example_2007 (a solid, two regions) and the 58 solids of ATMOS-DC22S,
  // of which those with attributes of enumerated actions stay proxies.
  EXPECT_GE(converted, 54);
  EXPECT_EQ(converted + proxies, 61);
}

// The drawing saved as DXF, read by python3-ezdxf: no audit errors, each
// modeler entity's lines equal to its twin's but for the product line
// (the twin gives no date: "... 0" where the drawing has "... 24 <date>"),
// and per entity its counts of topology records.
TEST(DwgModelerCorpus, SavedDrawingReadsInAnIndependentReaderAsItsTwin) {
  const std::string dwg = dwgCorpusDir() + "/example_2007.dwg", twin = dwgCorpusDir() + "/example_2007.dxf";
  OdDbDatabasePtr db = odDxfReadFile(OdString(dwg.c_str()));
  ASSERT_FALSE(db.isNull());
  const std::string saved = (std::filesystem::temp_directory_path() / ("dwg_modeler_saved_" + std::to_string(::getpid()) + ".dxf")).string();
  odDxfWriteFile(db.get(), OdString(saved.c_str()));
  const char* const script = R"PY(
import sys, ezdxf
def modeler(path):
    return {e.dxf.handle: e.acis_data for e in ezdxf.readfile(path).modelspace() if e.dxftype() in ('3DSOLID', 'REGION', 'BODY')}
saved = ezdxf.readfile(sys.argv[1])
print('audit', len(saved.audit().errors))
ours, theirs = modeler(sys.argv[1]), modeler(sys.argv[2])
for handle in sorted(theirs):
    a, b = ours.get(handle, []), theirs[handle]
    same = len(a) == len(b) and a[0] == b[0] and a[2:] == b[2:] and a[1].split()[:-6] == b[1].split()[:-1]
    names = [l.split()[0] for l in a[3:]]
    print(handle, 'same' if same else 'differs', int(a[0].split()[1]) if a else -1, len(names),
          *[names.count(n) for n in ('body', 'face', 'loop', 'coedge', 'edge', 'vertex')])
)PY";
  const std::string checker = saved + ".py";
  std::ofstream(checker) << script;
  const std::string out = output("/usr/bin/python3 '" + checker + "' '" + saved + "' '" + twin + "'");
  std::filesystem::remove(saved);
  std::filesystem::remove(checker);
  // A rectangle region: one face bounded by one loop of four straight edges
  // (four coedges, four vertices). The solid is a three-sided prism with a
  // three-sided hole through it: 3 outer and 3 inner sides, top and bottom
  // (8 faces, the two ends each with an outer and an inner loop: 10 loops),
  // 6 vertices at each end, 6 edges at each end and 6 along it (18 edges,
  // each used by two faces: 36 coedges); V - E + F - (L - F) = 12 - 18 + 8
  // - 2 = 0 = 2 (1 - genus) for one hole. The second region is a rectangle
  // too. Records written = the count in the first line.
  EXPECT_EQ(out,
            "audit 0\n"
            "176 same 27 27 1 1 1 4 4 4\n"
            "2E1 same 134 134 1 8 10 36 18 12\n"
            "37D same 32 32 1 1 1 4 4 4\n");
}

}  // namespace
