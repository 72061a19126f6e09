// The engine's record of one drawing object: what the object files out,
// split into geometry (numbers kept apart so that they can be compared
// within a tolerance), texts and properties (the entity's layer, colour,
// linetype and the like). Records are made from each class's field table,
// so every class the platform models is compared by all of its fields.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "DbEntity.h"

namespace dwgcmp {

// One stream of filed values: exact bytes for everything but real numbers,
// which are kept in order beside them.
struct FiledValues {
  std::string bytes;
  std::vector<double> reals;

  bool operator==(const FiledValues&) const = default;
  // Equal bytes and every real within the tolerance of its counterpart.
  bool sameWithin(const FiledValues& other, double tolerance) const;
  // The values with every real rounded to a multiple of the tolerance:
  // objects that file alike up to the tolerance give the same key.
  void appendKey(std::string& key, double tolerance) const;
};

struct ObjectRecord {
  OdDbObjectId id;
  OdUInt64 handle = 0;
  const OdRxClass* cls = nullptr;
  FiledValues geometry;
  FiledValues text;
  FiledValues properties;
};

// Records objects of one database. Names of records (layers, linetypes,
// styles, blocks) are recorded by name, so that two databases compare
// although their records have other handles; other references are left
// out, as handles mean nothing across two versions of a drawing. With
// followBlocks, a block reference also records the content of its block
// definition (each definition is recorded once).
class SignatureRecorder {
 public:
  SignatureRecorder(double tolerance, bool followBlocks) : m_tolerance(tolerance), m_followBlocks(followBlocks) {}
  ObjectRecord record(const OdDbEntity* entity);

 private:
  void recordFields(const OdDbObject* object, ObjectRecord& out);
  const OdString& recordName(const OdDbObjectId& id);
  const std::string& blockContent(const OdDbObjectId& blockId);
  const std::vector<const OdDbSubclass*>& chainOf(const OdDbObject* object);

  double m_tolerance;
  bool m_followBlocks;
  std::unordered_map<const void*, OdString> m_names;
  std::unordered_map<const void*, std::string> m_blocks;
  std::unordered_map<const OdRxClass*, std::vector<const OdDbSubclass*>> m_chains;
};

// The key that pairs objects which are not paired by handle: the class, the
// geometry and the text, with reals rounded by the tolerance.
std::string pairingKey(const ObjectRecord& record, double tolerance);

}  // namespace dwgcmp
