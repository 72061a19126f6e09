// Selection filters: a list of DXF groups (with -4 operators and -3
// application names) compiled once and then tested against entities. The
// entity type (group 0), layer (8) and colour (62) are read from the entity
// itself and remembered per class and per layer, so that a type-and-layer
// filter over a whole drawing never builds an entity's group list; every
// other group comes from the entity's list, built only when a test needs it.
#pragma once

#include <memory>
#include <vector>

#include "DbEntity.h"
#include "OdString.h"
#include "rytypes.h"

namespace ryhost {

// Wildcard matching, letter case ignored (ryutWcMatch).
bool wildcardMatch(const OdString& text, const OdString& pattern);

class SelectionFilter {
 public:
  SelectionFilter();
  ~SelectionFilter();
  SelectionFilter(const SelectionFilter&) = delete;
  SelectionFilter& operator=(const SelectionFilter&) = delete;

  // Compiles a filter list; false, with the reason, when the list is malformed
  // (unbalanced or unknown -4 operators, an operator without a group to apply
  // to, a group that cannot be filtered on). A null list accepts everything.
  bool compile(const resbuf* list, OdString* reason = nullptr);
  bool acceptsEverything() const;
  // Not const: the filter remembers what it learnt about classes and layers.
  bool matches(const OdDbEntity* entity);

  struct Node;

 private:
  std::unique_ptr<Node> m_root;
  bool m_needsXdata = false;
  OdDxfTagList m_tags;  // the groups of the entity being tested
};

}  // namespace ryhost
