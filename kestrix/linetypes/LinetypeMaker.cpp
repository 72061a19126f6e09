// mkltype: a linetype made from drawn geometry. The user draws one period of
// the pattern along a straight definition line (lines and polylines for the
// dashes, points for the dots, shapes and texts for the embedded elements),
// names the linetype and picks the geometry; the command measures every
// piece along the line, writes the definition to a linetype file and loads
// it into the drawing with the host's -LINETYPE command.
//
// The coordinate system is turned so that its X axis runs along the
// definition line while the command works, and put back on every way out.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include "DbCurves.h"
#include "DbPoint.h"
#include "DbPolyline.h"
#include "DbText.h"
#include "RyDialogs.h"
#include "frame/Coordinates.h"
#include "frame/Guards.h"
#include "frame/ModuleWide.h"
#include "frame/Names.h"
#include "frame/ResourceString.h"
#include "frame/ResultLists.h"
#include "frame/commands.h"
#include "rydb.h"
#include "ryed.h"
#include "ryut.h"

using kestrix::findGroup;
using kestrix::ResultList;

namespace {

constexpr double kTwoPi = 6.2831853071796;
constexpr double kPi = 3.14159265358979323846;
constexpr size_t kMostElements = 12;

const wchar_t* const kCancelled = L"函数被取消!\n";

// The file chosen last, offered again while the module is loaded.
OdString& rememberedPath() {
  static OdString path;
  return path;
}

void forgetPath() { rememberedPath().empty(); }
KESTRIX_MODULE_WIDE_RESET(forgetPath);

// ---------------------------------------------------------------- numbers and names

// "%.6f" without trailing zeros and without a trailing point; zero is "0".
OdString formatNumber(double value) {
  OdString text;
  text.format(L"%.6f", value);
  while (text.getLength() > 0 && text[text.getLength() - 1] == L'0') text = text.left(text.getLength() - 1);
  if (text.getLength() > 0 && text[text.getLength() - 1] == L'.') text = text.left(text.getLength() - 1);
  if (text == L"-0" || text.isEmpty()) text = L"0";
  return text;
}

double reducedAngle(double angle) {
  angle = std::fmod(angle, kTwoPi);
  if (angle < 0) angle += kTwoPi;
  return angle;
}

bool isValidName(const OdString& name) {
  if (name.isEmpty()) return false;
  static const wchar_t kRefused[] = L"*\\<>/?\":;|,=`\u00B7";
  for (int i = 0; i < name.getLength(); ++i) {
    if (std::wcschr(kRefused, name[i])) return false;
  }
  return true;
}

// ---------------------------------------------------------------- elements

struct Element {
  enum Kind { kDash, kGap, kDot, kComplex } kind;
  double length = 0;    // dashes and gaps
  OdString bracketed{};  // complex: "[...]"
};

// A piece of the selection measured along the definition line.
struct Piece {
  enum Kind { kDash, kDot, kShape, kText } kind;
  double start = 0, end = 0;  // along the line
  double y = 0;               // across it (shapes and texts)
  double scale = 1, rotation = 0;
  OdString name{}, file{};    // shape name and file, or text and style
};

// Where the definition line is: its start, its direction and its left normal, in world coordinates.
struct DefinitionLine {
  OdGePoint3d start;
  OdGeVector3d along, across;
  double length = 0;
  double angle = 0;  // of the line in the world's x-y plane
  double along_(const OdGePoint3d& p) const { return (p - start).dotProduct(along); }
  double across_(const OdGePoint3d& p) const { return (p - start).dotProduct(across); }
};

// The straight pieces of a polyline (arcs by their chords).
void polylineDashes(const OdDbPolyline* polyline, const DefinitionLine& line, std::vector<Piece>& pieces) {
  const unsigned n = polyline->numVerts();
  const unsigned segments = polyline->isClosed() ? n : (n > 0 ? n - 1 : 0);
  for (unsigned i = 0; i < segments; ++i) {
    OdGePoint3d a, b;
    polyline->getPointAt(i, a);
    polyline->getPointAt((i + 1) % n, b);
    const double x0 = line.along_(a), x1 = line.along_(b);
    pieces.push_back({Piece::kDash, std::min(x0, x1), std::max(x0, x1)});
  }
}

OdString stringGroup(const resbuf* list, int code) {
  const resbuf* rb = findGroup(list, code);
  return rb && rb->resval.rstring ? OdString(rb->resval.rstring) : OdString();
}

double realGroup(const resbuf* list, int code, double otherwise) {
  const resbuf* rb = findGroup(list, code);
  return rb ? rb->resval.rreal : otherwise;
}

// The file of the first text style that is a shape file.
OdString shapeFile() {
  for (ResultList record(rydbTblNext(L"STYLE", 1)); record; record.reset(rydbTblNext(L"STYLE", 0))) {
    const resbuf* flags = findGroup(record.get(), 70);
    if (flags && (flags->resval.rint & 1)) return stringGroup(record.get(), 3);
  }
  return OdString();
}

// The pieces of the selection; objects wholly outside the line are counted,
// shapes and texts whose insertion point is outside are refused with a message.
std::vector<Piece> measure(const ads_name set, const DefinitionLine& line, int& ignored) {
  std::vector<Piece> pieces;
  OdInt32 length = 0;
  ryedSSLength(set, &length);
  for (OdInt32 i = 0; i < length; ++i) {
    ads_name entity;
    OdDbObjectId id;
    if (ryedSSName(set, i, entity) != RTNORM || rydbGetObjectId(id, entity) != RTNORM) continue;
    OdDbObjectPtr object = id.openObject();
    if (object.isNull()) continue;
    const size_t before = pieces.size();
    if (const auto* l = OdDbLine::cast(object.get()).get()) {
      const double x0 = line.along_(l->startPoint()), x1 = line.along_(l->endPoint());
      pieces.push_back({Piece::kDash, std::min(x0, x1), std::max(x0, x1)});
    } else if (const auto* p = OdDbPolyline::cast(object.get()).get()) {
      polylineDashes(p, line, pieces);
    } else if (const auto* p2 = OdDb2dPolyline::cast(object.get()).get()) {
      OdSmartPtr<OdDbPolyline> flat = OdDbPolyline::createObject();
      if (flat->convertFrom(p2) == eOk) polylineDashes(flat.get(), line, pieces);
    } else if (const auto* point = OdDbPoint::cast(object.get()).get()) {
      const double x = line.along_(point->position());
      pieces.push_back({Piece::kDot, x, x});
    } else if (const auto* text = OdDbText::cast(object.get()).get()) {
      Piece piece{Piece::kText, line.along_(text->position()), 0, line.across_(text->position()), text->height(),
                  text->rotation() - line.angle, L"\"" + text->textString() + L"\""};
      OdDbObjectPtr style = text->textStyle().openObject();
      if (const auto* record = OdDbSymbolTableRecord::cast(style.get()).get()) piece.file = record->getName();
      if (piece.start < -1e-9 || piece.start > line.length + 1e-9) {
        ryutPrintf(L"%ls", L"\n本起点必须落在起点/端点之内。");
        continue;
      }
      piece.end = piece.start;
      pieces.push_back(piece);
    } else {
      // Shapes are not modelled by the drawing: read from their entity-data
      // list, which carries the file's own values (the rotation in degrees).
      ResultList list(rydbEntGet(entity));
      if (!list || stringGroup(list.get(), 0).iCompare(L"SHAPE") != 0) continue;
      const resbuf* at = findGroup(list.get(), 10);
      if (!at) continue;
      const OdGePoint3d insertion(at->resval.rpoint[0], at->resval.rpoint[1], at->resval.rpoint[2]);
      Piece piece{Piece::kShape, line.along_(insertion), 0, line.across_(insertion), realGroup(list.get(), 40, 1),
                  realGroup(list.get(), 50, 0) * kPi / 180.0 - line.angle, stringGroup(list.get(), 2), shapeFile()};
      if (piece.start < -1e-9 || piece.start > line.length + 1e-9) {
        ryutPrintf(L"%ls", L"\n形的插入点必须落在起点/端点之内。");
        continue;
      }
      piece.end = piece.start;
      pieces.push_back(piece);
    }
    // Pieces wholly outside the line are left out; an object none of whose pieces is left counts.
    size_t kept = before;
    for (size_t k = before; k < pieces.size(); ++k) {
      if (pieces[k].end < -1e-9 || pieces[k].start > line.length + 1e-9) continue;
      pieces[k].start = std::max(0.0, pieces[k].start);
      pieces[k].end = std::min(line.length, pieces[k].end);
      pieces[kept++] = pieces[k];
    }
    if (kept == before && pieces.size() > before) ++ignored;
    pieces.resize(kept);
  }
  std::stable_sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) { return a.start < b.start; });
  return pieces;
}

