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
#include "ryerrno.h"
#include "rytypes.h"

namespace ryhost {

// The ERRNO codes of the SDK (ryerrno.h), also by their names in the host's namespace.
using enum RyErrno;
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
