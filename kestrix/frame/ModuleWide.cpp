#include "frame/ModuleWide.h"

#include <vector>

namespace kestrix {

namespace {
std::vector<ModuleWideReset>& resets() {
  static std::vector<ModuleWideReset> registered;
  return registered;
}
}  // namespace

void registerModuleWideReset(ModuleWideReset reset) { resets().push_back(reset); }

void resetModuleWideValues() {
  for (ModuleWideReset reset : resets()) reset();
}

}  // namespace kestrix
