// Picking and geometric selection in a document's current space: the
// entity under a point (within the pick box), and the entities inside or
// crossing a window, a polygon or a fence. Candidates come from the spatial
// index; the entity's own geometry (OdDbEntity::distanceTo) decides.
#pragma once

#include <unordered_map>
#include <utility>
#include <vector>

#include "DbEntity.h"
#include "Ge/GePoint2d.h"

namespace ryhost {

class Document;

// A point typed at a prompt (any entry form of parsePoint, in the current
// user coordinate system), in world coordinates.
bool parseWorldPoint(const OdString& text, OdGePoint3d& world);

// The live entity of a layout whose handle is given (hexadecimal), or null.
OdDbObjectId entityFromHandle(const Document& doc, const OdString& hex);

class Picker {
 public:
  // Selects in the current space; the pick box is PICKBOX drawing units on
  // each side of the point.
  explicit Picker(Document& doc);

  double pickBox() const { return m_pickBox; }
  OdDbObjectId space() const { return m_space; }
  // The entity nearest to the point within the pick box (the later drawn on a
  // tie), or null.
  OdDbObjectId pick(const OdGePoint3d& world);
  // Every entity within the pick box, in drawing order.
  void pickEverything(const OdGePoint3d& world, std::vector<OdDbObjectId>& found);
  // Entities wholly inside the box (crossing: also those that cross it).
  void window(const OdGePoint2d& corner1, const OdGePoint2d& corner2, bool crossing,
              std::vector<OdDbObjectId>& found);
  // The same for a polygon (closed by its last edge).
  void polygon(const std::vector<OdGePoint2d>& points, bool crossing, std::vector<OdDbObjectId>& found);
  // Entities crossed by the open line through the points.
  void fence(const std::vector<OdGePoint2d>& points, std::vector<OdDbObjectId>& found);
  // Shown: a layer that is on and thawed, and the entity not made invisible.
  bool isShown(const OdDbEntity* entity);

 private:
  void candidates(const OdGePoint2d& low, const OdGePoint2d& high, std::vector<OdDbObjectId>& ids);
  // The shown entities whose extents may reach the box of the points.
  std::vector<std::pair<OdDbObjectId, OdDbEntityPtr>> shownAround(const std::vector<OdGePoint2d>& points);
  void withinPickBox(const OdGePoint3d& world, std::vector<std::pair<OdDbObjectId, double>>& found);

  Document& m_doc;
  OdDbObjectId m_space;
  double m_pickBox;
  std::unordered_map<OdDbStub*, bool> m_layerShown;
};

}  // namespace ryhost
