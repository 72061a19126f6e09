// The harness every command test uses: a drawing (a corpus file, DXF text or
// a new drawing), optionally the real module, a list of replies, and then
// the transcript and the database to look at.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "DbBlockTableRecord.h"
#include "DbDatabase.h"
#include "DxfFile.h"
#include "core/Host.h"
#include "core/Modules.h"

struct CorpusDrawing {
  std::string name;  // a corpus file name, or a path
};
struct DxfText {
  std::string text;
};

class HostSession {
 public:
  // A new drawing.
  HostSession() { start(); }
  explicit HostSession(const CorpusDrawing& drawing) {
    start();
    std::string path = drawing.name.find('/') == std::string::npos ? std::string(KESTRIX_CORPUS_DIR) + "/" + drawing.name
                                                                    : drawing.name;
    EXPECT_EQ(host().appContextOpenDocument(OdString(path)), eOk) << path;
    closeFirstNew();
  }
  explicit HostSession(const DxfText& dxf) {
    start();
    host().addDocument(odDxfReadBuffer(dxf.text), OdString());
    closeFirstNew();
  }
  HostSession(const HostSession&) = delete;
  HostSession& operator=(const HostSession&) = delete;
  ~HostSession() { ryhost::Host::instance().reset(); }

  ryhost::Host& host() { return ryhost::Host::instance(); }
  OdDbDatabase* db() { return host().workingDatabase(); }

  // Loads a module (by default the real one beside the host).
  bool loadModule(const std::string& path = std::string(KESTRIX_BIN_DIR) + "/kestrix.yrx") {
    OdString reason;
    bool loaded = host().modules().load(OdString(path), &reason);
    EXPECT_TRUE(loaded) << reason.toUtf8();
    return loaded;
  }

  // Runs the replies at the command prompt, as a script would; returns the
  // text the command line showed for them.
  std::string run(const std::vector<std::string>& replies) {
    for (const auto& reply : replies) m_input.add(OdString(reply));
    const int before = m_transcript.text().getLength();
    host().runCommandLine();
    return m_transcript.text().mid(before).toUtf8();
  }
  // Replies a test gives to a function called directly (not through the command line).
  void reply(const std::vector<std::string>& replies) {
    for (const auto& r : replies) m_input.add(OdString(r));
  }
  size_t repliesLeft() const { return m_input.remaining(); }
  std::string transcript() const { return m_transcript.text().toUtf8(); }

  // The live entities of model space.
  OdDbObjectIdArray modelSpace() {
    OdDbObjectIdArray ids;
    OdDbObjectPtr object = db()->getModelSpaceId().openObject();
    for (const auto& id : static_cast<OdDbBlockTableRecord*>(object.get())->entityIds()) {
      if (!id.isErased()) ids.append(id);
    }
    return ids;
  }

 private:
  void start() {
    ryhost::Host& h = ryhost::Host::instance();
    h.reset();
    // One settings folder per test process, removed when the process ends.
    struct DataFolder {
      std::string path =
          (std::filesystem::temp_directory_path() / ("ryad-test-data-" + std::to_string(getpid()))).string();
      DataFolder() { std::filesystem::create_directories(path); }
      ~DataFolder() {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
      }
    };
    static const DataFolder folder;
    const std::string& dataFolder = folder.path;
    h.setDataFolder(OdString(dataFolder));
    h.setProgramFolder(OdString(std::string(KESTRIX_BIN_DIR) + "/"));
    h.setInput(&m_input);
    h.setTranscript(&m_transcript);
    h.appContextNewDocument();
  }
  void closeFirstNew() {
    // The new drawing made at the start gives way to the one opened.
    if (host().documentCount() > 1) host().closeDocument(static_cast<ryhost::Document*>(host().document(0)));
  }

  ryhost::ListInput m_input;
  ryhost::StringTranscript m_transcript;
};
