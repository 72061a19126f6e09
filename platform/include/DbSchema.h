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
  kCustom,       // a value with its own codec (colours, records and arrays of them)
};

// Fields of a record (see OdDbRecordCodec) are plain values, arrays of
// records, or the count of such an array written where the file puts it.
enum class OdDbFieldShape : OdUInt8 { kValue, kArray, kCount };

// How a value is coded in the object data of DWG files (bit codes). A field
// gives its coding once, beside its group code; DXF and the filers do not
// use it. kNatural means the usual coding of the field's kind (see
// odNaturalDwgCode).
enum class OdDwgCode : OdUInt8 {
  kNatural,
  kB,    // bit
  kBB,   // two bits
  kBS,   // bit-coded short
  kBL,   // bit-coded long
  kBLL,  // bit-coded 64-bit integer
  kBD,   // bit-coded double
  kRC,   // raw char
  kRS,   // raw short
  kRL,   // raw long
  kRD,   // raw double
  k2RD,  // two raw doubles
  k2BD,  // two bit-coded doubles
  k3BD,  // three bit-coded doubles
  k3RD,  // three raw doubles
  kBE,   // extrusion: a bit for (0,0,1), else three bit-coded doubles
  kBT,   // thickness: a bit for zero, else a bit-coded double
  kDD,   // double with a default (the previous value)
  kTV,   // text
  kH,    // handle reference
  kCMC,  // colour
};

constexpr OdDwgCode odNaturalDwgCode(OdDbFieldKind kind) {
  switch (kind) {
    case OdDbFieldKind::kBool: return OdDwgCode::kB;
    case OdDbFieldKind::kInt8: return OdDwgCode::kRC;
    case OdDbFieldKind::kInt16: return OdDwgCode::kBS;
    case OdDbFieldKind::kInt32: return OdDwgCode::kBL;
    case OdDbFieldKind::kInt64: return OdDwgCode::kBLL;
    case OdDbFieldKind::kDouble: return OdDwgCode::kBD;
    case OdDbFieldKind::kString: return OdDwgCode::kTV;
    case OdDbFieldKind::kPoint2d: return OdDwgCode::k2RD;
    case OdDbFieldKind::kPoint3d:
    case OdDbFieldKind::kVector3d: return OdDwgCode::k3BD;
    case OdDbFieldKind::kHardOwner:
    case OdDbFieldKind::kSoftOwner:
    case OdDbFieldKind::kHardPointer:
    case OdDbFieldKind::kSoftPointer:
    case OdDbFieldKind::kNameRef: return OdDwgCode::kH;
    case OdDbFieldKind::kCustom: return OdDwgCode::kNatural;
  }
  return OdDwgCode::kNatural;
}

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
  void clearCodecState() {
    m_codecState.clear();
    m_recordFrames.clear();
    m_recordFramesOwner = nullptr;
  }

  // Where the reading of a compound value stands: the records open from the
  // outermost in (see OdDbRecordCodec); kept for one codec at a time.
  struct RecordFrame {
    const std::vector<OdDbField>* fields;
    const OdDbField* array;  // the array the record belongs to; null for the outermost
    void* record;
    OdUInt64 seen;           // the record's fields read so far, one bit each
  };
  std::vector<RecordFrame>& recordFrames(const void* codec) {
    if (m_recordFramesOwner != codec) {
      m_recordFrames.clear();
      m_recordFramesOwner = codec;
    }
    return m_recordFrames;
  }

 private:
  std::vector<std::pair<const void*, OdInt64>> m_codecState;
  std::vector<RecordFrame> m_recordFrames;
  const void* m_recordFramesOwner = nullptr;
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

struct OdDbArraySpec;

// A field: a value of an object, or of one record of an array. Its storage
// function gives the value's address from the object (or the record).
class OdDbField {
 public:
  enum Flags : OdUInt16 {
    kOptional = 1,      // written only when it differs from its default
    kNoDxf = 2,         // kept and filed, but not part of DXF or entity lists
    kNoFiler = 4,       // derived value: neither filed nor compared
    kAngleDegrees = 8,  // stored in radians, written in degrees
    kNoEntityList = 16, // not part of entity-data lists
    kRequired = 32,     // an entity made from a list must be given it
    kWhenWriting = 64,  // the condition (when) decides only what is written
    kHandleValue = 128, // an integer that is a handle of its own, not an object's id: written as a handle
  };

