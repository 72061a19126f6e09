// RY_boolop: union, intersection or subtraction of closed outlines without
// region objects in the drawing. The user picks a base outline (a
// lightweight polyline or a circle) and tool outlines; the planar regions
// (regions/EvGeRegion.h) do the arithmetic; each loop of the result becomes
// a closed lightweight polyline with bulges, or a circle when it is one
// whole circle, in the base's plane with the base's properties; then the
// base (and, when asked, the tools) are erased.
//
// The operation and the erase-tools option live in a modeless dialog shown
// for the whole command; the user may change them while picking. They are
// kept for as long as the module is loaded.
#include <cmath>
#include <memory>
#include <vector>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "Ge/GeOcs.h"
#include "RyDialogs.h"
#include "frame/Guards.h"
#include "frame/ModuleWide.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "regions/EvGeRegion.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

namespace {

enum Operation { kUnion = 0, kIntersection = 1, kSubtraction = 2 };

struct BoolOpOptions {
  int operation = kUnion;
  int eraseTools = 1;
};

BoolOpOptions& options() {
  static BoolOpOptions kept;
  return kept;
}

void resetBoolOpOptions() { options() = BoolOpOptions(); }
KESTRIX_MODULE_WIDE_RESET(resetBoolOpOptions);

class EvBoolOpDlg : public CDialog {
 public:
  EvBoolOpDlg() : CDialog(14834), m_operation(options().operation), m_eraseTools(options().eraseTools) {}

  BOOL OnInitDialog() override {
    CDialog::OnInitDialog();
    // Over the top-left corner of the drawing view, keeping its own size.
    if (CView* view = ryedGetRyadDwgView()) {
      CRect viewRect, own;
      view->GetWindowRect(&viewRect);
      GetWindowRect(&own);
      MoveWindow(viewRect.left, viewRect.top, own.Width(), own.Height());
    }
    return TRUE;
  }

  int m_operation;
  int m_eraseTools;

 protected:
  void DoDataExchange(CDataExchange* pDX) override {
    DDX_Radio(pDX, 14835, m_operation);
    DDX_Check(pDX, 14838, m_eraseTools);
  }
};

// The dialog for the command's length: closed on every way out.
class DialogHolder {
 public:
  DialogHolder() { m_shown = m_dialog.Create(); }
  ~DialogHolder() { close(); }
  void close() {
    if (m_shown) m_dialog.DestroyWindow();
    m_shown = false;
  }
  EvBoolOpDlg& dialog() { return m_dialog; }
  bool shown() const { return m_shown; }

