// Drawings with attributed block references built in the test, and the
// files the attribute commands write and read.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbSymbolTable.h"
#include "harness.h"

namespace att {

// A layer of the drawing (made when missing) with the flags given: 1 frozen, 4 locked.
inline OdDbObjectId layer(OdDbDatabase* db, const wchar_t* name, int flags = 0) {
  OdSmartPtr<OdDbSymbolTable> table =
      OdDbSymbolTable::cast(db->getLayerTableId().safeOpenObject(OdDb::kForWrite));
  OdDbObjectId id = table->getAt(name);
  if (id.isNull()) {
    OdSmartPtr<OdDbLayerTableRecord> record = OdDbLayerTableRecord::createObject();
    record->setName(name);
    id = table->add(record.get());
  }
  OdSmartPtr<OdDbLayerTableRecord> record = OdDbLayerTableRecord::cast(id.safeOpenObject(OdDb::kForWrite));
  record->setIsFrozen(flags & 1);
  record->setIsLocked(flags & 4);
  return id;
}

inline int layerFlags(OdDbDatabase* db, const wchar_t* name) {
  OdSmartPtr<OdDbSymbolTable> table = OdDbSymbolTable::cast(db->getLayerTableId().safeOpenObject());
  OdSmartPtr<OdDbLayerTableRecord> record = OdDbLayerTableRecord::cast(table->getAt(name).safeOpenObject());
  return (record->isFrozen() ? 1 : 0) | (record->isLocked() ? 4 : 0);
}

// A block (a unit square) named name, made when missing.
inline OdDbObjectId block(OdDbDatabase* db, const wchar_t* name) {
  OdSmartPtr<OdDbSymbolTable> table =
      OdDbSymbolTable::cast(db->getBlockTableId().safeOpenObject(OdDb::kForWrite));
  if (OdDbObjectId id = table->getAt(name); !id.isNull()) return id;
  OdDbBlockTableRecordPtr record = OdDbBlockTableRecord::createObject();
  record->setName(name);
  OdDbObjectId id = table->add(record.get());
  OdDbLinePtr line = OdDbLine::createObject();
  line->setEndPoint({1, 1, 0});
  record->appendOdDbEntity(line.get());
  return id;
}

struct Attribute {
  std::wstring tag, value;
  OdDbObjectId layer = OdDbObjectId();  // null: layer 0
};

// A reference of the block at (x, 0) with the attributes given; its handle.
inline std::string reference(OdDbDatabase* db, const wchar_t* blockName, double x,
                             const std::vector<Attribute>& attributes) {
  OdDbBlockTableRecordPtr space =
      OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
  OdDbBlockReferencePtr ref = OdDbBlockReference::createObject();
  ref->setBlockTableRecord(block(db, blockName));
  space->appendOdDbEntity(ref.get());
  ref->setPosition({x, 0, 0});
  for (const Attribute& a : attributes) {
    OdSmartPtr<OdDbAttribute> attribute = OdDbAttribute::createObject();
    attribute->setTag(a.tag.c_str());
    attribute->setTextString(a.value.c_str());
    attribute->setPosition({x, 0.5, 0});
    attribute->setHeight(0.2);
    ref->appendAttribute(attribute.get());
    if (!a.layer.isNull()) attribute->setLayer(a.layer);
  }
  return ref->objectId().handle().ascii().toUtf8();
}

// Every attribute value of the drawing's references: "handle/position" -> value.
inline std::map<std::string, std::wstring> attributeValues(OdDbDatabase* db) {
  std::map<std::string, std::wstring> values;
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  for (const OdDbObjectId& id : space->entityIds()) {
    OdDbBlockReferencePtr ref = OdDbBlockReference::cast(id.openObject().get());
    if (ref.isNull()) continue;
    int position = 0;
    for (const OdDbObjectId& attributeId : ref->attributeIds()) {
      OdSmartPtr<OdDbAttribute> attribute = OdDbAttribute::cast(attributeId.openObject().get());
      values[id.handle().ascii().toUtf8() + "/" + std::to_string(position++)] = attribute->textString().str();
    }
  }
  return values;
}

// A path in a temporary folder of this process, removed when the process ends.
inline std::string tempPath(const std::string& name) {
  struct Folder {
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("att-tests-" + std::to_string(getpid()));
    Folder() { std::filesystem::create_directories(path); }
    ~Folder() {
      std::error_code ignored;
      std::filesystem::remove_all(path, ignored);
    }
  };
  static const Folder folder;
  return (folder.path / name).string();
}

inline std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void writeBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// The lines of a file written by attout (CR LF line ends taken off).
inline std::vector<std::string> lines(const std::string& path) {
  std::vector<std::string> result;
  std::istringstream in(readBytes(path));
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    result.push_back(line);
  }
  return result;
}

// Runs attout with every attributed reference of the drawing selected.
inline std::string exportAll(HostSession& session, const std::string& path) {
  std::filesystem::remove(path);
  return session.run({"attout", path, "ALL", ""});
}

}  // namespace att
