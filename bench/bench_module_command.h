// Timing one command of the kestrix module in a host session: the drawing
// becomes the host's only document, the module is loaded beside the host,
// and the replies run on the command line.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>

#include "DbDatabase.h"
#include "bench_util.h"
#include "core/Host.h"
#include "core/Modules.h"

// Makes the drawing the host's only document with the module loaded beside
// the host, replies read from input and the command line written to
// transcript; the settings live in folder. Ends the program when the module
// does not load.
inline ryhost::Host& startModuleSession(OdDbDatabasePtr db, const std::string& folder, ryhost::ListInput& input,
                                        ryhost::StringTranscript& transcript) {
  ryhost::Host& host = ryhost::Host::instance();
  host.reset();
  host.setDataFolder(OdString(folder));
  host.setProgramFolder(OdString(std::string(KESTRIX_BIN_DIR) + "/"));
  host.setInput(&input);
  host.setTranscript(&transcript);
  host.addDocument(db, OdString());
  OdString reason;
  if (!host.modules().load(OdString(std::string(KESTRIX_BIN_DIR) + "/kestrix.yrx"), &reason)) {
    std::fprintf(stderr, "the module did not load: %s\n", reason.toUtf8().c_str());
    std::exit(1);
  }
  return host;
}

// The time the replies took on the drawing; the settings live in folder.
inline double timeModuleCommand(OdDbDatabasePtr db, std::initializer_list<const char*> replies,
                                const std::string& folder) {
  static ryhost::ListInput input;
  static ryhost::StringTranscript transcript;
  ryhost::Host& host = startModuleSession(db, folder, input, transcript);
  for (const char* reply : replies) input.add(OdString(reply));
  BenchTimer timer;
  host.runCommandLine();
  return timer.seconds();
}
