// The DWG drawings of the shared corpus that the reader handles, and what an
// independent DWG reader (run by node) sees in them.
#pragma once

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

inline std::string dwgCorpusDir() { return std::string(KESTRIX_CORPUS_DIR) + "/dwg"; }

inline std::vector<uint8_t> readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The corpus DWG files of the given versions, by the version their first
// bytes name ("AC1018").
inline std::vector<std::string> dwgFilesOfVersions(const std::set<std::string>& versions) {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(dwgCorpusDir())) {
    if (entry.path().extension() != ".dwg") continue;
    char version[7] = {};
    std::ifstream(entry.path(), std::ios::binary).read(version, 6);
    if (versions.count(version)) files.push_back(entry.path().filename().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// R13, R14 and R2000: one file header with section locators.
inline std::vector<std::string> dwgR13To2000Files() { return dwgFilesOfVersions({"AC1012", "AC1014", "AC1015"}); }
// R2004: the paged container.
inline std::vector<std::string> dwgR2004Files() { return dwgFilesOfVersions({"AC1018"}); }
// R2007: coded, compressed pages and strings of their own.
inline std::vector<std::string> dwgR2007Files() { return dwgFilesOfVersions({"AC1021"}); }
// R2010, R2013, R2018: the paged container with objects of the R2007 form.
inline std::vector<std::string> dwgR2010OnFiles() { return dwgFilesOfVersions({"AC1024", "AC1027", "AC1032"}); }
// Those of them whose entities are all read: every one.
inline std::vector<std::string> dwgR2010OnFilesRead() { return dwgR2010OnFiles(); }

inline std::string dwgTestName(const std::string& file) {
  std::string name;
  for (char c : file) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name;
}

// What the independent reader lists: layer names, and per block (name in
// upper case) its entities as "TYPE:HANDLE" (attributes, vertices and
// sequence ends left out).
struct IndependentDump {
  bool ok = false;
  std::string version;
  std::set<std::string> layers;
  std::map<std::string, std::multiset<std::string>> blocks;
};

namespace dwg_dump_detail {
// The dump is one line of JSON made only of objects, arrays and strings.
struct Json {
  std::string text;
  size_t at = 0;
  void skip() { while (at < text.size() && (text[at] == ' ' || text[at] == ',' || text[at] == ':' || text[at] == '\n')) ++at; }
  std::string string() {
    skip();
    std::string s;
    if (at >= text.size() || text[at] != '"') return s;
    for (++at; at < text.size() && text[at] != '"'; ++at) {
      if (text[at] == '\\' && at + 1 < text.size()) ++at;
      s += text[at];
    }
    ++at;
    return s;
  }
  bool open(char c) { skip(); if (at < text.size() && text[at] == c) { ++at; return true; } return false; }
  bool close(char c) { skip(); if (at < text.size() && text[at] == c) { ++at; return true; } return false; }
};
}  // namespace dwg_dump_detail

inline IndependentDump independentDump(const std::string& path) {
  IndependentDump dump;
  const std::string command = "NODE_PATH='" KESTRIX_NODE_DIR "/node_modules' node '" KESTRIX_SHARED_TOOLS_DIR
                              "/dwg_dump.mjs' '" + path + "' 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return dump;
  dwg_dump_detail::Json j;
  char buffer[65536];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) j.text.append(buffer, n);
  pclose(pipe);
  if (!j.open('{')) return dump;
  while (!j.close('}')) {
    const std::string key = j.string();
    if (key.empty()) return dump;
    if (key == "version") dump.version = j.string();
    else if (key == "layers") {
      j.open('[');
      while (!j.close(']')) dump.layers.insert(j.string());
    } else if (key == "blocks") {
      j.open('{');
      while (!j.close('}')) {
        auto& entities = dump.blocks[j.string()];
        j.open('[');
        while (!j.close(']')) {
          j.open('[');
          // It names the section entity by its class (AcDbSection); the file and DXF call it SECTIONOBJECT.
          std::string type = j.string();
          if (type == "SECTION") type = "SECTIONOBJECT";
          const std::string handle = j.string();
          j.close(']');
          entities.insert(type + ":" + handle);
        }
      }
    } else return dump;
  }
  dump.ok = true;
  return dump;
}
