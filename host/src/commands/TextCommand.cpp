// Single-line texts and attribute definitions: TEXT (also DTEXT) places
// one TEXT entity per line typed, each under the previous; -ATTDEF makes an
// attribute definition. Both place their text the same way: a start point
// or a justification's point(s), a text style, a height and a rotation.
#include <cmath>
#include <vector>

#include "DbSymbolTable.h"
#include "DbText.h"
#include "RyApDocManager.h"
#include "commands/CommandRegistry.h"
#include "commands/EditSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "sdk/Input.h"

namespace ryhost {

namespace {

using namespace edit;

// Baselines of successive lines are this many text heights apart.
constexpr double kLineSpacing = 5.0 / 3.0;

// Where and how a text goes, in the user coordinate system.
struct Placement {
  OdDb::TextHorzMode horizontal = OdDb::kTextLeft;
  OdDb::TextVertMode vertical = OdDb::kTextBase;
  OdGePoint3d point;   // the start point, or the point the justification names
  OdGePoint3d second;  // Align and Fit: the other end of the baseline
  double height = 0;
  double rotation = 0;  // direction of the baseline from the user x axis
  OdDbObjectId style;

  bool twoPoints() const { return horizontal == OdDb::kTextAlign || horizontal == OdDb::kTextFit; }
  // The same placement one line further down.
  Placement nextLine() const {
    Placement next = *this;
    const OdGeVector3d down =
        OdGeVector3d(std::sin(rotation), -std::cos(rotation), 0) * (height * kLineSpacing);
    next.point += down;
    next.second += down;
    return next;
  }
};

struct TextMemory {
  bool hasLast = false;
  Placement last;          // the line after the last text placed
  OdGeMatrix3d lastUcs;    // the user system that placement was made in
  int attributeFlags = 0;  // -ATTDEF modes: invisible 1, constant 2, verify 4, preset 8
  bool lockPosition = true;
};

TextMemory& memory() {
  static RyApDataManager<TextMemory> data;
  return data.docData();
}

OdDbTextStyleTableRecordPtr openStyle(const OdDbObjectId& id) {
  return OdDbTextStyleTableRecord::cast(id.openObject().get());
}

OdString styleName(const OdDbObjectId& id) {
  OdDbTextStyleTableRecordPtr style = openStyle(id);
  return style.isNull() ? OdString() : style->getName();
}

OdDbObjectId currentStyle() {
  OdDbObjectId id = database()->getTEXTSTYLE();
  return id.isNull() ? database()->getTextStyleStandardId() : id;
}

void showStyle(const OdDbObjectId& style, double height) {
  say(L"\nCurrent text style:  \"" + styleName(style) + L"\"  Text height:  " + formatDistance(height));
}

void listStyles() {
  OdDbObjectPtr object = database()->getTextStyleTableId().openObject();
  auto* table = static_cast<OdDbSymbolTable*>(object.get());
  say(L"\nText styles:");
  for (OdDbSymbolTableIteratorPtr it = table->newIterator(); !it->done(); it->step()) {
    OdDbSymbolTableRecordPtr record = it->getRecord();
    if (!record.isNull() && !record->getName().isEmpty()) say(L"\n  " + record->getName());
  }
}

// "Style": a text style by name; Enter keeps the one in use.
void askStyle(Placement& placement) {
  for (;;) {
    OdString name = askText(L"\nEnter style name or [?] <" + styleName(placement.style) + L">: ");
    name.trimLeft().trimRight();
    if (name.isEmpty()) return;
    if (name == L"?") {
      listStyles();
      continue;
    }
    const OdDbObjectId id = database()->findRecord(OdDbNameTable::kTextStyle, name);
    if (!id.isNull()) {
      placement.style = id;
      return;
    }
    say(L"\nCannot find text style \"" + name + L"\".");
  }
}

struct Justification {
  const wchar_t* keyword;
  OdDb::TextHorzMode horizontal;
  OdDb::TextVertMode vertical;
  const wchar_t* prompt;
};

const Justification kJustifications[] = {
    {L"Left", OdDb::kTextLeft, OdDb::kTextBase, L"\nSpecify start point of text: "},
    {L"Center", OdDb::kTextCenter, OdDb::kTextBase, L"\nSpecify center point of text: "},
    {L"Right", OdDb::kTextRight, OdDb::kTextBase, L"\nSpecify right endpoint of text baseline: "},
    {L"Align", OdDb::kTextAlign, OdDb::kTextBase, L"\nSpecify first endpoint of text baseline: "},
    {L"Middle", OdDb::kTextMid, OdDb::kTextBase, L"\nSpecify middle point of text: "},
    {L"Fit", OdDb::kTextFit, OdDb::kTextBase, L"\nSpecify first endpoint of text baseline: "},
    {L"TL", OdDb::kTextLeft, OdDb::kTextTop, L"\nSpecify top-left point of text: "},
    {L"TC", OdDb::kTextCenter, OdDb::kTextTop, L"\nSpecify top-center point of text: "},
    {L"TR", OdDb::kTextRight, OdDb::kTextTop, L"\nSpecify top-right point of text: "},
    {L"ML", OdDb::kTextLeft, OdDb::kTextVertMid, L"\nSpecify middle-left point of text: "},
    {L"MC", OdDb::kTextCenter, OdDb::kTextVertMid, L"\nSpecify middle point of text: "},
    {L"MR", OdDb::kTextRight, OdDb::kTextVertMid, L"\nSpecify middle-right point of text: "},
    {L"BL", OdDb::kTextLeft, OdDb::kTextBottom, L"\nSpecify bottom-left point of text: "},
    {L"BC", OdDb::kTextCenter, OdDb::kTextBottom, L"\nSpecify bottom-center point of text: "},
    {L"BR", OdDb::kTextRight, OdDb::kTextBottom, L"\nSpecify bottom-right point of text: "},
};

// "Justify": the alignment and the point(s) it is placed by.
void askJustification(Placement& placement) {
  const Answer answer =
      askKeyword(L"\nEnter an option [Left/Center/Right/Align/Middle/Fit/TL/TC/TR/ML/MC/MR/BL/BC/BR]: ",
                 L"Left Center Right Align Middle Fit TL TC TR ML MC MR BL BC BR", RSG_NONULL);
  for (const Justification& j : kJustifications) {
    if (!answer.is(j.keyword)) continue;
    placement.horizontal = j.horizontal;
    placement.vertical = j.vertical;
    askPoint(j.prompt, placement.point, nullptr, nullptr, RSG_NONULL);
    if (placement.twoPoints()) {
      for (;;) {
        askPoint(L"\nSpecify second endpoint of text baseline: ", placement.second, nullptr, &placement.point,
                 RSG_NONULL);
        if (!flat(placement.second).isEqualTo(flat(placement.point))) break;
        say(L"\nThe baseline needs two different points.");
      }
      placement.second.z = placement.point.z;
      placement.rotation = angleOf(flat(placement.point), flat(placement.second));
    }
    return;
  }
}

// The start point (or justification and style), the height and the rotation.
// heightPrompt differs between texts and attribute definitions. False when
// Enter asked to continue below the last text and there is none.
bool askPlacement(Placement& placement, const wchar_t* heightPrompt) {
  TextMemory& remembered = memory();
  placement.style = currentStyle();
  placement.height = Host::instance().sysvars().getReal(L"TEXTSIZE", 2.5);
  showStyle(placement.style, placement.height);
  for (;;) {
    const Answer answer =
        askPoint(L"\nSpecify start point of text or [Justify/Style]: ", placement.point, L"Justify Style");
    if (answer.is(L"Style")) {
      askStyle(placement);
      showStyle(placement.style, placement.height);
      continue;
    }
    if (answer.is(L"Justify")) {
      askJustification(placement);
      break;
    }
    if (answer.isEnter()) {
      // Enter goes on under the last text placed (in the user system it was placed in).
      if (!remembered.hasLast) {
        say(L"\nNo previous text to continue under.");
        return false;
      }
      placement = remembered.last;
      const OdGeMatrix3d fromLast = ucsMatrix().inverse() * remembered.lastUcs;
      placement.point.transformBy(fromLast);
      placement.second.transformBy(fromLast);
      return true;
    }
    break;
  }
  OdDbTextStyleTableRecordPtr style = openStyle(placement.style);
  const bool fixedHeight = !style.isNull() && style->textSize() > 0;
  if (fixedHeight) placement.height = style->textSize();
  if (placement.horizontal == OdDb::kTextAlign) return true;  // height and rotation come from the baseline
  if (!fixedHeight) {
    askDistance(OdString(heightPrompt) + L" <" + formatDistance(placement.height) + L">: ", placement.height,
                nullptr, &placement.point, RSG_NOZERO | RSG_NONEG);
  }
  if (placement.horizontal == OdDb::kTextFit) return true;
  askDirection(L"\nSpecify rotation angle of text <" + formatDirection(placement.rotation) + L">: ",
               placement.rotation, nullptr, &placement.point);
  return true;
}

// Gives a text (or attribute definition) its words, style and place.
void applyPlacement(OdDbText* text, const Placement& placement, const OdString& words) {
  OdDbTextStyleTableRecordPtr style = openStyle(placement.style);
  const double styleWidth = style.isNull() || style->xScale() <= 0 ? 1.0 : style->xScale();
  text->setTextString(words);
  text->setTextStyle(placement.style);
  text->setWidthFactor(styleWidth);
  if (!style.isNull()) text->setOblique(style->obliquingAngle());
  text->setHorizontalMode(placement.horizontal);
  text->setVerticalMode(placement.vertical);
  double height = placement.height;
  double rotation = placement.rotation;
  OdGePoint3d position = placement.point;
  if (placement.twoPoints()) {
    // The baseline's two ends; the words fill it by their height (Align) or width (Fit).
    const double length = flat(placement.point).distanceTo(flat(placement.second));
    OdGePoint3d low, high;
    odDbTextBox(words.isEmpty() ? OdString(L" ") : words, 1.0, styleWidth, low, high);
    if (placement.horizontal == OdDb::kTextAlign) {
      if (high.x > 0) height = length / high.x;
    } else if (high.x > 0) {
      text->setWidthFactor(length / (high.x * height));
    }
    rotation = angleOf(flat(placement.point), flat(placement.second));
    text->setAlignmentPoint(placement.second);
  } else if (placement.horizontal != OdDb::kTextLeft || placement.vertical != OdDb::kTextBase) {
    // The insertion point is the baseline's start, worked out from the alignment point.
    OdGePoint3d low, high;
    odDbTextBox(words, height, styleWidth, low, high);
    double dx = 0, dy = 0;
    if (placement.horizontal == OdDb::kTextCenter || placement.horizontal == OdDb::kTextMid) dx = -high.x / 2;
    if (placement.horizontal == OdDb::kTextRight) dx = -high.x;
    if (placement.horizontal == OdDb::kTextMid || placement.vertical == OdDb::kTextVertMid) dy = -height / 2;
    if (placement.vertical == OdDb::kTextTop) dy = -height;
    position += OdGeVector3d(dx * std::cos(rotation) - dy * std::sin(rotation),
                             dx * std::sin(rotation) + dy * std::cos(rotation), 0);
    text->setAlignmentPoint(placement.point);
  }
  text->setHeight(height);
  text->setRotation(rotation);
  text->setPosition(position);
  placeInUcs(text);
}

// The text style and height used become the current ones.
void rememberPlacement(const Placement& placement, const Placement& next) {
  TextMemory& remembered = memory();
  remembered.hasLast = true;
  remembered.last = next;
  remembered.lastUcs = ucsMatrix();
  SysVars& vars = Host::instance().sysvars();
  if (std::fabs(vars.getReal(L"TEXTSIZE", 2.5) - placement.height) > 1e-12 && placement.height > 0) {
    SysVarValue size;
    size.type = RTREAL;
    size.r = placement.height;
    vars.set(L"TEXTSIZE", size);
  }
  if (placement.style != currentStyle()) database()->setTEXTSTYLE(placement.style);
}

// ---------------------------------------------------------------- TEXT

void textCommand() {
  Placement placement;
  if (!askPlacement(placement, L"\nSpecify height")) return;
  std::vector<OdString> lines;
  for (;;) {
    OdString line = askText(L"\nEnter text: ");
    if (line.isEmpty()) break;
    lines.push_back(line);
  }
  Placement at = placement;
  for (const OdString& words : lines) {
    OdDbTextPtr text = OdDbText::createObject();
    applyPlacement(text.get(), at, words);
    appendEntity(text.get());
    at = at.nextLine();
  }
  if (!lines.empty()) rememberPlacement(placement, at);
}

// ---------------------------------------------------------------- -ATTDEF

OdString yesNo(bool on) { return on ? OdString(L"Y") : OdString(L"N"); }

// The modes of the definitions to make, changed one at a time until Enter.
void askAttributeModes(int& flags, bool& lockPosition) {
  struct Mode {
    const wchar_t* keyword;
    int bit;
  };
  static const Mode kModes[] = {{L"Invisible", 1}, {L"Constant", 2}, {L"Verify", 4}, {L"Preset", 8}};
  for (;;) {
    say(L"\nCurrent attribute modes: Invisible=" + yesNo(flags & 1) + L" Constant=" + yesNo(flags & 2) +
        L" Verify=" + yesNo(flags & 4) + L" Preset=" + yesNo(flags & 8) + L" Lock position=" +
        yesNo(lockPosition));
    const Answer answer =
        askKeyword(L"\nEnter an option to change [Invisible/Constant/Verify/Preset/Lock position] <done>: ",
                   L"Invisible Constant Verify Preset Lock");
    if (answer.isEnter()) return;
    if (answer.is(L"Lock")) lockPosition = !lockPosition;
    for (const Mode& mode : kModes) {
      if (answer.is(mode.keyword)) flags ^= mode.bit;
    }
  }
}

OdString askTag() {
  for (;;) {
    OdString tag = askText(L"\nEnter attribute tag name: ");
    tag.trimLeft().trimRight();
    if (tag.isEmpty()) {
      say(L"\nThe tag name cannot be empty.");
    } else if (tag.find(L' ') >= 0) {
      say(L"\nThe tag name cannot contain spaces.");
    } else {
      return tag.upper();
    }
  }
}

void attdefCommand() {
  TextMemory& remembered = memory();
  int flags = remembered.attributeFlags;
  bool lockPosition = remembered.lockPosition;
  askAttributeModes(flags, lockPosition);
  const OdString tag = askTag();
  OdString prompt, value;
  if (flags & 2) {
    value = askText(L"\nEnter attribute value: ");
  } else {
    prompt = askText(L"\nEnter attribute prompt: ");
    value = askText(L"\nEnter default attribute value: ");
  }
  Placement placement;
  if (!askPlacement(placement, L"\nSpecify text height")) return;
  OdDbAttributeDefinitionPtr definition = OdDbAttributeDefinition::createObject();
  definition->setTag(tag);
  definition->setPrompt(prompt);
  definition->setInvisible(flags & 1);
  definition->setConstant(flags & 2);
  definition->setVerifiable(flags & 4);
  definition->setPreset(flags & 8);
  definition->setLockPositionInBlock(lockPosition);
  // The definition shows its tag until it is part of a block.
  applyPlacement(definition.get(), placement, tag);
  definition->setTextString(value);
  appendEntity(definition.get());
  rememberPlacement(placement, placement.nextLine());
  remembered.attributeFlags = flags;
  remembered.lockPosition = lockPosition;
}

}  // namespace

void registerTextCommands(CommandStack& stack) {
  addHostCommands(stack, {{L"TEXT", OdEdCommand::kModal, textCommand},
                          {L"DTEXT", OdEdCommand::kModal, textCommand},
                          {L"-ATTDEF", OdEdCommand::kModal, attdefCommand}});
}

RYAD_HOST_COMMANDS(registerTextCommands);

}  // namespace ryhost
