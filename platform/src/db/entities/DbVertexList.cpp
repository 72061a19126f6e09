#include "DbVertexList.h"

#include "DbBlockReference.h"
#include "DbDatabase.h"

namespace OdDbVertexListOps {

namespace {

// Notes the owner's change for undo when it can be changed; a flush of a
// polyline opened for read still has to happen.
void touch(OdDbEntity* owner) {
  if (owner->isWriteEnabled()) owner->assertWriteEnabled();
}

OdDbObjectId addToDatabase(OdDbEntity* owner, OdDbPolylineVertexList& list, OdDbVertex* vertex) {
  OdDbDatabase* db = owner->database();
  if (vertex->layerId().isNull()) vertex->setPropertiesFrom(owner);
  OdDbObjectId id = db->addOdDbObject(vertex, owner->objectId());
  if (list.sequenceEnd.isNull()) {
    OdSmartPtr<OdDbSequenceEnd> end = OdDbSequenceEnd::createObject();
    end->setPropertiesFrom(owner);
    list.sequenceEnd = db->addOdDbObject(end.get(), owner->objectId());
  }
  return id;
}

}  // namespace

void flush(OdDbEntity* owner, OdDbPolylineVertexList& list) {
  if (list.pending.empty() || !owner->database()) return;
  touch(owner);
  std::vector<OdDbVertexPtr> pending;
  pending.swap(list.pending);
  for (const OdDbVertexPtr& vertex : pending) list.ids.append(addToDatabase(owner, list, vertex.get()));
}

OdDbObjectId insert(OdDbEntity* owner, OdDbPolylineVertexList& list, unsigned int index, OdDbVertex* vertex) {
  if (!vertex) throw OdError(eNullEntityPointer);
  if (vertex->isDBRO()) throw OdError(eAlreadyInDb);
  if (!owner->database()) {
    owner->assertWriteEnabled();
    if (vertex->layerId().isNull() && !owner->layerId().isNull()) vertex->setPropertiesFrom(owner);
    const size_t at = std::min<size_t>(index, list.pending.size());
    list.pending.insert(list.pending.begin() + static_cast<std::ptrdiff_t>(at), OdDbVertexPtr(vertex));
    return OdDbObjectId();
  }
  owner->assertWriteEnabled();
  flush(owner, list);
  // The position of the index-th vertex that is not erased.
  size_t at = 0;
  for (unsigned int seen = 0; at < list.ids.size(); ++at) {
    if (list.ids[at].isErased()) continue;
    if (seen++ == index) break;
  }
  OdDbObjectId id = addToDatabase(owner, list, vertex);
  list.ids.insertAt(static_cast<unsigned int>(at), id);
  return id;
}

OdDbObjectId append(OdDbEntity* owner, OdDbPolylineVertexList& list, OdDbVertex* vertex) {
  return insert(owner, list, static_cast<unsigned int>(-1), vertex);
}

std::vector<OdDbVertexPtr> open(const OdDbPolylineVertexList& list, OdDb::OpenMode mode) {
  std::vector<OdDbVertexPtr> vertices;
  for (const OdDbObjectId& id : list.ids) {
    OdDbObjectPtr object;
    OdResult status = id.openObject(object, mode);
    // A vertex the caller holds open for write is read (and changed) as it is.
    if (status == eWasOpenedForWrite) status = id.openObject(object, OdDb::kForRead);
    if (status != eOk) continue;
    OdDbVertexPtr vertex = OdDbVertex::cast(object.get());
    if (vertex.get()) vertices.push_back(vertex);
  }
  vertices.insert(vertices.end(), list.pending.begin(), list.pending.end());
  return vertices;
}

unsigned int count(const OdDbPolylineVertexList& list) {
  unsigned int n = static_cast<unsigned int>(list.pending.size());
  for (const OdDbObjectId& id : list.ids) n += id.isErased() ? 0 : 1;
  return n;
}

OdDbObjectIteratorPtr iterator(const OdDbEntity* owner, OdDbPolylineVertexList& list) {
  flush(const_cast<OdDbEntity*>(owner), list);
  OdDbObjectIteratorPtr it(new OdDbObjectIterator(list.ids, true));
  it->start();
  return it;
}

void erase(OdDbPolylineVertexList& list, bool erasing) {
  auto follow = [erasing](const OdDbObjectId& id) {
    OdDbObjectPtr sub = id.openObject(OdDb::kForWrite, true);
    if (sub.get() && sub->isErased() != erasing) sub->erase(erasing);
  };
  for (const OdDbObjectId& id : list.ids) follow(id);
  follow(list.sequenceEnd);
}

void fileOut(const OdDbPolylineVertexList& list, OdDbDwgFiler* filer) {
  filer->wrInt32(static_cast<OdInt32>(list.ids.size()));
  for (const OdDbObjectId& id : list.ids) filer->wrHardOwnershipId(id);
  filer->wrHardOwnershipId(list.sequenceEnd);
}

void fileIn(OdDbPolylineVertexList& list, OdDbDwgFiler* filer) {
  list.ids.clear();
  for (OdInt32 n = filer->rdInt32(); n > 0; --n) list.ids.append(filer->rdHardOwnershipId());
  list.sequenceEnd = filer->rdHardOwnershipId();
}

void copy(const OdDbPolylineVertexList& from, OdDbPolylineVertexList& to) {
  std::vector<OdDbVertexPtr> copies;
  for (const OdDbVertexPtr& vertex : open(from)) {
    OdDbVertexPtr duplicate = OdDbVertex::cast(vertex->clone().get());
    if (duplicate.get()) copies.push_back(duplicate);
  }
  to.ids.clear();
  to.sequenceEnd = OdDbObjectId();
  to.pending = std::move(copies);
}

const OdDbFieldCodec& verticesFollowCodec() {
  struct Codec : OdDbFieldCodec {
    std::vector<int> codes() const override { return {66}; }
    void toTags(const OdDbObject*, OdDxfTagList& out, OdDbTagContext&) const override {
      out.push_back(OdDxfTag::integer(66, 1));
    }
    bool fromTag(OdDbObject*, const OdDxfTag&, OdDbTagContext&) const override { return true; }
    void fileOut(const OdDbObject*, OdDbDwgFiler*) const override {}
    void fileIn(OdDbObject*, OdDbDwgFiler*) const override {}
    bool isEqual(const OdDbObject*, const OdDbObject*) const override { return true; }
  };
  static const Codec codec;
  return codec;
}

}  // namespace OdDbVertexListOps
