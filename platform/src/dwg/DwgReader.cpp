// Turns the objects of a DWG file into the platform's own objects. Each
// decoded object is written as the DXF groups of its class (exact doubles,
// handles and owners as in the DWG file), held in memory as values, and read
// by the DXF reader from there, so the
// class's field table builds the object and every repair pass of a DXF read
// (missing tables, standard records, dictionaries) applies unchanged.
#include <algorithm>
#include <set>

#include "db/DbAdoptedData.h"
#include "dwg/DwgToDxf.h"

namespace oddwg {

void DwgToDxf::children(uint64_t parent) {
  // Attributes or vertices, then the sequence end.
  const OdDwgObject* end = nullptr;
  for (const OdDwgObject* child : m_owned[parent]) {
    if (child->type == 0x06) end = child;
    else if (child->type == 0x02 || (child->type >= 0x0A && child->type <= 0x0E)) emit(*child);
  }
  if (end) emit(*end);
}

void DwgToDxf::entityList(uint64_t block) {
  // Drawing order: from the block's first entity along the next links to
  // its last; entities the chain misses follow in handle order.
  std::vector<const OdDwgObject*> ordered;
  std::vector<const OdDwgObject*>& owned = m_owned[block];
  const BlockInfo& info = m_blocks[block];
  std::set<uint64_t> inBlock, taken;
  for (const OdDwgObject* o : owned) inBlock.insert(o->handle);
  for (uint64_t at : info.entities) {
    if (inBlock.count(at) && taken.insert(at).second) ordered.push_back(m_file.find(at));
  }
  for (uint64_t at = info.first; at && inBlock.count(at) && !taken.count(at);) {
    const OdDwgObject* o = m_file.find(at);
    ordered.push_back(o);
    taken.insert(at);
    if (at == info.last) break;
    at = o->nextEntity;
  }
  for (const OdDwgObject* o : owned) {
    if (!taken.count(o->handle)) ordered.push_back(o);
  }
  for (const OdDwgObject* o : ordered) {
    if (o->type == 0x04 || o->type == 0x05 || o->type == 0x02 || o->type == 0x06) continue;
    if (o->dxfName == L"VERTEX") continue;
    if (emit(*o) && (o->type == 0x07 || o->type == 0x0F || o->type == 0x10 || o->type == 0x1D || o->type == 0x1E)) {
      children(o->handle);
    }
  }
}

OdString DwgToDxf::headerName(uint64_t handle) const {
  // Table records by their names; the multiline style (an object of a
  // dictionary) by its entry's name in the dictionary that owns it.
  const OdDwgObject* o = m_file.find(handle);
  const OdDwgObject* dictionary = o && o->decoded && o->dxfName == L"MLINESTYLE" ? m_file.find(o->owner) : nullptr;
  if (!dictionary || !dictionary->decoded || dictionary->dxfName != L"DICTIONARY") return nameOf(handle);
  try {
    OdDwgBitReader d = m_file.objectReader(*dictionary), h = m_file.objectReader(*dictionary);
    d.seekBit(dictionary->dataBit);
    h.seekBit(dictionary->handleBit);
    int cloning = 1;
    for (const auto& [name, item] : dictionaryEntries(*dictionary, d, h, cloning)) {
      if (item.value == handle) return name;
    }
  } catch (const OdDwgDecodeError&) {
  }
  return OdString();
}

OdDxfTagStream DwgToDxf::convert() {
  uint64_t seed = 1;
  for (const OdDwgObject& o : m_file.objects()) {
    seed = std::max(seed, o.handle + 1);
    if (o.type == 0x31 && o.recordName.iCompare(L"*Model_Space") == 0) m_modelSpace = o.handle;
    if (o.type == 0x31 && o.recordName.iCompare(L"*Paper_Space") == 0) m_paperSpace = o.handle;
  }
  for (const OdDwgObject& o : m_file.objects()) {
    if (!o.entity || !o.decoded) continue;
    m_owned[o.entMode == 2 ? m_modelSpace : o.entMode == 1 ? m_paperSpace : o.owner].push_back(&o);
  }

  // The groups take up to three times the bytes of the objects' data
  // (texts become wide characters; the extended records' items, most of
  // a small drawing's data, do not go into them): room for most at once.
  m_w.reserve(m_file.data().size() * 2 + 64 * 1024);
  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"HEADER");
  m_w.writeString(9, L"$ACADVER");
  m_w.writeString(1, OdString(m_file.versionName().c_str()));
  m_w.writeString(9, L"$DWGCODEPAGE");
  m_w.writeString(3, odDxfNameOfCodePage(m_cp));
  const OdDwgHeader& header = m_file.header();
  m_w.writeString(9, L"$HANDSEED");
  m_w.writeHandle(5, std::max(seed, header.handseed));
  if (header.read) {
    // Variables that DXF does not carry are left out.
    for (const auto& [name, value] : header.ints) {
      if (std::wstring_view(name) == L"$TEXTQLTY") continue;
      m_w.writeString(9, name);
      m_w.writeInt(70, value);
    }
    for (const auto& [name, value] : header.reals) {
      m_w.writeString(9, name);
      if (std::wstring_view(name) == L"$ANGBASE") degrees(50, value);
      else m_w.writeDouble(40, value);
    }
    m_w.writeString(9, L"$CECOLOR");
    m_w.writeInt(62, header.currentColor);
    const std::pair<const wchar_t*, uint64_t> names[] = {
        {L"$CLAYER", header.currentLayer}, {L"$TEXTSTYLE", header.currentTextStyle}, {L"$CELTYPE", header.currentLinetype}};
    const int codes[] = {8, 7, 6};
    for (int i = 0; i < 3; ++i) {
      if (nameOf(names[i].second).isEmpty()) continue;
      m_w.writeString(9, names[i].first);
      m_w.writeString(codes[i], nameOf(names[i].second));
    }
    for (const OdDwgHeaderValue& v : header.values) {
      // References are written only to objects that are written.
      if (v.kind == OdDwgHeaderValue::kHandle && !(v.handle && isWrittenAny(v.handle))) continue;
      m_w.writeString(9, v.name);
      switch (v.kind) {
        case OdDwgHeaderValue::kInt: m_w.writeInt(v.code, static_cast<int>(v.v[0])); break;
        case OdDwgHeaderValue::kLineWeight: m_w.writeInt(v.code, lineWeightOf(static_cast<int>(v.v[0]))); break;
        case OdDwgHeaderValue::kReal: m_w.writeDouble(v.code, v.v[0]); break;
        case OdDwgHeaderValue::kPoint2: m_w.writePoint(v.code, v.v[0], v.v[1]); break;
        case OdDwgHeaderValue::kPoint3: m_w.writePoint(v.code, v.v[0], v.v[1], v.v[2]); break;
        case OdDwgHeaderValue::kText: m_w.writeString(v.code, v.text); break;
        case OdDwgHeaderValue::kName: m_w.writeString(v.code, v.handle ? headerName(v.handle) : OdString()); break;
        case OdDwgHeaderValue::kHandle: m_w.writeHandle(v.code, v.handle); break;
      }
    }
  }
  m_w.writeString(0, L"ENDSEC");
  flush();
  classes();
  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"TABLES");
  flush();
  for (const TableKind& kind : kTables) {
    const OdDwgObject* control = nullptr;
    for (const OdDwgObject& o : m_file.objects()) {
      if (o.type == kind.controlType && o.decoded) { control = &o; break; }
    }
    if (!control) continue;
    m_w.writeString(0, L"TABLE");
    m_w.writeString(2, kind.name());
    m_w.writeHandle(5, control->handle);
    m_w.writeHandle(330, 0);
    m_w.writeString(100, L"AcDbSymbolTable");
    flush();
    // The records are those the table lists (the spaces and ByLayer / ByBlock
    // linetypes are listed apart); others are not part of the drawing.
    std::vector<uint64_t> listed;
    try {
      OdDwgBitReader cd = m_file.objectReader(*control), ch = m_file.objectReader(*control);
      cd.seekBit(control->dataBit);
      ch.seekBit(control->handleBit);
      const int32_t count = cd.readBL();
      if (count < 0 || static_cast<size_t>(count) > control->size) throw OdDwgDecodeError("implausible record count", cd.bitPosition());
      const int extra = kind.controlType == 0x30 || kind.controlType == 0x38 ? 2 : 0;
      for (int32_t i = 0; i < count + extra; ++i) listed.push_back(ch.readH(control->handle).value);
    } catch (const OdDwgDecodeError& e) {
      failed(*control, e);
    }
    std::sort(listed.begin(), listed.end());
    listed.erase(std::unique(listed.begin(), listed.end()), listed.end());
    for (const OdDwgObject& o : m_file.objects()) {
      if (o.type != kind.recordType || !o.decoded) continue;
      if (!std::binary_search(listed.begin(), listed.end(), o.handle)) {
        m_report.repairs.push_back(OdString().format(L"%ls record %ls is not listed in its table; left out", kind.name(), hexOf(o.handle).c_str()));
        continue;
      }
      if (o.type != 0x31 && o.type != 0x33 && o.type != 0x35 && o.type != 0x39 && o.type != 0x43 && o.type != 0x45 && o.type != 0x41 && o.type != 0x3D &&
          o.type != 0x3F) {
        notRead(o);
        continue;
      }
      decodeObject(o, [&](OdDwgBitReader& d, OdDwgBitReader& h) {
        m_w.writeString(0, kind.name());
        record(o, d, h);
        return true;
      });
    }
    m_w.writeString(0, L"ENDTAB");
  }
  m_w.writeString(0, L"ENDSEC");
  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"BLOCKS");
  flush();
  for (const OdDwgObject& record : m_file.objects()) {
    if (record.type != 0x31 || !m_blocks.count(record.handle)) continue;
    const BlockInfo& info = m_blocks[record.handle];
    const OdDwgObject *begin = nullptr, *end = nullptr;
    for (const OdDwgObject* o : m_owned[record.handle]) {
      if (o->type == 0x04) begin = o;
      if (o->type == 0x05) end = o;
    }
    m_w.writeString(0, L"BLOCK");
    if (begin) commonEntity(*begin, record.handle);
    m_w.writeString(100, L"AcDbBlockBegin");
    m_w.writeString(2, record.recordName);
    m_w.writeInt(70, info.flags);
    m_w.writePoint(10, info.base[0], info.base[1], info.base[2]);
    m_w.writeString(3, record.recordName);
    m_w.writeString(1, info.path);
    if (!info.description.isEmpty()) m_w.writeString(4, info.description);
    flush();
    entityList(record.handle);
    m_w.writeString(0, L"ENDBLK");
    if (end) commonEntity(*end, record.handle);
    m_w.writeString(100, L"AcDbBlockEnd");
    flush();
  }
  m_w.writeString(0, L"ENDSEC");
  // Objects: the named-object dictionary (the one without owner) first.
  m_w.writeString(0, L"SECTION");
  m_w.writeString(2, L"OBJECTS");
  flush();
  for (int pass = 0; pass < 2; ++pass) {
    for (const OdDwgObject& o : m_file.objects()) {
      if (!isWritten(o.handle) || (pass == 0) != (o.type == 0x2A && o.owner == 0)) continue;
      object(o);
    }
  }
  for (const OdDwgObject& o : m_file.objects()) {
    if (o.decoded && !o.entity && !isWritten(o.handle) && !(o.type >= 0x30 && o.type <= 0x47)) notRead(o);
  }
  m_w.writeString(0, L"ENDSEC");
  m_w.writeString(0, L"EOF");
  flush();

  for (const auto& [name, count] : m_proxies) {
    m_report.repairs.push_back(OdString().format(count == 1 ? L"%d %hs object kept as a proxy" : L"%d %hs objects kept as proxies",
                                                 count, name.c_str()));
  }
  for (const auto& [name, count] : m_notRead) {
    // Class names come from the file (UTF-8 here): formatted as wide text,
    // never through %hs, which fails on bytes outside ASCII.
    m_report.repairs.push_back(OdString().format(L"%d %ls object%ls not read yet; left out", count, OdString(name.c_str()).c_str(),
                                                 count == 1 ? L"" : L"s"));
  }
  return std::move(m_w);
}

}  // namespace oddwg

