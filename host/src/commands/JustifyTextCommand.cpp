// JUSTIFYTEXT: changes the justification of texts, multiline texts and
// attributes (those of the selected block references) without moving them:
// the new alignment point is taken from the text's box as it stands, so the
// text keeps its place on the drawing.
//
// Multiline texts have attachments rather than justifications: TL...BR
// name them directly; Left, Center and Right take the bottom row (the row
// nearest to a single-line text's baseline), Middle the middle centre, and
// Align and Fit, which a multiline text cannot do, bottom left.
#include "DbBlockReference.h"
#include "DbText.h"
#include "RxDictionary.h"
#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "ryut.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

struct Justification {
  const wchar_t* keyword;
  OdDb::TextHorzMode horizontal;
  OdDb::TextVertMode vertical;
  OdDbMText::AttachmentPoint attachment;
};

const Justification kJustifications[] = {
    {L"Left", OdDb::kTextLeft, OdDb::kTextBase, OdDbMText::kBottomLeft},
    {L"Align", OdDb::kTextAlign, OdDb::kTextBase, OdDbMText::kBottomLeft},
    {L"Fit", OdDb::kTextFit, OdDb::kTextBase, OdDbMText::kBottomLeft},
    {L"Center", OdDb::kTextCenter, OdDb::kTextBase, OdDbMText::kBottomCenter},
    {L"Middle", OdDb::kTextMid, OdDb::kTextBase, OdDbMText::kMiddleCenter},
    {L"Right", OdDb::kTextRight, OdDb::kTextBase, OdDbMText::kBottomRight},
    {L"TL", OdDb::kTextLeft, OdDb::kTextTop, OdDbMText::kTopLeft},
    {L"TC", OdDb::kTextCenter, OdDb::kTextTop, OdDbMText::kTopCenter},
    {L"TR", OdDb::kTextRight, OdDb::kTextTop, OdDbMText::kTopRight},
    {L"ML", OdDb::kTextLeft, OdDb::kTextVertMid, OdDbMText::kMiddleLeft},
    {L"MC", OdDb::kTextCenter, OdDb::kTextVertMid, OdDbMText::kMiddleCenter},
    {L"MR", OdDb::kTextRight, OdDb::kTextVertMid, OdDbMText::kMiddleRight},
    {L"BL", OdDb::kTextLeft, OdDb::kTextBottom, OdDbMText::kBottomLeft},
    {L"BC", OdDb::kTextCenter, OdDb::kTextBottom, OdDbMText::kBottomCenter},
    {L"BR", OdDb::kTextRight, OdDb::kTextBottom, OdDbMText::kBottomRight},
};

// Where on the box (fractions of its width and height from the lower left
// corner at the baseline) a justification puts the alignment point.
void boxFractions(OdDb::TextHorzMode horizontal, OdDb::TextVertMode vertical, double& along, double& up) {
  along = horizontal == OdDb::kTextCenter || horizontal == OdDb::kTextMid ? 0.5
          : horizontal == OdDb::kTextRight                                ? 1.0
                                                                          : 0.0;
  up = horizontal == OdDb::kTextMid || vertical == OdDb::kTextVertMid ? 0.5
       : vertical == OdDb::kTextTop                                   ? 1.0
                                                                      : 0.0;
}

void justifyText(OdDbText* text, const Justification& justification) {
  OdGePoint3dArray box;  // lower left, lower right, upper right, upper left
  text->getBoundingPoints(box);
  const OdGeVector3d width = box[1] - box[0], height = box[3] - box[0];
  text->setHorizontalMode(justification.horizontal);
  text->setVerticalMode(justification.vertical);
  text->setPosition(box[0]);
  if (justification.horizontal == OdDb::kTextLeft && justification.vertical == OdDb::kTextBase) {
    text->setAlignmentPoint(OdGePoint3d::kOrigin);
  } else if (justification.horizontal == OdDb::kTextAlign || justification.horizontal == OdDb::kTextFit) {
    text->setAlignmentPoint(box[1]);
  } else {
    double along = 0, up = 0;
    boxFractions(justification.horizontal, justification.vertical, along, up);
    text->setAlignmentPoint(box[0] + width * along + height * up);
  }
}

void justifyMText(OdDbMText* mtext, OdDbMText::AttachmentPoint attachment) {
  OdGePoint3dArray box;  // lower left, lower right, upper right, upper left
  mtext->getBoundingPoints(box);
  const int column = (attachment - 1) % 3, row = (attachment - 1) / 3;
  mtext->setAttachment(attachment);
  mtext->setLocation(box[3] + (box[1] - box[0]) * (column / 2.0) - (box[3] - box[0]) * (row / 2.0));
}

void justify(const OdDbObjectId& id, const Justification& justification) {
  OdDbObjectPtr object = id.openObject(OdDb::kForWrite);
  if (auto* text = dynamic_cast<OdDbText*>(object.get())) {
    justifyText(text, justification);
  } else if (auto* mtext = dynamic_cast<OdDbMText*>(object.get())) {
    justifyMText(mtext, justification.attachment);
  } else if (auto* reference = dynamic_cast<OdDbBlockReference*>(object.get())) {
    const OdDbObjectIdArray attributes = reference->attributeIds();
    object.release();
    for (const OdDbObjectId& attribute : attributes) {
      if (!attribute.isErased()) justify(attribute, justification);
    }
  }
}

// A module that drives this command puts its name into the process
// dictionary for the time of the run; the text tool that changes
// justification names its start keyword "Start", read here as Left.
bool drivenByTextTool() {
  return odrxSysRegistryString(L"RYAD_CMDS_JUSTIFYTEXT_TYPE_DICT", L"RYMD_JUSTIFYTEXT_TYPE") == L"TJUST";
}

void justifyTextCommand() {
  const RyResultList filter(ryutBuildList(RTDXF0, L"TEXT,MTEXT,ATTDEF,INSERT", RTNONE));
  const std::vector<OdDbObjectId> ids = selectObjects(filter.get());
  if (ids.empty()) return;
  const OdString option = askKeyword(
      L"\nEnter a justification option [Left/Align/Fit/Center/Middle/Right/TL/TC/TR/ML/MC/MR/BL/BC/BR] "
      L"<Existing>: ",
      drivenByTextTool() ? L"Left Align Fit Center Middle Right TL TC TR ML MC MR BL BC BR Start"
                         : L"Left Align Fit Center Middle Right TL TC TR ML MC MR BL BC BR");
  if (option.isEmpty()) return;
  const OdString keyword = option == L"Start" ? OdString(L"Left") : option;
  for (const Justification& justification : kJustifications) {
    if (keyword != justification.keyword) continue;
    for (const OdDbObjectId& id : ids) justify(id, justification);
  }
}

}  // namespace

void registerJustifyTextCommands(CommandStack& stack) {
  stack.addCommand(L"RYAD", L"JUSTIFYTEXT", L"JUSTIFYTEXT", OdEdCommand::kUsePickSet, justifyTextCommand);
}

RYAD_HOST_COMMANDS(registerJustifyTextCommands);

}  // namespace ryhost
