#include "frame/Guards.h"

#include <cstdlib>
#include <cwchar>

#include "ryed.h"

namespace kestrix {

SysVarSaver::SysVarSaver(const wchar_t* name) : m_name(name) {
  m_saved = ryedGetVar(name, &m_value) == RTNORM;
}

SysVarSaver::SysVarSaver(const wchar_t* name, const resbuf& newValue) : SysVarSaver(name) {
  if (m_saved) ryedSetVar(name, &newValue);
}

SysVarSaver::~SysVarSaver() {
  restore();
  if (m_value.restype == RTSTR) std::free(m_value.resval.rstring);
}

bool SysVarSaver::setShort(short value) {
  resbuf rb{};
  rb.restype = RTSHORT;
  rb.resval.rint = value;
  return m_saved && ryedSetVar(m_name.c_str(), &rb) == RTNORM;
}

bool SysVarSaver::setReal(double value) {
  resbuf rb{};
  rb.restype = RTREAL;
  rb.resval.rreal = value;
  return m_saved && ryedSetVar(m_name.c_str(), &rb) == RTNORM;
}

bool SysVarSaver::setString(const OdString& value) {
  resbuf rb{};
  rb.restype = RTSTR;
  rb.resval.rstring = const_cast<wchar_t*>(value.c_str());
  return m_saved && ryedSetVar(m_name.c_str(), &rb) == RTNORM;
}

void SysVarSaver::restore() {
  if (m_saved) ryedSetVar(m_name.c_str(), &m_value);
}

CmdEchoGuard::CmdEchoGuard() : m_echo(L"cmdecho") { m_echo.setShort(0); }

CmdEchoGuard::~CmdEchoGuard() {
  m_echo.restore();
  ryedRetVoid();
}

UndoGroup::UndoGroup() { ryedCommand(RTSTR, L"Undo", RTSTR, L"BE", RTNONE); }

UndoGroup::~UndoGroup() { ryedCommand(RTSTR, L"Undo", RTSTR, L"E", RTNONE); }

}  // namespace kestrix
