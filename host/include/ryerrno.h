// Codes of the ERRNO system variable: what the last failed SDK call found
// wrong (the classic numbering). The host sets them; a module reads ERRNO
// after a call that did not return RTNORM and compares it with these.
#pragma once

enum RyErrno : int {
  kErrnoInvalidSymbolName = 1,     // rydbRegApp or a new table record with an invalid name
  kErrnoInvalidName = 2,           // an entity name that names nothing
  kErrnoMissedPick = 7,            // a pick that found no object
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
  kErrnoNullReply = 52,            // Enter at a pick prompt
  kErrnoViewport = 54,             // rydbEntMake of a VIEWPORT
};
