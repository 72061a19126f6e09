// Extended records whose data a reader built as a whole, without the groups
// the DXF reader would copy into them one by one.
#pragma once

#include "DbDictionary.h"

// Gives a record that was read with no data the data as read: not an edit
// (nothing for undo, the record stays unmodified).
void odDbXrecordAdoptData(OdDbXrecord* record, OdDxfTagList&& data);
