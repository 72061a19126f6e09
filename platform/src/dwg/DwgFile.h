// The structure of a DWG file: for R13 to R2000 (AC1012 to AC1015) the file
// header with its section locators, from R2004 (AC1018) on the sections of
// the paged container (DwgPagedFile.h); then the classes, the object map (handle to
// file offset) and, for every object, its common data (type, handle,
// extended data, reactors, extension dictionary, owner, layer…), with the
// bit positions where its own data and its handle references start.
// Decoding problems are collected with the byte offset where they occurred;
// what can be read is kept.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "dwg/DwgBitReader.h"


struct OdDwgClass {
  int number = 0;       // the object type that stands for this class (500 on)
  int proxyFlags = 0;
  OdString appName, cppName, dxfName;
  bool wasZombie = false;
  bool isEntity = false;
};

// Extended data of one application, as stored: the application's handle and
// the raw bytes of its items.
struct OdDwgXData {
  uint64_t appHandle = 0;
  std::vector<uint8_t> bytes;
};

struct OdDwgObject {
  uint64_t handle = 0;
  size_t offset = 0;        // file offset of the object's size
  size_t start = 0;         // file offset of the object data (after the size)
  size_t size = 0;          // bytes of object data
  unsigned type = 0;
  bool entity = false;
  OdString dxfName;         // the DXF name of the type ("LINE", "LAYER", class names)
  OdString recordName;      // symbol-table records: the name

  // Common object and entity data.
  std::vector<OdDwgXData> xdata;
  uint64_t owner = 0;       // block record for entities, table or dictionary for objects
  std::vector<uint64_t> reactors;
  uint64_t xdictionary = 0;
  int entMode = 0;          // entities: 0 owner given, 1 paper space, 2 model space
  int color = 256;
  uint32_t trueColor = 0;   // R2004 on: 0xC2RRGGBB when the entity has a true colour
  uint32_t transparency = 0;  // R2004 on: the raw transparency value, 0 when none
  double linetypeScale = 1.0;
  int linetypeFlags = 0, plotStyleFlags = 0;  // 0 ByLayer, 1 ByBlock, 2 Continuous, 3 by handle
  int invisible = 0;
  int lineWeight = -1;      // R2000 on: the raw lineweight index
  uint64_t layer = 0, linetype = 0, plotStyle = 0;
  uint64_t material = 0;    // R2007 on: a material given by handle
  uint64_t prevEntity = 0, nextEntity = 0;  // R13-R2000
  bool noLinks = false;     // entities: previous and next are the handles one below and above
  // Entities: the graphics stored with the entity (bit position in the
  // object data and size in bytes; size 0 when there are none).
  size_t pictureBit = 0, pictureSize = 0;

  // Where the type's own data and its remaining handle references start
  // (bits from the start of the object data).
  size_t dataBit = 0;
  size_t handleBit = 0;
  size_t endBit = 0;
  // R2007 on: where the data and its string stream end and the handle
  // references begin (bits from the start of the object data).
  size_t stringEnd = 0;
  bool decoded = false;     // common data read without error
};

// One header variable after the current linetype, with the DXF group it is
// written with: a number, a point, a text, or a reference to an object
// (written as the object's name or as its handle).
struct OdDwgHeaderValue {
  enum Kind { kInt, kReal, kPoint2, kPoint3, kText, kName, kHandle, kLineWeight };
  Kind kind = kInt;
  const wchar_t* name = nullptr;
  int code = 0;
  double v[3] = {};
  OdString text;
  uint64_t handle = 0;
};

// The header variables (kept in one bit stream in a fixed order; R2007 on
// with their texts and references in streams of their own).
struct OdDwgHeader {
  bool read = false;
  std::vector<std::pair<const wchar_t*, int>> ints;        // name, value (DXF group 70)
  std::vector<std::pair<const wchar_t*, double>> reals;    // name, value (DXF group 40; angles in radians)
  std::vector<OdDwgHeaderValue> values;                    // the variables after the current linetype
  int currentColor = 256;
  uint64_t handseed = 0, currentLayer = 0, currentTextStyle = 0, currentLinetype = 0;
  // Bits of the data (and R2007 on of the strings) left after the last
  // variable: what the reader does not account for.
  size_t unreadBits = 0;
  OdDwgHeaderValue& addValue(OdDwgHeaderValue::Kind kind, const wchar_t* name, int code) {
    OdDwgHeaderValue& v = values.emplace_back();
    v.kind = kind;
    v.name = name;
    v.code = code;
    return v;
  }
};

