// Text constants shared across the module, made once when the module's
// static data is initialised and used by the tools that own them.
#pragma once

#include "OdString.h"

namespace kestrix::strings {

// Prefix of the record names of the foreign-drawing exchange, one for each
// of its seven kinds of record.
extern const OdString kJwwDataPrefixes[7];
// The two identifiers the module's tools mark their own data with.
extern const OdString kModuleGuids[2];
extern const OdString kYear2010;          // "2010"
extern const OdString kSmallTolerance;    // "0.0001"
extern const OdString kTextStyleKey;      // "textstyle"
extern const OdString kPlotPrefix;        // "PLOT_"
extern const OdString kBatchPrintBaseType;  // "BP_BASETYPE"
extern const OdString kBatchPrintBaseName;  // "BP_BASENAME"

}  // namespace kestrix::strings