  int code = 0;
  OdDbFieldKind kind = OdDbFieldKind::kInt16;
  OdDbFieldShape shape = OdDbFieldShape::kValue;
  OdDbNameTable table = OdDbNameTable::kNone;
  OdUInt16 flags = 0;
  OdDb::DwgVersion minVersion = OdDb::vAC09;
  const wchar_t* name = L"";           // for printing and tests
  const wchar_t* defaultName = nullptr;  // name references: record used when absent
  double defaultReal[3] = {0, 0, 0};
  OdInt64 defaultInt = 0;
  OdDwgCode dwg = OdDwgCode::kNatural;
  // Valid values of an enumeration or bounded integer: the range [validLow,
  // validHigh] when validHigh >= validLow, or else the list validSet (when
  // set). A read value outside them is repaired to the default.
  OdInt64 validLow = 0, validHigh = -1;
  const OdInt64* validSet = nullptr;
  OdUInt8 validSetSize = 0;
  void* (*storage)(void*) = nullptr;  // address of the member holding the value
  const OdDbFieldCodec* codec = nullptr;
  const OdDbArraySpec* array = nullptr;  // arrays and counts: the records
  // A flag member (of the same object or record) that says whether the
  // value was in the file: it is written only when the flag is set, and
  // reading sets the flag. Values that files give or leave out as a group.
  bool* (*presence)(void*) = nullptr;
  // Fields that exist only in some variants of a record (the kind of a hatch
  // edge): the field is neither written nor read when this says no.
  // The owner is the record (or the object) holding the field.
  bool (*when)(const void* owner, const OdDbObject* object, const OdDbTagContext& ctx) = nullptr;
  // What a group says beyond its value, done when the value is read (the
  // code an entry is read with can tell how its owner holds its entries).
  void (*onRead)(void* owner, OdDbObject* object) = nullptr;

  OdDbField& optional() { flags |= kOptional; return *this; }
  OdDbField& since(OdDb::DwgVersion version) { minVersion = version; return *this; }
  OdDbField& degrees() { flags |= kAngleDegrees; return *this; }
  OdDbField& noDxf() { flags |= kNoDxf; return *this; }
  OdDbField& noEntityList() { flags |= kNoEntityList; return *this; }
  OdDbField& noFiler() { flags |= kNoFiler; return *this; }
  OdDbField& defaults(double value) { defaultReal[0] = value; return *this; }
  OdDbField& defaults(double x, double y, double z) {
    defaultReal[0] = x; defaultReal[1] = y; defaultReal[2] = z;
    return *this;
  }
  OdDbField& defaultsInt(OdInt64 value) { defaultInt = value; return *this; }
  OdDbField& defaultsName(const wchar_t* recordName) { defaultName = recordName; return *this; }
  OdDbField& named(const wchar_t* fieldName) { name = fieldName; return *this; }
  OdDbField& required() { flags |= kRequired; return *this; }
  OdDbField& dwgAs(OdDwgCode code) { dwg = code; return *this; }
  OdDbField& asHandle() { flags |= kHandleValue; return *this; }
  OdDbField& validRange(OdInt64 low, OdInt64 high) { validLow = low; validHigh = high; return *this; }
  template <size_t N>
  OdDbField& validValues(const OdInt64 (&values)[N]) {
    validSet = values;
    validSetSize = static_cast<OdUInt8>(N);
    return *this;
  }
  OdDbField& onlyWhen(bool (*condition)(const void*, const OdDbObject*, const OdDbTagContext&)) {
    when = condition;
    return *this;
  }
  OdDbField& writtenWhen(bool (*condition)(const void*, const OdDbObject*, const OdDbTagContext&)) {
    when = condition;
    flags |= kWhenWriting;
    return *this;
  }
  OdDbField& alsoOnRead(void (*action)(void*, OdDbObject*)) {
    onRead = action;
    return *this;
  }
  template <auto FlagMember>
  OdDbField& presentWith();

