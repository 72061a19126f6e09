// The spatial index is an R-tree of world-xy boxes (Boost.Geometry), built
// in one pass with packing when first used and kept up to date entity by
// entity afterwards.
#include "core/SpatialIndex.h"

#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#include <unordered_map>

#include "DbBlockTableRecord.h"
#include "DbEntity.h"

namespace ryhost {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;
using Point = bg::model::point<double, 2, bg::cs::cartesian>;
using Box = bg::model::box<Point>;
// The entity's stub identifies it; its owner block tells the layouts apart.
struct Entry {
  OdDbStub* entity;
  OdDbStub* block;
  bool operator==(const Entry& other) const { return entity == other.entity; }
};
using Value = std::pair<Box, Entry>;
using Tree = bgi::rtree<Value, bgi::rstar<16>>;

struct SpatialIndex::Impl {
  OdDbDatabase* db;
  bool built = false;
  Tree tree;
  std::unordered_map<OdDbStub*, Value> boxes;  // what the tree holds for each entity

  bool boxOf(const OdDbObjectId& id, Value& value) {
    if (id.isErased() || !id.isValid()) return false;
    auto* entity = dynamic_cast<OdDbEntity*>(id.stub()->object);
    if (!entity) return false;
    OdDbObjectId owner = entity->ownerId();
    if (owner.isNull() || !owner.isValid()) return false;
    auto* block = dynamic_cast<OdDbBlockTableRecord*>(owner.stub()->object);
    if (!block || !block->isLayout()) return false;  // only what stands in a layout can be picked
    OdGeExtents3d extents;
    if (entity->getGeomExtents(extents) != eOk || !extents.isValidExtents()) return false;
    value = {Box(Point(extents.minPoint().x, extents.minPoint().y), Point(extents.maxPoint().x, extents.maxPoint().y)),
             Entry{id.stub(), owner.stub()}};
    return true;
  }

  void build() {
    std::vector<Value> values;
    OdDbObjectPtr table = db->getBlockTableId().openObject();
    auto* blocks = dynamic_cast<OdDbSymbolTable*>(table.get());
    if (blocks) {
      for (const OdDbObjectId& blockId : blocks->recordIds()) {
        auto* block = blockId.isValid() ? dynamic_cast<OdDbBlockTableRecord*>(blockId.stub()->object) : nullptr;
        if (!block || blockId.isErased() || !block->isLayout()) continue;
        values.reserve(values.size() + block->entityIds().size());
        for (const OdDbObjectId& id : block->entityIds()) {
          Value value;
          if (boxOf(id, value)) {
            values.push_back(value);
            boxes.emplace(id.stub(), value);
          }
        }
      }
    }
    tree = Tree(values.begin(), values.end());  // packed bulk load
    built = true;
  }

  void remove(OdDbStub* stub) {
    auto it = boxes.find(stub);
    if (it == boxes.end()) return;
    tree.remove(it->second);
    boxes.erase(it);
  }
};

SpatialIndex::SpatialIndex(OdDbDatabase* db) : m_impl(std::make_unique<Impl>()) { m_impl->db = db; }
SpatialIndex::~SpatialIndex() = default;

void SpatialIndex::rebuild() {
  m_impl->tree.clear();
  m_impl->boxes.clear();
  m_impl->build();
}

void SpatialIndex::update(const OdDbObjectId& id) {
  if (!m_impl->built) return;  // built with everything on first use
  m_impl->remove(id.stub());
  Value value;
  if (m_impl->boxOf(id, value)) {
    m_impl->tree.insert(value);
    m_impl->boxes.emplace(id.stub(), value);
  }
}

void SpatialIndex::remove(const OdDbObjectId& id) {
  if (m_impl->built) m_impl->remove(id.stub());
}

void SpatialIndex::query(const OdDbObjectId& blockId, const OdGeExtents2d& box, std::vector<OdDbObjectId>& result) {
  if (!m_impl->built) m_impl->build();
  Box query(Point(box.minPoint().x, box.minPoint().y), Point(box.maxPoint().x, box.maxPoint().y));
  OdDbStub* block = blockId.stub();
  m_impl->tree.query(bgi::intersects(query) && bgi::satisfies([block](const Value& v) { return v.second.block == block; }),
                     boost::make_function_output_iterator([&](const Value& v) { result.push_back(OdDbObjectId(v.second.entity)); }));
}

size_t SpatialIndex::size() const { return m_impl->boxes.size(); }

}  // namespace ryhost
