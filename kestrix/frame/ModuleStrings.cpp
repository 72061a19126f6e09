#include "frame/ModuleStrings.h"

namespace kestrix::strings {

const OdString kJwwDataPrefixes[7] = {L"JwwData.", L"JwwData.", L"JwwData.", L"JwwData.",
                                      L"JwwData.", L"JwwData.", L"JwwData."};
const OdString kModuleGuids[2] = {L"{8f16750d-97df-4e1e-b002-1c4fce0bcebe}",
                                  L"{831728eb-3e89-4eca-9ad7-ba9455f7d13d}"};
const OdString kYear2010 = L"2010";
const OdString kSmallTolerance = L"0.0001";
const OdString kTextStyleKey = L"textstyle";
const OdString kPlotPrefix = L"PLOT_";
const OdString kBatchPrintBaseType = L"BP_BASETYPE";
const OdString kBatchPrintBaseName = L"BP_BASENAME";

}  // namespace kestrix::strings
