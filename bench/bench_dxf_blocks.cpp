// Reads drawings of 1,000 and 20,000 blocks (each an anonymous block with a
// line, the shape of a drawing full of dimension pictures, with its block
// record and a reference in model space) and prints the time per block of
// each. Filling the block table must stay linear: the program fails when a
// block costs more than twice as much at 20,000 as at 1,000.
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>

#include "DbBlockReference.h"
#include "DbBlockTableRecord.h"
#include "DbCurves.h"
#include "DbDatabase.h"
#include "DbSymbolTable.h"
#include "DxfFile.h"
#include "bench_entities.h"

namespace {

std::string drawingWithBlocks(int count) {
  OdDbDatabasePtr db = OdDbDatabase::createNew();
  OdSmartPtr<OdDbBlockTable> table = OdDbBlockTable::cast(db->getBlockTableId().safeOpenObject(OdDb::kForWrite));
  OdDbBlockTableRecordPtr space = benchModelSpace(db);
  for (int i = 0; i < count; ++i) {
    OdSmartPtr<OdDbBlockTableRecord> block = OdDbBlockTableRecord::createObject();
    block->setName(OdString().format(L"*D%d", i + 1));
    const OdDbObjectId id = table->add(block.get());
    OdDbLinePtr line = OdDbLine::createObject();
    line->setEndPoint({1.0 + i, 2.0, 0});
    block->appendOdDbEntity(line.get());
    OdDbBlockReferencePtr reference = OdDbBlockReference::createObject();
    reference->setBlockTableRecord(id);
    space->appendOdDbEntity(reference.get());
  }
  table.release();
  space.release();
  return odDxfWriteBuffer(db.get(), OdDb::vAC15);
}

// Processor seconds per block of the best of a few reads (other work on the
// machine only ever makes a read slower).
double secondsPerBlock(int count) {
  const std::string text = drawingWithBlocks(count);
  double best = 1e300;
  for (int round = 0; round < 3; ++round) {
    const std::clock_t start = std::clock();
    OdDbDatabasePtr db = odDxfReadBuffer(text);
    best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  std::printf("%6d blocks: %.3f s to read, %.2f us per block (%zu bytes)\n", count, best, best / count * 1e6,
              text.size());
  return best / count;
}

}  // namespace

int main() {
  const double small = secondsPerBlock(1000);
  const double large = secondsPerBlock(20000);
  const double ratio = large / small;
  std::printf("time per block at 20,000 / at 1,000: %.2f (at most 2)\n", ratio);
  return ratio <= 2.0 ? 0 : 1;
}
