#include "DbModelerGeometry.h"

#include "db/DbAdoptedData.h"

ODDB_DEFINE_ABSTRACT_MEMBERS(OdDbModelerGeometry, OdDbEntity)
ODDB_DEFINE_MEMBERS(OdDbRegion, OdDbModelerGeometry, L"REGION")
ODDB_DEFINE_MEMBERS(OdDbBody, OdDbModelerGeometry, L"BODY")
ODDB_DEFINE_MEMBERS(OdDb3dSolid, OdDbModelerGeometry, L"3DSOLID")

// Groups 1 and 3: the lines of the encoded modeler data, in order.
// Not records of fields: lines of one text, each kept with the code it came
// with, and the text is filed as one block.
struct OdDbModelerDataCodec : OdDbFieldCodec {
  using Line = OdDbModelerGeometry::DataLine;
  std::vector<int> codes() const override { return {1, 3}; }
  static std::vector<Line>& lines(OdDbObject* o) { return static_cast<OdDbModelerGeometry*>(o)->m_lines; }
  static const std::vector<Line>& lines(const OdDbObject* o) {
    return static_cast<const OdDbModelerGeometry*>(o)->m_lines;
  }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext&) const override {
    for (const Line& line : lines(object)) out.push_back(OdDxfTag::str(line.code, line.text));
  }
  void beginRead(OdDbObject* object) const override { lines(object).clear(); }
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext&) const override {
    if (tag.type != OdDxf::ValueType::kString) return false;
    lines(object).push_back({tag.code, tag.s});
    return true;
  }
  void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const override {
    filer->wrInt32(static_cast<OdInt32>(lines(object).size()));
    for (const Line& line : lines(object)) {
      filer->wrInt16(line.code);
      filer->wrString(line.text);
    }
  }
  void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const override {
    std::vector<Line>& list = lines(object);
    list.resize(static_cast<size_t>(filer->rdInt32()));
    for (Line& line : list) {
      line.code = filer->rdInt16();
      line.text = filer->rdString();
    }
  }
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override {
    const auto &p = lines(a), &q = lines(b);
    return std::equal(p.begin(), p.end(), q.begin(), q.end(),
                      [](const Line& u, const Line& v) { return u.code == v.code && u.text == v.text; });
  }
};

void odDbModelerGeometryAdoptLines(OdDbModelerGeometry* entity, std::vector<OdDbModelerGeometry::DataLine>&& lines) {
  OdDbModelerDataCodec::lines(entity) = std::move(lines);
}

const OdDbClassSchema& OdDbModelerGeometry::classSchema() {
  static const OdDbModelerDataCodec dataCodec;
  static const OdDbClassSchema schema{
      &OdDbEntity::classSchema(),
      {{L"AcDbModelerGeometry",
        {
            odField<&OdDbModelerGeometry::m_version>(70).optional().named(L"version"),
            odCustomField(dataCodec, L"data"),
            odField<&OdDbModelerGeometry::m_hasDataInSection>(290)
                .optional()
                .since(OdDb::vAC27)
                .named(L"dataInSection"),
            odField<&OdDbModelerGeometry::m_dataId>(2).optional().since(OdDb::vAC27).named(L"dataId"),
        }}}};
  return schema;
}

const OdDbClassSchema& OdDbRegion::classSchema() {
  static const OdDbClassSchema schema{&OdDbModelerGeometry::classSchema(), {}};
  return schema;
}

const OdDbClassSchema& OdDbBody::classSchema() {
  static const OdDbClassSchema schema{&OdDbModelerGeometry::classSchema(), {}};
  return schema;
}

const OdDbClassSchema& OdDb3dSolid::classSchema() {
  static const OdDbClassSchema schema{&OdDbModelerGeometry::classSchema(),
                                      {{L"AcDb3dSolid",
                                        {odField<&OdDb3dSolid::m_historyId>(350, OdDbFieldKind::kSoftOwner)
                                             .since(OdDb::vAC21)
                                             .named(L"history")}}}};
  return schema;
}

void OdDbModelerGeometry::setModelerData(OdInt16 version, const std::vector<DataLine>& lines) {
  assertWriteEnabled();
  m_version = version;
  m_lines = lines;
  m_hasDataInSection = false;
  m_dataId.empty();
}

OdResult OdDbModelerGeometry::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  return eInvalidExtents;
}

OdResult OdDbModelerGeometry::transformBy(const OdGeMatrix3d&) { return eNotApplicable; }
