#include "Signature.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "DbBlockTableRecord.h"
#include "DbFiler.h"
#include "DbSymbolTable.h"

namespace dwgcmp {

namespace {

template <class T>
void appendRaw(std::string& out, const T& value) {
  out.append(reinterpret_cast<const char*>(&value), sizeof(T));
}

// Appends one real to a key: the nearest multiple of the tolerance, or the
// exact value when there is no tolerance or the multiple would not fit.
void appendRounded(std::string& out, double value, double tolerance) {
  if (tolerance > 0) {
    const double steps = std::round(value / tolerance);
    if (std::isfinite(steps) && std::fabs(steps) < 9.0e18) {
      out.push_back('r');
      appendRaw(out, static_cast<long long>(steps));
      return;
    }
  }
  out.push_back('x');
  appendRaw(out, value == 0.0 ? 0.0 : value);
}

// The filer objects write their values to. Each value is tagged with its
// kind, so that values of other kinds never run together into equal bytes.
// References by id are not recorded: ids are meaningful in one database only.
class RecordingFiler : public OdDbDwgFiler {
 public:
  FiledValues* values = nullptr;  // where numbers and other values go
  FiledValues* strings = nullptr;  // where strings go

  FilerType filerType() const override { return kBagFiler; }
  void wrBool(bool value) override { put('b', static_cast<OdUInt8>(value)); }
  void wrInt8(OdInt8 value) override { put('c', value); }
  void wrUInt8(OdUInt8 value) override { put('C', value); }
  void wrInt16(OdInt16 value) override { put('s', value); }
  void wrInt32(OdInt32 value) override { put('i', value); }
  void wrInt64(OdInt64 value) override { put('l', value); }
  void wrDouble(double value) override {
    values->bytes.push_back('d');
    values->reals.push_back(value);
  }
  void wrString(const OdString& value) override {
    strings->bytes.push_back('S');
    appendRaw(strings->bytes, static_cast<OdUInt32>(value.getLength()));
    strings->bytes.append(reinterpret_cast<const char*>(value.c_str()), sizeof(wchar_t) * value.getLength());
  }
  void wrBytes(const void* buffer, OdUInt32 length) override {
    values->bytes.push_back('B');
    appendRaw(values->bytes, length);
    values->bytes.append(static_cast<const char*>(buffer), length);
  }
  void wrHardOwnershipId(const OdDbObjectId&) override {}
  void wrSoftOwnershipId(const OdDbObjectId&) override {}
  void wrHardPointerId(const OdDbObjectId&) override {}
  void wrSoftPointerId(const OdDbObjectId&) override {}
  void wrDbHandle(const OdDbHandle&) override {}