using oddwg::DwgToDxf;


bool odIsDwgData(std::string_view data) {
  return data.size() >= 6 && data.substr(0, 4) == "AC10" && data[4] >= '0' && data[4] <= '9';
}

OdDbDatabasePtr odDwgReadBuffer(std::string_view data, OdDxfReadReport* report) {
  OdDxfReadReport local;
  OdDxfReadReport& out = report ? *report : local;
  OdDwgFile file;
  const auto* bytes = reinterpret_cast<const uint8_t*>(data.data());
  if (!file.open(std::vector<uint8_t>(bytes, bytes + data.size()))) {
    const std::string why = file.problems().empty() ? "unreadable" : file.problems().front();
    const bool version = why.find("DWG version") != std::string::npos;
    throw OdError(version ? eInvalidDwgVersion : eDwgNotRecoverable, OdString(why.c_str()));
  }
  std::vector<OdString> problems;
  for (const std::string& p : file.problems()) problems.push_back(OdString(p.c_str()));
  DwgToDxf converter(file, out);
  const OdDxfTagStream tags = converter.convert();
  std::vector<OdString> conversion = std::move(out.repairs);
  out.repairs.clear();
  OdDbDatabasePtr db = odDxfReadTags(tags, &out);
  // What the converter built as a whole goes into the objects just read
  // (left without it by the groups).
  DwgToDxf::Adopted adopted = converter.takeAdopted();
  auto objectOf = [&](uint64_t handle) { return db->getOdDbObjectId(OdDbHandle(handle)).openObject(OdDb::kForRead); };
  for (auto& [handle, items] : adopted.xrecordItems) {
    const OdDbObjectPtr object = objectOf(handle);
    auto* record = dynamic_cast<OdDbXrecord*>(object.get());
    if (record && record->data().empty()) odDbXrecordAdoptData(record, std::move(items));
  }
  for (auto& [handle, lines] : adopted.modelerLines) {
    const OdDbObjectPtr object = objectOf(handle);
    auto* entity = dynamic_cast<OdDbModelerGeometry*>(object.get());
    if (entity && entity->modelerData().empty()) odDbModelerGeometryAdoptLines(entity, std::move(lines));
  }
  // What the file itself lacked comes first, then what was left out, then the DXF-level repairs.
  std::vector<OdString> all = std::move(problems);
  all.insert(all.end(), conversion.begin(), conversion.end());
  all.insert(all.end(), out.repairs.begin(), out.repairs.end());
  out.repairs = std::move(all);
  out.versionName = OdString(file.versionName().c_str());
  return db;
}
