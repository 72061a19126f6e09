// PLOT (also -PLOT): draws the current drawing to a PDF, SVG or PNG file.
// Every prompt has a default that Enter takes; the answers are collected
// first and the file is written at the end, so Esc writes nothing. The
// drawing itself is never changed.
#include <cmath>
#include <cstdio>

#include "commands/CommandRegistry.h"
#include "commands/CommandSupport.h"
#include "core/CommandStack.h"
#include "core/Host.h"
#include "plot/Plotter.h"

namespace ryhost {

namespace {

using namespace cmdsupport;

void say(const OdString& text) { Host::instance().print(text); }

// "1=100" or "1:100" (plotted millimetres = drawing units), or one number
// (millimetres per unit). False for anything else.
bool parseScale(const OdString& text, double& mmPerUnit) {
  const std::string s = text.toUtf8();
  double a = 0, b = 0;
  char sep = 0, rest = 0;
  if (std::sscanf(s.c_str(), "%lf %c %lf %c", &a, &sep, &b, &rest) == 3 && (sep == '=' || sep == ':') && a > 0 && b > 0) {
    mmPerUnit = a / b;
    return std::isfinite(mmPerUnit);
  }
  if (std::sscanf(s.c_str(), "%lf %c", &a, &rest) == 1 && a > 0 && std::isfinite(a)) {
    mmPerUnit = a;
    return true;
  }
  return false;
}

bool parsePair(const OdString& text, double& x, double& y) {
  const std::string s = text.toUtf8();
  char rest = 0;
  return std::sscanf(s.c_str(), "%lf , %lf %c", &x, &y, &rest) == 2 && std::isfinite(x) && std::isfinite(y);
}

OdString defaultOutputName(Document* doc, plot::Device device) {
  OdString name = doc->fileName();
  if (name.isEmpty()) name = doc->docTitle();
  if (name.isEmpty()) name = L"Drawing1";
  const int dot = name.reverseFind(L'.');
  const int slash = name.reverseFind(L'/');
  if (dot > slash && dot >= 0) name = name.left(dot);
  return name + (device == plot::Device::kPdf ? L".pdf" : device == plot::Device::kSvg ? L".svg" : L".png");
}

void plotCommand() {
  Host& host = Host::instance();
  Document* doc = host.current();
  if (!doc) return;
  plot::Settings settings;

  const OdString device = askKeyword(L"\nEnter an output device [Pdf/Svg/Png] <Pdf>: ", L"Pdf Svg Png");
  settings.device = device == L"Svg" ? plot::Device::kSvg : device == L"Png" ? plot::Device::kPng : plot::Device::kPdf;

  const OdString area =
      askKeyword(L"\nEnter plot area [Extents/Limits/Window/Layout] <Extents>: ", L"Extents Limits Window Layout");
  if (area == L"Limits") {
    settings.area = plot::Area::kLimits;
  } else if (area == L"Window") {
    settings.area = plot::Area::kWindow;
    OdGePoint3d a, b;
    while (!askPoint(L"\nSpecify first corner: ", a)) {}
    while (!askPoint(L"\nSpecify opposite corner: ", b, &a)) {}
    a.transformBy(doc->ucs());
    b.transformBy(doc->ucs());
    settings.windowMin.set(a.x, a.y);
    settings.windowMax.set(b.x, b.y);
  } else if (area == L"Layout") {
    settings.area = plot::Area::kLayout;
    settings.layout = askText(L"\nEnter layout name <Layout1>: ");
    if (settings.layout.isEmpty()) settings.layout = L"Layout1";
  }

  double width = 210, height = 297;
  OdString paperList = plot::paperNames();
  paperList.replace(L' ', L'/');
  for (;;) {
    const OdString paper = askKeyword(L"\nEnter paper size [" + paperList + L"] or width x height in millimetres <A4>: ",
                                      plot::paperNames(), RSG_OTHER);
    if (paper.isEmpty() || plot::paperSize(paper, width, height)) break;
    say(L"\nUnknown paper size.");
  }
  const OdString orientation =
      askKeyword(L"\nEnter drawing orientation [Portrait/Landscape] <Landscape>: ", L"Portrait Landscape");
  const bool portrait = orientation == L"Portrait";
  settings.paperWidth = portrait ? width : height;
  settings.paperHeight = portrait ? height : width;

  for (;;) {
    const OdString scale =
        askKeyword(L"\nEnter plot scale (Plotted Millimeters=Drawing Units) or [Fit] <Fit>: ", L"Fit", RSG_OTHER);
    if (scale.isEmpty() || scale == L"Fit") break;
    if (parseScale(scale, settings.scale)) {
      settings.fit = false;
      break;
    }
    say(L"\nRequires a scale such as 1=100, or Fit.");
  }
  for (;;) {
    const OdString offset =
        askKeyword(L"\nEnter plot offset (x,y) in millimetres or [Center] <Center>: ", L"Center", RSG_OTHER);
    if (offset.isEmpty() || offset == L"Center") break;
    double x = 0, y = 0;
    if (parsePair(offset, x, y)) {
      settings.center = false;
      settings.offset.set(x, y);
      break;
    }
    say(L"\nRequires two numbers x,y, or Center.");
  }
  settings.monochrome = !askYesNo(L"\nPlot in colour? [Yes/No] <Yes>: ", true);
  if (settings.device == plot::Device::kPng) {
    for (;;) {
      double dpi = 150;
      if (!askReal(L"\nEnter resolution in dots per inch <150>: ", dpi, RSG_NOZERO | RSG_NONEG) ||
          (dpi >= 10 && dpi <= 2400)) {
        settings.dpi = dpi;
        break;
      }
      say(L"\nRequires a resolution between 10 and 2400.");
    }
    settings.blackBackground =
        askKeyword(L"\nEnter background colour [White/Black] <White>: ", L"White Black") == L"Black";
  }
  const OdString defaultName = defaultOutputName(doc, settings.device);
  OdString file = askText(L"\nEnter file name <" + defaultName + L">: ");
  if (file.isEmpty()) file = defaultName;
  if (file.getLength() >= 2 && file[0] == L'"' && file[file.getLength() - 1] == L'"') file = file.mid(1, file.getLength() - 2);

  OdString error;
  if (plot::plotToFile(doc->database(), settings, file, error))
    say(L"\nPlot written to " + file + L".");
  else
    say(L"\nNothing plotted: " + error + L".");
}

}  // namespace

void registerPlotCommands(CommandStack& stack) {
  addCommandAndLineForm(stack, L"PLOT", plotCommand);
}

RYAD_HOST_COMMANDS(registerPlotCommands);

}  // namespace ryhost
