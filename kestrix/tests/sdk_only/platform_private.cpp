// Module code may not reach the platform's internals: with the module's
// include folders this header is not found.
#include "ge/GeInternal.h"

int main() { return 0; }