 private:
  template <class T>
  void put(char kind, T value) {
    values->bytes.push_back(kind);
    appendRaw(values->bytes, value);
  }
};

template <class T>
const T& at(const void* p) {
  return *static_cast<const T*>(p);
}

const OdDbClassSchema* schemaOf(const OdDbObject* object) {
  for (OdRxClass* cls = object->isA(); cls; cls = cls->myParent()) {
    if (cls->schema()) return cls->schema();
  }
  return nullptr;
}

}  // namespace

bool FiledValues::sameWithin(const FiledValues& other, double tolerance) const {
  if (bytes != other.bytes || reals.size() != other.reals.size()) return false;
  for (size_t i = 0; i < reals.size(); ++i) {
    if (!(std::fabs(reals[i] - other.reals[i]) <= tolerance) && reals[i] != other.reals[i]) return false;
  }
  return true;
}

void FiledValues::appendKey(std::string& key, double tolerance) const {
  appendRaw(key, static_cast<OdUInt64>(bytes.size()));
  key += bytes;
  for (double value : reals) appendRounded(key, value, tolerance);
}

const OdString& SignatureRecorder::recordName(const OdDbObjectId& id) {
  auto found = m_names.find(id.stub());
  if (found != m_names.end()) return found->second;
  OdString name;
  if (!id.isNull()) {
    OdDbObjectPtr object = id.openObject(OdDb::kForRead, true);
    if (auto* record = dynamic_cast<OdDbSymbolTableRecord*>(object.get())) name = record->getName();
  }
  return m_names.emplace(id.stub(), name).first->second;
}

// The content of a block definition: the keys of its entities, sorted, so
// that the order in which they were drawn does not matter.
const std::string& SignatureRecorder::blockContent(const OdDbObjectId& blockId) {
  auto found = m_blocks.find(blockId.stub());
  if (found != m_blocks.end()) return found->second;
  // An empty entry first: a block that (wrongly) contains itself ends here.
  m_blocks.emplace(blockId.stub(), std::string());
  std::vector<std::string> keys;
  OdDbObjectPtr object = blockId.openObject();
  if (auto* block = dynamic_cast<OdDbBlockTableRecord*>(object.get())) {
    for (const OdDbObjectId& id : block->entityIds()) {
      OdDbObjectPtr member = id.openObject();
      auto* entity = dynamic_cast<OdDbEntity*>(member.get());
      if (!entity) continue;
      ObjectRecord r = record(entity);
      std::string key = pairingKey(r, m_tolerance);
      r.properties.appendKey(key, m_tolerance);
      keys.push_back(std::move(key));
    }
  }
  std::sort(keys.begin(), keys.end());
  std::string content;
  for (const auto& key : keys) {
    appendRaw(content, static_cast<OdUInt64>(key.size()));
    content += key;
  }
  return m_blocks[blockId.stub()] = std::move(content);
}

// The subclasses of an object's class from the root down, found once per class.
const std::vector<const OdDbSubclass*>& SignatureRecorder::chainOf(const OdDbObject* object) {
  auto found = m_chains.find(object->isA());
  if (found != m_chains.end()) return found->second;
  const OdDbClassSchema* schema = schemaOf(object);
  return m_chains[object->isA()] = schema ? schema->chain() : std::vector<const OdDbSubclass*>();
}

void SignatureRecorder::recordFields(const OdDbObject* object, ObjectRecord& out) {
  RecordingFiler filer;
  const std::vector<const OdDbSubclass*>& chain = chainOf(object);
  // The entity's own subclass holds the properties; every other subclass is
  // the object's data.
  auto intoSubclass = [&](const OdDbSubclass* sub) {
    const bool properties = sub && sub->marker && std::wcscmp(sub->marker, L"AcDbEntity") == 0;
    filer.values = properties ? &out.properties : &out.geometry;
    filer.strings = properties ? &out.properties : &out.text;
  };
  for (const OdDbSubclass* sub : chain) {
    intoSubclass(sub);
    for (const OdDbField& field : sub->fields) {
      if (field.flags & OdDbField::kNoFiler) continue;
      const void* p = field.ref(object);
      switch (field.kind) {
        case OdDbFieldKind::kBool: filer.wrBool(at<bool>(p)); break;
        case OdDbFieldKind::kInt8: filer.wrInt8(at<OdInt8>(p)); break;
        case OdDbFieldKind::kInt16: filer.wrInt16(at<OdInt16>(p)); break;
        case OdDbFieldKind::kInt32: filer.wrInt32(at<OdInt32>(p)); break;
        case OdDbFieldKind::kInt64: filer.wrInt64(at<OdInt64>(p)); break;
        case OdDbFieldKind::kDouble: filer.wrDouble(at<double>(p)); break;
        case OdDbFieldKind::kString: filer.wrString(at<OdString>(p)); break;
        case OdDbFieldKind::kPoint2d: filer.wrPoint2d(at<OdGePoint2d>(p)); break;
        case OdDbFieldKind::kPoint3d: filer.wrPoint3d(at<OdGePoint3d>(p)); break;
        case OdDbFieldKind::kVector3d: filer.wrVector3d(at<OdGeVector3d>(p)); break;
        case OdDbFieldKind::kNameRef: {
          // A name belongs with the values of its subclass: a layer is a
          // property, a block name or a text style is the object's data.
          const OdDbObjectId& id = at<OdDbObjectId>(p);
          FiledValues* into = filer.values;
          FiledValues* strings = filer.strings;
          filer.strings = into;
          filer.wrString(recordName(id));
          filer.strings = strings;
          if (field.table == OdDbNameTable::kBlock && m_followBlocks && !id.isNull()) {
            const std::string& content = blockContent(id);
            into->bytes.push_back('K');
            appendRaw(into->bytes, static_cast<OdUInt64>(content.size()));
            into->bytes += content;
          }
          break;
        }
        case OdDbFieldKind::kHardOwner:
        case OdDbFieldKind::kSoftOwner:
        case OdDbFieldKind::kHardPointer:
        case OdDbFieldKind::kSoftPointer: break;
        case OdDbFieldKind::kCustom: field.codec->fileOut(object, &filer); break;
      }
    }
  }
  // Groups the field table does not know (all the data of a class the
  // platform does not model) are the object's data: the properties are the
  // entity's known fields.
  const OdDbObjectExtras* extras = object->extras();
  if (!extras) return;
  intoSubclass(nullptr);
  for (const OdDbObjectExtras::Unknown& unknown : extras->unknown) {
    const OdDxfTag& tag = unknown.tag;
    filer.wrInt16(tag.code);
    switch (tag.type) {
      case OdDxf::ValueType::kString: filer.wrString(tag.s); break;
      case OdDxf::ValueType::kDouble: filer.wrDouble(tag.x); break;
      case OdDxf::ValueType::kPoint:
        filer.wrDouble(tag.x);
        filer.wrDouble(tag.y);
        if (tag.dims == 3) filer.wrDouble(tag.z);
        break;
      case OdDxf::ValueType::kBinary: filer.wrBytes(tag.bin.data(), static_cast<OdUInt32>(tag.bin.size())); break;
      case OdDxf::ValueType::kHandle: break;  // a handle means nothing in the other drawing
      default: filer.wrInt64(tag.i); break;
    }
  }
}

ObjectRecord SignatureRecorder::record(const OdDbEntity* entity) {
  ObjectRecord out;
  out.id = entity->objectId();
  out.handle = entity->handle().value();
  out.cls = entity->isA();
  recordFields(entity, out);
  // Vertices of polylines and attributes of references belong to their owner.
  if (const OdDbObjectIdArray* subs = entity->subentityIds()) {
    for (const OdDbObjectId& id : *subs) {
      OdDbObjectPtr sub = id.openObject();
      if (!sub.get()) continue;
      out.geometry.bytes.push_back('|');
      out.text.bytes.push_back('|');
      recordFields(sub.get(), out);
    }
  }
  return out;
}

std::string pairingKey(const ObjectRecord& record, double tolerance) {
  std::string key;
  const OdString& name = record.cls ? record.cls->name() : OdString();
  key.append(reinterpret_cast<const char*>(name.c_str()), sizeof(wchar_t) * name.getLength());
  key.push_back('\0');
  record.geometry.appendKey(key, tolerance);
  record.text.appendKey(key, tolerance);
  return key;
}

}  // namespace dwgcmp
