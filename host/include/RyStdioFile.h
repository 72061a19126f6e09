// The platform's standard text-file class: a file on a C stream, read and
// written in bytes or in lines.
//
// Text mode (typeText, also what a file opened without typeBinary gets)
// turns each line feed written into a carriage return and a line feed on
// disk, and each carriage return followed by a line feed read back into one
// line feed, as the classic platform's C run-time library does; binary mode
// (typeBinary) passes the bytes as they are. The wide-text functions of this
// class write and read UTF-8; classes derived from it that convert text
// otherwise override ReadString and WriteString.
#pragma once

#include <cstdio>
#include <string>

#include "OdString.h"
#include "RyWindows.h"

class RYAD_API CStdioFile {
 public:
  enum OpenFlags : UINT {
    modeRead = 0x0000,
    modeWrite = 0x0001,
    modeReadWrite = 0x0002,
    modeCreate = 0x1000,      // creates the file, or empties it unless modeNoTruncate
    modeNoTruncate = 0x2000,  // with modeCreate: an existing file keeps its contents
    typeText = 0x4000,
    typeBinary = 0x8000,
  };

  CStdioFile() = default;
  virtual ~CStdioFile();
  CStdioFile(const CStdioFile&) = delete;
  CStdioFile& operator=(const CStdioFile&) = delete;

  // Opens the file (a path in the platform's wide text); FALSE when it cannot
  // be opened as asked. A file already open is closed first.
  virtual BOOL Open(LPCWSTR fileName, UINT openFlags);
  virtual void Close();
  bool IsOpen() const { return m_pStream != nullptr; }
  bool IsTextMode() const { return m_textMode; }
  const OdString& GetFilePath() const { return m_filePath; }

  // Bytes through the stream, line feeds translated in text mode. Read
  // returns the number of bytes read (0 at the end of the file).
  virtual UINT Read(void* buffer, UINT count);
  virtual void Write(const void* buffer, UINT count);

  // One line without its line feed; FALSE at the end of the file (a last
  // line without a line feed is still read).
  virtual BOOL ReadString(OdString& line);
  // The text as it is: a line feed in it ends a line.
  virtual void WriteString(LPCWSTR text);

  // Goes back to the start of the file.
  void SeekToBegin();

  // The stream, for classes that read or write it their own way (no
  // translation happens on it).
  FILE* m_pStream = nullptr;

 protected:
  // The bytes of one line, its line feed included when there was one,
  // translated as the mode says; false at the end of the file.
  bool readLineBytes(std::string& bytes);
  // Writes bytes, translated as the mode says.
  void writeBytes(const char* bytes, size_t count);

 private:
  OdString m_filePath;
  bool m_textMode = true;
};