// A shape or text element: "[name,file,S=...,R=...,X=...,Y=...]", its offsets
// from the current position along the line.
OdString bracketed(const Piece& piece, double position, double unit) {
  OdString text = L"[" + piece.name + L"," + piece.file;
  text += L",S=" + formatNumber(piece.scale / unit);
  text += L",R=" + formatNumber(reducedAngle(piece.rotation) * 180.0 / kPi);
  text += L",X=" + formatNumber((piece.start - position) / unit);
  text += L",Y=" + formatNumber(piece.y / unit);
  return text + L"]";
}

// The walk from 0 to the line's length: dashes, the gaps between pieces,
// dots, shapes and texts; lengths in units of unit (the linetype scale).
std::vector<Element> elementsOf(const std::vector<Piece>& pieces, double length, double unit) {
  constexpr double kTouch = 1e-9;
  std::vector<Element> elements;
  double position = 0;
  auto gapTo = [&](double x) {
    if (x > position + kTouch) elements.push_back({Element::kGap, (x - position) / unit});
    position = std::max(position, x);
  };
  for (const Piece& piece : pieces) {
    switch (piece.kind) {
      case Piece::kDash:
        // Each segment is a dash of its own; what an earlier one covers already is not counted twice.
        if (piece.end <= position + kTouch) break;
        gapTo(piece.start);
        elements.push_back({Element::kDash, (piece.end - position) / unit});
        position = piece.end;
        break;
      case Piece::kDot:
        gapTo(piece.start);
        elements.push_back({Element::kDot, 0});
        break;
      case Piece::kShape:
      case Piece::kText:
        elements.push_back({Element::kComplex, 0, bracketed(piece, position, unit)});
        break;
    }
  }
  gapTo(length);
  // A pattern starts with a dash or a dot: a leading gap goes round to the end.
  if (elements.size() > 1 && elements.front().kind == Element::kGap) {
    const Element leading = elements.front();
    elements.erase(elements.begin());
    if (elements.back().kind == Element::kGap)
      elements.back().length += leading.length;
    else
      elements.push_back(leading);
  }
  return elements;
}

