// The frame the text-adjustment commands share (tcase, tcount, tjust,
// torient, tcircle, textfit): the text selection on unlocked layers, the
// selection set and undo group owners, the test of a text's plane against
// the current coordinate system, and a few readers of entity-data lists.
#pragma once

#include <vector>

#include "DbObjectId.h"
#include "Ge/GePoint3d.h"
#include "Ge/GeVector3d.h"
#include "OdString.h"
#include "frame/Guards.h"
#include "rytypes.h"

namespace kestrix::text {

// The commands wrap their changes in the frame's one undo group.
using kestrix::UndoGroup;

// Which objects the selection takes: texts, multiline texts and attribute
// definitions; the wide form takes block references with attributes too.
enum class TextKinds { kTexts, kTextsAndReferences };

// A selection set, freed on every way out.
class SelectionSet {
 public:
  SelectionSet() = default;
  ~SelectionSet();
  SelectionSet(const SelectionSet&) = delete;
  SelectionSet& operator=(const SelectionSet&) = delete;
  ads_name& name() { return m_name; }
  OdInt32 length() const;
  // The members in selection order.
  std::vector<OdDbObjectId> ids() const;
  bool held = false;       // the set exists and must be freed
  bool cancelled = false;  // the selection ended with Esc

 private:
  ads_name m_name = {0, 0};
};

// Selects texts with the mode "_:L" (objects on locked layers are refused
// by the selection itself). Esc prints the cancel message; a selection that
// finds nothing stays quiet. True when the set holds at least one object.
bool selectTexts(TextKinds kinds, SelectionSet& set);

// The Z axis of the current coordinate system in world coordinates.
OdGeVector3d currentUcsZ();

// True when the entity's normal (group 210, world Z when absent) is
// parallel to the current coordinate system's Z axis.
bool isParallelToUcs(const OdDbObjectId& id);

// Drops the objects whose plane is tilted against the current coordinate
// system; returns how many were dropped.
int dropTilted(std::vector<OdDbObjectId>& ids);

// The angle of the current coordinate system's X axis, measured in the
// world XY plane: what a text rotation adds to the user's angle.
double ucsXAngle();

// The string of a text (group 1, after the group 3 chunks of a long
// multiline text); false when the entity has none.
bool readTextString(const OdDbObjectId& id, OdString& value);

// Writes the string of a text through its data list (group 1).
bool writeTextString(const OdDbObjectId& id, const OdString& value);

// The entity's type name (group 0), upper case as the list gives it.
OdString entityType(const OdDbObjectId& id);

// The text's box corners in world coordinates (lower left, lower right,
// upper right, upper left) from the platform's text measure; false for
// objects that are not texts.
bool textBox(const OdDbObjectId& id, OdGePoint3d corners[4]);

// Asks a keyword whose default is the answer remembered under the key of
// the host settings file (first: the default before any answer); the prompt
// format shows that default through its one %ls. The answer is remembered.
// Returns the keyword's global name, or empty on Esc.
OdString askRememberedKeyword(const OdString& promptFormat, const wchar_t* keywords, const wchar_t* key,
                              const wchar_t* first);

// True when the entity's layer is locked.
bool isOnLockedLayer(const OdDbObjectId& id);

// Prints a count with a catalogue text after it ("%d%s" and "\n%d%s" forms).
void printCount(const wchar_t* format, int count, unsigned int textId, const wchar_t* fallback);

// Leaves out the objects whose plane is tilted against the current
// coordinate system, saying how many; false (with a word) when none is left.
bool keepParallelToUcs(std::vector<OdDbObjectId>& ids);

}  // namespace kestrix::text
