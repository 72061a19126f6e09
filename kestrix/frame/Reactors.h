// The reactors and classes that live as long as the module: the
// command-end reactor on the editor, one block-change reactor per open
// drawing, and the entity class the interactive drags draw with.
#pragma once

#include "DbDatabase.h"
#include "DbEntity.h"
#include "OdEdCommandStack.h"

// Hears the end of every command (the spreadsheet-link tools act on it).
class KWIBCmdEndReactor : public OdEditorReactor {
  ODRX_DECLARE_MEMBERS(KWIBCmdEndReactor);

 public:
  void commandEnded(const OdString& globalName) override;
  bool isAttached() const { return m_attached; }
  void setAttached(bool on) { m_attached = on; }
  int commandsSeen() const { return m_commands; }

 private:
  bool m_attached = false;
  int m_commands = 0;
};

// Hears changes to block definitions of one drawing.
class KWIBBlockChangeReactor : public OdDbDatabaseReactor {
  ODRX_DECLARE_MEMBERS(KWIBBlockChangeReactor);

 public:
  void objectModified(const OdDbDatabase* db, const OdDbObject* object) override;
  void objectErased(const OdDbDatabase* db, const OdDbObject* object, bool erased) override;
  int blockChanges() const { return m_changes; }

 private:
  int m_changes = 0;
};

// A transient entity that interactive drags show while the user moves the
// cursor: a list of entities drawn together, never saved in a drawing.
class MqacDbDragComEntity : public OdDbEntity {
  ODRX_DECLARE_MEMBERS(MqacDbDragComEntity);
  ODDB_DECLARE_SCHEMA();

 public:
  void addEntity(OdDbEntity* entity) { m_entities.append(OdRxObjectPtr(entity)); }
  OdResult getGeomExtents(OdGeExtents3d& extents) const override;
  OdResult transformBy(const OdGeMatrix3d& xform) override;

 private:
  OdRxObjectPtrArray m_entities;
};

namespace kestrix {
// Registers the runtime classes of the two reactors (each once).
void registerReactorClasses();
void unregisterReactorClasses();
// The drag entity class is registered on first use and deleted at unload.
void registerDragEntityClass();
void unregisterDragEntityClass();

// The command-end reactor: made once and added to the editor.
KWIBCmdEndReactor* commandEndReactor(bool create = true);
void deleteCommandEndReactor();
}  // namespace kestrix
