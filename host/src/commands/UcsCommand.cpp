// UCS: the current user coordinate system. A point given at the first
// prompt moves the origin (and, with one or two more points, turns the axes);
// the options World, Previous, OBject, Origin, 3point, X, Y, Z (rotations
// about an axis) and ZAxis set other systems; NAmed restores, saves, deletes
// and lists the systems the drawing keeps by name. Face and View need a
// display and are not available on the console.
//
// The system lives in the document (Document::ucs, with its stack of
// previous systems); the command also writes it to the drawing's header
// ($UCSORG, $UCSXDIR, $UCSYDIR) so that it is saved with the drawing and so
// that U, which restores those variables, brings the previous system back:
// a reactor on the drawing follows the restored variables.
#include <algorithm>
#include <cmath>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbPoint.h"
#include "DbPolyline.h"
#include "DbSolid.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "Ge/GeOcs.h"
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "rydb.h"
#include "ryed.h"
#include "sdk/Input.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

void say(const OdString& text) { Host::instance().print(text); }

constexpr double kHalfPi = 1.57079632679489661923;

OdGeMatrix3d systemOf(const OdGePoint3d& origin, OdGeVector3d x, OdGeVector3d y) {
  x.normalize();
  y.normalize();
  OdGeMatrix3d m;
  m.setCoordSystem(origin, x, y, x.crossProduct(y));
  return m;
}

// A system from its origin, its z axis and a direction its x axis should
// follow (projected into the plane); false when they define no plane.
bool systemFromZ(const OdGePoint3d& origin, OdGeVector3d z, OdGeVector3d xHint, OdGeMatrix3d& result) {
  if (z.isZeroLength()) return false;
  z.normalize();
  OdGeVector3d x = xHint - z * xHint.dotProduct(z);
  if (x.isZeroLength()) {
    OdGeVector3d ocsX, ocsY, ocsZ;
    odgeOcsAxes(z, ocsX, ocsY, ocsZ);
    x = ocsX;
  }
  x.normalize();
  result = systemOf(origin, x, z.crossProduct(x));
  return true;
}

// ---------------------------------------------------------------- the header and undo

const wchar_t* const kOrigin = L"$UCSORG";
const wchar_t* const kXDir = L"$UCSXDIR";
const wchar_t* const kYDir = L"$UCSYDIR";

// Keeps a document's system in step with the header variables when U or
// UNDO restores them.
class UcsFollower : public OdDbDatabaseReactor {
 public:
  static UcsFollower& instance() {
    static UcsFollower* follower = new UcsFollower();  // lives as long as the drawings it watches
    return *follower;
  }

  // Writes the system to the drawing's header. The variables first get the
  // document's present system outside the undo record, so that the record
  // holds that system as the one to restore.
  void write(OdDbDatabase* db, const OdGeMatrix3d& before, const OdGeMatrix3d& after) {
    db->addReactor(this);
    m_writing = true;
    if (!matches(db, before)) {
      db->blockUndoRecording(true);
      store(db, before);
      db->blockUndoRecording(false);
    }
    store(db, after);
    m_writing = false;
  }

  void headerSysVarChanged(const OdDbDatabase* db, const OdString& name) override {
    // The origin is written first, so undo restores it last: only then do the
    // three variables hold one system again.
    if (m_writing || name.iCompare(kOrigin) != 0) return;
    auto* doc = static_cast<Document*>(Host::instance().document(db));
    OdGeMatrix3d restored;
    if (!doc || !read(db, restored) || doc->ucs() == restored) return;
    // A change undone had pushed the restored system: take it off the stack.
    const OdGeMatrix3d shown = doc->ucs();
    if (doc->popUcs()) {
      if (doc->ucs() == restored) return;
      doc->setUcs(shown, true);  // puts the popped system back on the stack
    }
    // Undoing Previous: the system it left becomes the previous one again.
    doc->setUcs(restored, true);
  }

