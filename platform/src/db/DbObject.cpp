#include "DbObject.h"

#include "DbDatabase.h"
#include "DbDictionary.h"
#include "DbSymbolTable.h"
#include "db/DbUndo.h"
#include "db/TagFiling.h"

ODRX_NO_CONS_DEFINE_MEMBERS(OdDbObjectReactor, OdRxObject)
ODDB_DEFINE_ABSTRACT_MEMBERS(OdDbObject, OdRxObject)

const OdDbClassSchema& OdDbObject::classSchema() {
  static const OdDbClassSchema schema{};
  return schema;
}

const OdDbObjectId OdDbObjectId::kNull;

bool OdDbObjectExtras::isEmpty() const {
  return persistentReactors.empty() && transientReactors.empty() && extensionDictionary.isNull() &&
         xdata.empty() && appData.empty() && unknown.empty();
}

// ---------------------------------------------------------------- ids

bool OdDbObjectId::isValid() const { return m_stub && m_stub->object; }
bool OdDbObjectId::isErased() const { return m_stub && m_stub->isErased(); }
OdDbHandle OdDbObjectId::handle() const { return m_stub ? OdDbHandle(m_stub->handle) : OdDbHandle(); }
OdDbDatabase* OdDbObjectId::database() const { return m_stub ? m_stub->database : nullptr; }

bool OdDbObjectId::operator<(const OdDbObjectId& other) const {
  if (!m_stub || !other.m_stub) return m_stub < other.m_stub;
  if (m_stub->database != other.m_stub->database) return m_stub->database < other.m_stub->database;
  return m_stub->handle < other.m_stub->handle;
}

OdRxClass* OdDbObjectId::objectClass() const {
  return m_stub && m_stub->object ? m_stub->object->isA() : nullptr;
}

OdResult OdDbObjectId::openObject(OdDbObjectPtr& object, OdDb::OpenMode mode, bool openErased) const {
  object.release();
  if (!m_stub) return eNullObjectId;
  OdDbObject* target = m_stub->object;
  if (!target) return (m_stub->flags & OdDbStub::kPermanentlyErased) ? ePermanentlyErased : eNullObjectPointer;
  if (m_stub->isErased() && !openErased) return eWasErased;
  switch (mode) {
    case OdDb::kForWrite:
      if (target->m_openMode == OdDb::kForWrite) return eWasOpenedForWrite;
      target->m_openMode = OdDb::kForWrite;
      break;
    case OdDb::kForRead:
    case OdDb::kForNotify:
    default:
      // Reading an object that is open for write sees the object being changed.
      if (target->m_openMode == OdDb::kNotOpen) target->m_openMode = OdDb::kForRead;
      break;
  }
  object = OdDbObjectPtr(target);
  return eOk;
}

OdDbObjectPtr OdDbObjectId::openObject(OdDb::OpenMode mode, bool openErased) const {
  OdDbObjectPtr object;
  openObject(object, mode, openErased);
  return object;
}

OdDbObjectPtr OdDbObjectId::safeOpenObject(OdDb::OpenMode mode, bool openErased) const {
  OdDbObjectPtr object;
  OdResult result = openObject(object, mode, openErased);
  if (result != eOk) throw OdError(result, handle().ascii());
  return object;
}

// ---------------------------------------------------------------- object

OdDbObject::OdDbObject() : m_openMode(OdDb::kForWrite), m_flags(kNew) {}

OdDbObject::~OdDbObject() {
  if (m_extras) {
    for (OdDbObjectReactor* reactor : std::vector<OdDbObjectReactor*>(m_extras->transientReactors)) {
      reactor->goodbye(this);
    }
  }
}

void OdDbObject::release() const {
  --m_refs;
  if (m_refs == 1 && m_stub && m_stub->object == this) {
    if (m_openMode != OdDb::kNotOpen) const_cast<OdDbObject*>(this)->close();
  } else if (m_refs == 0) {
    onFinalRelease();
  }
}

void OdDbObject::close() {
  const bool wasWritten = m_openMode == OdDb::kForWrite && (m_flags & kModified);
  m_openMode = OdDb::kNotOpen;
  if (wasWritten) {
    m_flags &= static_cast<OdUInt8>(~(kModified | kNew));
    notifyModified();
  }
}

