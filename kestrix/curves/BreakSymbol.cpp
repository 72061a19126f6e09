// The geometry of the break symbol and the symbol drawing's reference
// points, apart from the command so that they can be checked on their own.
#include <cmath>
#include <vector>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbPoint.h"
#include "DxfFile.h"
#include "curves/BreakLine.h"
#include "ryut.h"

namespace kestrix::curves {

namespace {
constexpr double kPi = 3.14159265358979323846;
}

OdString blockFileName(const OdString& setting) {
  OdString name = setting.left(256);
  if (ryutWcMatch(name.upper().c_str(), L"*.DWG") != RTNORM) name += L".DWG";
  return name;
}

std::array<OdGePoint3d, 6> breakSymbolVertices(const OdGePoint3d& start, const OdGePoint3d& end,
                                               const OdGePoint3d& location, double size) {
  OdGeVector3d u = end - start;
  u.normalize();
  // The location brought onto the line: the foot of its perpendicular.
  const OdGePoint3d q = start + u * (location - start).dotProduct(u);
  const double a = std::atan2(u.y, u.x);
  const double slant = a - 63.0 * kPi / 180.0;
  const OdGeVector3d stroke(std::cos(slant) * 3.9131 * size, std::sin(slant) * 3.9131 * size, 0);
  const OdGePoint3d c = q - u * (3.5 * size), d = q + u * (3.5 * size);
  return {start, c, c + stroke, d - stroke, d, end};
}

double symbolReferenceWidth(const OdString& folder, const OdString& blockName, bool* found) {
  // The name as set, then the same name with ".dxf" in lower case.
  std::vector<OdString> candidates;
  const bool absolute = blockName.left(1) == L"/" || (blockName.getLength() > 1 && blockName[1] == L':');
  candidates.push_back(absolute ? blockName : ryutCombinePath(folder, blockName));
  const int dot = candidates[0].reverseFind(L'.');
  if (dot > 0) candidates.push_back(candidates[0].left(dot) + L".dxf");
  if (found) *found = false;
  for (const OdString& path : candidates) {
    OdDbDatabasePtr db;
    try {
      db = odDxfReadFile(path);
    } catch (const OdError&) {
      continue;
    }
    // The first two points of model space are the symbol's reference points.
    std::vector<OdGePoint3d> points;
    OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().openObject().get());
    if (space.isNull()) continue;
    for (const OdDbObjectId& id : space->entityIds()) {
      OdSmartPtr<OdDbPoint> point = OdDbPoint::cast(id.openObject().get());
      if (!point.isNull()) points.push_back(point->position());
      if (points.size() == 2) break;
    }
    if (points.size() < 2) continue;
    const double width = points[0].distanceTo(points[1]);
    if (width <= 1e-10) continue;
    if (found) *found = true;
    return width;
  }
  return 1.0;
}

}  // namespace kestrix::curves