 private:
  // The origin first: undo restores in reverse order, so the origin comes back
  // last, when the axes are already in place.
  static void store(OdDbDatabase* db, const OdGeMatrix3d& ucs) {
    const OdGeVector3d x = ucs.getCsXAxis(), y = ucs.getCsYAxis();
    db->setHeaderPoint(kOrigin, 10, ucs.getCsOrigin());
    db->setHeaderPoint(kXDir, 10, OdGePoint3d(x.x, x.y, x.z));
    db->setHeaderPoint(kYDir, 10, OdGePoint3d(y.x, y.y, y.z));
  }

  // The system the header holds; false when the variables hold no proper system.
  static bool read(const OdDbDatabase* db, OdGeMatrix3d& ucs) {
    if (!db->headerVariable(kOrigin) || !db->headerVariable(kXDir) || !db->headerVariable(kYDir))
      return false;
    const OdGePoint3d origin = db->headerPoint(kOrigin);
    const OdGeVector3d x = db->headerPoint(kXDir).asVector(), y = db->headerPoint(kYDir).asVector();
    if (!x.isUnitLength() || !y.isUnitLength() || !x.isPerpendicularTo(y)) return false;
    ucs = systemOf(origin, x, y);
    return true;
  }

  static bool matches(const OdDbDatabase* db, const OdGeMatrix3d& ucs) {
    OdGeMatrix3d stored;
    return read(db, stored) && stored == ucs;
  }

  bool m_writing = false;
};

// ---------------------------------------------------------------- systems of objects

OdGePoint3d nearer(const OdGePoint3d& pick, const OdGePoint3d& a, const OdGePoint3d& b) {
  return pick.distanceTo(a) <= pick.distanceTo(b) ? a : b;
}

OdGeVector3d ocsDirection(double rotation, const OdGeVector3d& normal) {
  return odgeOcsToWcs(OdGeVector3d(std::cos(rotation), std::sin(rotation), 0), normal);
}

// The system an object defines: its plane, and an origin and x axis from
// its geometry (and for lines, circles and arcs, from the point picked).
bool objectSystem(const OdDbEntity* entity, const OdGePoint3d& pick, OdGeMatrix3d& result) {
  if (auto* line = dynamic_cast<const OdDbLine*>(entity)) {
    const OdGePoint3d origin = nearer(pick, line->startPoint(), line->endPoint());
    const OdGePoint3d other = origin == line->startPoint() ? line->endPoint() : line->startPoint();
    return !(other - origin).isParallelTo(line->normal()) &&
           systemFromZ(origin, line->normal(), other - origin, result);
  }
  if (auto* circle = dynamic_cast<const OdDbCircle*>(entity))
    return systemFromZ(circle->center(), circle->normal(), pick - circle->center(), result);
  if (auto* arc = dynamic_cast<const OdDbArc*>(entity)) {
    OdGePoint3d start, end;
    arc->getStartPoint(start);
    arc->getEndPoint(end);
    return systemFromZ(arc->center(), arc->normal(), nearer(pick, start, end) - arc->center(), result);
  }
  if (auto* text = dynamic_cast<const OdDbText*>(entity))
    return systemFromZ(text->position(), text->normal(), ocsDirection(text->rotation(), text->normal()),
                       result);
  if (auto* mtext = dynamic_cast<const OdDbMText*>(entity))
    return systemFromZ(mtext->location(), mtext->normal(), mtext->direction(), result);
  if (auto* reference = dynamic_cast<const OdDbBlockReference*>(entity)) {
    return systemFromZ(reference->position(), reference->normal(),
                       ocsDirection(reference->rotation(), reference->normal()), result);
  }
  if (auto* point = dynamic_cast<const OdDbPoint*>(entity))
    return systemFromZ(point->position(), point->normal(), ocsDirection(0, point->normal()), result);
  if (auto* ellipse = dynamic_cast<const OdDbEllipse*>(entity))
    return systemFromZ(ellipse->center(), ellipse->normal(), ellipse->majorAxis(), result);
  if (auto* curve = dynamic_cast<const OdDbCurve*>(entity);
      curve && (entity->isKindOf(OdDbPolyline::desc()) || entity->isKindOf(OdDb2dPolyline::desc()))) {
    OdGeVector3d normal;
    entityOcsNormal(entity, normal);
    OdGePoint3d first, second;
    if (curve->getPointAtParam(0, first) != eOk) return false;
    if (curve->getPointAtParam(1, second) != eOk) second = first;
    return systemFromZ(first, normal, second - first, result);
  }
  if (auto* quad = dynamic_cast<const OdDbPlanarQuad*>(entity)) {
    OdGePoint3d first, second;
    quad->getPointAt(0, first);
    quad->getPointAt(1, second);
    return systemFromZ(first, quad->normal(), second - first, result);
  }
  if (auto* face = dynamic_cast<const OdDbFace*>(entity)) {
    OdGePoint3d v0, v1, v3;
    face->getVertexAt(0, v0);
    face->getVertexAt(1, v1);
    face->getVertexAt(3, v3);
    return systemFromZ(v0, (v1 - v0).crossProduct(v3 - v0), v1 - v0, result);
  }
  return false;
}

