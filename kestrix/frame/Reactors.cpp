#include "frame/Reactors.h"

#include "DbBlockTableRecord.h"

// The reactor classes are registered when the module initialises (not when
// the library loads), and removed again at unload.
ODRX_DEFINE_MEMBERS_IMPL(KWIBCmdEndReactor, OdEditorReactor, &KWIBCmdEndReactor::pseudoConstructor, L"", L"", (void)0)
ODRX_DEFINE_CREATE(KWIBCmdEndReactor)
ODRX_DEFINE_MEMBERS_IMPL(KWIBBlockChangeReactor, OdDbDatabaseReactor, &KWIBBlockChangeReactor::pseudoConstructor, L"", L"",
                         (void)0)
ODRX_DEFINE_CREATE(KWIBBlockChangeReactor)
ODRX_DEFINE_MEMBERS_IMPL(MqacDbDragComEntity, OdDbEntity, &MqacDbDragComEntity::pseudoConstructor,
                         L"MQMQACDBDRAGCOMENTITY", L"MqDragComEntity", s_desc->setSchema(&MqacDbDragComEntity::classSchema()))
ODRX_DEFINE_CREATE(MqacDbDragComEntity)

void KWIBCmdEndReactor::commandEnded(const OdString&) { ++m_commands; }

void KWIBBlockChangeReactor::objectModified(const OdDbDatabase*, const OdDbObject* object) {
  if (object->isKindOf(OdDbBlockTableRecord::desc())) ++m_changes;
}

void KWIBBlockChangeReactor::objectErased(const OdDbDatabase*, const OdDbObject* object, bool) {
  if (object->isKindOf(OdDbBlockTableRecord::desc())) ++m_changes;
}

const OdDbClassSchema& MqacDbDragComEntity::classSchema() {
  static const OdDbClassSchema schema{&OdDbEntity::classSchema(), {}};
  return schema;
}

OdResult MqacDbDragComEntity::getGeomExtents(OdGeExtents3d& extents) const {
  extents = OdGeExtents3d();
  for (const auto& piece : m_entities) {
    OdGeExtents3d part;
    if (static_cast<OdDbEntity*>(piece.get())->getGeomExtents(part) == eOk) extents.addExt(part);
  }
  return extents.isValidExtents() ? eOk : eInvalidExtents;
}

OdResult MqacDbDragComEntity::transformBy(const OdGeMatrix3d& xform) {
  for (const auto& piece : m_entities) {
    OdResult result = static_cast<OdDbEntity*>(piece.get())->transformBy(xform);
    if (result != eOk) return result;
  }
  return eOk;
}

namespace kestrix {

namespace {
KWIBCmdEndReactor* g_commandEnd = nullptr;
}  // namespace

void registerReactorClasses() {
  // rxInit registers each class only once; a second initialisation reuses them.
  OdEditorReactor::desc();
  OdDbDatabaseReactor::desc();
  KWIBCmdEndReactor::rxInit();
  KWIBBlockChangeReactor::rxInit();
}

void unregisterReactorClasses() {
  KWIBCmdEndReactor::rxUninit();
  KWIBBlockChangeReactor::rxUninit();
}

void registerDragEntityClass() { MqacDbDragComEntity::rxInit(); }
void unregisterDragEntityClass() { MqacDbDragComEntity::rxUninit(); }

KWIBCmdEndReactor* commandEndReactor(bool create) {
  if (!g_commandEnd && create) {
    g_commandEnd = new KWIBCmdEndReactor();
    g_commandEnd->addRef();
    if (OdEditor* editor = odedEditor()) {
      editor->addReactor(g_commandEnd);
      g_commandEnd->setAttached(true);
    }
  }
  return g_commandEnd;
}

void deleteCommandEndReactor() {
  if (!g_commandEnd) return;
  if (g_commandEnd->isAttached()) {
    if (OdEditor* editor = odedEditor()) editor->removeReactor(g_commandEnd);
  }
  g_commandEnd->release();
  g_commandEnd = nullptr;
}

}  // namespace kestrix