void OdDbObject::notifyModified() {
  if (!m_stub) return;
  // Keep the object alive and readable while reactors look at it.
  OdDbObjectPtr self(this);
  m_openMode = OdDb::kForNotify;
  if (m_extras) {
    for (OdDbObjectReactor* reactor : std::vector<OdDbObjectReactor*>(m_extras->transientReactors)) {
      reactor->modified(this);
    }
    for (const OdDbObjectId& id : OdDbObjectIdArray(m_extras->persistentReactors)) {
      if (OdDbObjectPtr receiver = id.openObject(OdDb::kForNotify)) receiver->modified(this);
    }
  }
  database()->fireObjectModified(this);
  m_openMode = OdDb::kNotOpen;
  self.detach();
  --m_refs;  // balance without closing again
}

OdDbObjectId OdDbObject::objectId() const { return OdDbObjectId(m_stub); }
OdDbHandle OdDbObject::getDbHandle() const { return m_stub ? OdDbHandle(m_stub->handle) : OdDbHandle(); }
OdDbDatabase* OdDbObject::database() const { return m_stub ? m_stub->database : nullptr; }

void OdDbObject::setOwnerId(const OdDbObjectId& ownerId) {
  assertWriteEnabled();
  m_ownerId = ownerId;
}

bool OdDbObject::isReadEnabled() const { return !m_stub || m_openMode != OdDb::kNotOpen; }
bool OdDbObject::isWriteEnabled() const { return !m_stub || m_openMode == OdDb::kForWrite; }
bool OdDbObject::isErased() const { return m_stub && m_stub->isErased(); }

void OdDbObject::assertReadEnabled() const {
  if (m_stub && m_openMode == OdDb::kNotOpen) throw OdError(eNotOpenForRead);
}

void OdDbObject::assertWriteEnabled(bool autoUndo, bool recordModified) {
  if (!m_stub) return;  // not in a database yet: free to change
  if (m_openMode != OdDb::kForWrite) throw OdError(eNotOpenForWrite, getDbHandle().ascii());
  OdDbDatabase* db = database();
  if (autoUndo) db->undoController()->recordBeforeChange(this);
  if (recordModified && !(m_flags & kModified)) {
    m_flags |= kModified;
    if (m_extras) {
      for (OdDbObjectReactor* reactor : std::vector<OdDbObjectReactor*>(m_extras->transientReactors)) {
        reactor->openedForModify(this);
      }
    }
    db->fireObjectOpenedForModify(this);
  }
}

OdResult OdDbObject::upgradeOpen() {
  if (!m_stub) return eOk;
  if (m_openMode == OdDb::kNotOpen) return eNotOpenForRead;
  m_openMode = OdDb::kForWrite;
  return eOk;
}

OdResult OdDbObject::downgradeOpen() {
  if (!m_stub) return eOk;
  if (m_openMode != OdDb::kForWrite) return eNotOpenForWrite;
  if (m_flags & kModified) {
    m_flags &= static_cast<OdUInt8>(~kModified);
    notifyModified();
  }
  m_openMode = OdDb::kForRead;
  return eOk;
}

OdResult OdDbObject::erase(bool eraseIt) {
  if (!m_stub) return eNotInDatabase;
  if (m_stub->isErased() == eraseIt) return eraseIt ? eWasErased : eWasNotErased;
  assertWriteEnabled();
  OdResult result = subErase(eraseIt);
  if (result != eOk) return result;
  if (eraseIt) m_stub->flags |= OdDbStub::kErased;
  else m_stub->flags &= ~OdDbStub::kErased;
  if (m_extras) {
    for (OdDbObjectReactor* reactor : std::vector<OdDbObjectReactor*>(m_extras->transientReactors)) {
      reactor->erased(this, eraseIt);
    }
    for (const OdDbObjectId& id : OdDbObjectIdArray(m_extras->persistentReactors)) {
      if (OdDbObjectPtr receiver = id.openObject(OdDb::kForNotify, true)) receiver->erased(this, eraseIt);
    }
  }
  database()->fireObjectErased(this, eraseIt);
  return eOk;
}

OdDbObjectExtras& OdDbObject::extrasForWrite() {
  if (!m_extras) m_extras = std::make_unique<OdDbObjectExtras>();
  return *m_extras;
}

