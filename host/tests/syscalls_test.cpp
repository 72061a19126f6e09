// The system calls of RyWindows.h: the resource-library format, libraries
// by path and by bare name, module handles and files, numbered strings, and
// private settings files with their classic buffer rules.
#include <gtest/gtest.h>

#include <fstream>

#include "RyWindows.h"
#include "harness.h"
#include "host_test_support.h"
#include "sdk/ResourceLibrary.h"

namespace {

namespace fs = std::filesystem;
using ryhost::ResourceLibrary;

// A resource library's text with "|" standing for the tab.
std::string tabs(std::string text) {
  std::replace(text.begin(), text.end(), '|', '\t');
  return text;
}

const std::string kHeader = "RYAD RESOURCE LIBRARY 1\n";

const std::string kSample = tabs(R"(RYAD RESOURCE LIBRARY 1
; messages of the test
STRINGTABLE
1|Hello world
2|\nSelect objects: 
3|Tab\there, quote \" and backslash \\
4|
65535|last
END

# a dialog
DIALOG 225
CAPTION|Replace block
SIZE|260|120
FONT|9|Sans
CONTROL|-1|ltext|&Name:|10|10|40|12
CONTROL|1001|EDIT||55|8|120|14|tabstop  autohscroll
CONTROL|1|DEFBUTTON|OK|150|96|50|14
END
STRINGTABLE
10|second table
END
)");

std::wstring wide(const std::string& text) { return OdString(text).c_str(); }
std::wstring wide(const fs::path& path) { return wide(path.string()); }

// A folder of its own for each test, removed afterwards.
struct TempFolder : hosttest::TempFolder {
  TempFolder() : hosttest::TempFolder("ryad-syscalls") {}
};

std::wstring stringOf(HMODULE library, UINT id) {
  wchar_t buffer[256];
  const int length = LoadStringW(library, id, buffer, 256);
  return std::wstring(buffer, static_cast<size_t>(length));
}

std::wstring fileOf(HMODULE module) {
  wchar_t buffer[1024];
  const DWORD length = GetModuleFileNameW(module, buffer, 1024);
  return std::wstring(buffer, length);
}

// ---------------------------------------------------------------- the format

TEST(ResourceLibraryFormat, ReadsStringsAndDialogs) {
  std::string reason;
  auto library = ResourceLibrary::parse(kSample, &reason);
  ASSERT_TRUE(library) << reason;
  EXPECT_EQ(*library->string(1), L"Hello world");
  EXPECT_EQ(*library->string(2), L"\nSelect objects: ");  // escapes undone, trailing space kept
  EXPECT_EQ(*library->string(3), L"Tab\there, quote \" and backslash \\");
  EXPECT_TRUE(library->string(4)->isEmpty());
  EXPECT_EQ(*library->string(65535), L"last");
  EXPECT_EQ(*library->string(10), L"second table");
  EXPECT_EQ(library->string(5), nullptr);
  EXPECT_EQ(library->strings().size(), 6u);

  ASSERT_EQ(library->dialogIds(), std::vector<int>{225});
  const ryhost::DialogTemplate* dialog = library->dialog(225);
  EXPECT_EQ(dialog->caption, L"Replace block");
  EXPECT_EQ(dialog->width, 260);
  EXPECT_EQ(dialog->height, 120);
  EXPECT_EQ(dialog->fontSize, 9);
  EXPECT_EQ(dialog->fontName, L"Sans");
  ASSERT_EQ(dialog->controls.size(), 3u);
  EXPECT_EQ(dialog->controls[0].id, -1);
  EXPECT_EQ(dialog->controls[0].kind, L"LTEXT");
  EXPECT_EQ(dialog->controls[0].label, L"&Name:");
  const ryhost::DialogControl* edit = dialog->control(1001);
  ASSERT_NE(edit, nullptr);
  EXPECT_TRUE(edit->label.isEmpty());
  EXPECT_EQ(edit->x, 55);
  EXPECT_EQ(edit->y, 8);
  EXPECT_EQ(edit->width, 120);
  EXPECT_EQ(edit->height, 14);
  EXPECT_EQ(edit->styles, (std::vector<OdString>{L"TABSTOP", L"AUTOHSCROLL"}));
  EXPECT_EQ(dialog->controls[2].kind, L"DEFBUTTON");
  EXPECT_EQ(dialog->lines.size(), 6u);
  EXPECT_EQ(dialog->lines[0], "CAPTION\tReplace block");
  EXPECT_EQ(library->dialog(1), nullptr);
}

TEST(ResourceLibraryFormat, AcceptsByteOrderMarkAndWindowsLineEnds) {
  std::string reason;
  auto library = ResourceLibrary::parse("\xEF\xBB\xBFRYAD RESOURCE LIBRARY 1\r\nSTRINGTABLE\r\n7\tSeven \r\nEND\r\n", &reason);
  ASSERT_TRUE(library) << reason;
  EXPECT_EQ(*library->string(7), L"Seven ");
  EXPECT_TRUE(ResourceLibrary::startsAsResourceLibrary("\xEF\xBB\xBFRYAD RESOURCE LIBRARY 2\n"));
  EXPECT_FALSE(ResourceLibrary::startsAsResourceLibrary("\x7f" "ELF"));
}

TEST(ResourceLibraryFormat, ErrorsNameTheLine) {
  const struct {
    std::string text, expected;
  } cases[] = {
      {"RYAD RESOURCE LIBRARY 2\n", "line 1: unsupported resource library version"},
      {"hello\n", "line 1: the first line is not"},
      {kHeader + tabs("STRINGTABLE\n1|a\\qb\nEND\n"), "line 3: a backslash starts no escape"},
      {kHeader + tabs("STRINGTABLE\n1|trailing\\\nEND\n"), "line 3: a backslash"},
      {kHeader + tabs("STRINGTABLE\n1|a\n; note\n1|b\nEND\n"), "line 5: string 1 is defined twice"},
      {kHeader + tabs("STRINGTABLE\n70000|a\nEND\n"), "line 3: a string number must be"},
      {kHeader + "STRINGTABLE\n1 no tab\nEND\n", "line 3: expected <number><TAB><text>"},
      {kHeader + tabs("STRINGTABLE\n1|a\n"), "STRINGTABLE without END"},
      {kHeader + "MENU 1\n", "line 2: expected STRINGTABLE or DIALOG"},
      {kHeader + "DIALOG x\nEND\n", "line 2: a dialog number must be"},
      {kHeader + tabs("DIALOG 5\nCONTROL|1|EDIT|x|1|2|3\nEND\n"), "line 3: expected CAPTION, SIZE"},
      {kHeader + tabs("DIALOG 5\nCONTROL|1|EDIT|x|1|2|3|y\nEND\n"), "line 3: CONTROL takes"},
      {kHeader + tabs("DIALOG 5\nSIZE|0|10\nEND\n"), "line 3: SIZE takes a positive"},
      {kHeader + tabs("DIALOG 5\nCAPTION|a\n"), "DIALOG 5 without END"},
      {kHeader + tabs("DIALOG 5\nEND\nDIALOG 5\nEND\n"), "line 5: dialog 5 is defined twice"},
  };
  for (const auto& c : cases) {
    std::string reason;
    EXPECT_FALSE(ResourceLibrary::parse(c.text, &reason)) << c.text;
    EXPECT_NE(reason.find(c.expected), std::string::npos) << c.text << "\ngave: " << reason;
  }
}

// ---------------------------------------------------------------- libraries

TEST(SystemCallsLibraries, ResourceLibraryIsSharedAndCounted) {
  TempFolder folder;
  const fs::path file = folder.write("res.dll", kSample);
  HMODULE first = LoadLibraryW(wide(file).c_str());
  ASSERT_NE(first, nullptr) << ryhost::lastLibraryError();
  EXPECT_EQ(LoadLibraryW(wide(folder.path() / "." / "res.dll").c_str()), first);
  EXPECT_EQ(ryhost::resourceLibraryOf(first)->dialog(225)->controls.size(), 3u);
  EXPECT_EQ(GetProcAddress(first, "LoadStringW"), nullptr);
  EXPECT_EQ(GetModuleHandleW(L"res.dll"), first);
  EXPECT_EQ(GetModuleHandleW(L"RES"), first);
  EXPECT_EQ(GetModuleHandleW(wide(file).c_str()), first);
  EXPECT_EQ(fileOf(first), wide(file));
  EXPECT_EQ(ryModuleOfAddress(first), first);

  EXPECT_TRUE(FreeLibrary(first));
  EXPECT_EQ(stringOf(first, 1), L"Hello world");  // one reference left
  EXPECT_TRUE(FreeLibrary(first));
  EXPECT_EQ(GetModuleHandleW(L"res.dll"), nullptr);
  EXPECT_EQ(ryhost::resourceLibraryOf(first), nullptr);
  EXPECT_EQ(stringOf(first, 1), L"");
  EXPECT_FALSE(FreeLibrary(first));
}

TEST(SystemCallsLibraries, LoadStringFollowsTheClassicBufferRules) {
  TempFolder folder;
  HMODULE library = LoadLibraryW(wide(folder.write("strings.dll", kSample)).c_str());
  ASSERT_NE(library, nullptr) << ryhost::lastLibraryError();
  wchar_t buffer[8] = {L'x', L'x', L'x', L'x', L'x', L'x', L'x', L'x'};
  EXPECT_EQ(LoadStringW(library, 1, buffer, 5), 4);  // truncated to size - 1 and terminated
  EXPECT_EQ(std::wstring(buffer), L"Hell");
  EXPECT_EQ(LoadStringW(library, 1, buffer, 1), 0);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(LoadStringW(library, 2, buffer, 8), 7);
  EXPECT_EQ(std::wstring(buffer), L"\nSelect");
  EXPECT_EQ(LoadStringW(library, 999, buffer, 8), 0);  // missing
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(LoadStringW(library, 4, buffer, 8), 0);  // empty
  // Size 0: a pointer to the library's own text.
  const wchar_t* text = nullptr;
  EXPECT_EQ(LoadStringW(library, 1, reinterpret_cast<LPWSTR>(&text), 0), 11);
  EXPECT_EQ(std::wstring(text, 11), L"Hello world");
  EXPECT_EQ(LoadStringW(nullptr, 1, buffer, 8), 0);
  EXPECT_EQ(LoadStringW(GetModuleHandleW(nullptr), 1, buffer, 8), 0);  // a shared object has no string table
  FreeLibrary(library);
}

TEST(SystemCallsLibraries, BareNamesAreFoundBesideTheHostAndBesideTheCaller) {
  HostSession session;
  TempFolder folder;
  const std::string header = kHeader + "STRINGTABLE\n";
  folder.write("program/ryadkwlres", header + "1\tplain file\nEND\n");
  folder.write("program/both.dll", header + "1\twith .dll\nEND\n");
  folder.write("program/both", header + "1\twithout extension\nEND\n");
  folder.write("program/third.yrx", header + "1\tyrx\nEND\n");
  const fs::path beside = folder.write("modules/beside.so", header + "1\tbeside the module\nEND\n");
  fs::copy_file(std::string(KESTRIX_BIN_DIR) + "/testmodule.yrx", folder.path() / "modules/testmodule.yrx");
  session.host().setProgramFolder(OdString((folder.path() / "program").string() + "/"));

  HMODULE names = LoadLibraryW(L"ryadkwlres");
  ASSERT_NE(names, nullptr) << ryhost::lastLibraryError();
  EXPECT_EQ(stringOf(names, 1), L"plain file");
  HMODULE both = LoadLibraryW(L"both");
  EXPECT_EQ(stringOf(both, 1), L"with .dll");  // ".dll" is tried before no extension
  HMODULE third = LoadLibraryW(L"third");
  EXPECT_EQ(stringOf(third, 1), L"yrx");
  // The test program is not beside modules/, so it does not find beside.so.
  EXPECT_EQ(LoadLibraryW(L"beside"), nullptr);

  // A module asks for the same bare names: its own folder counts, and the
  // host's folder comes first.
  HMODULE module = LoadLibraryW(wide(folder.path() / "modules/testmodule.yrx").c_str());
  ASSERT_NE(module, nullptr) << ryhost::lastLibraryError();
  auto loadFromModule = reinterpret_cast<void* (*)(const wchar_t*)>(GetProcAddress(module, "testmoduleLoadLibrary"));
  ASSERT_NE(loadFromModule, nullptr);
  HMODULE found = loadFromModule(L"beside");
  ASSERT_NE(found, nullptr) << ryhost::lastLibraryError();
  EXPECT_EQ(stringOf(found, 1), L"beside the module");
  EXPECT_EQ(loadFromModule(L"ryadkwlres"), names);
  // Backslashes name the same folders.
  std::string backslashed = beside.string();
  std::replace(backslashed.begin(), backslashed.end(), '/', '\\');
  EXPECT_EQ(LoadLibraryW(wide(backslashed).c_str()), found);

  // The module finds its own file through an address of its own.
  auto ownFile = reinterpret_cast<unsigned (*)(wchar_t*, unsigned)>(GetProcAddress(module, "testmoduleOwnFile"));
  ASSERT_NE(ownFile, nullptr);
  wchar_t buffer[1024];
  const unsigned length = ownFile(buffer, 1024);
  EXPECT_EQ(std::wstring(buffer, length), wide(fs::canonical(folder.path() / "modules/testmodule.yrx")));
  EXPECT_EQ(ryModuleOfAddress(reinterpret_cast<const void*>(ownFile)), module);
  EXPECT_EQ(GetModuleHandleW(wide(folder.path() / "modules/testmodule").c_str()), module);

  for (HMODULE library : {names, both, third, found, found, names}) EXPECT_TRUE(FreeLibrary(library));
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(GetModuleHandleW(L"beside"), nullptr);
  EXPECT_EQ(GetModuleHandleW(L"ryadkwlres"), nullptr);
}

TEST(SystemCallsLibraries, HandlesOfTheProgramAndOfSharedObjects) {
  const std::wstring program = wide(fs::read_symlink("/proc/self/exe"));
  HMODULE self = GetModuleHandleW(nullptr);
  ASSERT_NE(self, nullptr);
  EXPECT_EQ(fileOf(nullptr), program);
  EXPECT_EQ(fileOf(self), program);

  // Classic buffer rules: truncated, terminated, the buffer's size returned.
  wchar_t small[5];
  EXPECT_EQ(GetModuleFileNameW(self, small, 5), 5u);
  EXPECT_EQ(std::wstring(small), program.substr(0, 4));
  std::vector<wchar_t> exact(program.size() + 1);
  EXPECT_EQ(GetModuleFileNameW(self, exact.data(), static_cast<DWORD>(exact.size())), program.size());
  EXPECT_EQ(GetModuleFileNameW(self, small, 0), 0u);
  int local = 0;
  EXPECT_EQ(GetModuleFileNameW(&local, small, 5), 0u);  // no module there

  // The host library: by name, by an address inside it, and its exports.
  HMODULE host = GetModuleHandleW(L"libryadhost.so");
  ASSERT_NE(host, nullptr);
  EXPECT_EQ(ryModuleOfAddress(reinterpret_cast<const void*>(&LoadLibraryW)), host);
  EXPECT_EQ(GetProcAddress(host, "_Z11LoadStringWPvjPwi"), reinterpret_cast<FARPROC>(&LoadStringW));  // C++ linkage
  EXPECT_EQ(GetProcAddress(host, "noSuchExport"), nullptr);
  EXPECT_EQ(fs::path(fileOf(host)).filename(), "libryadhost.so");
  EXPECT_FALSE(FreeLibrary(host));  // not opened by LoadLibraryW
  EXPECT_EQ(GetModuleHandleW(L"noSuchLibrary"), nullptr);

  // A system library by its bare name, through the loader's own search.
  HMODULE math = LoadLibraryW(L"libm.so.6");
  ASSERT_NE(math, nullptr) << ryhost::lastLibraryError();
  EXPECT_NE(GetProcAddress(math, "cos"), nullptr);
  EXPECT_EQ(LoadLibraryW(L"libm.so.6"), math);
  EXPECT_TRUE(FreeLibrary(math));
  EXPECT_TRUE(FreeLibrary(math));
}

TEST(SystemCallsLibraries, WhatCannotBeLoadedGivesNullAndAReason) {
  TempFolder folder;
  EXPECT_EQ(LoadLibraryW(wide(folder.write("notes.dll", "just some notes\n")).c_str()), nullptr);
  EXPECT_FALSE(ryhost::lastLibraryError().empty());
  const fs::path broken = folder.write("broken.dll", kHeader + "STRINGTABLE\n1\tok\nnot a string\nEND\n");
  EXPECT_EQ(LoadLibraryW(wide(broken).c_str()), nullptr);
  EXPECT_NE(ryhost::lastLibraryError().find("line 4"), std::string::npos) << ryhost::lastLibraryError();
  EXPECT_EQ(GetModuleHandleW(L"broken.dll"), nullptr);
  EXPECT_EQ(LoadLibraryW(wide(folder.path() / "missing.dll").c_str()), nullptr);
  EXPECT_NE(ryhost::lastLibraryError().find("no such library"), std::string::npos);
  EXPECT_EQ(LoadLibraryW(L""), nullptr);
  EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
}

// ---------------------------------------------------------------- settings files

const char* const kSettings =
    "; settings\r\n"
    "[General]\r\n"
    "Name = Kestrel \r\n"
    "Quoted=\"  spaced  \"\r\n"
    "Count=42\r\n"
    "Negative=-5\r\n"
    "Hex=0x1F\r\n"
    "Trailing=12abc\r\n"
    "Word=abc\r\n"
    "Empty=\r\n"
    "[RYADEXCMD]\r\n"
    "SELECTTYPE=TRUE\r\n";

TEST(SystemCallsProfiles, ValuesAndDefaults) {
  TempFolder folder;
  const std::wstring file = wide(folder.write("RYAD.INI", kSettings));
  wchar_t buffer[64];
  EXPECT_EQ(GetPrivateProfileStringW(L"general", L"NAME", L"x", buffer, 64, file.c_str()), 7u);
  EXPECT_EQ(std::wstring(buffer), L"Kestrel");
  GetPrivateProfileStringW(L"General", L"Quoted", L"", buffer, 64, file.c_str());
  EXPECT_EQ(std::wstring(buffer), L"  spaced  ");
  EXPECT_EQ(GetPrivateProfileStringW(L"RyadExCmd", L"MissingKey", L"FALSE  ", buffer, 30, file.c_str()), 5u);
  EXPECT_EQ(std::wstring(buffer), L"FALSE");  // trailing blanks of the default dropped
  EXPECT_EQ(GetPrivateProfileStringW(L"NoSection", L"Name", nullptr, buffer, 64, file.c_str()), 0u);
  EXPECT_EQ(buffer[0], 0);
  GetPrivateProfileStringW(L"General", L"Empty", L"default", buffer, 64, file.c_str());
  EXPECT_EQ(std::wstring(buffer), L"");  // present but empty is not missing
  // Too long: truncated, terminated, size - 1 returned.
  EXPECT_EQ(GetPrivateProfileStringW(L"General", L"Name", L"", buffer, 4, file.c_str()), 3u);
  EXPECT_EQ(std::wstring(buffer), L"Kes");
  EXPECT_EQ(GetPrivateProfileStringW(L"General", L"Name", L"", buffer, 0, file.c_str()), 0u);
  // A missing file has only defaults.
  GetPrivateProfileStringW(L"General", L"Name", L"none", buffer, 64, wide(folder.path() / "missing.ini").c_str());
  EXPECT_EQ(std::wstring(buffer), L"none");
}

TEST(SystemCallsProfiles, IntegersReadAsTheClassicCallDoes) {
  TempFolder folder;
  const std::wstring file = wide(folder.write("RYAD.INI", kSettings));
  EXPECT_EQ(GetPrivateProfileIntW(L"GENERAL", L"count", 7, file.c_str()), 42u);
  EXPECT_EQ(GetPrivateProfileIntW(L"General", L"Negative", 7, file.c_str()), static_cast<UINT>(-5));
  EXPECT_EQ(GetPrivateProfileIntW(L"General", L"Hex", 7, file.c_str()), 31u);
  EXPECT_EQ(GetPrivateProfileIntW(L"General", L"Trailing", 7, file.c_str()), 12u);
  EXPECT_EQ(GetPrivateProfileIntW(L"General", L"Word", 7, file.c_str()), 0u);
  EXPECT_EQ(GetPrivateProfileIntW(L"General", L"Empty", 7, file.c_str()), 7u);
  EXPECT_EQ(GetPrivateProfileIntW(L"General", L"Missing", -3, file.c_str()), static_cast<UINT>(-3));
}

TEST(SystemCallsProfiles, ListsOfSectionsAndKeys) {
  TempFolder folder;
  const std::wstring file = wide(folder.write("RYAD.INI", kSettings));
  wchar_t buffer[128];
  DWORD length = GetPrivateProfileStringW(nullptr, nullptr, L"ignored", buffer, 128, file.c_str());
  EXPECT_EQ(std::wstring(buffer, length + 1), std::wstring(L"General\0RYADEXCMD\0\0", 19));
  EXPECT_EQ(length, 18u);
  length = GetPrivateProfileStringW(L"ryadexcmd", nullptr, L"", buffer, 128, file.c_str());
  EXPECT_EQ(std::wstring(buffer, length + 1), std::wstring(L"SELECTTYPE\0\0", 12));
  // Too small: cut at size - 2 and ended with two terminators.
  length = GetPrivateProfileStringW(nullptr, nullptr, L"", buffer, 12, file.c_str());
  EXPECT_EQ(length, 10u);
  EXPECT_EQ(std::wstring(buffer, 12), std::wstring(L"General\0RY\0\0", 12));
  // Nothing to list: an empty list.
  buffer[0] = buffer[1] = L'x';
  EXPECT_EQ(GetPrivateProfileStringW(L"Nothing", nullptr, L"", buffer, 128, file.c_str()), 0u);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[1], 0);
}

