// The registry of the other drawing formats odDxfReadFile opens.
#include "dxf/DxfFileFormats.h"

#include <vector>

namespace {

std::vector<OdDxfOtherFormat>& otherFormats() {
  static std::vector<OdDxfOtherFormat> formats;
  return formats;
}

}  // namespace

void odDxfRegisterOtherFormat(const OdDxfOtherFormat& format) { otherFormats().push_back(format); }

OdDbDatabasePtr odDxfReadAnyBuffer(std::string_view data, OdDxfReadReport* report) {
  for (const OdDxfOtherFormat& format : otherFormats()) {
    if (format.claims(data)) return format.read(data, report);
  }
  return odDxfReadBuffer(data, report);
}