// ---------------------------------------------------------------- xdata

OdDxfTagList OdDbObject::xData(const OdString& regAppName) const {
  if (!m_extras) return {};
  if (regAppName.isEmpty()) return m_extras->xdata;
  OdDxfTagList result;
  bool inApp = false;
  for (const auto& tag : m_extras->xdata) {
    if (tag.code == 1001) inApp = tag.s.iCompare(regAppName) == 0;
    if (inApp) result.push_back(tag);
  }
  return result;
}

OdResult OdDbObject::setXData(const OdDxfTagList& xdata) {
  if (!xdata.empty() && xdata.front().code != 1001) return eInvalidInput;
  for (const auto& tag : xdata) {
    if (tag.code != 1001 && (tag.code < 1000 || tag.code > 1071)) return eInvalidInput;
    if (tag.code == 1001 && database() && database()->findRecord(OdDbNameTable::kRegApp, tag.s).isNull()) {
      return eRegappIdNotFound;
    }
  }
  assertWriteEnabled();
  // Application names are written as registered.
  OdDxfTagList given = xdata;
  if (OdDbDatabase* db = database()) {
    for (auto& tag : given) {
      if (tag.code != 1001) continue;
      OdDbObjectPtr app = db->findRecord(OdDbNameTable::kRegApp, tag.s).openObject();
      if (auto* record = dynamic_cast<OdDbSymbolTableRecord*>(app.get())) tag.s = record->getName();
    }
  }
  // Split the new data by application and replace each application's part.
  OdDxfTagList& current = extrasForWrite().xdata;
  size_t i = 0;
  while (i < given.size()) {
    size_t j = i + 1;
    while (j < given.size() && given[j].code != 1001) ++j;
    const OdString& app = given[i].s;
    OdDxfTagList kept;
    bool inApp = false;
    bool replaced = false;
    for (const auto& tag : current) {
      if (tag.code == 1001) {
        inApp = tag.s.iCompare(app) == 0;
        if (inApp && !replaced && j > i + 1) {
          kept.insert(kept.end(), given.begin() + static_cast<long>(i), given.begin() + static_cast<long>(j));
          replaced = true;
        }
      }
      if (!inApp) kept.push_back(tag);
    }
    if (!replaced && j > i + 1) kept.insert(kept.end(), given.begin() + static_cast<long>(i), given.begin() + static_cast<long>(j));
    current.swap(kept);
    i = j;
  }
  return eOk;
}

// ---------------------------------------------------------------- extension dictionary

OdDbObjectId OdDbObject::extensionDictionary() const {
  return m_extras ? m_extras->extensionDictionary : OdDbObjectId();
}

OdResult OdDbObject::createExtensionDictionary() {
  if (!m_stub) return eNotInDatabase;
  if (!extensionDictionary().isNull() && !extensionDictionary().isErased()) return eAlreadyInDb;
  assertWriteEnabled();
  OdSmartPtr<OdDbDictionary> dictionary = OdDbDictionary::createObject();
  dictionary->setTreatElementsAsHard(true);
  OdDbObjectId dictId = database()->addOdDbObject(dictionary.get(), objectId());
  dictionary->addPersistentReactor(objectId());
  extrasForWrite().extensionDictionary = dictId;
  return eOk;
}

OdResult OdDbObject::releaseExtensionDictionary() {
  OdDbObjectId dictId = extensionDictionary();
  if (dictId.isNull()) return eKeyNotFound;
  OdSmartPtr<OdDbDictionary> dictionary = OdDbDictionary::cast(dictId.openObject(OdDb::kForWrite).get());
  if (dictionary.isNull()) return eWasErased;
  if (dictionary->numEntries() != 0) return eContainerNotEmpty;
  assertWriteEnabled();
  dictionary->erase();
  extrasForWrite().extensionDictionary = OdDbObjectId();
  return eOk;
}

// ---------------------------------------------------------------- reactors

void OdDbObject::addReactor(OdDbObjectReactor* reactor) {
  auto& list = extrasForWrite().transientReactors;
  if (std::find(list.begin(), list.end(), reactor) == list.end()) list.push_back(reactor);
}

void OdDbObject::removeReactor(OdDbObjectReactor* reactor) {
  if (m_extras) std::erase(m_extras->transientReactors, reactor);
}

