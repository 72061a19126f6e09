// Guards that put the host's state back on every way out of a command:
// "cmdecho" quieted while a command works, any system variable the command
// changes for its own work, and the command's undo group.
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

// The undo group of a command: the host command "Undo" with "BE" when made
// and with "E" when destroyed, so that one U reverses all the command did.
class UndoGroup {
 public:
  UndoGroup();
  ~UndoGroup();
  UndoGroup(const UndoGroup&) = delete;
  UndoGroup& operator=(const UndoGroup&) = delete;
};

}  // namespace kestrix
