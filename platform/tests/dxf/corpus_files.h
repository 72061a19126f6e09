// The real drawings of the shared corpus, for parameterised tests.
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

inline std::vector<std::string> corpusFiles() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(KESTRIX_CORPUS_DIR)) {
    std::string ext = entry.path().extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), ::tolower);
    if (ext == ".dxf") files.push_back(entry.path().filename().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

inline std::string corpusPath(const std::string& name) { return std::string(KESTRIX_CORPUS_DIR) + "/" + name; }

// A test name made of the file name's letters and digits.
inline std::string testNameOf(const std::string& file) {
  std::string name;
  for (char c : file) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name;
}
