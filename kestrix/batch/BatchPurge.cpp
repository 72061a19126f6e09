// batpurge: many drawing files purged of the records nothing uses (blocks,
// layers, linetypes, text and dimension styles), each through the host's
// -PURGE, repeated until nothing more goes; the file is copied to NAME.bak
// and then saved (the save itself is atomic). The summary counts what went
// from each file.
#include <filesystem>

#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "RyApDocManager.h"
#include "batch/BatchFiles.h"
#include "frame/Guards.h"
#include "frame/commands.h"
#include "ryed.h"

namespace fs = std::filesystem;
using namespace kestrix::batch;

namespace {

struct Kind {
  const wchar_t* keyword;  // of -PURGE
  OdDbNameTable table;
  const wchar_t* plural;
};

const Kind kKinds[] = {
    {L"Blocks", OdDbNameTable::kBlock, L"blocks"},
    {L"LAyers", OdDbNameTable::kLayer, L"layers"},
    {L"LTypes", OdDbNameTable::kLinetype, L"linetypes"},
    {L"STyles", OdDbNameTable::kTextStyle, L"text styles"},
    {L"Dimstyles", OdDbNameTable::kDimStyle, L"dimension styles"},
};
constexpr int kKindCount = 5;

int liveRecords(OdDbDatabase* db, OdDbNameTable table) {
  OdDbObjectPtr object = db->tableId(table).openObject();
  if (!object) return 0;
  int count = 0;
  for (OdDbSymbolTableIteratorPtr it = static_cast<OdDbSymbolTable*>(object.get())->newIterator(); !it->done(); it->step())
    ++count;
  return count;
}

}  // namespace

void batchPurgeCommand() {
  std::vector<fs::path> files;
  fs::path folder;
  if (!chooseDrawings(L"*.dxf", files, folder)) return;
  OdString reply;
  if (!askKeyword(L"\nEnter type of unused objects to purge [Blocks/Dimstyles/LAyers/LTypes/STyles/All] <All>: ",
                  L"Blocks Dimstyles LAyers LTypes STyles All", reply))
    return;
  bool wanted[kKindCount];
  for (int k = 0; k < kKindCount; ++k) wanted[k] = reply.isEmpty() || reply == L"All" || reply == kKinds[k].keyword;

  // The host commands run for each file do not echo their prompts.
  kestrix::CmdEchoGuard quiet;
  int done = 0;
  std::vector<std::pair<fs::path, OdString>> failed;
  for (size_t i = 0; i < files.size(); ++i) {
    const fs::path& file = files[i];
    say(OdString().format(L"\n[%d/%d] ", int(i + 1), int(files.size())) + pathText(file.filename()) + L": ");
    OpenedDrawing drawing(file);
    if (!drawing.isOpen()) {
      failed.push_back({file, L"cannot be read"});
      continue;
    }
    OdDbDatabase* db = ryDocManagerPtr()->curDocument()->database();
    int before[kKindCount], after[kKindCount];
    for (int k = 0; k < kKindCount; ++k) before[k] = after[k] = liveRecords(db, kKinds[k].table);
    // A purge can free records that only purged ones used: again until a round removes nothing.
    for (int round = 0; round < 16; ++round) {
      bool removed = false;
      for (int k = 0; k < kKindCount; ++k) {
        if (!wanted[k]) continue;
        ryedCommand(RTSTR, L"_.-PURGE", RTSTR, kKinds[k].keyword, RTSTR, L"*", RTSTR, L"_No", RTNONE);
        const int now = liveRecords(db, kKinds[k].table);
        removed = removed || now < after[k];
        after[k] = now;
      }
      if (!removed) break;
    }
    std::error_code ec;
    fs::path backup = file;
    backup.replace_extension(".bak");
    fs::copy_file(file, backup, fs::copy_options::overwrite_existing, ec);
    if (ec) {
      failed.push_back({file, L"no backup could be made: " + OdString(ec.message())});
      continue;
    }
    if (ryedCommand(RTSTR, L"_.QSAVE", RTNONE) != RTNORM || ryDocManagerPtr()->curDocument()->isModified()) {
      failed.push_back({file, L"cannot be saved"});
      continue;
    }
    ++done;
    OdString counts;
    for (int k = 0; k < kKindCount; ++k) {
      if (!wanted[k]) continue;
      if (!counts.isEmpty()) counts += L", ";
      counts += OdString().format(L"%d %ls", before[k] - after[k], kKinds[k].plural);
    }
    say(L"\n  purged " + counts + L"; backup " + pathText(backup.filename()));
  }
  say(OdString().format(L"\n%d of %d drawing(s) purged, %d failed.", done, int(files.size()), int(failed.size())));
  for (const auto& [file, why] : failed) say(L"\n  " + pathText(file) + L": " + why);
}
