// What module code may include: the SDK headers of the host and the
// platform, and the module's own headers.
#include "DbDatabase.h"
#include "DbCurves.h"
#include "frame/ResultLists.h"
#include "rydb.h"
#include "ryed.h"
#include "ryerrno.h"
#include "ryut.h"

int main() {
  ads_name entity = {0, 0};
  resbuf* list = ryutBuildList(RTDXF0, L"LINE", RTNONE);
  const kestrix::ResultList owned(list);
  return rydbEntLast(entity) == RTNORM && kErrnoNullReply == 52 ? 0 : 1;
}
