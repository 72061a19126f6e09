// ryad: the host program. Opens a drawing (or a new one), loads the tool
// module, and runs replies from a script, the terminal or standard input.
//
//   ryad [--script FILE] [--output FILE] [--module FILE | --no-module] [DRAWING]
//   ryad --plot OUT.pdf|OUT.svg|OUT.png DRAWING   (the drawing's extents, fitted to an A4 sheet)
#include <editline/readline.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "DxfFile.h"
#include "core/Host.h"
#include "core/Modules.h"
#include "plot/Plotter.h"

using namespace ryhost;

namespace {

// Replies from a script or a pipe: one per line; lines starting with ";" are comments.
class ScriptInput : public InputSource {
 public:
  explicit ScriptInput(std::istream& in) : m_in(in) {}
  bool readLine(OdString& line, const OdString&) override {
    std::string bytes;
    while (std::getline(m_in, bytes)) {
      if (!bytes.empty() && bytes.back() == '\r') bytes.pop_back();
      if (!bytes.empty() && bytes[0] == ';') continue;
      line = OdString(bytes);
      return true;
    }
    return false;
  }

 private:
  std::istream& m_in;
};

// What Tab completes at a terminal prompt: command, alias and variable
// names at the Command prompt, the keywords of a prompt's "[A/B/C]" list,
// and file names where a file or drawing is asked for.
class TerminalCompletion {
 public:
  static void setPrompt(const OdString& prompt) { s_prompt = prompt; }

  static char** complete(const char* text, int, int) {
    rl_attempted_completion_over = 1;  // no fallback to file names where they make no sense
    s_candidates.clear();
    const OdString typed(text);
    if (endsWith(s_prompt, L"Command: ")) {
      for (const OdString& name : Host::instance().commandNamesStartingWith(typed)) s_candidates.push_back(name.toUtf8());
    } else if (isFilePrompt()) {
      return rl_completion_matches(text, rl_filename_completion_function);
    } else {
      for (const OdString& keyword : keywordsOfPrompt()) {
        if (keyword.getLength() >= typed.getLength() && keyword.left(typed.getLength()).iCompare(typed) == 0)
          s_candidates.push_back(keyword.toUtf8());
      }
    }
    if (s_candidates.empty()) return nullptr;
    return rl_completion_matches(text, nextCandidate);
  }

 private:
  static bool endsWith(const OdString& text, const OdString& end) {
    return text.getLength() >= end.getLength() && text.right(end.getLength()) == end;
  }
  static bool isFilePrompt() {
    const OdString lower = OdString(s_prompt).makeLower();
    return lower.find(L"file") >= 0 || lower.find(L"drawing") >= 0 || lower.find(L"folder") >= 0;
  }
  // The words of the last "[...]" of the prompt, up to a blank each ("Ttr (tan tan radius)" gives "Ttr").
  static std::vector<OdString> keywordsOfPrompt() {
    std::vector<OdString> keywords;
    const int open = s_prompt.reverseFind(L'[');
    const int close = s_prompt.reverseFind(L']');
    if (open < 0 || close < open) return keywords;
    OdString list = s_prompt.mid(open + 1, close - open - 1);
    for (int start = 0; start <= list.getLength();) {
      int slash = list.find(L'/', start);
      if (slash < 0) slash = list.getLength();
      OdString word = list.mid(start, slash - start);
      word.trimLeft().trimRight();
      if (const int blank = word.find(L' '); blank > 0) word = word.left(blank);
      if (!word.isEmpty()) keywords.push_back(word);
      start = slash + 1;
    }
    return keywords;
  }
  static char* nextCandidate(const char*, int state) {
    static size_t next = 0;
    if (state == 0) next = 0;
    return next < s_candidates.size() ? strdup(s_candidates[next++].c_str()) : nullptr;
  }

  static inline OdString s_prompt;
  static inline std::vector<std::string> s_candidates;
};

// Replies typed at a terminal, with line editing, completion (Tab; a second
// Tab lists the candidates) and a history kept between runs in the data folder.
class TerminalInput : public InputSource {
 public:
  TerminalInput() : m_historyFile((Host::instance().dataFolder() + L"history").toUtf8()) {
    rl_attempted_completion_function = TerminalCompletion::complete;
    stifle_history(kHistoryLines);
    read_history(m_historyFile.c_str());
  }
  ~TerminalInput() override { write_history(m_historyFile.c_str()); }

  bool readLine(OdString& line, const OdString& prompt) override {
    std::fflush(stdout);
    TerminalCompletion::setPrompt(prompt);
    char* text = readline(prompt.toUtf8().c_str());
    if (!text) return false;
    if (*text) {
      add_history(text);
      // Written at once, so that a run ended by a signal keeps its history too.
      write_history(m_historyFile.c_str());
    }
    line = OdString(text);
    std::free(text);
    return true;
  }
  bool showsPrompt() const override { return true; }

