// EXPLODE: block references become their block's entities placed by the
// reference (one set per row and column of a multiple insert), dimensions
// the entities of their picture, polylines their lines and arcs. The pieces
// take the original's place in its space and the original goes.
//
// Pieces of a block on layer "0" take the reference's layer, and by-block
// colour, linetype and lineweight the reference's. The reference's own
// attributes go with it; the block's attribute definitions come out as
// definitions. A stretched (non-uniformly scaled) reference explodes when
// every piece can follow the stretch: circles and arcs become ellipses,
// anything that cannot be stretched keeps the reference whole.
#include <cmath>
#include <vector>

#include "DbBlockReference.h"
#include "DbDimension.h"
#include "DbPolyline.h"
#include "Ge/GeOcs.h"
#include "commands/CommandRegistry.h"
#include "commands/EditSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"

namespace ryhost {

namespace {

using namespace edit;

// The transforms that place a reference's block: one, or one per cell of an array.
std::vector<OdGeMatrix3d> placementsOf(const OdDbBlockReference* reference) {
  const OdGeMatrix3d placement = reference->blockTransform();
  auto* array = dynamic_cast<const OdDbMInsertBlock*>(reference);
  if (!array) return {placement};
  const double rotation = array->rotation();
  const OdGeVector3d normal = array->normal();
  const OdGeVector3d columnStep =
      odgeOcsToWcs(OdGeVector3d(std::cos(rotation), std::sin(rotation), 0), normal) * array->columnSpacing();
  const OdGeVector3d rowStep =
      odgeOcsToWcs(OdGeVector3d(-std::sin(rotation), std::cos(rotation), 0), normal) * array->rowSpacing();
  std::vector<OdGeMatrix3d> placements;
  for (int row = 0; row < std::max<int>(1, array->rows()); ++row) {
    for (int column = 0; column < std::max<int>(1, array->columns()); ++column) {
      placements.push_back(OdGeMatrix3d::translation(columnStep * column + rowStep * row) * placement);
    }
  }
  return placements;
}

// Copies of a block's entities placed by each transform, with the parent's properties where they follow it.
bool blockPieces(const OdDbObjectId& blockId, const std::vector<OdGeMatrix3d>& placements,
                 const OdDbEntity* parent, std::vector<Piece>& pieces) {
  OdDbBlockTableRecordPtr block = OdDbBlockTableRecord::cast(blockId.openObject().get());
  if (block.isNull()) return false;
  for (const OdGeMatrix3d& placement : placements) {
    for (const OdDbObjectId& id : block->entityIds()) {
      OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
      if (entity.isNull()) continue;
      Piece piece;
      if (makePiece(entity.get(), placement, piece, true) != eOk) return false;
      inheritFrom(piece, parent);
      pieces.push_back(std::move(piece));
    }
  }
  return true;
}

bool referencePieces(const OdDbBlockReference* reference, std::vector<Piece>& pieces) {
  OdDbBlockTableRecordPtr block =
      OdDbBlockTableRecord::cast(reference->blockTableRecord().openObject().get());
  if (block.isNull() || !block->explodable() || block->isFromExternalReference() || block->isLayout())
    return false;
  return blockPieces(block->objectId(), placementsOf(reference), reference, pieces);
}

bool hasWidth(const OdDbEntity* entity) {
  if (auto* polyline = dynamic_cast<const OdDbPolyline*>(entity)) {
    for (unsigned int i = 0; i < polyline->numVerts(); ++i) {
      double start = 0, end = 0;
      polyline->getWidthsAt(i, start, end);
      if (start != 0 || end != 0) return true;
    }
    return false;
  }
  auto* polyline = dynamic_cast<const OdDb2dPolyline*>(entity);
  if (!polyline) return false;
  for (OdDbObjectIteratorPtr it = polyline->vertexIterator(); !it->done(); it->step()) {
    OdSmartPtr<OdDb2dVertex> vertex = OdDb2dVertex::cast(it->entity().get());
    if (!vertex.isNull() && (vertex->startWidth() != 0 || vertex->endWidth() != 0)) return true;
  }
  return false;
}

// The pieces an entity explodes into; false when it cannot be exploded.
bool explodeOne(const OdDbEntity* entity, std::vector<Piece>& pieces, bool& widthLost) {
  if (auto* reference = dynamic_cast<const OdDbBlockReference*>(entity))
    return referencePieces(reference, pieces);
  if (auto* dimension = dynamic_cast<const OdDbDimension*>(entity)) {
    if (dimension->dimBlockId().isNull()) return false;
    return blockPieces(dimension->dimBlockId(), {dimensionPictureTransform(dimension)}, dimension, pieces);
  }
  const bool polyline = entity->isKindOf(OdDbPolyline::desc()) || entity->isKindOf(OdDb2dPolyline::desc()) ||
                        entity->isKindOf(OdDb3dPolyline::desc());
  if (!polyline) return false;
  OdRxObjectPtrArray parts;
  if (entity->explode(parts) != eOk) return false;
  for (const OdRxObjectPtr& part : parts) {
    Piece piece;
    piece.entity = OdDbEntity::cast(part.get());
    if (!piece.entity.isNull()) pieces.push_back(std::move(piece));
  }
  widthLost = widthLost || hasWidth(entity);
  return true;
}

void explodeCommand() {
  const std::vector<OdDbObjectId> ids = selectObjects(nullptr, true);
  if (ids.empty()) return;
  struct Exploded {
    OdDbObjectId source;
    std::vector<Piece> pieces;
  };
  std::vector<Exploded> exploded;
  int refused = 0;
  bool widthLost = false;
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
    if (entity.isNull()) continue;
    Exploded result{id, {}};
    if (explodeOne(entity.get(), result.pieces, widthLost))
      exploded.push_back(std::move(result));
    else
      ++refused;
  }
  // Everything that can be exploded is known: the drawing changes from here on.
  for (Exploded& result : exploded) {
    OdDbEntityPtr source = OdDbEntity::cast(result.source.openObject(OdDb::kForWrite).get());
    const OdDbObjectId owner = source->ownerId();
    source->erase();
    source.release();
    for (Piece& piece : result.pieces) addPiece(piece, owner);
  }
  if (widthLost) say(L"\nExploding this polyline has lost width information.");
  if (refused > 0) say(L"\n" + plural(refused, L"object", L"objects") + L" could not be exploded.");
}

}  // namespace

void registerExplodeCommands(CommandStack& stack) {
  stack.addCommand(L"RYAD", L"EXPLODE", L"EXPLODE", OdEdCommand::kUsePickSet, explodeCommand);
}

RYAD_HOST_COMMANDS(registerExplodeCommands);

}  // namespace ryhost
