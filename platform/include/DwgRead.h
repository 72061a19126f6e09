// Reading drawings saved as DWG files (R13 to R2000 so far) into a new
// database. A drawing read from DWG is saved as DXF.
#pragma once

#include <string_view>

#include "DxfFile.h"

// True when the data begins like a DWG file ("AC10..").
bool odIsDwgData(std::string_view data);

// Reads a DWG drawing. The report gives the version, and one line for every
// section or object that could not be decoded (with its file offset) and
// per class the number of objects not read; what can be read is kept. A
// file that cannot be read at all is refused with OdError (eInvalidDwgVersion
// for a version not read yet, else eDwgNotRecoverable) and a message that
// says why, with the file offset.
OdDbDatabasePtr odDwgReadBuffer(std::string_view data, OdDxfReadReport* report = nullptr);
