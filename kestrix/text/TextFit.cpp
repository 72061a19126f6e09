// textfit: stretches or squeezes one single-line text between two points by
// its width factor. The new factor makes the text's box (the platform's
// text measure, proportional to the factor) run exactly from the start
// point to the end point measured along the baseline:
//   new factor = old factor x (end - start along the baseline) / box width.
// The start point is the box's lower left corner unless the user gives a
// new one, which moves the text there first.
#include "DbText.h"
#include "frame/Coordinates.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"
#include "text/TextAdjust.h"

using namespace kestrix::text;

namespace {

// The text chosen: the one object selected before the command, else one pick.
bool chooseText(OdDbObjectId& id) {
  SelectionSet implied;
  if (ryedSSGet(L"I", nullptr, nullptr, nullptr, implied.name()) == RTNORM) {
    implied.held = true;
    const std::vector<OdDbObjectId> ids = implied.ids();
    if (ids.size() == 1) {
      id = ids.front();
      return true;
    }
  }
  ads_name entity;
  ads_point picked;
  const int status = ryedEntSel(L"\n请选择要编辑的文字:", entity, picked);
  if (status == RTCAN) return false;
  if (status != RTNORM || rydbGetObjectId(id, entity) != RTNORM) {
    ryutPrintf(L"\n未选中对象。\n");
    return false;
  }
  return true;
}

// Asks the end point, or a new start point and then the end point; false on Esc or an empty answer.
bool askPoints(OdGePoint3d& start, OdGePoint3d& end) {
  ads_point base, reply;
  kestrix::worldToUcs(start, base);
  ryedInitGet(0, L"Startpoint _Startpoint");
  int status = ryedGetPoint(base, L"\n指定结束点 或 [起点(S)]:", reply);
  if (status == RTKWORD) {
    if (ryedGetPoint(base, L"\n指定新起点:", reply) != RTNORM) return false;
    start = kestrix::ucsToWorld(reply);
    kestrix::worldToUcs(start, base);
    status = ryedGetPoint(base, L"\n终点:", reply);
  }
  if (status != RTNORM) return false;
  end = kestrix::ucsToWorld(reply);
  return true;
}

// Fits the text between start and end; false when the end does not lie beyond the start.
bool fit(OdDbText* text, const OdGePoint3d& start, const OdGePoint3d& end) {
  OdGePoint3dArray box;
  text->getBoundingPoints(box);
  const OdGeVector3d along = box[1] - box[0];
  const double width = along.length();
  if (width <= 0) return false;
  const double length = (end - start).dotProduct(along / width);
  if (length <= 1e-10) return false;
  text->setWidthFactor(text->widthFactor() * length / width);
  const OdDb::TextHorzMode mode = text->horizontalMode();
  if (mode == OdDb::kTextAlign || mode == OdDb::kTextFit) {
    // These two are placed by both points: the baseline's two ends.
    text->setPosition(start);
    text->setAlignmentPoint(start + along / width * length);
    return true;
  }
  // Every other justification: move the text so that its box starts at the start point.
  text->getBoundingPoints(box);
  const OdGeVector3d shift = start - box[0];
  const bool aligned = !text->isDefaultAlignment();
  const OdGePoint3d alignment = text->alignmentPoint();
  text->setPosition(text->position() + shift);
  if (aligned) text->setAlignmentPoint(alignment + shift);
  return true;
}

}  // namespace

void textfitCommand() {
  kestrix::CmdEchoGuard guard;
  OdDbObjectId id;
  if (!chooseText(id)) return;
  if (entityType(id) != L"TEXT" || isOnLockedLayer(id)) {
    ryutPrintf(L"\n所选对象非文字。\n");
    return;
  }
  OdGePoint3d start, end;
  double rotation = 0;
  {
    OdDbTextPtr text = OdDbText::cast(id.openObject().get());
    OdGePoint3dArray box;
    text->getBoundingPoints(box);
    start = box[0];
    rotation = text->rotation();
  }
  {
    // The end point is picked on the baseline: orthogonal mode along the text.
    kestrix::SysVarSaver ortho(L"ORTHOMODE");
    kestrix::SysVarSaver snapAngle(L"SNAPANG");
    ortho.setShort(1);
    snapAngle.setReal(rotation);
    if (!askPoints(start, end)) return;
  }
  UndoGroup undo;
  bool fitted = false;
  {
    OdDbTextPtr text = OdDbText::cast(id.openObject(OdDb::kForWrite).get());
    fitted = !text.isNull() && fit(text.get(), start, end);
  }
  if (!fitted) ryutPrintf(L"%ls", ResourceString(2412, L"\nThe end point must lie beyond the start point.").c_str());
  ryedCommand(RTSTR, L"_.REGEN", RTNONE);
}
