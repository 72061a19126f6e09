// Database functions of the host SDK: entity-data lists (DXF group codes in
// linked result buffers), tables, registered applications, and the
// conversions between numbers and text in the drawing's units.
#pragma once

#include <cstddef>

#include "DbObjectId.h"
#include "rytypes.h"

// ---- Entity-data lists
// The list of an entity: -1 (its name), 0 (type), 330 (owner), 5 (handle),
// 100 markers and its groups; with apps (a list of RTSTR names, "*" for all)
// also the extended data of those applications (-3 then 1001 groups).
RYAD_API resbuf* rydbEntGet(const ads_name entity);
RYAD_API resbuf* rydbEntGetX(const ads_name entity, const resbuf* apps);
// Changes the entity named by the list's -1 group to the groups given.
RYAD_API int rydbEntMod(const resbuf* list);
// Makes an entity from a list; complex entities (an INSERT with attributes,
// a POLYLINE with vertices) are made over several calls up to their SEQEND.
RYAD_API int rydbEntMake(const resbuf* list);
RYAD_API int rydbEntMakeX(const resbuf* list, ads_name result);
// The next entity of the drawing after entity (the first with a null or zero
// name); attributes and vertices are reached from their owner up to SEQEND.
RYAD_API int rydbEntNext(const ads_name entity, ads_name result);
RYAD_API int rydbEntLast(ads_name result);
// Erases an entity, or brings an erased one back.
RYAD_API int rydbEntDel(const ads_name entity);
RYAD_API int rydbEntUpd(const ads_name entity);
RYAD_API int rydbHandEnt(const ACHAR* handle, ads_name entity);

// ---- Tables
// table: "LAYER", "LTYPE", "VIEW", "STYLE", "BLOCK", "UCS", "APPID", "DIMSTYLE", "VPORT".
RYAD_API resbuf* rydbTblSearch(const ACHAR* table, const ACHAR* name, int setNext);
RYAD_API resbuf* rydbTblNext(const ACHAR* table, int rewind);
RYAD_API resbuf* rydbTblObjName(const ACHAR* table, const ACHAR* name);
RYAD_API int rydbRegApp(const ACHAR* appName);

// ---- Numbers and text in the drawing's units
// unit -1: the current LUNITS; 1 scientific, 2 decimal, 3 engineering,
// 4 architectural, 5 fractional.
RYAD_API int rydbDisToF(const ACHAR* text, int unit, ads_real* result);
RYAD_API int rydbRToS(ads_real value, int unit, int precision, ACHAR* result, size_t size = 64);
// unit -1: the current AUNITS; 0 degrees, 1 deg/min/sec, 2 grads, 3 radians, 4 surveyor's.
RYAD_API int rydbAngToF(const ACHAR* text, int unit, ads_real* result);
RYAD_API int rydbAngToS(ads_real value, int unit, int precision, ACHAR* result, size_t size = 64);

// ---- Coordinate systems of planar entities
RYAD_API int rydbWcs2Ecs(const ads_point point, const ads_point normal, bool vector, ads_point result);
RYAD_API int rydbEcs2Wcs(const ads_point point, const ads_point normal, bool vector, ads_point result);

// ---- Entity names and object ids
RYAD_API int rydbGetObjectId(OdDbObjectId& id, const ads_name entity);
RYAD_API int rydbGetAdsName(ads_name entity, const OdDbObjectId& id);
RYAD_API bool rydbNameEqual(const ads_name a, const ads_name b);
RYAD_API void rydbNameClear(ads_name name);
RYAD_API bool rydbNameNil(const ads_name name);
RYAD_API void rydbNameSet(const ads_name from, ads_name to);
