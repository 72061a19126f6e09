// tcircle: draws a frame around each selected text: a circle, a slot (a
// closed polyline of two straight sides and two half circles) or a
// rectangle (a closed polyline), turned with the text. The gap between the
// text's box and the frame is the offset factor times the text's height.
// Variable fits each frame to its own text; Constant gives every frame the
// size of the largest one, in width, height or both for slots and
// rectangles. The answers are remembered in the host settings file.
#include <algorithm>
#include <cmath>
#include <cwchar>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbPolyline.h"
#include "DbText.h"
#include "Ge/GeOcs.h"
#include "frame/Guards.h"
#include "frame/HostSettings.h"
#include "frame/commands.h"
#include "ryed.h"
#include "ryut.h"
#include "text/TextAdjust.h"

using namespace kestrix::text;

namespace {

enum class Shape { kCircle, kSlot, kRectangle };
enum class Kept { kWidth, kHeight, kBoth };

// One text's box in its own axes, with the gap around it.
struct Framed {
  OdDbObjectId owner;
  OdGeVector3d normal, along, up;  // unit vectors: the text's baseline and its upward direction
  OdGePoint3d centre;
  double width = 0, height = 0, gap = 0;
};

bool measure(const OdDbObjectId& id, double factor, Framed& framed) {
  OdGePoint3d box[4];
  if (!textBox(id, box)) return false;
  OdDbObjectPtr object = id.openObject();
  double textHeight = 0;
  if (auto* text = dynamic_cast<OdDbText*>(object.get())) {
    textHeight = text->height();
    framed.normal = text->normal();
  } else if (auto* mtext = dynamic_cast<OdDbMText*>(object.get())) {
    textHeight = mtext->textHeight();
    framed.normal = mtext->normal();
  } else {
    return false;
  }
  framed.owner = object->ownerId();
  framed.width = box[0].distanceTo(box[1]);
  framed.height = box[0].distanceTo(box[3]);
  framed.along = framed.width > 0 ? (box[1] - box[0]) / framed.width : OdGeVector3d::kXAxis;
  framed.up = framed.height > 0 ? (box[3] - box[0]) / framed.height : framed.normal.crossProduct(framed.along);
  framed.centre = box[0] + (box[2] - box[0]) / 2.0;
  framed.gap = factor * textHeight;
  return true;
}

bool askFactor(double& factor) {
  const OdString remembered = kestrix::readHostSetting(L"TCIRCLE_FACTOR", L"0.35");
  factor = std::wcstod(remembered.c_str(), nullptr);
  OdString prompt;
  prompt.format(L"\n输入偏移距离伸缩因子<%.4f>:", factor);
  ryedInitGet(RSG_NONEG, nullptr);
  double answer = 0;
  const int status = ryedGetReal(prompt.c_str(), &answer);
  if (status == RTNONE) return true;
  if (status != RTNORM) return false;
  factor = answer;
  kestrix::writeHostSetting(L"TCIRCLE_FACTOR", OdString().format(L"%.6g", factor));
  return true;
}

// The entity made, in the text's own space.
void append(const Framed& framed, OdDbEntity* entity) {
  OdSmartPtr<OdDbBlockTableRecord> space = OdDbBlockTableRecord::cast(framed.owner.openObject(OdDb::kForWrite).get());
  if (space.isNull()) return;
  entity->setDatabaseDefaults(space->database());
  space->appendOdDbEntity(entity);
}

void drawCircle(const Framed& framed, double radius) {
  OdSmartPtr<OdDbCircle> circle = OdDbCircle::createObject();
  circle->setNormal(framed.normal);
  circle->setCenter(framed.centre);
  circle->setRadius(radius);
  append(framed, circle.get());
}

// A closed polyline around the centre: a straight length and a height; with
// round ends, half circles of the height's diameter close it at both ends.
void drawOutline(const Framed& framed, double straight, double height, bool roundEnds) {
  const OdGeVector3d a = framed.along * (straight / 2), u = framed.up * (height / 2);
  const OdGePoint3d corners[4] = {framed.centre - a - u, framed.centre + a - u, framed.centre + a + u,
                                  framed.centre - a + u};
  OdSmartPtr<OdDbPolyline> outline = OdDbPolyline::createObject();
  outline->setNormal(framed.normal);
  OdGePoint2d ocs[4];
  for (int i = 0; i < 4; ++i) {
    const OdGePoint3d p = odgeWcsToOcs(corners[i], framed.normal);
    ocs[i] = OdGePoint2d(p.x, p.y);
    if (i == 0) outline->setElevation(p.z);
  }
  // The ends bulge outwards whichever way round the corners run in the polyline's plane.
  const double turn = (ocs[1] - ocs[0]).crossProduct(ocs[2] - ocs[1]) >= 0 ? 1.0 : -1.0;
  for (unsigned int i = 0; i < 4; ++i) outline->addVertexAt(i, ocs[i], roundEnds && i % 2 == 1 ? turn : 0.0);
  outline->setClosed(true);
  append(framed, outline.get());
}

struct Sizes {
  double straight, height;
};

// Own sizes of a frame: for a rectangle its width and height; for a slot
// the straight part spans the box and its gaps, the half circles lie beyond.
Sizes ownSizes(const Framed& f) { return {f.width + 2 * f.gap, f.height + 2 * f.gap}; }

int drawAll(const std::vector<Framed>& texts, Shape shape, bool constant, Kept kept) {
  double largestRadius = 0, largestStraight = 0, largestHeight = 0, largestTotal = 0;
  for (const Framed& f : texts) {
    const Sizes own = ownSizes(f);
    largestRadius = std::max(largestRadius, std::hypot(f.width, f.height) / 2 + f.gap);
    largestStraight = std::max(largestStraight, own.straight);
    largestHeight = std::max(largestHeight, own.height);
    largestTotal = std::max(largestTotal, own.straight + (shape == Shape::kSlot ? own.height : 0));
  }
  int drawn = 0;
  for (const Framed& f : texts) {
    const Sizes own = ownSizes(f);
    if (shape == Shape::kCircle) {
      drawCircle(f, constant ? largestRadius : std::hypot(f.width, f.height) / 2 + f.gap);
    } else {
      Sizes size = own;
      if (constant && kept != Kept::kWidth) size.height = largestHeight;
      if (constant && kept == Kept::kBoth) size.straight = largestStraight;
      // Width alone: every frame as wide overall as the widest, each keeping its height.
      if (constant && kept == Kept::kWidth) size.straight = largestTotal - (shape == Shape::kSlot ? size.height : 0);
      drawOutline(f, size.straight, size.height, shape == Shape::kSlot);
    }
    ++drawn;
  }
  return drawn;
}

}  // namespace