// ---------------------------------------------------------------- the command

class UcsSetter {
 public:
  explicit UcsSetter(Document* doc) : m_doc(doc), m_ucs(doc->ucs()) {}

  void run() {
    OdGePoint3d point;
    OdString option;
    const bool given = askPoint(
        L"\nSpecify origin of UCS or [Face/NAmed/OBject/Previous/View/World/X/Y/Z/ZAxis] <World>: ", point,
        nullptr, L"Face NAmed OBject Previous View World X Y Z ZAxis Origin 3point,3", &option);
    OdGeMatrix3d next;
    if (!given || option == L"World") {
      next = OdGeMatrix3d::kIdentity;
    } else if (option.isEmpty()) {
      next = byPoints(point);
    } else if (option == L"Previous") {
      previous();
      return;
    } else if (option == L"OBject") {
      next = byObject();
    } else if (option == L"Origin") {
      next = byOrigin();
    } else if (option == L"3point") {
      next = byThreePoints();
    } else if (option == L"X" || option == L"Y" || option == L"Z") {
      next = byRotation(option);
    } else if (option == L"ZAxis") {
      next = byZAxis();
    } else if (option == L"NAmed") {
      if (!named(next)) return;
    } else {
      say(L"\nThe " + option + L" option is not available on the console.");
      return;
    }
    UcsFollower::instance().write(m_doc->database(), m_ucs, next);
    m_doc->setUcs(next, true);
  }

 private:
  OdGePoint3d world(const OdGePoint3d& ucsPoint) const { return m_ucs * ucsPoint; }
  OdDbDatabase* database() const { return m_doc->database(); }

  // ---- systems kept by name (the UCS table)

  // True with the system to restore; Save, Delete and ? change no system.
  bool named(OdGeMatrix3d& next) {
    const OdString option =
        askKeyword(L"\nEnter an option [Restore/Save/Delete/?]: ", L"Restore Save Delete ?");
    if (option == L"Restore") return restoreNamed(next);
    if (option == L"Save") saveNamed();
    if (option == L"Delete") deleteNamed();
    if (option == L"?") listNamed(askText(L"\nEnter UCS name(s) to list <*>: "));
    return false;
  }

  bool restoreNamed(OdGeMatrix3d& next) {
    for (;;) {
      const OdString name = askKeyword(L"\nEnter name of UCS to restore or [?]: ", L"?", RSG_OTHER);
      if (name.isEmpty()) return false;
      if (name == L"?") {
        listNamed(L"*");
        continue;
      }
      OdDbObjectPtr object = database()->findRecord(OdDbNameTable::kUcs, name).openObject();
      if (auto* record = dynamic_cast<OdDbUCSTableRecord*>(object.get())) {
        next = systemOf(record->origin(), record->xAxis(), record->yAxis());
        return true;
      }
      say(L"\nCannot find UCS \"" + name + L"\".");
    }
  }

