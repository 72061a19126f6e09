// Editor functions of the host SDK: prompting, selection sets, system
// variables, running host commands, coordinate conversion and output.
// Every prompt reads its reply from the current document's input queue.
#pragma once

#include <cstddef>

#include "rytypes.h"

// ---- Selection sets
// mode: null or "" for an interactive selection; otherwise the classic mode
// strings ("X", "A", "I", "P", "L", "W", "C", "F", "WP", "CP", ":S", ":$",
// ":L", "_:L", ":C", ":N", "+." and combinations such as ":S:$" and "X:C").
// With ":$", pt1 is an array of two prompt strings (add and remove).
RYAD_API int ryedSSGet(const ACHAR* mode, const void* pt1, const void* pt2, const resbuf* filter, ads_name ss);
RYAD_API int ryedSSFree(const ads_name ss);
RYAD_API int ryedSSLength(const ads_name ss, OdInt32* length);
RYAD_API int ryedSSName(const ads_name ss, OdInt32 index, ads_name entity);
// Adds an entity to a set; with a null set name a new set is made.
RYAD_API int ryedSSAdd(const ads_name entity, const ads_name ss, ads_name result);
RYAD_API int ryedSSDel(const ads_name entity, const ads_name ss);
RYAD_API int ryedSSMemb(const ads_name entity, const ads_name ss);
// The pick-first (and grip) selection as a list of one RTPICKS each.
RYAD_API int ryedSSGetFirst(resbuf** gripSet, resbuf** pickFirstSet);
RYAD_API int ryedSSSetFirst(const ads_name pickFirstSet, const ads_name gripSet);

// ---- Input
RYAD_API int ryedInitGet(int flags, const ACHAR* keywords);
RYAD_API int ryedGetKword(const ACHAR* prompt, ACHAR* result, size_t size = 512);
// allowSpaces: when non-zero only Enter ends the reply (spaces belong to it).
RYAD_API int ryedGetString(int allowSpaces, const ACHAR* prompt, ACHAR* result, size_t size = 512);
RYAD_API int ryedGetPoint(const ads_point base, const ACHAR* prompt, ads_point result);
RYAD_API int ryedGetCorner(const ads_point base, const ACHAR* prompt, ads_point result);
RYAD_API int ryedGetDist(const ads_point base, const ACHAR* prompt, ads_real* result);
RYAD_API int ryedGetAngle(const ads_point base, const ACHAR* prompt, ads_real* result);
RYAD_API int ryedGetOrient(const ads_point base, const ACHAR* prompt, ads_real* result);
RYAD_API int ryedGetReal(const ACHAR* prompt, ads_real* result);
RYAD_API int ryedGetInt(const ACHAR* prompt, int* result);
RYAD_API int ryedEntSel(const ACHAR* prompt, ads_name entity, ads_point pickPoint);
// The keyword or text of the last RTKWORD reply.
RYAD_API int ryedGetInput(ACHAR* result, size_t size = 512);
// One input event: type 3 for a point (result: RT3DPOINT), 2 for a key
// (RTSHORT), 5 for tracking; the console delivers points and keys.
RYAD_API int ryedGrRead(int track, int* type, resbuf* result);
// Snaps a point to the geometry under it: modes "nea", "end", "mid", "cen",
// "int", "per", "qua", "ins", "nod", "non", comma-separated.
RYAD_API int ryedOsnap(const ads_point point, const ACHAR* mode, ads_point result);

// ---- System variables
RYAD_API int ryedGetVar(const ACHAR* name, resbuf* result);
RYAD_API int ryedSetVar(const ACHAR* name, const resbuf* value);
// Every system variable of the host, in name order, as a list of three
// buffers per variable: RTSTR its name, RTSHORT the type of its value
// (RTSHORT, RTLONG, RTREAL, RTSTR, RTPOINT or RT3DPOINT), RTSHORT 1 when it
// is read-only, else 0. The caller frees the list with ryutRelRb.
RYAD_API int ryedGetSysVarList(resbuf** list);

// ---- Host commands
// Arguments as type/value pairs ending with RTNONE: RTSTR (const ACHAR*; ""
// is Enter), RTSHORT (int), RTLONG (OdInt32), RTREAL/RTANG (double),
// RTPOINT/RT3DPOINT (const ads_real*), RTENAME/RTPICKS (const std::int64_t*).
RYAD_API int ryedCommand(int type, ...);
RYAD_API int ryedCmd(const resbuf* args);

// ---- Coordinates and text
// from/to: RTSHORT 0 world, 1 user system, 2 display, 3 paper display, or RTENAME.
RYAD_API int ryedTrans(const ads_point point, const resbuf* from, const resbuf* to, int displacement, ads_point result);
// The box of a text given as its entity-data list (or one built for the purpose).
RYAD_API int ryedTextBox(const resbuf* entityList, ads_point lowerLeft, ads_point upperRight);

// ---- Output
RYAD_API int ryedPrompt(const ACHAR* text);
RYAD_API int ryedAlert(const ACHAR* text);
RYAD_API int ryedRedraw(const ads_name entity, int mode);
RYAD_API int ryedRetVoid();
RYAD_API int ryedUpdateDisplay();

// ---- Files and menus
// Looks for a file in the drawing's folder, the support path and the host's folder.
RYAD_API int ryedFindFile(const ACHAR* name, ACHAR* result, size_t size = 512);
RYAD_API bool ryedIsMenuGroupLoaded(const ACHAR* group);
RYAD_API bool ryedLoadMenuGroup(const ACHAR* fileName, bool visible);