  OdDwgCode dwgCode() const { return dwg == OdDwgCode::kNatural ? odNaturalDwgCode(kind) : dwg; }
  bool isRequired() const { return flags & kRequired; }
  bool hasValidSet() const { return validHigh >= validLow || validSet; }
  bool isValidValue(OdInt64 value) const;

  // The value's address in an object, or in a record for the fields of an array.
  void* ref(OdDbObject* object) const { return storage(object); }
  const void* ref(const OdDbObject* object) const { return storage(const_cast<OdDbObject*>(object)); }
  void* refIn(void* owner) const { return storage(owner); }
  const void* refIn(const void* owner) const { return storage(const_cast<void*>(owner)); }
  bool isId() const { return kind >= OdDbFieldKind::kHardOwner && kind <= OdDbFieldKind::kNameRef; }
  // True when the object holds the field's default value.
  bool hasDefault(const OdDbObject* object) const { return hasDefaultIn(object); }
  bool hasDefaultIn(const void* owner) const;
  // Sets the member to the field's default value (name references stay null,
  // arrays empty).
  void setDefault(OdDbObject* object) const { setDefaultIn(object); }
  void setDefaultIn(void* owner) const;
};

// The records of an array field: how to reach the container, and the fields
// of one record (their storage is relative to the record). The first field
// starts a record: its group code, met again, begins the next one.
struct OdDbArraySpec {
  size_t (*size)(const void* container) = nullptr;
  void (*resize)(void* container, size_t count) = nullptr;
  void* (*at)(void* container, size_t index) = nullptr;
  std::vector<OdDbField> fields;
  // Sets up a record begun by a read (values that follow from groups read
  // before it); may be null.
  void (*beginRecord)(void* record, const OdDbObject* object) = nullptr;
  // Records written only when this says yes (null: all of them).
  bool (*written)(const void* record) = nullptr;
  // Records read that this says no to (an entry whose object is missing) are
  // dropped when the read ends; droppedAs names them in the repair report
  // (null: dropped without one). Only for the arrays of a codec's own fields.
  bool (*kept)(const void* record) = nullptr;
  const wchar_t* droppedAs = nullptr;
  // Removes the records that keep says no to; returns how many.
  size_t (*dropUnless)(void* container, bool (*keep)(const void* record)) = nullptr;
  const void* element(const void* container, size_t index) const { return at(const_cast<void*>(container), index); }
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

// The address of a member, from the object (or record) that holds it. Base,
// when given, leads from the object to the structure that has the member
// (data an object keeps out of line).
template <auto Member, void* (*Base)(void*) = nullptr>
void* memberStorage(void* owner) {
  using Class = typename MemberTraits<decltype(Member)>::Class;
  if constexpr (Base != nullptr) {
    return &(static_cast<Class*>(Base(owner))->*Member);
  } else if constexpr (std::is_base_of_v<OdDbObject, Class>) {
    return &(static_cast<Class*>(static_cast<OdDbObject*>(owner))->*Member);
  } else {
    return &(static_cast<Class*>(owner)->*Member);
  }
}

template <auto FlagMember, void* (*Base)(void*) = nullptr>
bool* flagStorage(void* owner) {
  return static_cast<bool*>(memberStorage<FlagMember, Base>(owner));
}

template <class T>
inline void* itself(void* value) { return value; }

template <class Container>
OdDbArraySpec arrayAccess() {
  OdDbArraySpec spec;
  spec.size = [](const void* c) -> size_t { return static_cast<const Container*>(c)->size(); };
  spec.resize = [](void* c, size_t n) { static_cast<Container*>(c)->resize(n); };
  spec.at = [](void* c, size_t i) -> void* { return &(*static_cast<Container*>(c))[i]; };
  spec.dropUnless = [](void* c, bool (*keep)(const void*)) -> size_t {
    return std::erase_if(*static_cast<Container*>(c), [keep](const auto& record) { return !keep(&record); });
  };
  return spec;
}
}  // namespace OdDbSchemaDetail

