// The header variables of a new drawing, also used to complete the header
// of a drawing read from a file that lacks some of them.
#pragma once

class OdDbDatabase;

void odDbSetDefaultHeader(OdDbDatabase* db);