// Neighbouring dashes become one dash, neighbouring gaps one gap.
std::vector<Element> optimised(const std::vector<Element>& elements) {
  std::vector<Element> result;
  for (const Element& element : elements) {
    const bool mergeable = element.kind == Element::kDash || element.kind == Element::kGap;
    if (mergeable && !result.empty() && result.back().kind == element.kind)
      result.back().length += element.length;
    else
      result.push_back(element);
  }
  return result;
}

OdString patternLine(const std::vector<Element>& elements) {
  OdString line = L"A";
  for (const Element& element : elements) {
    OdString value;
    switch (element.kind) {
      case Element::kDash: value = formatNumber(element.length); break;
      case Element::kGap: value = formatNumber(-element.length); break;
      case Element::kDot: value = L"0"; break;
      case Element::kComplex: value = element.bracketed; break;
    }
    line.format(L"%ls,%ls", line.c_str(), value.c_str());
  }
  return line;
}

// ---------------------------------------------------------------- the file

// Writes the definition: an existing definition of the same name in the file
// is replaced where it stands (its header and pattern line), otherwise the
// two lines are added at the end. Lines end with CRLF when the file has
// them, else with LF.
bool writeDefinition(const OdString& path, const OdString& header, const OdString& pattern, const OdString& name) {
  std::string old;
  {
    std::ifstream in(path.toUtf8(), std::ios::binary);
    std::ostringstream buffer;
    buffer << in.rdbuf();
    old = buffer.str();
  }
  const std::string newline = old.find("\r\n") != std::string::npos ? "\r\n" : "\n";
  const std::string wanted = (L"*" + name).upper().toUtf8();
  const std::string ours = header.toUtf8() + newline + pattern.toUtf8() + newline;
  std::string written;
  bool replaced = false, inOldPattern = false;
  std::istringstream lines(old);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const bool comment = line.empty() || line[0] == ';';
    if (!comment && line[0] == '*') {
      inOldPattern = !replaced && OdString(line.substr(0, line.find(','))).upper().toUtf8() == wanted;
      if (inOldPattern) {
        written += ours;
        replaced = true;
        continue;
      }
    } else if (inOldPattern && !comment) {
      inOldPattern = line.back() == ',';  // a pattern line ending with "," goes on
      continue;
    }
    written += line + newline;
  }
  if (!replaced) written += ours;
  std::ofstream out(path.toUtf8(), std::ios::binary | std::ios::trunc);
  out << written;
  return static_cast<bool>(out);
}