template <auto FlagMember>
OdDbField& OdDbField::presentWith() {
  presence = &OdDbSchemaDetail::flagStorage<FlagMember>;
  return *this;
}

// A field held by a data member: odField<&OdDbLine::m_start>(10).
// Id members default to soft pointers; say otherwise with the kind argument.
// Members of a record (the element of an array) are declared the same way;
// Base leads from the object to out-of-line data holding the member.
template <auto Member, void* (*Base)(void*) = nullptr>
OdDbField odField(int code, OdDbFieldKind kind = OdDbSchemaDetail::kindOf<
                                typename OdDbSchemaDetail::MemberTraits<decltype(Member)>::Type>()) {
  using Type = typename OdDbSchemaDetail::MemberTraits<decltype(Member)>::Type;
  OdDbField field;
  field.code = code;
  field.kind = kind;
  field.storage = &OdDbSchemaDetail::memberStorage<Member, Base>;
  if constexpr (std::is_same_v<Type, OdGeVector3d>) {
    // Normals default to the world z axis.
    field.defaults(0, 0, 1);
  }
  return field;
}

// The fields of the records of a container type (std::vector or OdArray of
// a record struct): odRecords<std::vector<Edge>>({odField<&Edge::type>(72), ...}).
// Keep the result in a static: array fields point at it.
template <class Container>
OdDbArraySpec odRecords(std::vector<OdDbField> fields) {
  OdDbArraySpec spec = OdDbSchemaDetail::arrayAccess<Container>();
  spec.fields = std::move(fields);
  return spec;
}

// An array of records held by a member: its records' tags follow each other,
// each record starting with its first field's group.
template <auto Member, void* (*Base)(void*) = nullptr>
OdDbField odArrayField(const OdDbArraySpec& spec, const wchar_t* name) {
  OdDbField field;
  field.kind = OdDbFieldKind::kCustom;
  field.shape = OdDbFieldShape::kArray;
  field.array = &spec;
  field.code = spec.fields.empty() ? 0 : spec.fields.front().code;
  field.name = name;
  field.storage = &OdDbSchemaDetail::memberStorage<Member, Base>;
  return field;
}

// An array of plain values (doubles, 2-d points, ids…), one group each;
// values that kept says no to are dropped when a read ends (see OdDbArraySpec).
template <auto Member, void* (*Base)(void*) = nullptr>
OdDbField odValueArrayField(int code, const wchar_t* name,
                            OdDbFieldKind kind = OdDbSchemaDetail::kindOf<typename OdDbSchemaDetail::MemberTraits<
                                decltype(Member)>::Type::value_type>(),
                            bool (*kept)(const void* value) = nullptr) {
  using Container = typename OdDbSchemaDetail::MemberTraits<decltype(Member)>::Type;
  using Value = typename Container::value_type;
  static const OdDbArraySpec spec = [kind, code, kept] {
    OdDbArraySpec s = OdDbSchemaDetail::arrayAccess<Container>();
    s.kept = kept;
    OdDbField value;
    value.code = code;
    value.kind = kind;
    value.storage = &OdDbSchemaDetail::itself<Value>;
    s.fields.push_back(value);
    return s;
  }();
  return odArrayField<Member, Base>(spec, name);
}

