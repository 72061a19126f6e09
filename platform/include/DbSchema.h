// The field table of a persistent class. Every class declares its fields once
// (DXF subclass marker, group code, kind, default, the member that holds the
// value); DXF reading and writing, entity-data lists, filing out and in,
// equality and printing are all derived from that one table.
#pragma once

#include <initializer_list>
#include <memory>
#include <type_traits>
#include <vector>

#include "DbObjectId.h"
#include "DxfTag.h"
#include "Ge/GePoint2d.h"
#include "Ge/GePoint3d.h"
#include "Ge/GeVector3d.h"

class OdDbObject;
class OdDbDwgFiler;
class OdDbField;

enum class OdDbFieldKind : OdUInt8 {
  kBool,
  kInt8,
  kInt16,
  kInt32,
  kInt64,
  kDouble,
  kString,
  kPoint2d,
  kPoint3d,
  kVector3d,
  kHardOwner,    // OdDbObjectId, written as a handle
  kSoftOwner,
  kHardPointer,
  kSoftPointer,
  kNameRef,      // OdDbObjectId of a symbol-table record, written by the record's name
  kCustom,       // a value with its own codec (arrays, loops, colours)
};

// Symbol tables that a name reference can point into.
enum class OdDbNameTable : OdUInt8 { kNone, kLayer, kLinetype, kTextStyle, kDimStyle, kBlock, kUcs, kView, kVport, kRegApp };

// What the tag conversion needs from its surroundings: the database (handles
// and names), the file version, and whether the tags are for a DXF file or
// for an entity-data list.
class OdDbTagContext {
 public:
  virtual ~OdDbTagContext() = default;
  virtual OdDbDatabase* database() const = 0;
  virtual OdDb::DwgVersion version() const { return OdDb::kDHL_CURRENT; }
  virtual bool forEntityList() const { return false; }
  // The id for a handle read from a file or a list (created on demand).
  virtual OdDbObjectId idFromHandle(OdUInt64 handle) = 0;
  // The record of that name; null when it does not exist (the caller decides
  // whether that is an error, a repair, or a reference to resolve later).
  virtual OdDbObjectId idFromName(OdDbNameTable table, const OdString& name);
  // Called when a name cannot be resolved now; the context may resolve it
  // once the whole file is read. The default leaves the reference null.
  virtual void deferName(OdDbObject* object, const OdDbField& field, const OdString& name) {}
  // Called when a value read for the object could not stand (a number that is
  // not finite, a zero normal, a negative size, an angle of many turns) and was
  // repaired; what names the field. The default ignores it.
  virtual void valueRepaired(OdDbObject* object, const wchar_t* what) {}
  // Whether values that read fine but cannot stand (zero normals, negative
  // sizes, angles of many turns) are set right; reads of files do, other
  // conversions keep what they are given. Numbers that are not finite are
  // always replaced.
  virtual bool repairsValues() const { return false; }
  // The name written for a record id (empty for null or missing ids).
  virtual OdString nameOf(const OdDbObjectId& id) const;

  // Scratch state that codecs keep while one object's tags are read (for
  // example how many vertices were read so far); cleared for every object.
  OdInt64& codecState(const void* key);
  void clearCodecState() { m_codecState.clear(); }

 private:
  std::vector<std::pair<const void*, OdInt64>> m_codecState;
};

// Codec of a value that does not fit one tag: vertex arrays, hatch loops, the
// colour with its true-colour and name groups, and the like.
class OdDbFieldCodec {
 public:
  virtual ~OdDbFieldCodec() = default;
  // The group codes this value is read from.
  virtual std::vector<int> codes() const = 0;
  // A value that takes every group of its subclass that no other field takes
  // (the data of an extended record).
  virtual bool takesAnyCode() const { return false; }
  // Appends the value's tags in file order.
  virtual void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext& ctx) const = 0;
  // Takes one tag; returns false when the tag does not belong to the value
  // (it is then kept as unknown data).
  virtual bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const = 0;
  // Called before the tags of a fresh read start and after they end.
  virtual void beginRead(OdDbObject* object) const {}
  virtual void endRead(OdDbObject* object, OdDbTagContext& ctx) const {}
  virtual void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const = 0;
  virtual void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const = 0;
  virtual bool isEqual(const OdDbObject* a, const OdDbObject* b) const = 0;
};

