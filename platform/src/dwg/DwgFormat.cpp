// Opening a file with odDxfReadFile reads a DWG drawing with the DWG reader
// (it is saved as DXF): the format registers itself with the DXF layer when
// the objects of this layer are loaded.
#include "DwgRead.h"
#include "dxf/DxfFileFormats.h"

namespace {

[[maybe_unused]] const bool kDwgRegistered = (odDxfRegisterOtherFormat({&odIsDwgData, &odDwgReadBuffer}), true);

}  // namespace