TEST(SystemCallsProfiles, WritingSettingAndDeleting) {
  HostSession session;  // a bare file name lives in the settings folder
  TempFolder folder;
  const std::wstring file = wide(folder.path() / "new.ini");
  wchar_t buffer[64];
  EXPECT_TRUE(WritePrivateProfileStringW(L"RYADEXCMD", L"SELECTTYPE", L"TRUE", file.c_str()));
  EXPECT_TRUE(WritePrivateProfileStringW(L"ryadexcmd", L"selecttype", L"FALSE", file.c_str()));  // same key
  EXPECT_TRUE(WritePrivateProfileStringW(L"RYADEXCMD", L"WORDWARD", L" padded ", file.c_str()));
  EXPECT_TRUE(WritePrivateProfileStringW(L"Other", L"Key", L"1", file.c_str()));
  DWORD length = GetPrivateProfileStringW(L"RYADEXCMD", nullptr, L"", buffer, 64, file.c_str());
  EXPECT_EQ(std::wstring(buffer, length), std::wstring(L"SELECTTYPE\0WORDWARD\0", 20));
  GetPrivateProfileStringW(L"RYADEXCMD", L"SELECTTYPE", L"", buffer, 64, file.c_str());
  EXPECT_EQ(std::wstring(buffer), L"FALSE");
  GetPrivateProfileStringW(L"RYADEXCMD", L"WORDWARD", L"", buffer, 64, file.c_str());
  EXPECT_EQ(std::wstring(buffer), L" padded ");

  EXPECT_TRUE(WritePrivateProfileStringW(L"RYADEXCMD", L"SELECTTYPE", nullptr, file.c_str()));  // deletes the key
  GetPrivateProfileStringW(L"RYADEXCMD", L"SELECTTYPE", L"gone", buffer, 64, file.c_str());
  EXPECT_EQ(std::wstring(buffer), L"gone");
  EXPECT_TRUE(WritePrivateProfileStringW(L"OTHER", nullptr, nullptr, file.c_str()));  // deletes the section
  length = GetPrivateProfileStringW(nullptr, nullptr, L"", buffer, 64, file.c_str());
  EXPECT_EQ(std::wstring(buffer, length), std::wstring(L"RYADEXCMD\0", 10));
  EXPECT_FALSE(WritePrivateProfileStringW(nullptr, L"Key", L"1", file.c_str()));

  // Deleting from a file that does not exist creates nothing.
  const fs::path untouched = folder.path() / "untouched.ini";
  EXPECT_TRUE(WritePrivateProfileStringW(L"A", nullptr, nullptr, wide(untouched).c_str()));
  EXPECT_FALSE(fs::exists(untouched));
  // A file in a folder that does not exist cannot be written.
  EXPECT_FALSE(WritePrivateProfileStringW(L"A", L"B", L"C", wide(folder.path() / "no/such/x.ini").c_str()));

  // A bare name is a file of the settings folder (APPDATADIR).
  ASSERT_TRUE(WritePrivateProfileStringW(L"A", L"B", L"C", L"syscalls-test.ini"));
  const fs::path inData = fs::path(session.host().dataFolder().toUtf8()) / "syscalls-test.ini";
  EXPECT_TRUE(fs::exists(inData));
  EXPECT_EQ(GetPrivateProfileIntW(L"A", L"B", 9, wide(inData).c_str()), 0u);
  GetPrivateProfileStringW(L"a", L"b", L"", buffer, 64, L"syscalls-test.ini");
  EXPECT_EQ(std::wstring(buffer), L"C");
  fs::remove(inData);
}

}  // namespace
