// Cmp and -cmp: two versions of a drawing are copied to result files,
// read into side databases, handed to the comparison engine, which marks
// and saves them, and then opened as documents. The chosen drawings are
// only ever read.
#include <filesystem>
#include <system_error>

#include "RyApDocManager.h"
#include "RyHostServices.h"
#include "RyUiStdDialogs.h"
#include "compare/Compare.h"
#include "compare/CompareDialogs.h"
#include "frame/Guards.h"
#include "frame/ModuleResources.h"
#include "frame/ModuleWide.h"
#include "frame/ResourceString.h"
#include "frame/commands.h"
#include "ryed.h"
#include "ryut.h"

namespace fs = std::filesystem;

namespace kestrix {

CompareSettings& compareSettings() {
  static CompareSettings settings;
  return settings;
}

// The switches and colours are kept in the order of the records' fields.
DwgCompareOptions engineOptions(const CompareSettings& settings) {
  const int* on = settings.switches;
  return {.tolerance = settings.tolerance,
          .geometry = on[0],
          .properties = on[1],
          .texts = on[2],
          .blocks = on[3],
          .greyUnchanged = on[4],
          .hideUnchanged = on[5]};
}

DwgCompareColors engineColors(const CompareSettings& settings) {
  const COLORREF* color = settings.colors;
  return {.added = color[0], .deleted = color[1], .changed = color[2], .propertyOnly = color[3], .unchanged = color[4]};
}

namespace {

// The name (after the last "\" or "/", before the last ".") and the
// extension (from the last ".", with it) of a path.
void splitName(const OdString& path, OdString& name, OdString& extension) {
  const int slash = std::max(path.reverseFind(L'\\'), path.reverseFind(L'/'));
  name = path.mid(slash + 1);
  const int dot = name.reverseFind(L'.');
  extension = dot >= 0 ? name.mid(dot) : OdString();
  if (dot >= 0) name = name.left(dot);
}

}  // namespace

ResultPaths resultPaths(const OdString& folder, const OdString& oldPath, const OdString& newPath) {
  OdString oldName, oldExt, newName, newExt;
  splitName(oldPath, oldName, oldExt);
  splitName(newPath, newName, newExt);
  ResultPaths paths;
  paths.oldResult.format(L"%ls%ls_old%ls", folder.c_str(), oldName.c_str(), oldExt.c_str());
  paths.newResult.format(L"%ls%ls_new%ls", folder.c_str(), newName.c_str(), newExt.c_str());
  while (paths.oldResult.iCompare(paths.newResult) == 0) {
    const int dot = paths.newResult.reverseFind(L'.');
    const int slash = std::max(paths.newResult.reverseFind(L'\\'), paths.newResult.reverseFind(L'/'));
    const int at = dot > slash ? dot : paths.newResult.getLength();
    paths.newResult = paths.newResult.left(at) + L"_new" + paths.newResult.mid(at);
  }
  return paths;
}

namespace {

// The last drawings chosen, and the last results opened.
OdString g_oldPath, g_newPath, g_oldResultToOpen, g_newResultToOpen;

void resetCompareSettings() {
  kestrix::compareSettings() = kestrix::CompareSettings();
  g_oldPath.empty();
  g_newPath.empty();
  g_oldResultToOpen.empty();
  g_newResultToOpen.empty();
}
KESTRIX_MODULE_WIDE_RESET(resetCompareSettings);

void messageBox(unsigned int id, const wchar_t* fallback) {
  RyUiMessageBox(ResourceString(id, fallback), nullptr, MB_OK | MB_ICONWARNING);
}

// The output folder as the result names need it: ending with a folder
// separator; an empty folder is the old drawing's own.
OdString outputFolder(OdString folder, const OdString& oldPath) {
  folder.trimLeft().trimRight();
  if (folder.isEmpty()) {
    const int slash = std::max(oldPath.reverseFind(L'\\'), oldPath.reverseFind(L'/'));
    return slash >= 0 ? oldPath.left(slash + 1) : OdString();
  }
  const wchar_t last = folder.c_str()[folder.getLength() - 1];
  if (last != L'/' && last != L'\\') folder += L"/";
  return folder;
}

bool sameFile(const OdString& a, const OdString& b) {
  std::error_code ec;
  return fs::equivalent(fs::path(a.toUtf8()), fs::path(b.toUtf8()), ec) && !ec;
}

bool copyDrawing(const OdString& from, const OdString& to) {
  std::error_code ec;
  fs::copy_file(fs::path(from.toUtf8()), fs::path(to.toUtf8()), fs::copy_options::overwrite_existing, ec);
  if (!ec) return true;
  const OdString text(ec.message().c_str());
  RyUiMessageBox(text.c_str(), nullptr, MB_OK | MB_ICONERROR);
  return false;
}

OdDbDatabasePtr readSide(const OdString& path) {
  try {
    return oddbHostApplicationServices()->readFile(path);
  } catch (const std::exception&) {
    return OdDbDatabasePtr();
  }
}

bool exists(const OdString& path) {
  std::error_code ec;
  return !path.isEmpty() && fs::is_regular_file(fs::path(path.toUtf8()), ec);
}

// A run once the two drawings and the output folder are known: copies,
// side databases, the engine, and the results opened. On the command line
// the counts and the report's path are printed as well.
void compareFiles(const OdString& oldPath, const OdString& newPath, const OdString& folder, bool commandLine) {
  const CompareSettings& settings = compareSettings();
  const DwgCompareOptions options = engineOptions(settings);
  const DwgCompareColors colors = engineColors(settings);
  if (!exists(oldPath) || !exists(newPath)) return;
  const ResultPaths results = resultPaths(outputFolder(folder, oldPath), oldPath, newPath);
  // A result that would land on a chosen drawing would overwrite it.
  for (const OdString& result : {results.oldResult, results.newResult}) {
    if (sameFile(result, oldPath) || sameFile(result, newPath)) {
      RyUiMessageBox(formatResource(25036, L"The result %ls would replace a chosen drawing.", result.c_str()).c_str(),
                     nullptr, MB_OK | MB_ICONWARNING);
      return;
    }
  }
  if (!copyDrawing(newPath, results.newResult) || !copyDrawing(oldPath, results.oldResult)) return;

  OdDbDatabasePtr oldDb = readSide(results.oldResult);
  if (oldDb.isNull()) return messageBox(25008, L"The older drawing cannot be read.");
  OdDbDatabasePtr newDb = readSide(results.newResult);
  if (newDb.isNull()) {
    oldDb.release();
    return messageBox(25010, L"The newer drawing cannot be read.");
  }

  std::int32_t result = 0;
  DwgCompareCounts counts;
  OdString report;
  HMODULE library = comparisonLibrary();
  auto get = reinterpret_cast<GetDwgCompareJetFn>(GetProcAddress(library, "GetDwgCompareJet"));
  auto free = reinterpret_cast<FreeDwgCompareJetFn>(GetProcAddress(library, "FreeDwgCompareJet"));
  if (get && free) {
    if (DwgCompareJet* jet = get()) {
      jet->setOldDatabase(oldDb.get());
      jet->setNewDatabase(newDb.get());
      result = jet->compare(&options, &colors);
      counts = jet->counts();
      report = jet->reportPath();
      free(jet);
    }
  }
  oldDb.release();
  newDb.release();
  if (result == 0) return messageBox(25027, L"The comparison found nothing to compare.");

  if (commandLine) {
    ryutPrintf(L"%ls", formatResource(25033, L"\nAdded %lld, deleted %lld, changed %lld, properties only %lld, unchanged %lld.",
                              static_cast<long long>(counts.added), static_cast<long long>(counts.deleted),
                              static_cast<long long>(counts.changed), static_cast<long long>(counts.propertyOnly),
                              static_cast<long long>(counts.unchanged))
                   .c_str());
    if (!report.isEmpty()) ryutPrintf(L"%ls", formatResource(25034, L"\nDifference report: %ls", report.c_str()).c_str());
  }
  // Both results are looked at whatever became of the other; a result that
  // is missing now leaves the path of an earlier run remembered.
  if (exists(results.oldResult)) g_oldResultToOpen = results.oldResult;
  else messageBox(25010, L"The newer drawing cannot be read.");
  if (exists(results.newResult)) g_newResultToOpen = results.newResult;
  else messageBox(25010, L"The newer drawing cannot be read.");
  RyApDocManager* documents = ryDocManagerPtr();
  if (!documents) return;
  if (!g_newResultToOpen.isEmpty()) documents->appContextOpenDocument(g_newResultToOpen);
  if (!g_oldResultToOpen.isEmpty()) documents->appContextOpenDocument(g_oldResultToOpen);
}

}  // namespace

}  // namespace kestrix

