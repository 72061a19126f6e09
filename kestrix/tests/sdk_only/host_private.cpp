// Module code may not reach the host's kernel: with the module's include
// folders this header is not found.
#include "core/Host.h"

int main() { return &ryhost::Host::instance() != nullptr ? 0 : 1; }
