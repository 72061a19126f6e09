// Values that commands keep while the module is loaded and never store
// (remembered options and answers). They go back to their defaults when the
// module is unloaded: the system may keep the library's memory mapped after
// the host lets it go (a library that registered thread-local destructors
// stays), and a module loaded again must start as a fresh one.
#pragma once

namespace kestrix {

using ModuleWideReset = void (*)();

// Registers a function that puts one tool's module-wide values back to their defaults.
void registerModuleWideReset(ModuleWideReset reset);

// Runs every registered reset (at unload).
void resetModuleWideValues();

struct ModuleWideValues {
  explicit ModuleWideValues(ModuleWideReset reset) { registerModuleWideReset(reset); }
};

}  // namespace kestrix

// In a tool's source file: KESTRIX_MODULE_WIDE_RESET(resetMyOptions);
#define KESTRIX_MODULE_WIDE_RESET(reset) \
  [[maybe_unused]] static const kestrix::ModuleWideValues s_moduleWide_##reset(reset)
