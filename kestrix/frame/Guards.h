// Guards that put the host's state back on every way out of a command:
// "cmdecho" quieted while a command works, and any system variable the
// command changes for its own work.
#pragma once

#include <vector>

#include "OdString.h"
#include "rytypes.h"

namespace kestrix {

// Saves a system variable when made and writes the saved value back when
// destroyed (or at restore()), whatever way the command ends.
class SysVarSaver {
 public:
  explicit SysVarSaver(const wchar_t* name);
  SysVarSaver(const wchar_t* name, const resbuf& newValue);
  ~SysVarSaver();
  SysVarSaver(const SysVarSaver&) = delete;
  SysVarSaver& operator=(const SysVarSaver&) = delete;
  // Sets the variable to a short value for the command's work.
  bool setShort(short value);
  bool setReal(double value);
  bool setString(const OdString& value);
  void restore();
  bool saved() const { return m_saved; }

 private:
  OdString m_name;
  resbuf m_value{};
  bool m_saved = false;
};

// The command-echo guard: "cmdecho" is 0 while the command runs and back to
// what it was afterwards; the command then returns "no value" to the host.
class CmdEchoGuard {
 public:
  CmdEchoGuard();
  ~CmdEchoGuard();
  CmdEchoGuard(const CmdEchoGuard&) = delete;
  CmdEchoGuard& operator=(const CmdEchoGuard&) = delete;

 private:
  SysVarSaver m_echo;
};

// One undo step for everything a command changes: "Undo" "BE" when made,
// "Undo" "E" when destroyed, so that a single U reverses the command.
class UndoGroup {
 public:
  UndoGroup();
  ~UndoGroup();
  UndoGroup(const UndoGroup&) = delete;
  UndoGroup& operator=(const UndoGroup&) = delete;
};

}  // namespace kestrix
