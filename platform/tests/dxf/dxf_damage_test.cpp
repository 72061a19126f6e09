// Damaged files: what can be repaired safely is repaired and reported, the
// rest is refused with the line and what was expected; nothing crashes.
// Saving is atomic.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include <csignal>
#include <sys/resource.h>

#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DxfFile.h"
#include "corpus_files.h"

namespace {

std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// A small R2000 drawing with two lines, written by the platform itself.
std::string twoLines() {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdSmartPtr<OdDbBlockTableRecord> space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
  for (int i = 0; i < 2; ++i) {
    OdDbLinePtr line = OdDbLine::createObject();
    line->setEndPoint({1.0 / 3.0, 0.1 * (i + 1), 1e-300});
    space->appendOdDbEntity(line.get());
  }
  space.release();
  return odDxfWriteBuffer(db.get(), OdDb::vAC15);
}

bool hasRepair(const OdDxfReadReport& report, const wchar_t* text) {
  for (const auto& repair : report.repairs) {
    if (repair.find(text) >= 0) return true;
  }
  return false;
}

std::vector<OdDbObjectId> modelSpaceIds(OdDbDatabase* db) {
  OdSmartPtr<OdDbBlockTableRecord> space = OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject());
  return std::vector<OdDbObjectId>(space->entityIds().begin(), space->entityIds().end());
}

}  // namespace

TEST(DamagedFiles, DuplicateAndMissingHandlesGetNewOnesAndAreReported) {
  std::string data = twoLines();
  const auto ids = modelSpaceIds(odDxfReadBuffer(data).get());
  ASSERT_EQ(ids.size(), 2u);
  // Give the second line the first one's handle, then drop the handle altogether.
  const std::string first = "\n  5\r\n" + ids[0].handle().ascii().toUtf8() + "\r\n";
  const std::string second = "\n  5\r\n" + ids[1].handle().ascii().toUtf8() + "\r\n";
  std::string duplicate = data;
  duplicate.replace(duplicate.find(second), second.size(), first);
  OdDxfReadReport report;
  OdDbDatabasePtr db = odDxfReadBuffer(duplicate, &report);
  EXPECT_TRUE(hasRepair(report, L"of another object")) << report.repairs.size();
  auto read = modelSpaceIds(db.get());
  ASSERT_EQ(read.size(), 2u);
  EXPECT_NE(read[0].handle(), read[1].handle());
  EXPECT_GE(db->handseed().value(), std::max(read[0].handle().value(), read[1].handle().value()) + 1);

  std::string missing = data;
  missing.replace(missing.find(second), second.size(), "\n  5\r\n\r\n");
  report = {};
  db = odDxfReadBuffer(missing, &report);
  EXPECT_TRUE(hasRepair(report, L"empty handle")) << report.repairs.size();
  EXPECT_EQ(modelSpaceIds(db.get()).size(), 2u);
}

TEST(DamagedFiles, TrashAfterEofIsReportedAndTruncationIsRefusedWithTheLine) {
  std::string data = twoLines();
  OdDxfReadReport report;
  odDxfReadBuffer(data + "this is not a drawing\n\x01\x02", &report);
  EXPECT_TRUE(hasRepair(report, L"after 0 EOF"));

  // Cut inside the entities: refused, naming a line and what was expected.
  const size_t cut = data.find("AcDbLine");
  for (size_t at : {cut, cut + 3, data.size() / 2}) {
    try {
      odDxfReadBuffer(std::string_view(data).substr(0, at));
      FAIL() << "a truncated file was accepted (cut at " << at << ")";
    } catch (const OdError& error) {
      EXPECT_NE(error.description().find(L"line "), -1) << error.what();
      EXPECT_NE(error.description().find(L"expected"), -1) << error.what();
    }
  }
  EXPECT_THROW(odDxfReadBuffer("not a drawing at all"), OdError);
  EXPECT_THROW(odDxfReadBuffer(""), OdError);
}