void CmpCommand() {
  using namespace kestrix;
  CmdEchoGuard echo;
  if (!comparisonLibrary()) return messageBox(25006, L"The drawing comparison engine (dwgcmp.dll) was not found.");
  CString oldPath, newPath, folder;
  {
    CRyResourceOverride resources(messageLibrary());
    CCompareDlg dialog;
    dialog.m_oldPath = g_oldPath;
    dialog.m_newPath = g_newPath;
    if (dialog.DoModal() != IDOK) return;
    oldPath = dialog.m_oldPath;
    newPath = dialog.m_newPath;
    folder = dialog.m_folder;
  }
  g_oldPath = oldPath;
  g_newPath = newPath;
  if (!oldPath.isEmpty() && !newPath.isEmpty()) compareFiles(oldPath, newPath, folder, false);
}

void cmpCommandLine() {
  using namespace kestrix;
  CmdEchoGuard echo;
  if (!comparisonLibrary()) {
    ryutPrintf(L"\n%ls", ResourceString(25006, L"The drawing comparison engine (dwgcmp.dll) was not found.").c_str());
    return;
  }
  wchar_t reply[2048];
  // A prompt, or its form that offers the last choice (Enter keeps it).
  auto ask = [&](unsigned int id, const wchar_t* fallback, unsigned int offerId, const wchar_t* offerFallback,
                 const OdString& offered, OdString& value) {
    const OdString prompt = offered.isEmpty() ? ResourceString(id, fallback).text()
                                              : formatResource(offerId, offerFallback, offered.c_str());
    if (ryedGetString(1, prompt.c_str(), reply, 2048) != RTNORM) return false;
    value = reply;
    value.trimLeft().trimRight();
    if (value.isEmpty()) value = offered;
    return true;
  };
  OdString oldPath, newPath, folder;
  if (!ask(25030, L"\nOlder drawing: ", 25040, L"\nOlder drawing <%ls>: ", g_oldPath, oldPath)) return;
  if (!ask(25031, L"\nNewer drawing: ", 25041, L"\nNewer drawing <%ls>: ", g_newPath, newPath)) return;
  if (!ask(25032, L"\nOutput folder: ", 0, L"", OdString(), folder)) return;
  g_oldPath = oldPath;
  g_newPath = newPath;
  if (oldPath.isEmpty() || newPath.isEmpty()) return;
  if (!exists(oldPath) || !exists(newPath)) {
    ryutPrintf(L"%ls", formatResource(25035, L"\nNo such drawing: %ls", (exists(oldPath) ? newPath : oldPath).c_str()).c_str());
    return;
  }
  compareFiles(oldPath, newPath, folder, true);
}