bool chooseFile(OdString& path) {
  CRyUiNavDialog dialog({CNavFilter(L"线型 (*.lin)", L"*.lin")});
  dialog.SetCreatingFile(true);
  dialog.SetDialogCaption(L"MKLTYPE-选择线型文件");
  dialog.SetConfirmReplace(true);
  // The file chosen last is offered again; the first time no name is offered.
  if (!rememberedPath().isEmpty()) dialog.SetInitialFileName(rememberedPath());
  if (dialog.DoModal() != IDOK) return false;
  path = dialog.GetPathName();
  if (path.right(4).iCompare(L".lin") != 0) path += L".lin";
  rememberedPath() = path;
  return true;
}

bool linetypeExists(const OdString& name) { return ResultList(rydbTblSearch(L"LTYPE", name.c_str(), 0)) != nullptr; }

// The coordinate system turned about Z along the definition line, and put back.
class UcsTurn {
 public:
  UcsTurn(const ads_point start, const ads_point end) {
    m_turned = ryedCommand(RTSTR, L"_.ucs", RTSTR, L"_z", RT3DPOINT, start, RT3DPOINT, end, RTNONE) == RTNORM;
  }
  ~UcsTurn() {
    if (m_turned) ryedCommand(RTSTR, L"_.ucs", RTSTR, L"_p", RTNONE);
  }

 private:
  bool m_turned = false;
};

ResultList selectionFilter() {
  return ResultList(ryutBuildList(-4, L"<OR", RTDXF0, L"LINE", RTDXF0, L"LWPOLYLINE", -4, L"<AND", RTDXF0,
                                  L"POLYLINE", -4, L"<NOT", -4, L"&", 70, 88, -4, L"NOT>", -4, L"AND>", RTDXF0,
                                  L"POINT", RTDXF0, L"SHAPE", RTDXF0, L"TEXT", -4, L"OR>", RTNONE));
}

// Loads the definition with the host's linetype command; a linetype already
// in the drawing is reloaded (the command asks for that).
bool loadLinetype(const OdString& name, const OdString& path, bool existed) {
  const OdString pattern = kestrix::wildcardEscaped(name);
  if (existed)
    return ryedCommand(RTSTR, L"-linetype", RTSTR, L"l", RTSTR, pattern.c_str(), RTSTR, path.c_str(), RTSTR, L"Y",
                       RTSTR, L"", RTNONE) == RTNORM;
  return ryedCommand(RTSTR, L"-linetype", RTSTR, L"l", RTSTR, pattern.c_str(), RTSTR, path.c_str(), RTSTR, L"",
                     RTNONE) == RTNORM;
}