TEST(DamagedFiles, RandomDamageNeverCrashes) {
  const std::string original = readAll(corpusPath("integration_tests_data_small_r14.dxf"));
  ASSERT_FALSE(original.empty());
  std::mt19937 rng(2024);
  int accepted = 0;
  for (int round = 0; round < 300; ++round) {
    std::string data = original;
    const int edits = 1 + static_cast<int>(rng() % 8);
    for (int e = 0; e < edits; ++e) {
      size_t at = rng() % data.size();
      switch (rng() % 3) {
        case 0: data[at] = static_cast<char>(rng()); break;
        case 1: data.erase(at, rng() % 40); break;
        default: data.insert(at, data.substr(rng() % data.size(), rng() % 60)); break;
      }
    }
    try {
      OdDbDatabasePtr db = odDxfReadBuffer(data);
      // What was accepted is a drawing that writes and reads again.
      odDxfReadBuffer(odDxfWriteBuffer(db.get(), odDxfSaveVersion(db.get())));
      ++accepted;
    } catch (const OdError&) {
    }
  }
  EXPECT_GT(accepted, 0);
}

TEST(Saving, IsAtomicAndAFailedSaveLeavesTheTargetAsItWas) {
  const auto dir = std::filesystem::temp_directory_path() / ("kestrix-save-" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  OdDbDatabasePtr db = odDxfReadBuffer(twoLines());
  const auto target = dir / "plan.dxf";
  { std::ofstream(target) << "old contents"; }
  odDxfWriteFile(db.get(), OdString(target.string()));
  EXPECT_EQ(modelSpaceIds(odDxfReadFile(OdString(target.string())).get()).size(), 2u);

  // A target that cannot be replaced (a folder of that name): refused, left alone, no leftovers.
  const auto blocked = dir / "blocked.dxf";
  std::filesystem::create_directories(blocked / "inside");
  EXPECT_THROW(odDxfWriteFile(db.get(), OdString(blocked.string())), OdError_FileException);
  EXPECT_TRUE(std::filesystem::is_directory(blocked / "inside"));
  EXPECT_THROW(odDxfWriteFile(db.get(), OdString((dir / "no-such-folder" / "x.dxf").string())), OdError_FileException);
  int files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir)) ++files;
  EXPECT_EQ(files, 2);  // plan.dxf and blocked.dxf: no temporary files left
  std::filesystem::remove_all(dir);
}

TEST(Saving, AFileSystemRefusingMidwayLeavesTheTargetAsItWas) {
  // A drawing whose text runs to several pieces, saved where files may not
  // grow beyond 1 MB: the writer fails part-way through the pieces.
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  {
    OdSmartPtr<OdDbBlockTableRecord> space =
        OdDbBlockTableRecord::cast(db->getModelSpaceId().safeOpenObject(OdDb::kForWrite));
    for (int i = 0; i < 80000; ++i) {
      OdDbLinePtr line = OdDbLine::createObject();
      line->setEndPoint({i / 7.0, i / 3.0, 0.0});
      space->appendOdDbEntity(line.get());
    }
  }
  const auto dir = std::filesystem::temp_directory_path() / ("kestrix-full-" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  const auto target = dir / "plan.dxf";
  { std::ofstream(target) << "old contents"; }

  struct rlimit saved {};
  getrlimit(RLIMIT_FSIZE, &saved);
  auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
  struct rlimit small = saved;
  small.rlim_cur = 1 << 20;
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_THROW(odDxfWriteFile(db.get(), OdString(target.string())), OdError_FileException);
  setrlimit(RLIMIT_FSIZE, &saved);
  std::signal(SIGXFSZ, oldHandler);

  EXPECT_EQ(readAll(target.string()), "old contents");
  int files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir)) ++files;
  EXPECT_EQ(files, 1);
  // With room again the same database saves whole.
  odDxfWriteFile(db.get(), OdString(target.string()));
  EXPECT_EQ(modelSpaceIds(odDxfReadFile(OdString(target.string())).get()).size(), 80000u);
  std::filesystem::remove_all(dir);
}

TEST(Saving, TableHeadsKeepTheirReactors) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  const OdDbHandle watcher = db->getNamedObjectsDictionaryId().handle();
  {
    OdDbObjectPtr table = db->getLayerTableId().safeOpenObject(OdDb::kForWrite);
    table->addPersistentReactor(db->getNamedObjectsDictionaryId());
  }
  OdDbDatabasePtr back = odDxfReadBuffer(odDxfWriteBuffer(db.get(), OdDb::vAC15));
  OdDbObjectPtr table = back->getLayerTableId().safeOpenObject();
  const OdDbObjectIdArray reactors = table->getPersistentReactors();
  ASSERT_EQ(reactors.size(), 1u);
  EXPECT_EQ(reactors[0].handle(), watcher);
}