 private:
  EvBoolOpDlg m_dialog;
  bool m_shown = false;
};

struct SetRelease {
  ads_name set;
  ~SetRelease() { ryedSSFree(set); }
};

bool onLockedLayer(const OdDbEntity* entity) {
  OdDbObjectPtr object = entity->layerId().openObject();
  const auto* layer = OdDbLayerTableRecord::cast(object.get()).get();
  return layer && layer->isLocked();
}

OdDbEntityPtr openEntity(const OdDbObjectId& id, OdDb::OpenMode mode = OdDb::kForRead) {
  return OdDbEntity::cast(id.openObject(mode).get());
}

OdDbObjectId idOf(const ads_name entity) {
  OdDbObjectId id;
  rydbGetObjectId(id, entity);
  return id;
}

// Everything an outline needs from the base: its plane and its elevation in that plane.
struct Plane {
  OdGeVector3d normal = OdGeVector3d::kZAxis;
  double elevation = 0.0;
};

// A point of an entity (in world coordinates) in the base's plane.
OdGePoint2d inPlane(const OdGePoint3d& world, const Plane& plane) {
  const OdGePoint3d ocs = odgeWcsToOcs(world, plane.normal);
  return OdGePoint2d(ocs.x, ocs.y);
}

// The outline of a polyline or circle as a loop in the base's plane; false
// for other objects, open polylines and outlines in a plane that is not
// parallel to the base's.
bool outlineOf(const OdDbEntity* entity, const Plane& plane, EvGeLoop2d& loop) {
  if (const auto* circle = OdDbCircle::cast(entity).get()) {
    if (!circle->normal().isParallelTo(plane.normal)) return false;
    loop = EvGeLoop2d::circle(inPlane(circle->center(), plane), circle->radius());
    return true;
  }
  const auto* polyline = OdDbPolyline::cast(entity).get();
  if (!polyline || polyline->numVerts() < 2 || !polyline->normal().isParallelTo(plane.normal)) return false;
  const unsigned n = polyline->numVerts();
  if (!polyline->isClosed() && !(polyline->getPoint2dAt(0) == polyline->getPoint2dAt(n - 1))) return false;
  // A polyline seen from the other side of the plane runs the other way round.
  const bool samePlane = polyline->normal() == plane.normal;
  const double sense = polyline->normal().dotProduct(plane.normal) > 0 ? 1.0 : -1.0;
  loop.isCircle = false;
  loop.vertices.clear();
  for (unsigned i = 0; i < n; ++i) {
    OdGePoint2d point = polyline->getPoint2dAt(i);
    if (!samePlane) {
      OdGePoint3d world;
      polyline->getPointAt(i, world);
      point = inPlane(world, plane);
    }
    loop.vertices.push_back({point, sense * polyline->getBulgeAt(i)});
  }
  return true;
}

std::unique_ptr<EvGeGeneralRegion2d> regionOf(const OdDbObjectId& id, const Plane& plane) {
  OdDbEntityPtr entity = openEntity(id);
  EvGeLoop2d loop;
  if (entity.isNull() || !outlineOf(entity.get(), plane, loop)) return nullptr;
  auto region = std::make_unique<EvGeGeneralRegion2d>(loop);
  if (!region->isValid()) return nullptr;
  return region;
}

// The new entity for one loop of the result.
OdDbEntityPtr entityOf(const EvGeLoop2d& loop, const Plane& plane, const OdDbEntity* base) {
  OdDbEntityPtr entity;
  if (loop.isCircle) {
    const OdGePoint3d center =
        odgeOcsToWcs(OdGePoint3d(loop.center.x, loop.center.y, plane.elevation), plane.normal);
    entity = OdDbCircle::createObject();
    auto* circle = static_cast<OdDbCircle*>(entity.get());
    circle->setNormal(plane.normal);
    circle->setCenter(center);
    circle->setRadius(loop.radius);
  } else {
    OdSmartPtr<OdDbPolyline> polyline = OdDbPolyline::createObject();
    polyline->setNormal(plane.normal);
    polyline->setElevation(plane.elevation);
    for (const EvGeLoopVertex& vertex : loop.vertices)
      polyline->addVertexAt(polyline->numVerts(), vertex.point, vertex.bulge, 0.0, 0.0);
    polyline->setClosed(true);
    entity = polyline;
  }
  entity->setPropertiesFrom(base);
  return entity;
}

// Every loop of every region, appended to the current space; false when a
// loop could not be added.
bool writeResult(const EvGeObjList& result, const OdDbObjectId& baseId, const Plane& plane) {
  OdDbEntityPtr base = openEntity(baseId);
  if (base.isNull()) return false;
  std::vector<OdDbEntityPtr> made;
  for (bool more = result.first(); more; more = result.next()) {
    for (const EvGeLoop2d& loop : result.GetCurRegion2D()->loops()) made.push_back(entityOf(loop, plane, base.get()));
  }
  OdDbDatabase* db = baseId.database();
  OdDbObjectPtr space = db->currentSpaceId().openObject(OdDb::kForWrite);
  auto* block = OdDbBlockTableRecord::cast(space.get()).get();
  if (!block) return false;
  for (const OdDbEntityPtr& entity : made) {
    if (block->appendOdDbEntity(entity.get()).isNull()) return false;
  }
  return true;
}

// The result of the chosen operation of the base with the tools.
void operate(int operation, const EvGeRegion2d& base, const std::vector<std::unique_ptr<EvGeGeneralRegion2d>>& tools,
             EvGeObjList& result) {
  result.clear();
  EvGeObjList scratch;
  switch (operation) {
    case kUnion:
      for (const auto& tool : tools) scratch.Union(*tool);
      scratch.Union(base);
      for (bool more = scratch.first(); more; more = scratch.next()) result.append(*scratch.GetCurRegion2D());
      break;
    case kSubtraction:
      for (const auto& tool : tools) scratch.Union(*tool);
      base.SubtractBy(scratch, result);
      break;
    case kIntersection:
      base.IntersectWith(*tools.front(), result);
      for (size_t i = 1; i < tools.size() && result.count() > 0; ++i) {
        scratch.clear();
        result.IntersectWith(*tools[i], scratch);
        result.clear();
        for (bool more = scratch.first(); more; more = scratch.next()) result.append(*scratch.GetCurRegion2D());
      }
      break;
    default:
      break;
  }
}

// Erases the objects in order; the first that cannot be erased stops it.
void eraseAll(const std::vector<OdDbObjectId>& ids) {
  for (const OdDbObjectId& id : ids) {
    OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
    if (object.isNull() || object->erase() != eOk) return;
  }
}

kestrix::ResultList outlineFilter() {
  return kestrix::ResultList(ryutBuildList(RTDXF0, L"CIRCLE,POLYLINE,LWPOLYLINE", RTNONE));
}

}  // namespace