class OdDwgFile {
 public:
  // Reads the structure of the file (not yet the objects' own data).
  // Returns false when the file cannot be read at all (problems says why).
  bool open(std::vector<uint8_t> data);

  // The bytes the objects' offsets point into: the file up to R2000, the
  // decoded AcDb:AcDbObjects section from R2004 on.
  const std::vector<uint8_t>& data() const { return m_data; }
  const std::string& versionName() const { return m_version; }
  OdDwgVersion version() const { return m_versionNumber; }
  bool atLeast(OdDwgVersion v) const { return m_versionNumber >= v; }
  // The R2000 forms (bit-coded thickness and extrusion, DD values…) hold
  // from R2000 on.
  bool isR2000() const { return atLeast(kDwgR2000); }
  // Where object offsets are counted from, for messages: "" for the file
  // itself, else the section's name ("AcDb:AcDbObjects").
  const std::string& objectsSection() const { return m_objectsSection; }
  int codePage() const { return m_codePage; }
  const std::vector<OdDwgClass>& classes() const { return m_classes; }
  const OdDwgHeader& header() const { return m_header; }
  // Objects in the order of the object map (by handle).
  const std::vector<OdDwgObject>& objects() const { return m_objects; }
  const OdDwgObject* find(uint64_t handle) const;
  // What could not be decoded, with offsets.
  const std::vector<std::string>& problems() const { return m_problems; }

  // A reader over one object's data (after its size).
  // R2007 on, strings are read from the object's string stream.
  OdDwgBitReader objectReader(const OdDwgObject& object) const {
    OdDwgBitReader r(m_data.data() + object.start, object.size);
    if (atLeast(kDwgR2007) && object.stringEnd) r.useStringStreamEndingAt(object.stringEnd);
    return r;
  }

  // A colour of tables and header variables: up to R2000 the colour index
  // (BS); from R2004 on BS index, BL RGB value (its high byte says how the
  // colour is given), RC flags and the names they announce. Returns the
  // colour index (256 ByLayer, 0 ByBlock); `rgb`, when given, receives
  // the RGB value with its high byte.
  int readCMC(OdDwgBitReader& r, uint32_t* rgb = nullptr) const;

  // The DXF name of a built-in object type (empty when unknown).
  static const wchar_t* builtinTypeName(unsigned type);
  static bool builtinIsEntity(unsigned type);

 private:
  void problem(size_t offset, const std::string& what);
  // The file header of R13-R2000 with its section locators.
  bool openLocated();
  // The paged container of R2004 on.
  bool openPaged();
  // The coded, compressed pages of R2007 (DwgR2007File.h).
  bool openR2007();
  // The sections of R2004 on, decoded: the objects section becomes m_data.
  bool readSections(std::vector<uint8_t> objects, const std::vector<uint8_t>& handles, const std::vector<uint8_t>& classes,
                    const std::vector<uint8_t>& header);
  // Sections read from `bytes` (the file or a decoded section) at `seeker`.
  // The bit position where an R2007-on section's data and strings end.
  size_t readDataBits(OdDwgBitReader& r) const;
  // The header variables after the current linetype (`handles`: the
  // stream of references from R2007 on).
  void readHeaderRest(OdDwgBitReader& r, OdDwgBitReader& handles);
  void readHeaderR2007(OdDwgBitReader& r, OdDwgBitReader& handles);
  void readClasses(const std::vector<uint8_t>& bytes, size_t seeker, size_t size);
  void readHeader(const std::vector<uint8_t>& bytes, size_t seeker, size_t size);
  void readObjectMap(const std::vector<uint8_t>& bytes, size_t seeker, size_t size);
  void readObject(OdDwgObject& object);

  std::vector<uint8_t> m_data;
  std::string m_version;
  OdDwgVersion m_versionNumber = kDwgR13;
  std::string m_section;         // the section being read, for messages ("" = the file)
  std::string m_objectsSection;
  int m_maintenance = 0;  // the maintenance release (byte 0x0B)
  int m_codePage = 1252;
  std::vector<OdDwgClass> m_classes;
  OdDwgHeader m_header;
  std::vector<OdDwgObject> m_objects;
  std::unordered_map<uint64_t, size_t> m_byHandle;  // looked up for every reference
  std::vector<std::string> m_problems;
};

// The Windows code page of a DWG code-page number (1252 when unknown).
int odDwgCodePage(int dwgCodePageNumber);
