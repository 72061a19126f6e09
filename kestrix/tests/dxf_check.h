// Drawings made and checked by an independent reader (python3 with ezdxf):
// a script builds the drawing a test opens, another reads what the test
// saved and prints what it finds.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "DbDatabase.h"
#include "DxfFile.h"
#include "att_support.h"

namespace dxfcheck {

// A file in a folder of this process, removed when the process ends.
using att::tempPath;

// The output (both streams) of a command line, trailing line breaks taken off.
inline std::string output(const std::string& command) {
  std::string text;
  if (FILE* pipe = popen((command + " 2>&1").c_str(), "r")) {
    char buffer[512];
    while (fgets(buffer, sizeof buffer, pipe)) text += buffer;
    pclose(pipe);
  }
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

// Runs a python script (with sys and ezdxf imported) with the arguments.
inline std::string python(const std::string& script, const std::string& arguments) {
  const std::string path = tempPath("script.py");
  std::ofstream(path) << "import sys, ezdxf\n" << script;
  return output("/usr/bin/python3 '" + path + "' " + arguments);
}

// "same" when the two drawings hold the same entities (the shared checker).
inline std::string sameEntities(const std::string& before, const std::string& after) {
  return output("/usr/bin/python3 " + std::string(KESTRIX_CORPUS_DIR) + "/../tools/dxf_same_entities.py '" +
                before + "' '" + after + "'");
}

inline std::string saved(OdDbDatabase* db, const std::string& name) {
  const std::string path = tempPath(name);
  odDxfWriteFile(db, OdString(path));
  return path;
}

}  // namespace dxfcheck
