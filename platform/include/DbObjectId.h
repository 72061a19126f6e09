// Identity of a database object: a small pointer to the database's record of
// the handle (the stub). Ids stay valid while their database lives, also for
// erased objects and for handles that no object was read for.
#pragma once

#include <functional>

#include "DbHandle.h"
#include "RxObject.h"

class OdDbDatabase;
class OdDbObject;
class OdDbStub;
using OdDbObjectPtr = OdSmartPtr<OdDbObject>;

class OdDbObjectId {
 public:
  OdDbObjectId() = default;
  explicit OdDbObjectId(OdDbStub* stub) : m_stub(stub) {}

  static const OdDbObjectId kNull;

  bool isNull() const { return m_stub == nullptr; }
  void setNull() { m_stub = nullptr; }
  // Not null and an object was read or created for the handle.
  bool isValid() const;
  bool isErased() const;
  bool isEffectivelyErased() const { return isErased(); }
  OdDbHandle handle() const;
  OdDbDatabase* database() const;
  OdDbStub* stub() const { return m_stub; }

  // Opens the object. Fails (null, or the result code) when the id is null,
  // when no object exists, when the object is erased and openErased is false,
  // or when the open mode conflicts with the object's current state.
  OdDbObjectPtr openObject(OdDb::OpenMode mode = OdDb::kForRead, bool openErased = false) const;
  OdResult openObject(OdDbObjectPtr& object, OdDb::OpenMode mode = OdDb::kForRead, bool openErased = false) const;
  // Like openObject, but throws OdError with the reason instead of returning null.
  OdDbObjectPtr safeOpenObject(OdDb::OpenMode mode = OdDb::kForRead, bool openErased = false) const;
  // The class of the object, without opening it (null when there is none).
  OdRxClass* objectClass() const;

  bool operator==(const OdDbObjectId& other) const { return m_stub == other.m_stub; }
  bool operator!=(const OdDbObjectId& other) const { return m_stub != other.m_stub; }
  // Ordered by handle, so that sorted ids come out in a stable order.
  bool operator<(const OdDbObjectId& other) const;
  explicit operator bool() const { return m_stub != nullptr; }

 private:
  OdDbStub* m_stub = nullptr;
};

using OdDbObjectIdArray = OdArray<OdDbObjectId>;

// Distinct names for the kinds of references, as the filers distinguish them.
using OdDbHardOwnershipId = OdDbObjectId;
using OdDbSoftOwnershipId = OdDbObjectId;
using OdDbHardPointerId = OdDbObjectId;
using OdDbSoftPointerId = OdDbObjectId;

template <>
struct std::hash<OdDbObjectId> {
  size_t operator()(const OdDbObjectId& id) const noexcept { return std::hash<const void*>()(id.stub()); }
};
