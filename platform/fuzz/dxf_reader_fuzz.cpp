// Fuzz target of the DXF reader and of what a user does once a drawing is
// open: any input either reads or is refused with OdError; what reads is then
// regenerated (the extents of every entity of every layout), searched with a
// window and a pick, listed (every entity's groups), exploded, and written and
// read again. Anything else (a crash, a hang, another exception) is a fault.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DbEntity.h"
#include "DbSchema.h"
#include "DbSymbolTable.h"
#include "DbTagSupport.h"
#include "DxfFile.h"

namespace {

void workOn(OdDbDatabase* db) {
  OdDbObjectPtr tableObject = db->getBlockTableId().openObject();
  auto* blocks = dynamic_cast<OdDbSymbolTable*>(tableObject.get());
  if (!blocks) return;
  // Groups of an entity as a listing shows them, names resolved as in a file.
  OdDbDatabaseTagContext ctx(db);
  const OdGeExtents3d window(OdGePoint3d(-100, -100, -100), OdGePoint3d(100, 100, 100));
  for (const OdDbObjectId& blockId : blocks->recordIds()) {
    OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::cast(blockId.openObject().get());
    if (block.isNull() || !block->isLayout()) continue;
    for (const OdDbObjectId& id : block->entityIds()) {
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      if (entity.isNull()) continue;
      // Regeneration and a window selection: the extents, and whether they fall in the window.
      OdGeExtents3d extents;
      if (entity->getGeomExtents(extents) == eOk && extents.isValidExtents()) {
        volatile bool inside = window.contains(extents);
        (void)inside;
      }
      // A pick near the origin.
      volatile double distance = entity->distanceTo(OdGePoint3d(1, 1, 0));
      (void)distance;
      // A listing.
      OdDxfTagList groups;
      OdDbSchemaIo::writeFields(entity.get(), groups, ctx, true);
      // Exploding.
      OdRxObjectPtrArray pieces;
      entity->explode(pieces);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    OdDbDatabasePtr db = odDxfReadBuffer(std::string_view(reinterpret_cast<const char*>(data), size));
    workOn(db.get());
    std::string written = odDxfWriteBuffer(db.get(), odDxfSaveVersion(db.get()));
    odDxfReadBuffer(written);
  } catch (const OdError&) {
  }
  return 0;
}