 private:
  static constexpr int kHistoryLines = 500;
  std::string m_historyFile;
};

class StdoutTranscript : public Transcript {
 public:
  void write(const OdString& text) override {
    std::string bytes = text.toUtf8();
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  }
};

// Names are kept as text: a name whose bytes are not UTF-8 would be saved or
// read under another name, so it is refused.
bool isUtf8Name(const std::string& name) { return OdString(name).toUtf8() == name; }

int usage(FILE* to) {
  std::fprintf(to, "usage: ryad [--script FILE] [--output FILE] [--module FILE | --no-module] [DRAWING]\n"
                   "       ryad --plot OUT.pdf|OUT.svg|OUT.png DRAWING\n");
  return to == stderr ? 2 : 0;
}

// --plot: the extents of a drawing on a landscape A4 sheet (PNG at 150 dpi), without a session.
int plotAndExit(const std::string& out, const std::string& drawing) {
  plot::Settings settings;
  if (drawing.empty() || !plot::deviceFromFileName(OdString(out), settings.device)) return usage(stderr);
  try {
    OdDbDatabasePtr db = odDxfReadFile(OdString(drawing));
    OdString error;
    if (!plot::plotToFile(db.get(), settings, OdString(out), error)) {
      std::fprintf(stderr, "ryad: cannot plot %s: %s\n", drawing.c_str(), error.toUtf8().c_str());
      return 1;
    }
  } catch (const OdError& error) {
    std::fprintf(stderr, "ryad: cannot read the drawing %s: %s\n", drawing.c_str(), error.description().toUtf8().c_str());
    return 1;
  }
  std::printf("Plot written to %s\n", out.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string script, output, module, drawing, plotFile;
  bool noModule = false;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&](std::string& target) {
      if (i + 1 >= argc) return false;
      target = argv[++i];
      return true;
    };
    if (arg == "--script") {
      if (!value(script)) return usage(stderr);
    } else if (arg == "--output") {
      if (!value(output)) return usage(stderr);
    } else if (arg == "--module") {
      if (!value(module)) return usage(stderr);
    } else if (arg == "--plot") {
      if (!value(plotFile)) return usage(stderr);
    } else if (arg == "--no-module") {
      noModule = true;
    } else if (arg == "--help" || arg == "-h") {
      return usage(stdout);
    } else if (!arg.empty() && arg[0] == '-') {
      return usage(stderr);
    } else if (drawing.empty()) {
      drawing = arg;
    } else {
      return usage(stderr);
    }
  }

  for (const std::string* name : {&script, &output, &module, &drawing, &plotFile}) {
    if (!isUtf8Name(*name)) {
      std::fprintf(stderr, "ryad: the file name %s is not valid UTF-8\n", name->c_str());
      return 2;
    }
  }
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::string(argv[i]) == "--output" && output.empty()) {
      std::fprintf(stderr, "ryad: --output needs a file name\n");
      return 2;
    }
  }

  if (!plotFile.empty()) return plotAndExit(plotFile, drawing);

  Host& host = Host::instance();
  std::ifstream scriptFile;
  std::unique_ptr<InputSource> input;
  if (!script.empty()) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(script, ignored) && !std::filesystem::is_fifo(script, ignored) &&
        std::filesystem::exists(script, ignored)) {
      std::fprintf(stderr, "ryad: the script %s is not a file\n", script.c_str());
      return 1;
    }
    scriptFile.open(script);
    if (!scriptFile) {
      std::fprintf(stderr, "ryad: cannot read the script %s\n", script.c_str());
      return 1;
    }
    input = std::make_unique<ScriptInput>(scriptFile);
  } else if (isatty(STDIN_FILENO)) {
    input = std::make_unique<TerminalInput>();
  } else {
    input = std::make_unique<ScriptInput>(std::cin);
  }
  StdoutTranscript transcript;
  host.setTranscript(&transcript);
  host.setInput(input.get());

  if (!drawing.empty()) {
    OdDbDatabasePtr db;
    OdDxfReadReport report;
    try {
      db = odDxfReadFile(OdString(drawing), &report);
    } catch (const OdError& error) {
      std::fprintf(stderr, "ryad: cannot read the drawing %s: %s\n", drawing.c_str(), error.description().toUtf8().c_str());
      return 1;
    }
    host.printRepairs(OdString(drawing), report.repairs);
    host.addDocument(db, OdString(drawing));
  } else {
    host.appContextNewDocument();
  }
  if (!noModule) {
    const bool explicitModule = !module.empty();
    OdString path = explicitModule ? OdString(module) : host.programFolder() + L"kestrix.yrx";
    OdString reason;
    if (!host.modules().load(path, &reason)) {
      std::fflush(stdout);
      std::fprintf(stderr, "ryad: cannot load the module %s: %s\n", path.toUtf8().c_str(), reason.toUtf8().c_str());
      if (explicitModule) return 1;
    }
  }

  host.runCommandLine();
  if (!output.empty()) {
    if (!host.current()) {
      host.noteProblem(L"no drawing is open to save as " + OdString(output));
    } else if (host.saveDocument(host.current(), OdString(output))) {
      host.print(L"\nSaved " + OdString(output));
    }
  }
  host.print(L"\n");
  std::fflush(stdout);
  host.modules().unloadAll();
  if (!host.problems().empty()) {
    std::fprintf(stderr, "ryad: %s\n", host.problems().front().toUtf8().c_str());
    return 1;
  }
  return 0;
}
