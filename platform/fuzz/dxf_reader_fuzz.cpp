// Fuzz target of the DXF reader: any input either reads (and then writes and
// reads again) or is refused with OdError. Anything else is a fault.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "DbDatabase.h"
#include "DxfFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    OdDbDatabasePtr db = odDxfReadBuffer(std::string_view(reinterpret_cast<const char*>(data), size));
    std::string written = odDxfWriteBuffer(db.get(), odDxfSaveVersion(db.get()));
    odDxfReadBuffer(written);
  } catch (const OdError&) {
  }
  return 0;
}
