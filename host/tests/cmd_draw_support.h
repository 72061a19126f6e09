// Helpers of the drawing and editing command tests: the drawing as text (to
// tell that Esc or U left it exactly as it was), typed access to the
// entities of model space and of blocks.
#pragma once

#include <regex>
#include <string>
#include <vector>

#include "DbBlockReference.h"
#include "DbCurves.h"
#include "DbPolyline.h"
#include "DbSymbolTable.h"
#include "DbText.h"
#include "DxfFile.h"
#include "harness.h"

namespace draw_test {

// The drawing as a file would hold it, without the handle seed (handles
// used up by a command stay used after U).
inline std::string drawingText(OdDbDatabase* db) {
  const std::string text = odDxfWriteBuffer(db, odDxfSaveVersion(db));
  return std::regex_replace(text, std::regex("\\$HANDSEED\\r?\\n *5\\r?\\n[0-9A-Fa-f]+"), "$HANDSEED");
}

// Where two drawing texts part (a few lines of each from there), or empty when they are the same.
inline std::string difference(const std::string& a, const std::string& b) {
  if (a == b) return std::string();
  size_t at = 0;
  while (at < a.size() && at < b.size() && a[at] == b[at]) ++at;
  const size_t from = a.rfind('\n', at == 0 ? 0 : at - 1);
  const size_t start = from == std::string::npos ? 0 : from + 1;
  return "was: " + a.substr(start, 120) + "\nnow: " + b.substr(start, 120);
}

constexpr double kPi = 3.14159265358979323846;

inline void expectPoint(const OdGePoint3d& actual, double x, double y, double z = 0) {
  EXPECT_NEAR(actual.x, x, 1e-9);
  EXPECT_NEAR(actual.y, y, 1e-9);
  EXPECT_NEAR(actual.z, z, 1e-9);
}

template <class T>
OdSmartPtr<T> open(const OdDbObjectId& id) {
  return OdSmartPtr<T>(T::cast(id.openObject().get()));
}

// The live entities of model space of one class (and its subclasses).
template <class T>
std::vector<OdSmartPtr<T>> entitiesOf(HostSession& session) {
  std::vector<OdSmartPtr<T>> found;
  for (const OdDbObjectId& id : session.modelSpace()) {
    OdSmartPtr<T> entity = open<T>(id);
    if (!entity.isNull()) found.push_back(entity);
  }
  return found;
}

inline OdDbObjectIdArray blockEntities(OdDbDatabase* db, const wchar_t* name) {
  OdDbObjectIdArray ids;
  OdDbBlockTableRecordPtr block = open<OdDbBlockTableRecord>(db->findRecord(OdDbNameTable::kBlock, name));
  if (block.isNull()) return ids;
  for (const OdDbObjectId& id : block->entityIds()) {
    if (!id.isErased()) ids.append(id);
  }
  return ids;
}

inline OdString layerName(const OdDbEntity* entity) { return entity->layer(); }

// Runs a command's replies once for every prompt with Esc typed at it
// instead: the drawing must stay as it was. Then runs them whole and U.
inline void expectEscAndUndoLeaveNothing(HostSession& session, const std::vector<std::string>& replies) {
  const std::string before = drawingText(session.db());
  for (size_t answered = 1; answered < replies.size(); ++answered) {
    std::vector<std::string> cut(replies.begin(), replies.begin() + static_cast<long>(answered));
    cut.push_back("^C");
    session.run(cut);
    EXPECT_EQ(difference(before, drawingText(session.db())), "") << "Esc after " << replies[answered - 1];
  }
  session.run(replies);
  EXPECT_FALSE(difference(before, drawingText(session.db())).empty()) << "the command changed nothing";
  session.run({"U"});
  EXPECT_EQ(difference(before, drawingText(session.db())), "") << "U after " << replies.front();
  EXPECT_TRUE(session.host().problems().empty()) << session.host().problems().front().toUtf8();
}

}  // namespace draw_test