  void saveNamed() {
    for (;;) {
      const OdString name = askKeyword(L"\nEnter name to save current UCS or [?]: ", L"?", RSG_OTHER);
      if (name.isEmpty()) return;
      if (name == L"?") {
        listNamed(L"*");
        continue;
      }
      if (!isValidSymbolName(name)) {
        say(L"\nInvalid UCS name \"" + name + L"\".");
        continue;
      }
      const OdDbObjectId existing = database()->findRecord(OdDbNameTable::kUcs, name);
      if (!existing.isNull() &&
          !askYesNo(L"\nUCS \"" + name + L"\" already exists.  Replace it? <N>: ", false)) {
        continue;
      }
      OdSmartPtr<OdDbUCSTableRecord> record =
          existing.isNull() ? OdDbUCSTableRecord::createObject()
                            : OdDbUCSTableRecord::cast(existing.openObject(OdDb::kForWrite).get());
      record->setOrigin(m_ucs.getCsOrigin());
      record->setXAxis(m_ucs.getCsXAxis());
      record->setYAxis(m_ucs.getCsYAxis());
      if (existing.isNull()) {
        record->setName(name);
        OdDbObjectPtr table = database()->getUCSTableId().openObject(OdDb::kForWrite);
        static_cast<OdDbSymbolTable*>(table.get())->add(record.get());
      }
      return;
    }
  }

  void deleteNamed() {
    const std::vector<OdString> patterns = splitNameList(askText(L"\nEnter UCS name(s) to delete <none>: "));
    int deleted = 0;
    for (const OdDbObjectId& id : tableRecords(database(), OdDbNameTable::kUcs)) {
      const OdString name = recordName(id);
      if (std::none_of(patterns.begin(), patterns.end(),
                       [&](const OdString& p) { return nameMatches(name, p); }))
        continue;
      id.openObject(OdDb::kForWrite)->erase();
      ++deleted;
    }
    if (!patterns.empty()) say(OdString().format(L"\n%d UCS name(s) deleted.", deleted));
  }

  void listNamed(OdString patterns) {
    if (patterns.isEmpty()) patterns = L"*";
    const std::vector<OdString> wanted = splitNameList(patterns);
    for (const OdDbObjectId& id : tableRecords(database(), OdDbNameTable::kUcs)) {
      OdDbObjectPtr object = id.openObject();
      auto* record = static_cast<OdDbUCSTableRecord*>(object.get());
      if (std::none_of(wanted.begin(), wanted.end(),
                       [&](const OdString& p) { return nameMatches(record->getName(), p); })) {
        continue;
      }
      const OdGeVector3d x = record->xAxis(), y = record->yAxis();
      say(L"\n\"" + record->getName() + L"\"  Origin = <" + pointText(record->origin()) + L">, X Axis = <" +
          pointText(OdGePoint3d(x.x, x.y, x.z)) + L">, Y Axis = <" + pointText(OdGePoint3d(y.x, y.y, y.z)) +
          L">");
    }
  }

  void previous() {
    if (!m_doc->popUcs()) {
      say(L"\nNo previous UCS saved.");
      return;
    }
    UcsFollower::instance().write(m_doc->database(), m_ucs, m_doc->ucs());
  }

  // The origin given at the first prompt, then optionally the x axis and the xy plane.
  OdGeMatrix3d byPoints(const OdGePoint3d& origin) {
    OdGePoint3d onX, onPlane;
    if (!askPoint(L"\nSpecify point on X-axis or <Accept>: ", onX, &origin)) return moved(origin);
    if (!askPoint(L"\nSpecify point on the XY plane or <Accept>: ", onPlane, &origin))
      return turned(origin, onX);
    return threePoints(origin, onX, onPlane);
  }

  OdGeMatrix3d moved(const OdGePoint3d& ucsOrigin) const {
    return systemOf(world(ucsOrigin), m_ucs.getCsXAxis(), m_ucs.getCsYAxis());
  }

  // The x axis toward a point, the system turned about its z axis.
  OdGeMatrix3d turned(const OdGePoint3d& ucsOrigin, const OdGePoint3d& onX) const {
    OdGeMatrix3d result;
    if (!systemFromZ(world(ucsOrigin), m_ucs.getCsZAxis(), world(onX) - world(ucsOrigin), result))
      return moved(ucsOrigin);
    return result;
  }

