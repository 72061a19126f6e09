// Small helpers shared by the benchmark programs: wall-clock timing,
// memory figures from the kernel and a scratch folder. Programs print processor time beside wall
// time where other work on the machine may slow them.
#pragma once

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

class BenchTimer {
 public:
  BenchTimer() : m_start(std::chrono::steady_clock::now()) {}
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
  }
  void restart() { m_start = std::chrono::steady_clock::now(); }

 private:
  std::chrono::steady_clock::time_point m_start;
};

// Bytes the allocator has handed out and not taken back.
inline size_t benchHeapInUse() {
  struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// The largest resident set of the process so far, in bytes.
inline size_t benchPeakResident() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<size_t>(usage.ru_maxrss) * 1024;
}

inline size_t benchResidentNow() {
  std::ifstream statm("/proc/self/statm");
  size_t pages = 0, resident = 0;
  statm >> pages >> resident;
  return resident * 4096;
}

// A new folder of the program's own in the temporary folder,
// bench-NAME-PID, for the settings and files a benchmark writes.
inline std::string benchScratchFolder(const std::string& name) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("bench-" + name + "-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  return folder.string();
}
