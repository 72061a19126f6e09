// Base of every persistent object of a drawing: identity, ownership, open
// modes, erasure, reactors, extended data and extension dictionaries.
#pragma once

#include <memory>

#include "DbFiler.h"
#include "DbSchema.h"

class OdDbObject;
class OdDbDictionary;
using OdDbDictionaryPtr = OdSmartPtr<OdDbDictionary>;

// Transient reactor on one object (not saved with the drawing).
class OdDbObjectReactor : public OdRxObject {
  ODRX_DECLARE_MEMBERS(OdDbObjectReactor);

 public:
  virtual void openedForModify(const OdDbObject* object) {}
  virtual void modified(const OdDbObject* object) {}
  virtual void erased(const OdDbObject* object, bool erasing = true) {}
  virtual void copied(const OdDbObject* object, const OdDbObject* newObject) {}
  virtual void goodbye(const OdDbObject* object) {}
};

// State that most objects do not have, kept out of line to keep objects small.
struct OdDbObjectExtras {
  OdDbObjectIdArray persistentReactors;
  std::vector<OdDbObjectReactor*> transientReactors;
  OdDbObjectId extensionDictionary;
  OdDxfTagList xdata;    // 1001 application groups with their 1000..1071 data
  OdDxfTagList appData;  // 102 {NAME … } groups other than reactors and the extension dictionary
  // Tags the field table does not know, with the place they stood: the index
  // of the subclass and of the field after which they were read (-1 = right
  // after the subclass marker).
  struct Unknown {
    OdInt16 subclass;
    OdInt16 afterField;
    OdDxfTag tag;
    bool operator==(const Unknown&) const = default;
  };
  std::vector<Unknown> unknown;

  bool isEmpty() const;
};

class OdDbObject : public OdRxObject {
  ODRX_DECLARE_MEMBERS(OdDbObject);
  ODDB_DECLARE_SCHEMA();

 public:
  OdDbObject();
  ~OdDbObject() override;
  OdDbObject(const OdDbObject&) = delete;
  OdDbObject& operator=(const OdDbObject&) = delete;

  void release() const override;

  // Identity.
  OdDbObjectId objectId() const;
  OdDbObjectId id() const { return objectId(); }
  OdDbHandle getDbHandle() const;
  OdDbHandle handle() const { return getDbHandle(); }
  OdDbDatabase* database() const;
  bool isDBRO() const { return m_stub != nullptr; }
  OdDbObjectId ownerId() const { return m_ownerId; }
  virtual void setOwnerId(const OdDbObjectId& ownerId);
  bool isAProxy() const { return false; }

  // Open state. Objects in a database are opened through their id and closed
  // when the last smart pointer to them goes.
  OdDb::OpenMode openMode() const { return static_cast<OdDb::OpenMode>(m_openMode); }
  bool isReadEnabled() const;
  bool isWriteEnabled() const;
  bool isNotifyEnabled() const { return m_openMode == OdDb::kForNotify; }
  bool isModified() const { return m_flags & kModified; }
  bool isNewObject() const { return m_flags & kNew; }
  bool isErased() const;
  // Throws eNotOpenForWrite unless open for write; records the object's state
  // for undo before its first change in the current undo record.
  void assertWriteEnabled(bool autoUndo = true, bool recordModified = true);
  void assertReadEnabled() const;
  void assertNotifyEnabled() const {}
  OdResult upgradeOpen();
  OdResult downgradeOpen();
  // Closes the object now (normally done by the smart pointer).
  void close();

  // Erasure: the object stays in the database, marked erased, and can be
  // unerased (also by undo).
  OdResult erase(bool eraseIt = true);

  // Extended data: the groups 1001 (application name) and 1000..1071 that
  // follow it. With an application name, only that application's groups.
  OdDxfTagList xData(const OdString& regAppName = OdString()) const;
  // Replaces the data of every application named in the list (an application
  // with no groups after its 1001 is removed). Names must be registered.
  OdResult setXData(const OdDxfTagList& xdata);

  // Extension dictionary (created on demand, owned by the object).
  OdDbObjectId extensionDictionary() const;
  OdResult createExtensionDictionary();
  OdResult releaseExtensionDictionary();

