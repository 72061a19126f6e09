// The spatial index of a drawing's entities: the world-xy boxes of the
// entities of every layout (model and paper space), so that a pick or a
// window finds its candidates without walking the drawing.
#pragma once

#include <memory>
#include <vector>

#include "DbDatabase.h"
#include "Ge/GeExtents2d.h"

namespace ryhost {

class SpatialIndex {
 public:
  explicit SpatialIndex(OdDbDatabase* db);
  ~SpatialIndex();
  // Rebuilds from the whole drawing (done on first use).
  void rebuild();
  // Keeps the index in step with one entity (added, changed, erased or unerased).
  void update(const OdDbObjectId& id);
  void remove(const OdDbObjectId& id);
  // The entities of the given block (a layout) whose boxes meet the box.
  void query(const OdDbObjectId& blockId, const OdGeExtents2d& box, std::vector<OdDbObjectId>& result);
  size_t size() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace ryhost
