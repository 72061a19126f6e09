// Fuzz target of the DWG reader: any input either reads (and then is written
// as DXF and read again) or is refused with OdError. Anything else is a fault.
// Start it from the corpus DWG files (truncations and bit flips of them).
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "DbDatabase.h"
#include "DwgRead.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    OdDbDatabasePtr db = odDwgReadBuffer(std::string_view(reinterpret_cast<const char*>(data), size));
    std::string written = odDxfWriteBuffer(db.get(), odDxfSaveVersion(db.get()));
    odDxfReadBuffer(written);
  } catch (const OdError&) {
  }
  return 0;
}