  // Reactors.
  void addReactor(OdDbObjectReactor* reactor);
  void removeReactor(OdDbObjectReactor* reactor);
  void addPersistentReactor(const OdDbObjectId& reactorId);
  void removePersistentReactor(const OdDbObjectId& reactorId);
  bool hasPersistentReactor(const OdDbObjectId& reactorId) const;
  OdDbObjectIdArray getPersistentReactors() const;
  // Called on the objects that hold a persistent reactor on another object.
  virtual void modified(const OdDbObject* object) {}
  virtual void erased(const OdDbObject* object, bool erasing = true) {}

  // Filing. The default files the object header and every field of the class's table.
  virtual void dwgOutFields(OdDbDwgFiler* filer) const;
  virtual OdResult dwgInFields(OdDbDwgFiler* filer);

  // A new object of the same class with the same field values, not in a database.
  virtual OdRxObjectPtr clone() const;
  // Copies field values from an object of the same class.
  virtual void copyFrom(const OdRxObject* source);

  // DXF name used when the object is written ("LINE"); some classes share one.
  virtual OdString dxfName() const;
  // Called after the object is added to a database, and when it was read.
  virtual void subSetDatabaseDefaults(OdDbDatabase* database) {}

  // Out-of-line state (null when the object has none).
  OdDbObjectExtras* extras() const { return m_extras.get(); }
  OdDbObjectExtras& extrasForWrite();

  // Internal to the platform: attachment to the database's stub.
  OdDbStub* stub() const { return m_stub; }
  void attachStub(OdDbStub* stub) { m_stub = stub; }
  void setOpenModeInternal(OdDb::OpenMode mode) { m_openMode = static_cast<OdInt8>(mode); }
  void setModifiedInternal(bool on) { on ? m_flags |= kModified : m_flags &= ~kModified; }
  void setNewInternal(bool on) { on ? m_flags |= kNew : m_flags &= ~kNew; }
  OdUInt32 undoSerial() const { return m_undoSerial; }
  void setUndoSerial(OdUInt32 serial) { m_undoSerial = serial; }

 protected:
  // Hook for classes that must react to their own erasure (e.g. owners of subentities).
  virtual OdResult subErase(bool erasing) { return eOk; }
  // Notifies the reactors of a change; called when an object opened for write closes.
  void notifyModified();

 private:
  enum : OdUInt8 { kModified = 1, kNew = 2, kNotifying = 4 };
  OdInt8 m_openMode = OdDb::kNotOpen;
  OdUInt8 m_flags = 0;
  OdUInt8 m_readers = 0;
  OdUInt32 m_undoSerial = 0;
  OdDbStub* m_stub = nullptr;
  OdDbObjectId m_ownerId;
  std::unique_ptr<OdDbObjectExtras> m_extras;

  friend class OdDbObjectId;
  friend class OdDbDatabase;
};

// Defines the run-time class of a persistent class and ties it to its field
// table. The class is registered when the library is loaded, so that readers
// find it by its DXF name.
#define ODDB_DEFINE_MEMBERS(ClassName, ParentClass, DxfName)                                                  \
  ODRX_DEFINE_MEMBERS_IMPL(ClassName, ParentClass, &ClassName::pseudoConstructor, DxfName, L"",              \
                           s_desc->setSchema(&ClassName::classSchema()))                                      \
  ODRX_DEFINE_CREATE(ClassName)                                                                               \
  [[maybe_unused]] static const bool s_registered##ClassName = (ClassName::rxInit(), true);

#define ODDB_DEFINE_ABSTRACT_MEMBERS(ClassName, ParentClass)                                       \
  ODRX_DEFINE_MEMBERS_IMPL(ClassName, ParentClass, nullptr, L"", L"",                               \
                           s_desc->setSchema(&ClassName::classSchema()))                           \
  OdSmartPtr<ClassName> ClassName::createObject() {                                                \
    throw OdError(eNotApplicable, OdString(L"abstract class " L## #ClassName));                     \
  }                                                                                                \
  OdRxObjectPtr ClassName::pseudoConstructor() { return OdRxObjectPtr(); }
