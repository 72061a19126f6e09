// Filing of tag lists (extended data, unknown groups, extended records)
// through any filer.
#pragma once

#include "DbFiler.h"
#include "DxfTag.h"

void odFileOutTag(OdDbDwgFiler* filer, const OdDxfTag& tag);
OdDxfTag odFileInTag(OdDbDwgFiler* filer);
void odFileOutTags(OdDbDwgFiler* filer, const OdDxfTagList& tags);
OdDxfTagList odFileInTags(OdDbDwgFiler* filer);
