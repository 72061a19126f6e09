// torient: turns texts, multiline texts, attribute definitions and the
// attributes of selected block references so that they all read at one
// angle. A text whose angle would read upside down (outside (-90°, 90°])
// is turned half a turn further; each text turns about the middle of its
// box, so it stays where it was. Block references keep their rotation.
#include <cmath>

#include "DbBlockReference.h"
#include "DbText.h"
#include "Ge/GeConst.h"
#include "frame/Guards.h"
#include "frame/ResourceString.h"
#include "frame/commands.h"
#include "ryed.h"
#include "ryut.h"
#include "text/TextAdjust.h"

using namespace kestrix::text;

namespace {

// The angle in (-pi, pi].
double normalizedHalfTurn(double angle) {
  angle = std::remainder(angle, 2 * OdaPI);
  return angle <= -OdaPI ? angle + 2 * OdaPI : angle;
}

// The reading rule: angles in (-90°, 90°] read as they are; others turn by 180°.
double readingAngle(double angle) {
  const double a = normalizedHalfTurn(angle);
  return a > -OdaPI / 2 + 1e-12 && a <= OdaPI / 2 + 1e-12 ? a : normalizedHalfTurn(a + OdaPI);
}

OdGePoint3d boxCentre(const OdGePoint3dArray& box) {
  return box.size() < 4 ? OdGePoint3d() : box[0] + (box[2] - box[0]) / 2.0;
}

// Sets the rotation of a text or multiline text, turning it about the middle of its box.
bool turn(const OdDbObjectId& id, double angle) {
  OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
  OdGePoint3dArray before, after;
  if (auto* text = dynamic_cast<OdDbText*>(object.get())) {
    text->getBoundingPoints(before);
    text->setRotation(angle);
    text->getBoundingPoints(after);
    const OdGeVector3d shift = boxCentre(before) - boxCentre(after);
    const bool aligned = !text->isDefaultAlignment();
    const OdGePoint3d position = text->position(), alignment = text->alignmentPoint();
    text->setPosition(position + shift);
    if (text->horizontalMode() == OdDb::kTextAlign || text->horizontalMode() == OdDb::kTextFit) {
      // Aligned and fitted texts run from their start to their alignment point: that baseline turns too.
      const OdGeVector3d baseline = after[1] - after[0];
      if (!baseline.isZeroLength())
        text->setAlignmentPoint(position + shift + baseline.normal() * position.distanceTo(alignment));
    } else if (aligned) {
      text->setAlignmentPoint(alignment + shift);
    }
    return true;
  }
  if (auto* mtext = dynamic_cast<OdDbMText*>(object.get())) {
    mtext->getBoundingPoints(before);
    mtext->setRotation(angle);
    mtext->getBoundingPoints(after);
    mtext->setLocation(mtext->location() + (boxCentre(before) - boxCentre(after)));
    return true;
  }
  return false;
}

// Turns one selected object (a reference: its attributes); returns how many texts turned.
int orient(const OdDbObjectId& id, double angle) {
  OdDbObjectIdArray attributes;
  {
    OdDbObjectPtr object = id.openObject();
    auto* reference = dynamic_cast<OdDbBlockReference*>(object.get());
    if (!reference) return turn(id, angle) ? 1 : 0;
    attributes = reference->attributeIds();
  }
  int turned = 0;
  for (const OdDbObjectId& attribute : attributes) {
    if (!attribute.isErased() && !isOnLockedLayer(attribute) && turn(attribute, angle)) ++turned;
  }
  return turned;
}

double realVariable(const wchar_t* name) {
  resbuf value{};
  return ryedGetVar(name, &value) == RTNORM && value.restype == RTREAL ? value.resval.rreal : 0.0;
}

}  // namespace

void torientCommand() {
  kestrix::CmdEchoGuard guard;
  SelectionSet set;
  if (!selectTexts(TextKinds::kTextsAndReferences, set)) return;
  std::vector<OdDbObjectId> ids = set.ids();
  if (!keepParallelToUcs(ids)) return;
  double angle = 0;
  const int status = ryedGetAngle(nullptr, ResourceString(2405, L"\nReading angle <0>: "), &angle);
  if (status != RTNORM && status != RTNONE) return;
  if (status == RTNONE) angle = 0;
  // The answer counts from ANGBASE in the current coordinate system's plane.
  // Drawings keep rotations from 0 up to a full turn.
  double reading = readingAngle(angle + realVariable(L"ANGBASE") + ucsXAngle());
  if (reading < 0) reading += 2 * OdaPI;
  int turned = 0;
  {
    UndoGroup undo;
    for (const OdDbObjectId& id : ids) turned += orient(id, reading);
  }
  printCount(L"\n%d%ls", turned, 2406, L" objects turned.");
}