void tcircleCommand() {
  kestrix::CmdEchoGuard guard;
  ryutPrintf(L"\n选择文字，多行文字或属性定义实体...");
  SelectionSet set;
  if (!selectTexts(TextKinds::kTexts, set)) {
    if (!set.cancelled) ryutPrintf(L"\n没有正确的实体被选择.");
    return;
  }
  std::vector<OdDbObjectId> ids;
  for (const OdDbObjectId& id : set.ids()) {
    if (isParallelToUcs(id))
      ids.push_back(id);
    else
      ryutPrintf(L"object was not parallel to the current UCS.\n");
  }
  if (ids.empty()) {
    ryutPrintf(L"No valid objects selected.\n");
    return;
  }
  double factor = 0;
  if (!askFactor(factor)) return;
  const OdString shapeWord =
      askRememberedKeyword(L"\n选择包围文本的对象[圆(C)/圆槽(S)/矩形(R)]<%ls>:",
                           L"Circle Slot Rectangle _Circle Slot Rectangle", L"TCIRCLE_SHAPE", L"Circle");
  if (shapeWord.isEmpty()) return;
  const Shape shape = shapeWord == L"Slot"        ? Shape::kSlot
                      : shapeWord == L"Rectangle" ? Shape::kRectangle
                                                  : Shape::kCircle;
  const wchar_t* const sizePrompts[] = {L"\n用固定或可变尺寸创建圆[固定(C)/可变(V)]<%ls>:",
                                        L"\n用固定或可变尺寸创建圆槽[固定(C)/可变(V)]<%ls>:",
                                        L"\n用固定或可变尺寸创建矩形[固定(C)/可变(V)]<%ls>:"};
  const OdString sizeWord = askRememberedKeyword(sizePrompts[static_cast<int>(shape)],
                                                 L"Constant Variable _Constant Variable", L"TCIRCLE_SIZE", L"Variable");
  if (sizeWord.isEmpty()) return;
  const bool constant = sizeWord == L"Constant";
  Kept kept = Kept::kBoth;
  if (constant && shape != Shape::kCircle) {
    const OdString keptWord =
        askRememberedKeyword(shape == Shape::kSlot ? L"保持圆槽的[宽度(W)/高度(H)/宽和高(B)]<%ls>:"
                                                   : L"保持矩形的[宽度(W)/高度(H)/宽和高(B)]<%ls>:",
                             L"Width Heigh Both _Width Heigh Both", L"TCIRCLE_KEEP", L"Both");
    if (keptWord.isEmpty()) return;
    kept = keptWord == L"Width" ? Kept::kWidth : keptWord == L"Heigh" ? Kept::kHeight : Kept::kBoth;
  }

  std::vector<Framed> texts;
  texts.reserve(ids.size());
  for (const OdDbObjectId& id : ids) {
    Framed framed;
    if (measure(id, factor, framed)) texts.push_back(framed);
  }
  const wchar_t* const progress[] = {L"正在创建圆。。。\n", L"正在创建圆槽。。。\n", L"正在创建矩形。。。\n"};
  const wchar_t* const result[] = {L"%d个圆被创建。\n", L"%d个圆槽被创建。\n", L"%d个矩形被创建。\n"};
  ryutPrintf(progress[static_cast<int>(shape)]);
  int drawn = 0;
  {
    UndoGroup undo;
    drawn = drawAll(texts, shape, constant, kept);
  }
  ryutPrintf(result[static_cast<int>(shape)], drawn);
  ryutPrintf(L"创建完成。\n");
}