class OdDbField {
 public:
  enum Flags : OdUInt16 {
    kOptional = 1,      // written only when it differs from its default
    kNoDxf = 2,         // kept and filed, but not part of DXF or entity lists
    kNoFiler = 4,       // derived value: neither filed nor compared
    kAngleDegrees = 8,  // stored in radians, written in degrees
    kNoEntityList = 16, // not part of entity-data lists
  };

  int code = 0;
  OdDbFieldKind kind = OdDbFieldKind::kInt16;
  OdDbNameTable table = OdDbNameTable::kNone;
  OdUInt16 flags = 0;
  OdDb::DwgVersion minVersion = OdDb::vAC09;
  const wchar_t* name = L"";           // for printing and tests
  const wchar_t* defaultName = nullptr;  // name references: record used when absent
  double defaultReal[3] = {0, 0, 0};
  OdInt64 defaultInt = 0;
  void* (*storage)(OdDbObject*) = nullptr;  // address of the member holding the value
  const OdDbFieldCodec* codec = nullptr;

  OdDbField& optional() { flags |= kOptional; return *this; }
  OdDbField& since(OdDb::DwgVersion version) { minVersion = version; return *this; }
  OdDbField& degrees() { flags |= kAngleDegrees; return *this; }
  OdDbField& noDxf() { flags |= kNoDxf; return *this; }
  OdDbField& noEntityList() { flags |= kNoEntityList; return *this; }
  OdDbField& defaults(double value) { defaultReal[0] = value; return *this; }
  OdDbField& defaults(double x, double y, double z) {
    defaultReal[0] = x; defaultReal[1] = y; defaultReal[2] = z;
    return *this;
  }
  OdDbField& defaultsInt(OdInt64 value) { defaultInt = value; return *this; }
  OdDbField& defaultsName(const wchar_t* recordName) { defaultName = recordName; return *this; }
  OdDbField& named(const wchar_t* fieldName) { name = fieldName; return *this; }

  void* ref(OdDbObject* object) const { return storage(object); }
  const void* ref(const OdDbObject* object) const { return storage(const_cast<OdDbObject*>(object)); }
  bool isId() const { return kind >= OdDbFieldKind::kHardOwner && kind <= OdDbFieldKind::kNameRef; }
  // True when the object holds the field's default value.
  bool hasDefault(const OdDbObject* object) const;
  // Sets the member to the field's default value (name references stay null).
  void setDefault(OdDbObject* object) const;
};

struct OdDbSubclass {
  const wchar_t* marker;  // DXF subclass marker (group 100)
  std::vector<OdDbField> fields;
};

// Extra steps a class needs around the generic tag conversion.
struct OdDbSchemaHooks {
  // After every tag of a fresh read was taken (fix derived values, R12 forms).
  void (*afterRead)(OdDbObject* object, OdDbTagContext& ctx) = nullptr;
  // Before the fields are written (e.g. to refresh derived values); may be null.
  void (*beforeWrite)(const OdDbObject* object) = nullptr;
};

struct OdDbClassSchema {
  const OdDbClassSchema* parent = nullptr;
  std::vector<OdDbSubclass> subclasses;
  OdDbSchemaHooks hooks;

  // All subclasses from the root class down, in file order.
  std::vector<const OdDbSubclass*> chain() const;
};

namespace OdDbSchemaDetail {
template <class T>
struct MemberTraits;
template <class C, class T>
struct MemberTraits<T C::*> {
  using Class = C;
  using Type = T;
};

template <class T>
constexpr OdDbFieldKind kindOf() {
  if constexpr (std::is_same_v<T, bool>) return OdDbFieldKind::kBool;
  else if constexpr (std::is_same_v<T, OdInt8> || std::is_same_v<T, OdUInt8>) return OdDbFieldKind::kInt8;
  else if constexpr (std::is_same_v<T, OdInt16> || std::is_same_v<T, OdUInt16>) return OdDbFieldKind::kInt16;
  else if constexpr (std::is_same_v<T, OdInt32> || std::is_same_v<T, OdUInt32>) return OdDbFieldKind::kInt32;
  else if constexpr (std::is_same_v<T, OdInt64> || std::is_same_v<T, OdUInt64>) return OdDbFieldKind::kInt64;
  else if constexpr (std::is_same_v<T, double>) return OdDbFieldKind::kDouble;
  else if constexpr (std::is_same_v<T, OdString>) return OdDbFieldKind::kString;
  else if constexpr (std::is_same_v<T, OdGePoint2d>) return OdDbFieldKind::kPoint2d;
  else if constexpr (std::is_same_v<T, OdGePoint3d>) return OdDbFieldKind::kPoint3d;
  else if constexpr (std::is_same_v<T, OdGeVector3d>) return OdDbFieldKind::kVector3d;
  else if constexpr (std::is_same_v<T, OdDbObjectId>) return OdDbFieldKind::kSoftPointer;
  else static_assert(sizeof(T) == 0, "no field kind for this member type");
}

template <auto Member>
void* memberStorage(OdDbObject* object) {
  using Traits = MemberTraits<decltype(Member)>;
  return &(static_cast<typename Traits::Class*>(object)->*Member);
}
}  // namespace OdDbSchemaDetail

