// The interface of the drawing comparison engine (dwgcmp.dll): the records
// handed to it, the engine object, and the library's two exports. This is
// the one header of the engine that a caller includes; the engine is loaded
// at run time and nothing of it is linked.
#pragma once

#include <cstdint>

class OdDbDatabase;

// What counts as a difference. The record starts with its own size, so that
// a later engine can tell an older caller's record from its own.
struct DwgCompareOptions {
  std::uint32_t size = sizeof(DwgCompareOptions);
  double tolerance = 0.0001;     // numbers closer than this are equal
  std::int32_t geometry = 1;     // A: geometric data of objects
  std::int32_t properties = 1;   // B: layer, colour, linetype, lineweight and the like
  std::int32_t texts = 1;        // C: the strings of texts and attributes
  std::int32_t blocks = 1;       // D: block references followed into their definitions
  std::int32_t greyUnchanged = 0;  // E: unchanged objects drawn in the fifth colour
  std::int32_t hideUnchanged = 0;  // F: unchanged objects on a layer that is turned off
};

// The five marking colours as 0x00BBGGRR (red in the low byte).
struct DwgCompareColors {
  std::uint32_t size = sizeof(DwgCompareColors);
  std::uint32_t added = 0x0000FF00;      // only in the new drawing: green
  std::uint32_t deleted = 0x000000FF;    // only in the old drawing: red
  std::uint32_t changed = 0x0000FFFF;    // in both, data differs: yellow
  std::uint32_t propertyOnly = 0x00FF00FF;  // in both, only properties differ: magenta
  std::uint32_t unchanged = 0x00C0C0C0;  // in both and alike: grey (when greyed)
};

// Objects of each class found by the last comparison.
struct DwgCompareCounts {
  std::int64_t added = 0, deleted = 0, changed = 0, propertyOnly = 0, unchanged = 0;
};

class DwgCompareJet {
 public:
  virtual ~DwgCompareJet() = default;
  // The two drawings; each database's file name is where its marked result
  // is saved (the caller's copies, never the originals).
  virtual void setOldDatabase(OdDbDatabase* db) = 0;
  virtual void setNewDatabase(OdDbDatabase* db) = 0;
  // Pairs, classifies, marks and saves both drawings, and writes the
  // difference report beside the new one. Returns the number of objects
  // compared; 0 when there is nothing to show (no drawings, no objects, or
  // the results could not be saved).
  virtual std::int32_t compare(const DwgCompareOptions* options, const DwgCompareColors* colors) = 0;
  // The counts of the last comparison, and the path of its report (empty
  // when none was written).
  virtual DwgCompareCounts counts() const = 0;
  virtual const wchar_t* reportPath() const = 0;
};

extern "C" {
using GetDwgCompareJetFn = DwgCompareJet* (*)();
using FreeDwgCompareJetFn = void (*)(DwgCompareJet*);
}
