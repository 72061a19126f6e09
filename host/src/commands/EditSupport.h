// What the drawing and editing commands share: prompts that leave the
// command on Esc, the user coordinate system, appending to a space,
// selection, and copies of entities placed by a transform (with their
// attributes, vertices and dimension pictures), which COPY, EXPLODE and
// -BLOCK build on.
//
// The commands ask everything first and change the drawing at the end, so
// that Esc at any prompt leaves the drawing as it was.
#pragma once

#include <vector>

#include "DbBlockTableRecord.h"
#include "DbEntity.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePoint2d.h"
#include "OdString.h"
#include "commands/CommandSupport.h"
#include "commands/Prompts.h"

class OdDbDimension;

namespace ryhost::edit {

// ---------------------------------------------------------------- prompts

// The prompts, answered as Answer values (see commands/Prompts.h).
using prompt::Answer;
using prompt::askAngle;
using prompt::askDirection;
using prompt::askDistance;
using prompt::askKeyword;
using prompt::askPoint;
using prompt::askReal;
using prompt::askText;
using prompt::askYesNo;
using prompt::say;
// An angle that may be negative (counter-clockwise positive unless ANGDIR
// says otherwise), typed or given by a point seen from base.
Answer askSignedAngle(const OdString& prompt, double& value, const OdGePoint3d* base);
// Numbers, angles and directions as the drawing's units show them.
using cmdsupport::formatAngle;
using cmdsupport::formatDirection;
using cmdsupport::formatDistance;
OdString plural(int count, const wchar_t* one, const wchar_t* many);

// ---------------------------------------------------------------- coordinates

// The user coordinate system to world, and back.
OdGeMatrix3d ucsMatrix();
OdGePoint3d toWorld(const OdGePoint3d& ucsPoint);
OdGePoint3d toUcs(const OdGePoint3d& worldPoint);
// The user z axis in world coordinates.
OdGeVector3d ucsNormal();
// Entities are built as if the user system were the world one and then
// placed into the user system by this.
void placeInUcs(OdDbEntity* entity);

inline OdGePoint2d flat(const OdGePoint3d& p) { return OdGePoint2d(p.x, p.y); }
double angleOf(const OdGePoint2d& from, const OdGePoint2d& to);
// In [0, 2π).
double normalizedAngle(double angle);
// The centre of the circle through three points; false when they lie on one line.
bool circleThrough(const OdGePoint2d& a, const OdGePoint2d& b, const OdGePoint2d& c, OdGePoint2d& center);

// ---------------------------------------------------------------- the drawing

OdDbDatabase* database();
OdDbObjectId currentSpace();
// Appends an entity to a block (the current space by default). An entity
// without a layer takes the drawing's current properties; vertices kept in
// memory join the drawing at once.
OdDbObjectId appendEntity(OdDbEntity* entity, const OdDbObjectId& owner = OdDbObjectId());
// The blocks and layouts named by the drawing's block table, by name.
OdDbObjectId findBlock(const OdString& name);
// A new anonymous block named by the prefix and a number not in use ("*D7").
OdDbObjectId newAnonymousBlock(const OdString& prefix);

// ---------------------------------------------------------------- selection

// "Select objects:" (or the objects selected before the command).
using cmdsupport::selectObjects;
// One object picked with its pick point (user coordinates); false on Enter.
bool pickObject(const OdString& prompt, OdDbObjectId& id, OdGePoint3d& pick);

// ---------------------------------------------------------------- placed copies

// A copy of an entity placed by a transform, not yet in the drawing, with
// what must join the drawing after it.
struct Piece {
  OdDbEntityPtr entity;
  // Block references: copies of their attributes, placed the same way.
  std::vector<OdDbEntityPtr> attributes;
  // Dimensions: the entities of their own picture block.
  std::vector<Piece> picture;
  bool hasPicture = false;
  // Took properties from an exploded parent (see inheritFrom).
  bool inherited = false;
};

// Builds the copy. A block reference copy gets copies of the attributes
// (never the source's own), a dimension copy a picture block of its own,
// and with allowEllipses circles and arcs that the transform stretches
// become ellipses. Fails with the transform's refusal (for instance
// eCannotScaleNonUniformly).
OdResult makePiece(const OdDbEntity* source, const OdGeMatrix3d& xform, Piece& piece,
                   bool allowEllipses = false);
// Adds a piece (and what belongs to it) to a block; returns the entity's id.
OdDbObjectId addPiece(Piece& piece, const OdDbObjectId& owner);
// Where a dimension's picture block is placed (block to world).
OdGeMatrix3d dimensionPictureTransform(const OdDbDimension* dimension);
// Pieces of a block placed by an exploded block reference or dimension take
// the parent's layer when on layer "0", and its colour, linetype and
// lineweight where they are by block.
void inheritFrom(Piece& piece, const OdDbEntity* parent);

}  // namespace ryhost::edit