  OdGeMatrix3d threePoints(const OdGePoint3d& ucsOrigin, const OdGePoint3d& onX,
                           const OdGePoint3d& onPlane) const {
    const OdGePoint3d origin = world(ucsOrigin);
    const OdGeVector3d x = world(onX) - origin, inPlane = world(onPlane) - origin;
    OdGeMatrix3d result;
    if (x.isZeroLength() || x.isParallelTo(inPlane) ||
        !systemFromZ(origin, x.crossProduct(inPlane), x, result)) {
      say(L"\nThe points do not define a plane; the origin moves only.");
      return moved(ucsOrigin);
    }
    return result;
  }

  OdGeMatrix3d byOrigin() {
    OdGePoint3d origin;
    if (!askPoint(L"\nSpecify new origin point <0,0,0>: ", origin)) origin = OdGePoint3d::kOrigin;
    return moved(origin);
  }

  OdGeMatrix3d byThreePoints() {
    OdGePoint3d origin, onX, onPlane;
    if (!askPoint(L"\nSpecify new origin point <0,0,0>: ", origin)) origin = OdGePoint3d::kOrigin;
    const OdGePoint3d defaultX = origin + OdGeVector3d::kXAxis, defaultY = origin + OdGeVector3d::kYAxis;
    if (!askPoint(L"\nSpecify point on positive portion of X-axis <" + pointText(defaultX) + L">: ", onX,
                  &origin))
      onX = defaultX;
    if (!askPoint(
            L"\nSpecify point on positive-Y portion of the UCS XY plane <" + pointText(defaultY) + L">: ",
            onPlane, &origin)) {
      onPlane = defaultY;
    }
    return threePoints(origin, onX, onPlane);
  }

  static OdString pointText(const OdGePoint3d& p) {
    return formatDistance(p.x) + L"," + formatDistance(p.y) + L"," + formatDistance(p.z);
  }

  OdGeMatrix3d byRotation(const OdString& axisName) {
    double angle = kHalfPi;
    askAngle(L"\nSpecify rotation angle about " + axisName + L" axis <90>: ", angle);
    const OdGeVector3d axis = axisName == L"X"   ? m_ucs.getCsXAxis()
                              : axisName == L"Y" ? m_ucs.getCsYAxis()
                                                 : m_ucs.getCsZAxis();
    const OdGeMatrix3d rotation = OdGeMatrix3d::rotation(angle, axis, m_ucs.getCsOrigin());
    return rotation * m_ucs;
  }

  OdGeMatrix3d byZAxis() {
    OdGePoint3d origin, onZ;
    if (!askPoint(L"\nSpecify new origin point <0,0,0>: ", origin)) origin = OdGePoint3d::kOrigin;
    const OdGePoint3d defaultZ = origin + OdGeVector3d::kZAxis;
    if (!askPoint(L"\nSpecify point on positive portion of Z-axis <" + pointText(defaultZ) + L">: ", onZ,
                  &origin))
      onZ = defaultZ;
    OdGeMatrix3d result;
    const OdGeVector3d z = world(onZ) - world(origin);
    if (!systemFromZ(world(origin), z, m_ucs.getCsXAxis(), result)) return moved(origin);
    return result;
  }

  OdGeMatrix3d byObject() {
    for (;;) {
      ads_name picked;
      ads_point where;
      const int code = ryedEntSel(L"\nSelect object to align UCS: ", picked, where);
      if (code == RTCAN) throw CancelledError();
      if (code != RTNORM) continue;
      OdDbObjectId id;
      rydbGetObjectId(id, picked);
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      OdGeMatrix3d result;
      if (entity.get() &&
          objectSystem(entity.get(), world(OdGePoint3d(where[0], where[1], where[2])), result))
        return result;
      say(L"\nThis object does not define a coordinate system.");
    }
  }

  Document* m_doc;
  OdGeMatrix3d m_ucs;  // the system in force when the command started
};

void ucsCommand() { UcsSetter(Host::instance().current()).run(); }

}  // namespace

void registerUcsCommands(CommandStack& stack) {
  stack.addCommand(L"RYAD", L"UCS", L"UCS", OdEdCommand::kModal, ucsCommand);
}

RYAD_HOST_COMMANDS(registerUcsCommands);

}  // namespace ryhost
