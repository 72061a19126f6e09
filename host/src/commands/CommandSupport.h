// What the host commands share: prompts that leave the command on Esc,
// selections, name lists with wildcards, symbol-table lookups, and the texts
// of colours, lineweights, distances and points.
//
// The ask... functions here are the short forms of those in
// commands/Prompts.h (a value, or false / "" for Enter), for commands that
// need no more. The commands collect their answers first and change the
// drawing last, so that leaving at any prompt changes nothing.
#pragma once

#include <vector>

#include "CmColor.h"
#include "DbDatabase.h"
#include "DbEntity.h"
#include "Ge/GePoint3d.h"
#include "OdString.h"
#include "rytypes.h"

namespace ryhost::cmdsupport {

// ---------------------------------------------------------------- prompts

// A keyword of the list (its global form), or "" for Enter. With RSG_OTHER in
// flags any other reply comes back as typed.
OdString askKeyword(const OdString& prompt, const OdString& keywords, int flags = 0);
// A whole reply (spaces included), trimmed; "" for Enter.
OdString askText(const OdString& prompt);
// A point in user coordinates; false for Enter. A keyword reply, when the
// list is given, comes back in keyword (and the function returns true with
// keyword set).
bool askPoint(const OdString& prompt, OdGePoint3d& ucsPoint, const OdGePoint3d* base = nullptr,
              const OdString& keywords = OdString(), OdString* keyword = nullptr);
// A number; false for Enter. flags: RSG_NOZERO, RSG_NONEG.
bool askReal(const OdString& prompt, double& value, int flags = 0);
// An angle as a rotation (radians, counter-clockwise); false for Enter.
bool askAngle(const OdString& prompt, double& radians, const OdGePoint3d* base = nullptr);
// Yes or No with a default for Enter.
bool askYesNo(const OdString& prompt, bool defaultYes);

// ---------------------------------------------------------------- selection

// The classic "Select objects:" (or the objects selected before the
// command); entities on locked layers are left out when refuseLocked.
// Empty when nothing was selected.
std::vector<OdDbObjectId> selectObjects(const resbuf* filter = nullptr, bool refuseLocked = true);

// ---------------------------------------------------------------- names

// "A, B,C" -> {"A", "B", "C"} (empty items dropped). A comma after a reverse
// quote is part of its name ("A`,B" is one pattern that matches the name "A,B").
std::vector<OdString> splitNameList(const OdString& text);
// A name typed where one record is meant, with its reverse-quote escapes
// taken off ("L`#1" names the record "L#1"), so that a name escaped for the
// pattern prompts is accepted there too.
OdString literalName(const OdString& typed);
// Wildcard match of a record name against one pattern, ignoring letter case.
bool nameMatches(const OdString& name, const OdString& pattern);
// A name a symbol-table record may carry (no <>/\":;?*|,=` and not empty).
bool isValidSymbolName(const OdString& name);

// ---------------------------------------------------------------- records

// The live records of a symbol table, in table order.
std::vector<OdDbObjectId> tableRecords(OdDbDatabase* db, OdDbNameTable table);
OdString recordName(const OdDbObjectId& id);

// ---------------------------------------------------------------- texts

// In the current linear units and precision.
OdString formatDistance(double value);
// "X=  1.0000  Y=  2.0000  Z=  0.0000"
OdString formatPoint(const OdGePoint3d& point);
// A direction (radians counter-clockwise from the x axis) in the current
// angular units, counted from ANGBASE in the ANGDIR sense as angles are typed.
OdString formatDirection(double direction);
// An amount of turning (not a direction) in the current angular units.
OdString formatAngle(double radians);
// "BYLAYER", "BYBLOCK", "1 (red)", "45", "255,128,0".
OdString colorText(const OdCmColor& color);
// "ByLayer", "ByBlock", "Default", "0.30mm".
OdString lineWeightText(OdDb::LineWeight weight);
// A lineweight typed in millimetres ("0.3", "0.30mm"), rounded to the nearest
// standard weight; "ByLayer", "ByBlock" and "Default" when allowed. False
// for anything else or a value outside 0 - 2.11 mm.
bool parseLineWeight(const OdString& text, bool allowByLayerBlock, OdDb::LineWeight& weight);
// A colour typed as a name, a number or "r,g,b"; BYLAYER/BYBLOCK (numbers 256
// and 0 too) only when allowed.
bool parseColor(const OdString& text, bool allowByLayerBlock, OdCmColor& color);
// Asks "Red, Green, Blue: " until a valid true colour is given.
OdCmColor askTrueColor();
// "ByLayer", "ByBlock", or the transparency in percent (0 opaque - 90).
OdString transparencyText(const OdCmTransparency& transparency);
OdCmTransparency transparencyFromPercent(int percent);

// ---------------------------------------------------------------- entities

// The thickness of the entities that have one (lines, circles, arcs, points,
// solids, traces, texts, polylines); false for the others.
bool entityThickness(const OdDbEntity* entity, double& thickness);
bool setEntityThickness(OdDbEntity* entity, double thickness);

}  // namespace ryhost::cmdsupport
