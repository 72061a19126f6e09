// The vertex lists of old-style polylines: appending, inserting, walking,
// erasing, filing and copying the VERTEX entities a polyline owns.
#pragma once

#include <vector>

#include "DbPolyline.h"

namespace OdDbVertexListOps {

// Moves vertices kept in memory into the owner's database once the owner is
// in one (with the end marker); does nothing otherwise.
void flush(OdDbEntity* owner, OdDbPolylineVertexList& list);
// Adds a vertex at the end, or before the index-th vertex not erased.
OdDbObjectId insert(OdDbEntity* owner, OdDbPolylineVertexList& list, unsigned int index, OdDbVertex* vertex);
OdDbObjectId append(OdDbEntity* owner, OdDbPolylineVertexList& list, OdDbVertex* vertex);
// The vertices that are not erased, in order, opened in the given mode (a
// vertex already open for write is used as it is).
std::vector<OdDbVertexPtr> open(const OdDbPolylineVertexList& list, OdDb::OpenMode mode = OdDb::kForRead);
unsigned int count(const OdDbPolylineVertexList& list);
OdDbObjectIteratorPtr iterator(const OdDbEntity* owner, OdDbPolylineVertexList& list);
// Erases or unerases the vertices and the end marker with their owner.
void erase(OdDbPolylineVertexList& list, bool erasing);
void fileOut(const OdDbPolylineVertexList& list, OdDbDwgFiler* filer);
void fileIn(OdDbPolylineVertexList& list, OdDbDwgFiler* filer);
// Copies of the source's vertices, kept in memory.
void copy(const OdDbPolylineVertexList& from, OdDbPolylineVertexList& to);

// Group 66 of every old-style polyline: "vertices follow", always written as
// 1 and not kept when read (the vertex list says what follows).
const OdDbFieldCodec& verticesFollowCodec();

}  // namespace OdDbVertexListOps