// A field held by a data member: odField<&OdDbLine::m_start>(10).
// Id members default to soft pointers; say otherwise with the kind argument.
template <auto Member>
OdDbField odField(int code, OdDbFieldKind kind = OdDbSchemaDetail::kindOf<
                                typename OdDbSchemaDetail::MemberTraits<decltype(Member)>::Type>()) {
  using Type = typename OdDbSchemaDetail::MemberTraits<decltype(Member)>::Type;
  constexpr OdDbFieldKind natural = OdDbSchemaDetail::kindOf<Type>();
  static_assert(natural != OdDbFieldKind::kCustom);
  OdDbField field;
  field.code = code;
  field.kind = kind;
  (void)natural;
  field.storage = &OdDbSchemaDetail::memberStorage<Member>;
  if constexpr (std::is_same_v<Type, OdGeVector3d>) {
    // Normals default to the world z axis.
    field.defaults(0, 0, 1);
  }
  return field;
}

// A field that names a symbol-table record (layer, linetype, style, block…).
template <auto Member>
OdDbField odNameField(int code, OdDbNameTable table, const wchar_t* defaultName = nullptr) {
  OdDbField field = odField<Member>(code, OdDbFieldKind::kNameRef);
  field.table = table;
  field.defaultName = defaultName;
  return field;
}

// Angles that files give in degrees and objects keep in radians. The
// degrees written for an angle are chosen so that reading them gives the
// very same radians back (a plain conversion differs in the last digit for
// some values).
double odDegreesToRadians(double degrees);
double odRadiansToDegrees(double radians);

// A field with its own codec; the codec must outlive the schema (use a static).
OdDbField odCustomField(const OdDbFieldCodec& codec, const wchar_t* name = L"");

// Where written groups go: a tag list, or straight into a file.
class OdDbTagSink {
 public:
  virtual ~OdDbTagSink() = default;
  virtual void addTag(const OdDxfTag& tag) = 0;
  virtual void addString(int code, const OdString& value) { addTag(OdDxfTag::str(code, value)); }
  virtual void addReal(int code, double value) { addTag(OdDxfTag::real(code, value)); }
  virtual void addPoint(int code, double x, double y, double z, int dims) { addTag(OdDxfTag::point(code, x, y, z, dims)); }
  virtual void addInteger(int code, OdInt64 value) { addTag(OdDxfTag::integer(code, value)); }
  virtual void addHandle(int code, OdUInt64 value) { addTag(OdDxfTag::handle(code, value)); }
};

// Tag conversion of whole objects, derived from their class's field table.
namespace OdDbSchemaIo {
void writeFields(const OdDbObject* object, OdDbTagSink& out, OdDbTagContext& ctx, bool withMarkers);
// The tags of one subclass of the object (fields and the unknown tags kept in it).
void writeFields(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext& ctx, bool withMarkers);
// Reads body tags (subclass markers and fields) into the object. Tags that
// belong to no field are kept in order as unknown data of the object.
void readFields(OdDbObject* object, const OdDxfTag* begin, const OdDxfTag* end, OdDbTagContext& ctx);
// Files every field out or in (the object header is filed by OdDbObject).
void fileOutFields(const OdDbObject* object, OdDbDwgFiler* filer);
void fileInFields(OdDbObject* object, OdDbDwgFiler* filer);
// Field-by-field equality (ids by identity, doubles exactly).
bool fieldsEqual(const OdDbObject* a, const OdDbObject* b, OdString* firstDifference = nullptr);
}  // namespace OdDbSchemaIo

// Declares the schema accessor of a persistent class. The class defines
// `static const OdDbClassSchema& classSchema()` in its source file.
#define ODDB_DECLARE_SCHEMA() \
 public:                      \
  static const OdDbClassSchema& classSchema();