// The status of a prompt that ends the command: RTCAN says so, anything else is quiet.
void endAfter(int status) {
  if (status == RTCAN) ryutPrintf(L"%ls", kCancelled);
}

}  // namespace

void mkltypeCommand() {
  kestrix::CmdEchoGuard echo;
  OdString path;
  if (!chooseFile(path)) return;

  ACHAR buffer[512];
  OdString name;
  for (;;) {
    const int status = ryedGetString(0, L"\n输入线型名称:", buffer, 512);
    if (status != RTNORM) return endAfter(status);
    name = buffer;
    if (isValidName(name)) break;
    ryutPrintf(L"%ls", L"\n*无效线型名称*");
  }
  const bool existed = linetypeExists(name);
  if (existed) {
    ryedInitGet(0, L"Yes No _Yes No");
    const int status = ryedGetKword(L"直线定义已经存在。覆盖它吗? [是(Y)/否(N)] <否>:", buffer, 512);
    if (status == RTCAN || status == RTERROR) return endAfter(RTCAN);
    if (status == RTNONE || OdString(buffer) != L"Yes") {
      ryutPrintf(L"%ls", L"操作被忽略!\n");
      return;
    }
  }
  int status = ryedGetString(1, L"输入线型描述:", buffer, 512);
  if (status != RTNORM) return endAfter(status);
  const OdString description = buffer;

  ads_point start, end;
  if ((status = ryedGetPoint(nullptr, L"\n指定直线定义的起点:", start)) != RTNORM) return endAfter(status);
  for (;;) {
    if ((status = ryedGetPoint(start, L"\n指定直线定义的端点:", end)) != RTNORM) return endAfter(status);
    if (std::hypot(end[0] - start[0], end[1] - start[1]) > 0) break;
    ryutPrintf(L"%ls", L"\n*无效*点之间的距离必须非零!");
  }
  DefinitionLine line;
  line.start = kestrix::ucsToWorld(start);
  const OdGePoint3d endWorld = kestrix::ucsToWorld(end);
  line.along = endWorld - line.start;
  line.length = line.along.length();
  line.along.normalize();
  line.angle = std::atan2(line.along.y, line.along.x);
  line.across = OdGeVector3d::kZAxis.crossProduct(line.along);
  const UcsTurn turn(start, end);

  const ResultList filter = selectionFilter();
  ads_name set;
  if ((status = ryedSSGet(nullptr, nullptr, nullptr, filter.get(), set)) != RTNORM) return endAfter(status);
  int ignored = 0;
  const std::vector<Piece> pieces = measure(set, line, ignored);
  ryedSSFree(set);
  if (ignored > 0) ryutPrintf(L"%ls%d%ls", L"\n忽略直线定义起点/端点之外的", ignored, L"对象。");

  resbuf scale{};
  const double unit = ryedGetVar(L"LTSCALE", &scale) == RTNORM && scale.resval.rreal > 0 ? scale.resval.rreal : 1.0;
  std::vector<Element> elements = elementsOf(pieces, line.length, unit);
  if (elements.size() > kMostElements) {
    ryutPrintf(L"%ls", ResourceString(2136, L"\n正在优化线段...").c_str());
    elements = optimised(elements);
  }
  if (std::none_of(elements.begin(), elements.end(), [](const Element& e) { return e.kind == Element::kGap; })) {
    ryutPrintf(L"%ls", L"\n*无效* 那是连续线型!");
    return;
  }
  if (elements.size() > kMostElements) {
    ryutPrintf(L"%ls", L"\n*无效* 线型定义中包含太多的线段。");
    return;
  }

  if (!writeDefinition(path, L"*" + name + L"," + description, patternLine(elements), name) ||
      !loadLinetype(name, path, existed) ||
      !linetypeExists(name)) {
    ryutPrintf(L"%ls", ResourceString(2129, L"\n线型创建失败。").c_str());
    return;
  }
  ryutPrintf(L"%ls%ls%ls", L"\n线型", name.c_str(),
             existed ? ResourceString(2127, L"已被重定义和加载。").c_str()
                     : ResourceString(2128, L"已被创建和加载。").c_str());
}