// The number of records of an array field, written where the file puts it
// (read, it is only checked by the records that follow).
template <auto Member, void* (*Base)(void*) = nullptr>
OdDbField odCountField(int code, const OdDbField& arrayField) {
  OdDbField field;
  field.kind = OdDbFieldKind::kCustom;
  field.shape = OdDbFieldShape::kCount;
  field.code = code;
  field.array = arrayField.array;
  field.name = L"count";
  field.storage = &OdDbSchemaDetail::memberStorage<Member, Base>;
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

// The one codec of compound values: a record of fields - plain values,
// arrays of records, the counts of arrays - nested as deep as the value
// needs (hatch loops hold edges, edges hold knots). DXF in and out, filing
// in and out and equality all follow the record's fields, so that each
// member of a compound value is declared once.
//
// Reading: a group goes to the innermost open record that has an unread
// field of that code; the code of an array's first field, met again, begins
// the array's next record; any other group closes the record and is offered
// to the one around it.
class OdDbRecordCodec : public OdDbFieldCodec {
 public:
  // base leads from the object to the record (null: the object itself);
  // settle sets up what the object derives from the records (an index of
  // them) once a read or a filing in has put them in place.
  explicit OdDbRecordCodec(std::vector<OdDbField> fields, void* (*base)(void*) = nullptr,
                           void (*settle)(OdDbObject* object) = nullptr);
  const std::vector<OdDbField>& fields() const { return m_fields; }
  void* record(OdDbObject* object) const { return m_base ? m_base(object) : static_cast<void*>(object); }
  const void* record(const OdDbObject* object) const { return record(const_cast<OdDbObject*>(object)); }

  std::vector<int> codes() const override { return m_codes; }
  void toTags(const OdDbObject* object, OdDxfTagList& out, OdDbTagContext& ctx) const override;
  bool fromTag(OdDbObject* object, const OdDxfTag& tag, OdDbTagContext& ctx) const override;
  void beginRead(OdDbObject* object) const override;
  void endRead(OdDbObject* object, OdDbTagContext& ctx) const override;
  void fileOut(const OdDbObject* object, OdDbDwgFiler* filer) const override;
  void fileIn(OdDbObject* object, OdDbDwgFiler* filer) const override;
  bool isEqual(const OdDbObject* a, const OdDbObject* b) const override;

 private:
  std::vector<OdDbField> m_fields;
  void* (*m_base)(void*);
  void (*m_settle)(OdDbObject*);
  std::vector<int> m_codes;
};

// Where written groups go: a tag list, straight into a file, or an
// entity-data list. The writer gives every value through these functions;
// a sink decides the form (a reference is a handle in files and an entity
// name in lists).
class OdDbTagSink {
 public:
  virtual ~OdDbTagSink() = default;
  // A tag made elsewhere (the codecs' values, data kept as read).
  virtual void addTag(const OdDxfTag& tag) = 0;
  virtual void addString(int code, const OdString& value) { addTag(OdDxfTag::str(code, value)); }
  // Text the writer holds as a constant: subclass markers and default names.
  virtual void addText(int code, const wchar_t* value) { addString(code, OdString(value)); }
  virtual void addReal(int code, double value) { addTag(OdDxfTag::real(code, value)); }
  virtual void addPoint(int code, double x, double y, double z, int dims) { addTag(OdDxfTag::point(code, x, y, z, dims)); }
  virtual void addInteger(int code, OdInt64 value) { addTag(OdDxfTag::integer(code, value)); }
  virtual void addHandle(int code, OdUInt64 value) { addTag(OdDxfTag::handle(code, value)); }
  // An owner or pointer field: the object's handle unless the sink says otherwise.
  virtual void addReference(int code, const OdDbObjectId& id) { addHandle(code, id.handle().value()); }
};

// The name of the symbol-table record an id stands for, read straight from
// the object (no open); null for null ids and objects that are not records.
const OdString* odDbRecordName(const OdDbObjectId& id);

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
// Files one plain value (not a custom codec's) held at `value`.
void fileOutValue(const OdDbField& field, const void* value, OdDbDwgFiler* filer);
// The group codes an entity made from a list must be given: the required
// fields of the class, those inside records included.
std::vector<int> requiredCodes(const OdDbClassSchema& schema);
// Field-by-field equality (ids by identity, doubles exactly).
bool fieldsEqual(const OdDbObject* a, const OdDbObject* b, OdString* firstDifference = nullptr);
}  // namespace OdDbSchemaIo

// Declares the schema accessor of a persistent class. The class defines
// `static const OdDbClassSchema& classSchema()` in its source file.
#define ODDB_DECLARE_SCHEMA() \
 public:                      \
  static const OdDbClassSchema& classSchema();
