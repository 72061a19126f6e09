// The catalogue of system variables: name, type, default, range, and where
// the value lives (the current drawing's header, or the host session).
#include <cmath>
#include <ctime>

#include "core/Host.h"

namespace ryhost {

namespace {

SysVarValue shortValue(OdInt64 v) {
  SysVarValue value;
  value.type = RTSHORT;
  value.i = v;
  return value;
}
SysVarValue longValue(OdInt64 v) {
  SysVarValue value;
  value.type = RTLONG;
  value.i = v;
  return value;
}
SysVarValue realValue(double v) {
  SysVarValue value;
  value.type = RTREAL;
  value.r = v;
  return value;
}
SysVarValue stringValue(const OdString& v) {
  SysVarValue value;
  value.type = RTSTR;
  value.s = v;
  return value;
}
SysVarValue pointValue(double x, double y, double z, short type = RT3DPOINT) {
  SysVarValue value;
  value.type = type;
  value.p[0] = x;
  value.p[1] = y;
  value.p[2] = z;
  return value;
}

SysVarDef session(const wchar_t* name, SysVarValue value, OdInt64 minimum, OdInt64 maximum, const wchar_t* description) {
  SysVarDef def;
  def.name = name;
  def.type = value.type;
  def.defaultValue = value;
  def.minimum = minimum;
  def.maximum = maximum;
  def.description = description;
  return def;
}

SysVarDef header(const wchar_t* name, SysVarValue value, int code, OdInt64 minimum, OdInt64 maximum,
                 const wchar_t* description) {
  SysVarDef def = session(name, value, minimum, maximum, description);
  def.headerName = OdString(L"$") + name;
  def.headerCode = code;
  return def;
}

SysVarDef computed(const wchar_t* name, short type, std::function<SysVarValue()> compute, const wchar_t* description) {
  SysVarDef def;
  def.name = name;
  def.type = type;
  def.defaultValue.type = type;
  def.readOnly = true;
  def.compute = std::move(compute);
  def.description = description;
  return def;
}

Document* currentDocument() { return Host::instance().current(); }

OdString folderOf(const OdString& path) {
  int slash = path.reverseFind(L'/');
  return slash < 0 ? OdString() : path.left(slash + 1);
}

}  // namespace

SysVars::SysVars() {
  // Session variables of the host.
  add(session(L"CMDECHO", shortValue(1), 0, 1, L"Echo of commands run by programs"));
  add(session(L"OSMODE", shortValue(4133), 0, 32767, L"Running object snaps"));
  add(session(L"FILEDIA", shortValue(1), 0, 1, L"File dialogs (1) or the command line (0) for file names"));
  add(session(L"ERRNO", shortValue(0), 0, 32767, L"Code of the last error of a program call"));
  add(session(L"PICKSTYLE", shortValue(1), 0, 3, L"Group and associative hatch selection"));
  add(session(L"HIGHLIGHT", shortValue(1), 0, 1, L"Highlighting of selected objects"));
  add(session(L"ATTREQ", shortValue(1), 0, 1, L"Prompting for attribute values on insertion"));
  add(session(L"ATTDIA", shortValue(0), 0, 1, L"Dialog for attribute values on insertion"));
  add(session(L"PLINETYPE", shortValue(2), 0, 2, L"Kind of polylines made"));
  add(session(L"GRIDMODE", shortValue(0), 0, 1, L"Grid display"));
  add(session(L"SNAPMODE", shortValue(0), 0, 1, L"Snap mode"));
  add(session(L"OFFSETGAPTYPE", shortValue(0), 0, 2, L"How offset closes gaps"));
  add(session(L"PICKBOX", shortValue(3), 0, 50, L"Half size of the pick box in drawing units (console)"));
  add(session(L"PICKFIRST", shortValue(1), 0, 1, L"Objects selected before a command are handed to it"));
  add(session(L"PICKADD", shortValue(1), 0, 2, L"Selections add to the current set"));
  add(session(L"EXPERT", shortValue(0), 0, 5, L"Suppression of confirmation prompts"));
  add(session(L"DELOBJ", shortValue(1), -3, 3, L"Erasure of objects used to make others"));
  add(session(L"EDGEMODE", shortValue(0), 0, 1, L"Cutting edges extended by trim and extend"));
  add(session(L"QTEXTMODE", shortValue(0), 0, 1, L"Texts shown as boxes"));
  add(session(L"SDI", shortValue(0), 0, 3, L"Single-document mode"));
  add(session(L"DIMASSOC", shortValue(2), 0, 2, L"Associativity of new dimensions"));
  add(session(L"ZOOMFACTOR", shortValue(60), 3, 100, L"Zoom step"));
  add(session(L"APERTURE", shortValue(10), 1, 50, L"Object snap target size"));
  add(session(L"LASTPOINT", pointValue(0, 0, 0), 1, 0, L"The last point entered"));
  add(session(L"PERIMETER", realValue(0), 1, 0, L"Perimeter from the last area measure"));
  add(session(L"AREA", realValue(0), 1, 0, L"Area from the last area measure"));
  add(session(L"DWGCODEPAGE", stringValue(L"ANSI_1252"), 1, 0, L"Code page of drawings before R2007"));
  add(session(L"ANSICODEPAGE", longValue(1252), 1, 65535, L"Code page of ANSI text files the tools read and write"));
  add(session(L"CTAB", stringValue(L"Model"), 1, 0, L"The current layout"));
  m_defs[L"PERIMETER"].readOnly = true;
  m_defs[L"AREA"].readOnly = true;

  // Drawing variables: their values live in the drawing's header.
  add(header(L"CLAYER", stringValue(L"0"), 8, 1, 0, L"Current layer"));
  add(header(L"TEXTSTYLE", stringValue(L"Standard"), 7, 1, 0, L"Current text style"));
  add(header(L"CELTYPE", stringValue(L"ByLayer"), 6, 1, 0, L"Current linetype"));
  add(header(L"CECOLOR", stringValue(L"BYLAYER"), 62, 1, 0, L"Current colour"));
  add(header(L"CELWEIGHT", shortValue(-1), 370, -3, 211, L"Current lineweight"));
  add(header(L"CELTSCALE", realValue(1.0), 40, 1, 0, L"Current linetype scale"));
  add(header(L"LTSCALE", realValue(1.0), 40, 1, 0, L"Global linetype scale"));
  add(header(L"DIMSCALE", realValue(1.0), 40, 1, 0, L"Overall dimension scale"));
  add(header(L"DIMZIN", shortValue(8), 70, 0, 15, L"Zero suppression of dimension values"));
  add(header(L"DIMSTYLE", stringValue(L"Standard"), 2, 1, 0, L"Current dimension style"));
  add(header(L"DIMASZ", realValue(2.5), 40, 1, 0, L"Dimension arrow size"));
  add(header(L"DIMTXT", realValue(2.5), 40, 1, 0, L"Dimension text height"));
  add(header(L"ANGBASE", realValue(0.0), 50, 1, 0, L"Direction of angle 0"));
  add(header(L"ANGDIR", shortValue(0), 70, 0, 1, L"Angles counted clockwise (1)"));
  add(header(L"ORTHOMODE", shortValue(0), 70, 0, 1, L"Orthogonal mode"));
  add(header(L"SNAPANG", realValue(0.0), 50, 1, 0, L"Snap and grid rotation"));
  add(header(L"TEXTSIZE", realValue(2.5), 40, 1, 0, L"Default text height"));
  add(header(L"MIRRTEXT", shortValue(0), 70, 0, 1, L"Mirroring of texts"));
  add(header(L"PDMODE", shortValue(0), 70, 0, 100, L"Point display"));
  add(header(L"PDSIZE", realValue(0.0), 40, 1, 0, L"Point display size"));
  add(header(L"PLINEWID", realValue(0.0), 40, 1, 0, L"Default polyline width"));
  add(header(L"PLINEGEN", shortValue(0), 70, 0, 1, L"Linetype generation along polylines"));
  add(header(L"ATTMODE", shortValue(1), 70, 0, 2, L"Display of attributes"));
  add(header(L"LUNITS", shortValue(2), 70, 1, 5, L"Linear units"));
  add(header(L"LUPREC", shortValue(4), 70, 0, 8, L"Decimal places of linear units"));
  add(header(L"AUNITS", shortValue(0), 70, 0, 4, L"Angular units"));
  add(header(L"AUPREC", shortValue(0), 70, 0, 8, L"Decimal places of angular units"));
  add(header(L"INSUNITS", shortValue(4), 70, 0, 24, L"Units of the drawing"));
  add(header(L"MEASUREMENT", shortValue(1), 70, 0, 1, L"Imperial (0) or metric (1)"));
  add(header(L"INSBASE", pointValue(0, 0, 0), 10, 1, 0, L"Insertion base point"));
  add(header(L"LIMMIN", pointValue(0, 0, 0, RTPOINT), 10, 1, 0, L"Lower left drawing limit"));
  add(header(L"LIMMAX", pointValue(420, 297, 0, RTPOINT), 10, 1, 0, L"Upper right drawing limit"));
  add(header(L"EXTMIN", pointValue(1e20, 1e20, 1e20), 10, 1, 0, L"Lower left of the drawing extents"));
  add(header(L"EXTMAX", pointValue(-1e20, -1e20, -1e20), 10, 1, 0, L"Upper right of the drawing extents"));
  add(header(L"FILLMODE", shortValue(1), 70, 0, 1, L"Filling of hatches, solids and wide polylines"));
  add(header(L"TILEMODE", shortValue(1), 70, 0, 1, L"Model space (1) or a layout (0)"));
  add(header(L"PSLTSCALE", shortValue(1), 70, 0, 1, L"Linetype scaling in paper-space viewports"));
  add(header(L"TRACEWID", realValue(1.0), 40, 1, 0, L"Default trace width"));
  add(header(L"SPLFRAME", shortValue(0), 70, 0, 1, L"Display of spline frames"));
  add(header(L"CHAMFERA", realValue(0.0), 40, 1, 0, L"First chamfer distance"));
  add(header(L"CHAMFERB", realValue(0.0), 40, 1, 0, L"Second chamfer distance"));
  add(header(L"FILLETRAD", realValue(0.0), 40, 1, 0, L"Fillet radius"));
  for (const wchar_t* name : {L"CELTSCALE", L"LTSCALE", L"TEXTSIZE"}) m_defs[name].realRange = SysVarDef::RealRange::kPositive;
  for (const wchar_t* name : {L"DIMSCALE", L"DIMASZ", L"DIMTXT", L"PLINEWID", L"TRACEWID", L"CHAMFERA", L"CHAMFERB",
                              L"FILLETRAD"}) {
    m_defs[name].realRange = SysVarDef::RealRange::kNotNegative;
  }
  m_defs[L"EXTMIN"].readOnly = true;
  m_defs[L"EXTMAX"].readOnly = true;
  m_defs[L"DIMSTYLE"].readOnly = true;

  // Values computed from the host's state.
  add(computed(L"DWGNAME", RTSTR, [] {
    Document* doc = currentDocument();
    return stringValue(doc ? doc->docTitle() : OdString(L"Drawing1.dwg"));
  }, L"Name of the current drawing"));
  add(computed(L"DWGPREFIX", RTSTR, [] {
    Document* doc = currentDocument();
    return stringValue(doc ? folderOf(doc->fileName()) : OdString());
  }, L"Folder of the current drawing"));
  add(computed(L"APPDATADIR", RTSTR, [] { return stringValue(Host::instance().dataFolder()); },
               L"Folder of the user's settings"));
  add(computed(L"CMDACTIVE", RTSHORT, [] { return shortValue(Host::instance().commandDepth() > 0 ? 1 : 0); },
               L"A command is running (1)"));
  add(computed(L"DBMOD", RTSHORT, [] {
    Document* doc = currentDocument();
    return shortValue(doc && doc->isModified() ? 1 : 0);
  }, L"The drawing was changed (1)"));
  add(computed(L"CDATE", RTREAL, [] {
    std::time_t now = std::time(nullptr);
    std::tm t{};
    localtime_r(&now, &t);
    return realValue((t.tm_year + 1900) * 10000.0 + (t.tm_mon + 1) * 100.0 + t.tm_mday + t.tm_hour / 100.0 +
                     t.tm_min / 10000.0 + t.tm_sec / 1000000.0);
  }, L"Current date and time (YYYYMMDD.HHMMSS)"));
  add(computed(L"HANDSEED", RTSTR, [] {
    Document* doc = currentDocument();
    return stringValue(doc ? doc->database()->handseed().ascii() : OdString(L"1"));
  }, L"Next handle of the drawing"));
  add(computed(L"UCSORG", RT3DPOINT, [] {
    Document* doc = currentDocument();
    OdGePoint3d origin = doc ? doc->ucs().getCsOrigin() : OdGePoint3d();
    return pointValue(origin.x, origin.y, origin.z);
  }, L"Origin of the current user coordinate system"));
  add(computed(L"UCSXDIR", RT3DPOINT, [] {
    Document* doc = currentDocument();
    OdGeVector3d x = doc ? doc->ucs().getCsXAxis() : OdGeVector3d::kXAxis;
    return pointValue(x.x, x.y, x.z);
  }, L"X direction of the current user coordinate system"));
  add(computed(L"UCSYDIR", RT3DPOINT, [] {
    Document* doc = currentDocument();
    OdGeVector3d y = doc ? doc->ucs().getCsYAxis() : OdGeVector3d::kYAxis;
    return pointValue(y.x, y.y, y.z);
  }, L"Y direction of the current user coordinate system"));
  add(computed(L"DWGTITLED", RTSHORT, [] {
    Document* doc = currentDocument();
    return shortValue(doc && !doc->fileName().isEmpty() ? 1 : 0);
  }, L"The drawing has a file name (1)"));
}

void SysVars::add(SysVarDef def) { m_defs[def.name] = std::move(def); }

std::vector<OdString> SysVars::names() const {
  std::vector<OdString> result;
  result.reserve(m_defs.size());
  for (const auto& entry : m_defs) result.push_back(entry.first);
  return result;
}

const SysVarDef* SysVars::find(const OdString& name) const {
  auto it = m_defs.find(name);
  return it == m_defs.end() ? nullptr : &it->second;
}

namespace {

// A header variable's groups as a value of the variable's type.
bool fromHeader(const SysVarDef& def, OdDbDatabase* db, SysVarValue& value) {
  const OdDxfTagList* tags = db->headerVariable(def.headerName);
  if (!tags || tags->empty()) return false;
  const OdDxfTag& tag = tags->front();
  value.type = def.type;
  if (def.name.iCompare(L"CECOLOR") == 0) {
    value.s = db->getCECOLOR().toString();
    return true;
  }
  switch (def.type) {
    case RTSHORT:
    case RTLONG: value.i = tag.type == OdDxf::ValueType::kDouble ? static_cast<OdInt64>(tag.x) : tag.i; break;
    case RTREAL: value.r = tag.type == OdDxf::ValueType::kDouble || tag.type == OdDxf::ValueType::kPoint ? tag.x : static_cast<double>(tag.i); break;
    case RTSTR: value.s = tag.s; break;
    default:
      value.p[0] = tag.x;
      value.p[1] = tag.y;
      value.p[2] = tag.dims == 3 ? tag.z : 0.0;
      break;
  }
  return true;
}

void toHeader(const SysVarDef& def, OdDbDatabase* db, const SysVarValue& value) {
  if (def.name.iCompare(L"CECOLOR") == 0) {
    OdCmColor color;
    if (OdCmColor::fromString(value.s, color)) db->setCECOLOR(color);
    return;
  }
  switch (def.type) {
    case RTSHORT:
    case RTLONG: db->setHeaderInt(def.headerName, def.headerCode, value.i); break;
    case RTREAL: db->setHeaderReal(def.headerName, def.headerCode, value.r); break;
    case RTSTR: db->setHeaderString(def.headerName, def.headerCode, value.s); break;
    default:
      db->setHeaderPoint(def.headerName, def.headerCode, OdGePoint3d(value.p[0], value.p[1], value.p[2]),
                         def.type == RTPOINT ? 2 : 3);
      break;
  }
}

}  // namespace

int SysVars::get(const OdString& name, SysVarValue& value) const {
  const SysVarDef* def = find(name);
  if (!def) return RTERROR;
  if (def->compute) {
    value = def->compute();
    return RTNORM;
  }
  if (!def->headerName.isEmpty()) {
    Document* doc = currentDocument();
    if (doc && fromHeader(*def, doc->database(), value)) return RTNORM;
    value = def->defaultValue;
    return RTNORM;
  }
  auto it = m_session.find(def->name);
  value = it == m_session.end() ? def->defaultValue : it->second;
  return RTNORM;
}

int SysVars::set(const OdString& name, const SysVarValue& given, OdString* reason) {
  const SysVarDef* def = find(name);
  auto fail = [&](const OdString& why) {
    if (reason) *reason = why;
    return RTERROR;
  };
  if (!def) return fail(L"unknown variable name");
  if (def->readOnly) return fail(def->name + L" is read-only");
  SysVarValue value = given;
  // Numbers convert between the integer and real kinds; other types must match.
  if ((def->type == RTSHORT || def->type == RTLONG) && (value.type == RTSHORT || value.type == RTLONG)) {
    value.type = def->type;
  } else if (def->type == RTREAL && (value.type == RTSHORT || value.type == RTLONG)) {
    value.r = static_cast<double>(value.i);
    value.type = RTREAL;
  } else if (def->type == RT3DPOINT && value.type == RTPOINT) {
    value.type = RT3DPOINT;
  } else if (def->type == RTPOINT && value.type == RT3DPOINT) {
    value.type = RTPOINT;
  } else if (value.type != def->type) {
    return fail(L"wrong type of value for " + def->name);
  }
  if ((def->type == RTSHORT || def->type == RTLONG) && def->minimum <= def->maximum &&
      (value.i < def->minimum || value.i > def->maximum)) {
    return fail(OdString().format(L"value must be between %lld and %lld", static_cast<long long>(def->minimum),
                                  static_cast<long long>(def->maximum)));
  }
  // Numbers are finite, and reals within their range.
  if (value.type == RTREAL && !std::isfinite(value.r)) return fail(L"value must be a finite number");
  if ((value.type == RTPOINT || value.type == RT3DPOINT) &&
      !(std::isfinite(value.p[0]) && std::isfinite(value.p[1]) && std::isfinite(value.p[2]))) {
    return fail(L"point must have finite coordinates");
  }
  if (value.type == RTREAL && def->realRange == SysVarDef::RealRange::kPositive && !(value.r > 0)) {
    return fail(L"value must be positive");
  }
  if (value.type == RTREAL && def->realRange == SysVarDef::RealRange::kNotNegative && value.r < 0) {
    return fail(L"value must be zero or positive");
  }
  if (!def->headerName.isEmpty()) {
    Document* doc = currentDocument();
    if (!doc) return fail(L"no drawing is open");
    OdDbDatabase* db = doc->database();
    // Names must name an existing record.
    if (def->name.iCompare(L"CLAYER") == 0) {
      OdDbObjectId layer = db->findRecord(OdDbNameTable::kLayer, value.s);
      if (layer.isNull()) return fail(L"no layer named " + value.s);
      if (db->setCLAYER(layer) != eOk) return fail(L"layer " + value.s + L" is frozen");
      return RTNORM;
    }
    if (def->name.iCompare(L"TEXTSTYLE") == 0) {
      OdDbObjectId style = db->findRecord(OdDbNameTable::kTextStyle, value.s);
      if (style.isNull()) return fail(L"no text style named " + value.s);
      db->setTEXTSTYLE(style);
      return RTNORM;
    }
    if (def->name.iCompare(L"CELTYPE") == 0) {
      OdDbObjectId linetype = db->findRecord(OdDbNameTable::kLinetype, value.s);
      if (linetype.isNull()) return fail(L"no linetype named " + value.s);
      db->setCELTYPE(linetype);
      return RTNORM;
    }
    if (def->name.iCompare(L"CECOLOR") == 0) {
      OdCmColor color;
      if (!OdCmColor::fromString(value.s, color)) return fail(L"not a colour: " + value.s);
    }
    toHeader(*def, db, value);
    doc->setModified(true);
    return RTNORM;
  }
  m_session[def->name] = value;
  return RTNORM;
}

OdInt64 SysVars::getInt(const OdString& name, OdInt64 otherwise) const {
  SysVarValue value;
  if (get(name, value) != RTNORM) return otherwise;
  return value.type == RTREAL ? static_cast<OdInt64>(value.r) : value.i;
}

double SysVars::getReal(const OdString& name, double otherwise) const {
  SysVarValue value;
  if (get(name, value) != RTNORM) return otherwise;
  return value.type == RTREAL ? value.r : static_cast<double>(value.i);
}

void SysVars::setInt(const OdString& name, OdInt64 value) {
  const SysVarDef* def = find(name);
  SysVarValue v;
  v.type = def ? def->type : RTSHORT;
  v.i = value;
  if (def && !def->headerName.isEmpty()) {
    set(name, v);
  } else if (def) {
    m_session[def->name] = v;  // the host may set read-only session values
  }
}

}  // namespace ryhost