void OdDbObject::addPersistentReactor(const OdDbObjectId& reactorId) {
  if (hasPersistentReactor(reactorId)) return;
  assertWriteEnabled();
  extrasForWrite().persistentReactors.append(reactorId);
}

void OdDbObject::removePersistentReactor(const OdDbObjectId& reactorId) {
  if (!hasPersistentReactor(reactorId)) return;
  assertWriteEnabled();
  m_extras->persistentReactors.remove(reactorId);
}

bool OdDbObject::hasPersistentReactor(const OdDbObjectId& reactorId) const {
  return m_extras && m_extras->persistentReactors.contains(reactorId);
}

OdDbObjectIdArray OdDbObject::getPersistentReactors() const {
  return m_extras ? m_extras->persistentReactors : OdDbObjectIdArray();
}

// ---------------------------------------------------------------- filing

void OdDbObject::dwgOutFields(OdDbDwgFiler* filer) const {
  filer->wrSoftPointerId(m_ownerId);
  const OdDbObjectExtras* extras = m_extras.get();
  const bool hasExtras = extras && !extras->isEmpty();
  filer->wrBool(hasExtras);
  if (hasExtras) {
    filer->wrInt32(static_cast<OdInt32>(extras->persistentReactors.size()));
    for (const auto& id : extras->persistentReactors) filer->wrSoftPointerId(id);
    filer->wrHardOwnershipId(extras->extensionDictionary);
    odFileOutTags(filer, extras->xdata);
    odFileOutTags(filer, extras->appData);
    filer->wrInt32(static_cast<OdInt32>(extras->unknown.size()));
    for (const auto& u : extras->unknown) {
      filer->wrInt16(u.subclass);
      filer->wrInt16(u.afterField);
      odFileOutTag(filer, u.tag);
    }
  }
  OdDbSchemaIo::fileOutFields(this, filer);
}

OdResult OdDbObject::dwgInFields(OdDbDwgFiler* filer) {
  m_ownerId = filer->rdSoftPointerId();
  if (filer->rdBool()) {
    OdDbObjectExtras& extras = extrasForWrite();
    OdInt32 count = filer->rdInt32();
    extras.persistentReactors.clear();
    for (OdInt32 i = 0; i < count; ++i) extras.persistentReactors.append(filer->rdSoftPointerId());
    extras.extensionDictionary = filer->rdHardOwnershipId();
    extras.xdata = odFileInTags(filer);
    extras.appData = odFileInTags(filer);
    extras.unknown.clear();
    count = filer->rdInt32();
    for (OdInt32 i = 0; i < count; ++i) {
      OdDbObjectExtras::Unknown u;
      u.subclass = filer->rdInt16();
      u.afterField = filer->rdInt16();
      u.tag = odFileInTag(filer);
      extras.unknown.push_back(std::move(u));
    }
  } else if (m_extras) {
    // Transient reactors are not part of the filed state; keep them.
    auto reactors = std::move(m_extras->transientReactors);
    m_extras.reset();
    if (!reactors.empty()) extrasForWrite().transientReactors = std::move(reactors);
  }
  OdDbSchemaIo::fileInFields(this, filer);
  return eOk;
}

OdRxObjectPtr OdDbObject::clone() const {
  OdRxObjectPtr copy = isA()->create();
  OdDbObject* object = static_cast<OdDbObject*>(copy.get());
  if (!object) throw OdError(eNotApplicable, isA()->name());
  object->copyFrom(this);
  return copy;
}

void OdDbObject::copyFrom(const OdRxObject* source) {
  const auto* other = dynamic_cast<const OdDbObject*>(source);
  if (!other || other->isA() != isA()) throw OdError_NotThatKindOfClass(source ? source->isA() : nullptr, isA());
  assertWriteEnabled();
  OdDbMemoryFiler filer(other->database(), OdDbFiler::kCopyFiler);
  other->dwgOutFields(&filer);
  filer.rewind();
  dwgInFields(&filer);
  // A copy belongs to no one yet: it has no owner, reactors or extension dictionary.
  m_ownerId = OdDbObjectId();
  if (m_extras) {
    m_extras->persistentReactors.clear();
    m_extras->extensionDictionary = OdDbObjectId();
  }
}

OdString OdDbObject::dxfName() const { return isA()->dxfName(); }
