// Editing by transform: MOVE, COPY, ROTATE and SCALE. Objects are selected
// (or taken from the pick-first set), the transform is asked for, and then
// the objects are transformed (or copies of them made) all at once.
#include <cmath>
#include <vector>

#include "RyApDocManager.h"
#include "commands/CommandRegistry.h"
#include "commands/EditSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "sdk/Input.h"

namespace ryhost {

namespace {

using namespace edit;

struct ModifyMemory {
  bool copyMultiple = true;
  double rotation = 0;
  double scaleFactor = 1;
};

ModifyMemory& memory() {
  static RyApDataManager<ModifyMemory> data;
  return data.docData();
}

// A displacement typed in the user system, in world coordinates.
OdGeMatrix3d shiftBy(const OdGeVector3d& ucsVector) {
  return OdGeMatrix3d::translation(ucsMatrix() * ucsVector);
}

// Transforms each object in place; those that refuse are counted and reported.
void transformAll(const std::vector<OdDbObjectId>& ids, const OdGeMatrix3d& xform, const wchar_t* done) {
  int refused = 0;
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject(OdDb::kForWrite).get());
    if (entity.isNull()) continue;
    OdResult status = eOk;
    try {
      status = entity->transformBy(xform);
    } catch (const OdError& error) {
      status = error.code();
    }
    if (status != eOk) ++refused;
  }
  if (refused > 0) say(L"\n" + plural(refused, L"object", L"objects") + L" could not be " + done + L".");
}

// Copies of each object placed by the transform, in the space of the original.
void copyAll(const std::vector<OdDbObjectId>& ids, const OdGeMatrix3d& xform) {
  int refused = 0;
  for (const OdDbObjectId& id : ids) {
    OdDbEntityPtr entity = OdDbEntity::cast(id.openObject().get());
    if (entity.isNull()) continue;
    Piece piece;
    if (makePiece(entity.get(), xform, piece) != eOk) {
      ++refused;
      continue;
    }
    addPiece(piece, entity->ownerId());
  }
  if (refused > 0) say(L"\n" + plural(refused, L"object", L"objects") + L" could not be copied.");
}

// "Specify displacement": a vector typed as a point.
OdGeVector3d askDisplacement() {
  OdGePoint3d displacement;
  const OdString zero = formatDistance(0.0);
  if (askPoint(L"\nSpecify displacement <" + zero + L", " + zero + L", " + zero + L">: ", displacement).isEnter())
    return OdGeVector3d();
  return displacement.asVector();
}

// ---------------------------------------------------------------- MOVE

void moveCommand() {
  const std::vector<OdDbObjectId> ids = selectObjects(nullptr, true);
  if (ids.empty()) return;
  OdGePoint3d base;
  OdGeVector3d shift;
  const Answer answer =
      askPoint(L"\nSpecify base point or [Displacement] <Displacement>: ", base, L"Displacement");
  if (!answer.isValue()) {
    shift = askDisplacement();
  } else {
    OdGePoint3d second;
    const bool asDisplacement =
        askPoint(L"\nSpecify second point or <use first point as displacement>: ", second, nullptr, &base)
            .isEnter();
    shift = asDisplacement ? base.asVector() : second - base;
  }
  transformAll(ids, shiftBy(shift), L"moved");
}

// ---------------------------------------------------------------- COPY

void copyCommand() {
  const std::vector<OdDbObjectId> ids = selectObjects(nullptr, false);
  if (ids.empty()) return;
  ModifyMemory& remembered = memory();
  bool multiple = remembered.copyMultiple;
  std::vector<OdGeVector3d> shifts;
  for (;;) {
    say(OdString(L"\nCurrent settings:  Copy mode = ") + (multiple ? L"Multiple" : L"Single"));
    OdGePoint3d base;
    const Answer answer =
        askPoint(L"\nSpecify base point or [Displacement/mOde] <Displacement>: ", base, L"Displacement mOde");
    if (answer.is(L"mOde")) {
      const Answer mode = askKeyword(OdString(L"\nEnter a copy mode option [Single/Multiple] <") +
                                         (multiple ? L"Multiple" : L"Single") + L">: ",
                                     L"Single Multiple");
      if (!mode.isEnter()) multiple = mode.is(L"Multiple");
      continue;
    }
    if (!answer.isValue()) {
      shifts.push_back(askDisplacement());
      break;
    }
    OdGePoint3d second;
    if (askPoint(L"\nSpecify second point or <use first point as displacement>: ", second, nullptr, &base)
            .isEnter()) {
      shifts.push_back(base.asVector());
      break;
    }
    shifts.push_back(second - base);
    while (multiple) {
      const Answer next =
          askPoint(L"\nSpecify second point or [Exit/Undo] <Exit>: ", second, L"Exit Undo", &base);
      if (next.isEnter() || next.is(L"Exit")) break;
      if (next.is(L"Undo")) {
        if (shifts.empty())
          say(L"\nNothing to undo.");
        else
          shifts.pop_back();
        continue;
      }
      shifts.push_back(second - base);
    }
    break;
  }
  for (const OdGeVector3d& shift : shifts) copyAll(ids, shiftBy(shift));
  remembered.copyMultiple = multiple;
}

// ---------------------------------------------------------------- ROTATE

