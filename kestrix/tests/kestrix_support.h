// The helpers the module's tests share: drawings with attributed block
// references, texts and multiline texts built in the test; drawings made
// and checked by an independent reader (python3 with ezdxf); temporary
// files and the output of command lines.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "DxfFile.h"
#include "Ge/GeOcs.h"
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

namespace dxfcheck {

// A file in a folder of this process, removed when the process ends.
using att::tempPath;

// The output (both streams) of a command line, as it was printed.
inline std::string commandOutput(const std::string& command) {
  std::string text;
  if (FILE* pipe = popen((command + " 2>&1").c_str(), "r")) {
    char buffer[512];
    while (fgets(buffer, sizeof buffer, pipe)) text += buffer;
    pclose(pipe);
  }
  return text;
}

// The output of a command line, trailing line breaks taken off.
inline std::string output(const std::string& command) {
  std::string text = commandOutput(command);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

// Runs a python script (with sys and ezdxf imported) with the arguments.
inline std::string python(const std::string& script, const std::string& arguments) {
  const std::string path = tempPath("script.py");
  std::ofstream(path) << "import sys, ezdxf\n" << script;
  return output("/usr/bin/python3 '" + path + "' " + arguments);
}

// A drawing that an ezdxf script writes to the path it is given, as a
// temporary file of that name; its path. A complaint of the script fails the test.
inline std::string pythonDrawing(const std::string& script, const std::string& name) {
  const std::string path = tempPath(name);
  EXPECT_EQ(python(script, path), "") << name;
  return path;
}

// "same" when the two drawings hold the same entities (the shared checker).
inline std::string sameEntities(const std::string& before, const std::string& after) {
  return output("/usr/bin/python3 " + std::string(KESTRIX_CORPUS_DIR) + "/../tools/dxf_same_entities.py '" +
                before + "' '" + after + "'");
}

inline std::string saved(OdDbDatabase* db, const std::string& name) {
  const std::string path = tempPath(name);
  odDxfWriteFile(db, OdString(path));
  return path;
}

}  // namespace dxfcheck

namespace txt {

inline OdDbBlockTableRecordPtr modelSpace(OdDbDatabase* db) {
  return OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
}

// A single-line text at (x, y), height 2.5, on layer 0 unless given.
inline OdDbObjectId text(OdDbDatabase* db, const std::wstring& value, double x, double y, double rotation = 0,
                         OdDbObjectId layer = OdDbObjectId()) {
  OdDbTextPtr entity = OdDbText::createObject();
  entity->setTextString(value.c_str());
  entity->setHeight(2.5);
  entity->setRotation(rotation);
  OdDbObjectId id = modelSpace(db)->appendOdDbEntity(entity.get());
  entity->setPosition({x, y, 0});
  if (!layer.isNull()) entity->setLayer(layer);
  return id;
}

inline OdDbObjectId mtext(OdDbDatabase* db, const std::wstring& contents, double x, double y) {
  OdSmartPtr<OdDbMText> entity = OdDbMText::createObject();
  entity->setContents(contents.c_str());
  entity->setTextHeight(2.5);
  OdDbObjectId id = modelSpace(db)->appendOdDbEntity(entity.get());
  entity->setLocation({x, y, 0});
  return id;
}

inline OdDbObjectId attdef(OdDbDatabase* db, const std::wstring& tag, const std::wstring& value, double x, double y) {
  OdSmartPtr<OdDbAttributeDefinition> entity = OdDbAttributeDefinition::createObject();
  entity->setTag(tag.c_str());
  entity->setTextString(value.c_str());
  entity->setHeight(2.5);
  OdDbObjectId id = modelSpace(db)->appendOdDbEntity(entity.get());
  entity->setPosition({x, y, 0});
  return id;
}

// The string of a text, multiline text (its contents) or attribute.
inline std::wstring stringOf(const OdDbObjectId& id) {
  OdDbObjectPtr object = id.openObject();
  if (auto* t = dynamic_cast<OdDbText*>(object.get())) return t->textString().c_str();
  if (auto* m = dynamic_cast<OdDbMText*>(object.get())) return m->contents().c_str();
  return L"";
}

inline OdDbTextPtr openText(const OdDbObjectId& id) { return OdDbText::cast(id.openObject().get()); }

inline int shortVar(HostSession& session, const wchar_t* name) {
  return static_cast<int>(session.host().sysvars().getInt(name, -99));
}

}  // namespace txt

namespace txtmask {

inline OdDbObjectId append(OdDbDatabase* db, OdDbEntity* entity, const OdDbObjectId& layer = OdDbObjectId()) {
  OdDbBlockTableRecordPtr space = OdDbBlockTableRecord::cast(db->getModelSpaceId().openObject(OdDb::kForWrite).get());
  if (!layer.isNull()) entity->setLayer(layer);
  return space->appendOdDbEntity(entity);
}

inline std::string handleOf(const OdDbObjectId& id) { return id.handle().ascii().toUtf8(); }

struct TextSpec {
  std::wstring text = L"ABC";
  OdGePoint3d at;
  double height = 1, rotation = 0;
  OdDbObjectId layer = OdDbObjectId();
  OdInt16 color = 256;
  OdGeVector3d normal = OdGeVector3d(0, 0, 1);
  OdDb::TextHorzMode horizontal = OdDb::kTextLeft;
  OdDb::TextVertMode vertical = OdDb::kTextBase;
  OdDbObjectId style = OdDbObjectId();
};

// A single-line text; a justified one stands on its alignment point at.
inline OdDbObjectId text(OdDbDatabase* db, const TextSpec& spec) {
  OdDbTextPtr t = OdDbText::createObject();
  t->setDatabaseDefaults(db);
  t->setNormal(spec.normal);
  t->setTextString(spec.text.c_str());
  t->setHeight(spec.height);
  t->setRotation(spec.rotation);
  t->setPosition(spec.at);
  t->setHorizontalMode(spec.horizontal);
  t->setVerticalMode(spec.vertical);
  if (!t->isDefaultAlignment()) t->setAlignmentPoint(spec.at);
  if (spec.color != 256) t->setColorIndex(spec.color);
  if (!spec.style.isNull()) t->setTextStyle(spec.style);
  return append(db, t.get(), spec.layer);
}

inline OdDbObjectId mtext(OdDbDatabase* db, const std::wstring& contents, const OdGePoint3d& at, double height,
                          OdDbMText::AttachmentPoint attachment, double rotation) {
  OdDbMTextPtr m = OdDbMText::createObject();
  m->setDatabaseDefaults(db);
  m->setContents(contents.c_str());
  m->setLocation(at);
  m->setTextHeight(height);
  m->setAttachment(attachment);
  m->setRotation(rotation);
  return append(db, m.get());
}

using att::tempPath;

// Saves the drawing and runs a python3-ezdxf script on it (the file's path
// is sys.argv[1]); returns what the script printed, one entry a line.
inline std::vector<std::string> ezdxfLines(OdDbDatabase* db, const std::string& name, const std::string& script) {
  const std::string dxf = tempPath(name + ".dxf"), py = tempPath(name + ".py");
  odDxfWriteFile(db, OdString(dxf));
  std::ofstream(py) << "import sys, ezdxf\ndoc = ezdxf.readfile(sys.argv[1])\n"
                       "print('AUDIT', len(doc.audit().errors))\n"
                    << script;
  std::istringstream in(dxfcheck::commandOutput("/usr/bin/python3 '" + py + "' '" + dxf + "'"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  std::filesystem::remove(dxf);
  std::filesystem::remove(py);
  return lines;
}

inline std::vector<std::string> words(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> result;
  for (std::string word; in >> word;) result.push_back(word);
  return result;
}

}  // namespace txtmask
