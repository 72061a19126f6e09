// The entities of a selection set as object ids.
#pragma once

#include <vector>

#include "DbObjectId.h"
#include "rydb.h"
#include "ryed.h"

namespace kestrix {

// The ids of the set's entities in selection order; an entity whose name
// gives no id is left out.
inline std::vector<OdDbObjectId> selectionIds(const ads_name ss) {
  std::vector<OdDbObjectId> ids;
  OdInt32 length = 0;
  if (ryedSSLength(ss, &length) != RTNORM) return ids;
  ids.reserve(static_cast<size_t>(length));
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name entity;
    OdDbObjectId id;
    if (ryedSSName(ss, i, entity) == RTNORM && rydbGetObjectId(id, entity) == RTNORM) ids.push_back(id);
  }
  return ids;
}

}  // namespace kestrix
