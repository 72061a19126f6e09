// Comparing two versions of a drawing: the objects of every layout are
// paired (by handle and class first, then by their filed data), each pair
// and each object left alone is classified, the classes are marked in both
// drawings with their colours and layers, both drawings are saved over
// their own files, and a report is written beside the new one.
#pragma once

#include <string>
#include <vector>

#include "DwgCompareJet.h"
#include "Signature.h"

namespace dwgcmp {

enum class DiffClass { kAdded, kDeleted, kChanged, kPropertyOnly, kUnchanged };

// One line of the outcome: an object of the old drawing, of the new one, or
// a pair (the other id is null for added and deleted objects).
struct Outcome {
  DiffClass diff;
  OdDbObjectId oldId, newId;
};

struct Classification {
  std::vector<Outcome> outcomes;
  DwgCompareCounts counts;
};

// Pairs and classifies the entities of every layout of the two drawings.
Classification classify(OdDbDatabase* oldDb, OdDbDatabase* newDb, const DwgCompareOptions& options);

// The layer each class is marked on.
const wchar_t* classLayerName(DiffClass diff);

// Gives the objects their class's colour and layer in both drawings, as the
// options ask (unchanged objects only when they are greyed or hidden).
void mark(OdDbDatabase* oldDb, OdDbDatabase* newDb, const Classification& result, const DwgCompareOptions& options,
          const DwgCompareColors& colors);

// The report: counts per class, then one line per object that differs.
std::string reportText(OdDbDatabase* oldDb, OdDbDatabase* newDb, const Classification& result,
                       const DwgCompareOptions& options);

// Where the report of a new result drawing goes: beside it, "<name>.cmp.txt".
OdString reportPathFor(const OdString& newResult);

// Writes a file through a temporary file renamed over it; false on failure.
bool writeFileAtomically(const OdString& path, const std::string& text);

}  // namespace dwgcmp
