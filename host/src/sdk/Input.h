// The parts of the SDK's prompting functions that other SDK functions share:
// initget keywords and their matching, reading one reply of a get-function,
// the entry forms of points, distances and angles, the user coordinate
// system, LASTPOINT, and object snaps.
//
// Points handled here are in the current user coordinate system (UCS), as
// the get-functions return them; Document::ucs() maps them to world.
#pragma once

#include <vector>

#include "DbEntity.h"
#include "Ge/GeMatrix3d.h"
#include "Ge/GePoint3d.h"
#include "OdString.h"
#include "rytypes.h"

namespace ryhost {

// ---------------------------------------------------------------- keywords

// The keyword list of an initget: words separated by spaces, the local words
// first and then, after a word starting with "_", their global forms
// ("Yes No _Yes No"). A word's capital letters are its abbreviation
// ("LType" takes "LT", "LTY"... "LTYPE"); "LTYPE,LT" names the abbreviation
// explicitly. A word without both capital and small letters must be typed
// whole. Matching ignores letter case.
class KeywordList {
 public:
  KeywordList() = default;
  explicit KeywordList(const OdString& spec);
  bool isEmpty() const { return m_local.empty(); }
  size_t size() const { return m_local.size(); }
  // The global keyword a reply names: a local word, or "_" and a global word.
  bool match(const OdString& reply, OdString& globalKeyword) const;

 private:
  struct Word {
    OdString full;
    OdString abbreviation;   // typed alone, it names the word
    int shortestPrefix = 0;  // prefixes of the word at least this long name it
  };
  static Word parseWord(const OdString& token);
  static int find(const std::vector<Word>& words, const OdString& reply);

  std::vector<Word> m_local;
  std::vector<Word> m_global;  // empty when the list has no global part
};

// True when two texts are equal but for letter case (any script).
bool sameTextNoCase(const OdString& a, const OdString& b);

// ---------------------------------------------------------------- initget state

struct InitGet {
  int flags = 0;  // RSG_ bits
  KeywordList keywords;
};

// Takes the settings of the last ryedInitGet of the current document: they
// apply to the next get-function only, which calls this once.
InitGet takeInitGet();
// What ryedGetInput reports next: the keyword or text of an RTKWORD reply.
void setLastInput(const OdString& text);

// ---------------------------------------------------------------- one reply

// A reply to a get-function's prompt once Esc, the end of input,
// transparent commands ("'ZOOM", run and then the prompt is shown again)
// and keywords are dealt with.
struct GetReply {
  enum Kind { kValue, kEnter, kKeyword, kCancel };
  Kind kind = kCancel;
  OdString text;  // kValue: the reply trimmed; kKeyword: the global keyword
};
GetReply readGetReply(const OdString& prompt, const KeywordList& keywords);

// ---------------------------------------------------------------- coordinate systems

// The current user coordinate system to world (identity without a drawing).
OdGeMatrix3d ucsToWorld();
OdGePoint3d ucsToWcs(const OdGePoint3d& point);
OdGePoint3d wcsToUcs(const OdGePoint3d& point);
// LASTPOINT, in user coordinates.
OdGePoint3d lastPoint();
void setLastPoint(const OdGePoint3d& ucsPoint);
// The normal of an entity whose coordinates are kept in its object
// coordinate system (circles, arcs, texts, block references, 2-d
// polylines...); false for entities kept in world coordinates.
bool entityOcsNormal(const OdDbEntity* entity, OdGeVector3d& normal);

// ---------------------------------------------------------------- entry forms

// A number as typed at a prompt, in a file or in a dialog: decimal or
// scientific, one optional sign, nothing around it; false for other text.
bool parseReal(const OdString& text, double& value);
bool parseInteger(const OdString& text, long long& value);
// A distance in the current linear units (rydbDisToF with LUNITS).
bool parseDistance(const OdString& text, double& value);
// An angle typed in the current angular units counts from ANGBASE in the
// ANGDIR sense; these convert between such an angle and a direction
// (radians counter-clockwise from the UCS x axis, in [0, 2π)).
double directionOfUserAngle(double userAngle);
double userAngleOfDirection(double direction);
// A typed angle as a direction; false when the text is no angle.
bool parseDirection(const OdString& text, double& direction);
// A point entry, in user coordinates: "x,y" (z: ELEVATION), "x,y,z",
// "@dx,dy[,dz]" and "@" (relative to LASTPOINT), "dist<angle[,z]" and
// "@dist<angle[,dz]" (polar and cylindrical), "dist<angle<slope"
// (spherical), and a leading "*" for world coordinates ("*x,y", "@*dx,dy").
// Coordinates and distances are in the current linear units, angles in the
// current angular units from ANGBASE in the ANGDIR sense.
bool parsePoint(const OdString& text, OdGePoint3d& ucsPoint);

// ---------------------------------------------------------------- object snaps

enum class SnapOutcome { kSnapped, kNothing, kUnknownMode };
// Snaps a user-coordinate point to the geometry of the current space within
// PICKBOX of it (seen along the UCS z axis) with comma-separated modes ("end",
// "mid", "cen", "qua", "int", "per", "ins", "nod", "nea", "non", or their
// longer names); the snap point nearest to the point wins.
SnapOutcome snapPoint(const OdGePoint3d& ucsPoint, const OdString& modes, OdGePoint3d& ucsResult);
// True when a reply names object snap modes (an override typed at a point prompt).
bool isSnapModeList(const OdString& text);

}  // namespace ryhost