void boolopCommand() {
  kestrix::CmdEchoGuard echo;
  DialogHolder holder;
  const kestrix::ResultList filter = outlineFilter();

  // The base.
  const ResourceString basePrompt(14840, L"\nPlease choose the first closed profile entity(pline,circle):");
  const ResourceString baseRefused(14841, L"\nThe type of the first choosed entity cann't be operated by this command!");
  const ACHAR* basePrompts[2] = {basePrompt.c_str(), basePrompt.c_str()};
  SetRelease baseSet{{0, 0}};
  if (ryedSSGet(L":S:$", basePrompts, nullptr, filter.get(), baseSet.set) != RTNORM) return;
  OdInt32 length = 0;
  ads_name picked;
  if (ryedSSLength(baseSet.set, &length) != RTNORM || length == 0 || ryedSSName(baseSet.set, 0, picked) != RTNORM) {
    ryutPrintf(L"%ls", baseRefused.c_str());
    return;
  }
  const OdDbObjectId baseId = idOf(picked);
  Plane plane;
  {
    OdDbEntityPtr base = openEntity(baseId);
    const auto* polyline = base.isNull() ? nullptr : OdDbPolyline::cast(base.get()).get();
    const auto* circle = base.isNull() ? nullptr : OdDbCircle::cast(base.get()).get();
    if ((!polyline && !circle) || onLockedLayer(base.get())) {
      ryutPrintf(L"%ls", baseRefused.c_str());
      return;
    }
    plane.normal = polyline ? polyline->normal() : circle->normal();
    plane.elevation = polyline ? polyline->elevation() : odgeWcsToOcs(circle->center(), plane.normal).z;
  }

  // The tools, without those on locked layers.
  const ResourceString toolPrompt(14842, L"\nPlease choose the second closeed profile entity(pline,circle):");
  const ResourceString toolRefused(14843, L"\nThe type of the second choosed entity cann't be operated by this command!");
  const ACHAR* toolPrompts[2] = {toolPrompt.c_str(), nullptr};
  SetRelease toolSet{{0, 0}};
  if (ryedSSGet(L":$", toolPrompts, nullptr, filter.get(), toolSet.set) != RTNORM ||
      ryedSSLength(toolSet.set, &length) != RTNORM || length == 0) {
    ryutPrintf(L"%ls", toolRefused.c_str());
    return;
  }
  std::vector<OdDbObjectId> toolIds;
  for (OdInt32 i = 0; i < length; ++i) {
    if (ryedSSName(toolSet.set, i, picked) != RTNORM) continue;
    const OdDbObjectId id = idOf(picked);
    OdDbEntityPtr tool = openEntity(id, OdDb::kForWrite);
    if (!tool.isNull() && !onLockedLayer(tool.get())) toolIds.push_back(id);
  }
  if (toolIds.empty()) {
    ryutPrintf(L"%ls", toolRefused.c_str());
    return;
  }

  // The options as the dialog shows them now.
  if (holder.shown() && holder.dialog().UpdateData(TRUE)) {
    options().operation = holder.dialog().m_operation;
    options().eraseTools = holder.dialog().m_eraseTools;
  }
  const BoolOpOptions chosen = options();

  std::unique_ptr<EvGeGeneralRegion2d> baseRegion = regionOf(baseId, plane);
  if (!baseRegion) {
    holder.close();
    ryutPrintf(L"%ls", ResourceString(14844, L"\nFailed in converting this  entity into region!").c_str());
    return;
  }
  bool baseAmongTools = false;
  std::vector<std::unique_ptr<EvGeGeneralRegion2d>> toolRegions;
  for (const OdDbObjectId& id : toolIds) {
    if (id == baseId) {
      baseAmongTools = true;
      continue;
    }
    if (auto region = regionOf(id, plane)) toolRegions.push_back(std::move(region));
  }
  if (toolRegions.empty()) return;

  EvGeObjList result;
  operate(chosen.operation, *baseRegion, toolRegions, result);
  baseRegion.reset();
  toolRegions.clear();
  if (result.count() == 0 || !writeResult(result, baseId, plane)) return;

  std::vector<OdDbObjectId> erased{baseId};
  if (chosen.eraseTools) {
    erased = toolIds;
    if (!baseAmongTools) erased.push_back(baseId);
  }
  eraseAll(erased);
}
