// Texts and multiline texts built in the test drawing, and the drawing read
// back by an independent reader (python3-ezdxf), for the text tools' tests.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "DbText.h"
#include "Ge/GeOcs.h"
#include "att_support.h"

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

inline std::string runCommand(const std::string& command) {
  std::string output;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[512];
    while (fgets(buffer, sizeof buffer, pipe)) output += buffer;
    pclose(pipe);
  }
  return output;
}

// Saves the drawing and runs a python3-ezdxf script on it (the file's path
// is sys.argv[1]); returns what the script printed, one entry a line.
inline std::vector<std::string> ezdxfLines(OdDbDatabase* db, const std::string& name, const std::string& script) {
  const std::string dxf = tempPath(name + ".dxf"), py = tempPath(name + ".py");
  odDxfWriteFile(db, OdString(dxf));
  std::ofstream(py) << "import sys, ezdxf\ndoc = ezdxf.readfile(sys.argv[1])\n"
                       "print('AUDIT', len(doc.audit().errors))\n"
                    << script;
  std::istringstream in(runCommand("/usr/bin/python3 '" + py + "' '" + dxf + "' 2>&1"));
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