// "Reference": the angle the objects have now and the one they should get.
double askReferenceRotation(const OdGePoint3d& base) {
  double reference = 0, target = 0;
  askAngle(L"\nSpecify the reference angle <0>: ", reference);
  const Answer answer = askAngle(L"\nSpecify the new angle or [Points] <0>: ", target, L"Points", &base);
  if (answer.is(L"Points")) {
    OdGePoint3d first, second;
    askPoint(L"\nSpecify first point: ", first, nullptr, nullptr, RSG_NONULL);
    askPoint(L"\nSpecify second point: ", second, nullptr, &first, RSG_NONULL);
    const double direction = angleOf(flat(first), flat(second));
    target = normalizedAngle(direction - Host::instance().sysvars().getReal(L"ANGBASE", 0.0));
  }
  return target - reference;
}

// ---- what ROTATE and SCALE share

// The objects and the base point; no objects when nothing was selected.
std::vector<OdDbObjectId> selectWithBase(OdGePoint3d& base) {
  std::vector<OdDbObjectId> ids = selectObjects(nullptr, true);
  if (!ids.empty()) askPoint(L"\nSpecify base point: ", base, nullptr, nullptr, RSG_NONULL);
  return ids;
}

// Asks for the angle or factor until one is given: Copy turns the command
// to copies (and says so with `copyNote`), Reference hands the question to
// `reference`. True when the command works on copies.
template <class Ask, class Reference>
bool askWithCopy(const wchar_t* copyNote, Ask ask, Reference reference) {
  bool copies = false;
  for (;;) {
    const Answer answer = ask();
    if (answer.is(L"Copy")) {
      copies = true;
      say(copyNote);
      continue;
    }
    if (answer.is(L"Reference")) reference();
    return copies;
  }
}

void transformOrCopy(const std::vector<OdDbObjectId>& ids, const OdGeMatrix3d& xform, bool copies,
                     const wchar_t* done) {
  if (copies)
    copyAll(ids, xform);
  else
    transformAll(ids, xform, done);
}

void rotateCommand() {
  const bool clockwise = Host::instance().sysvars().getInt(L"ANGDIR", 0) != 0;
  say(OdString(L"\nCurrent positive angle in UCS:  ANGDIR=") +
      (clockwise ? L"clockwise" : L"counterclockwise") + L"  ANGBASE=" +
      formatAngle(Host::instance().sysvars().getReal(L"ANGBASE", 0.0)));
  OdGePoint3d base;
  const std::vector<OdDbObjectId> ids = selectWithBase(base);
  if (ids.empty()) return;
  ModifyMemory& remembered = memory();
  double angle = remembered.rotation;
  const bool copies = askWithCopy(
      L"\nRotating a copy of the selected objects.",
      [&] {
        return askAngle(L"\nSpecify rotation angle or [Copy/Reference] <" + formatAngle(angle) + L">: ", angle,
                        L"Copy Reference", &base);
      },
      [&] { angle = askReferenceRotation(base); });
  transformOrCopy(ids, OdGeMatrix3d::rotation(angle, ucsNormal(), toWorld(base)), copies, L"rotated");
  remembered.rotation = normalizedAngle(angle);
}

// ---------------------------------------------------------------- SCALE

// "Reference": the length the objects have now and the one they should get.
double askReferenceScale(const OdGePoint3d& base) {
  const int positive = RSG_NOZERO | RSG_NONEG;
  double reference = 1, target = 1;
  askDistance(L"\nSpecify reference length <" + formatDistance(1.0) + L">: ", reference, nullptr, nullptr,
              positive);
  const Answer answer = askDistance(L"\nSpecify new length or [Points] <" + formatDistance(1.0) + L">: ",
                                    target, L"Points", &base, positive);
  if (answer.is(L"Points")) {
    for (;;) {
      OdGePoint3d first, second;
      askPoint(L"\nSpecify first point: ", first, nullptr, nullptr, RSG_NONULL);
      askPoint(L"\nSpecify second point: ", second, nullptr, &first, RSG_NONULL);
      target = first.distanceTo(second);
      if (target > 0) break;
      say(L"\nThe points must differ.");
    }
  }
  return target / reference;
}

void scaleCommand() {
  OdGePoint3d base;
  const std::vector<OdDbObjectId> ids = selectWithBase(base);
  if (ids.empty()) return;
  ModifyMemory& remembered = memory();
  double factor = remembered.scaleFactor;
  const bool copies = askWithCopy(
      L"\nScaling a copy of the selected objects.",
      [&] {
        return askDistance(L"\nSpecify scale factor or [Copy/Reference] <" + formatDistance(factor) + L">: ",
                           factor, L"Copy Reference", &base, RSG_NOZERO | RSG_NONEG);
      },
      [&] { factor = askReferenceScale(base); });
  transformOrCopy(ids, OdGeMatrix3d::scaling(factor, toWorld(base)), copies, L"scaled");
  remembered.scaleFactor = factor;
}

}  // namespace

void registerModifyCommands(CommandStack& stack) {
  const OdInt32 flags = OdEdCommand::kUsePickSet;
  addHostCommands(stack, {{L"MOVE", flags, moveCommand},
                          {L"COPY", flags, copyCommand},
                          {L"ROTATE", flags, rotateCommand},
                          {L"SCALE", flags, scaleCommand}});
}

RYAD_HOST_COMMANDS(registerModifyCommands);

}  // namespace ryhost
