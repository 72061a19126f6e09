// Entity-data lists inside the host: the groups of an object as tags (the
// form the selection filters test) and the conversions between tags and
// result-buffer lists that the entity and table functions share.
//
// Groups that name objects carry entity names, as in the lists: -1 (the
// object itself), -2 (a block's first entity), 330 (owner) and every pointer
// group 320..369 and 390..399. In tags such a group has type kHandle and its
// i holds the object's stub address, which is word [0] of its entity name
// (word [1] is the object's database); nameTagId() turns it into an id.
// Group 5 (and 105, 1005) stays a handle: type kHandle, i = the handle value.
// Layer, linetype, text style, block and dimension style groups are names.
#pragma once

#include "DbObject.h"
#include "DxfTag.h"
#include "rytypes.h"

namespace ryhost {

// ERRNO values set by the entity-list and table functions (the classic numbering):
enum ListErrno : int {
  kErrnoInvalidSymbolName = 1,     // rydbRegApp or a new table record with an invalid name
  kErrnoInvalidName = 2,           // an entity name that names nothing
  kErrnoEndOfEntities = 8,         // rydbEntNext after the last entity
  kErrnoNoLastEntity = 10,         // rydbEntLast on an empty space
  kErrnoInvalidHandle = 13,        // rydbHandEnt with text that is no handle of a live object
  kErrnoBadTransform = 15,         // rydbWcs2Ecs / rydbEcs2Wcs without a point or normal
  kErrnoDeletedEntity = 17,        // rydbEntGet / rydbEntUpd of an erased entity
  kErrnoBadTableName = 18,         // a table name other than LAYER, LTYPE, VIEW, STYLE, BLOCK, UCS, APPID, DIMSTYLE, VPORT
  kErrnoBadTableArgument = 19,     // a null record name
  kErrnoChangeType = 24,           // rydbEntMod with another group 0
  kErrnoBadLayer = 25,             // a layer name that cannot be a record name
  kErrnoBadLinetype = 26,          // a linetype that does not exist
  kErrnoBadTextStyle = 28,         // a text style that does not exist
  kErrnoBadField = 30,             // a group whose value is not of the group's type, or a result type in a list
  kErrnoModifyDeleted = 31,        // rydbEntMod of an erased entity
  kErrnoModifySeqend = 32,         // rydbEntMod of an end marker
  kErrnoChangeHandle = 33,         // rydbEntMod with another group 5
  kErrnoLockedLayer = 35,          // rydbEntMod / rydbEntDel of an entity on a locked layer
  kErrnoBadEntityType = 36,        // rydbEntMake without group 0 or with a type it cannot make
  kErrnoBadComplex = 37,           // ATTRIB, VERTEX or SEQEND out of sequence (the pending entity is dropped)
  kErrnoIncompleteInBlock = 38,    // ENDBLK while a complex entity is still open
  kErrnoBadBlockName = 39,         // INSERT of a block that does not exist, BLOCK of a name in use
  kErrnoBadNormal = 42,            // a zero normal (210)
  kErrnoMissingBlockName = 43,     // BLOCK without group 2
  kErrnoBadBlockDefinition = 46,   // ENDBLK without BLOCK, BLOCK inside BLOCK
  kErrnoMissingField = 47,         // a mandatory group is missing (LINE without 11…)
  kErrnoBadXdataType = 48,         // a group other than 1000..1071 in the extended data
  kErrnoXdataNesting = 49,         // unbalanced 1002 braces
  kErrnoXdataAppPlace = 50,        // extended data before a 1001 group, or an application not registered
  kErrnoViewport = 54,             // rydbEntMake of a VIEWPORT
};
void setErrno(int code);

// True for the groups that carry entity names (see above).
inline bool isNameGroup(int code) {
  return code == -1 || code == -2 || (code >= 320 && code <= 369) || (code >= 390 && code <= 399);
}
// The id of a name group's tag.
inline OdDbObjectId nameTagId(const OdDxfTag& tag) { return OdDbObjectId(reinterpret_cast<OdDbStub*>(tag.i)); }

// The groups of an object's entity-data list: -1, 0, 330, 5, 102 groups,
// 100 markers and fields (410 with the layout name after 67 for entities of
// a layout), and with withXdata a -3 tag followed by every application's
// 1001 group and data. Reuses the storage of the tags it is given: a caller
// that tests many objects passes the same list every time.
void entityTags(const OdDbObject* object, OdDxfTagList& tags, bool withXdata);

// The tags of a table record as table searches give them: 0 with the
// table's name, the record's fields without markers, owner or handle;
// pointer groups as names.
void recordTags(const OdDbObject* record, const wchar_t* recordType, OdDxfTagList& tags);

// A result-buffer list from tags of db (names as above).
resbuf* listFromTags(const OdDxfTag* begin, const OdDxfTag* end, OdDbDatabase* db);

// State the list functions keep per drawing (an entity made over several
// calls, the tables' walking positions) is dropped when its database goes.
void watchDatabase(OdDbDatabase* db);
void forgetTablePositions(OdDbDatabase* db);

}  // namespace ryhost
