// The standard text-file class of the SDK (RyStdioFile.h): a C stream with
// the line-feed translation of text mode done here, since this system's C
// library writes bytes as they are.
#include <sys/stat.h>

#include <cstring>

#include "RyStdioFile.h"

namespace {

// The C library's mode string for the classic open flags.
const char* streamMode(UINT flags, bool exists) {
  const bool create = flags & CStdioFile::modeCreate;
  const bool keep = flags & CStdioFile::modeNoTruncate;
  if (flags & CStdioFile::modeReadWrite) {
    if (create && !(keep && exists)) return "w+b";
    return "r+b";
  }
  if (flags & CStdioFile::modeWrite) {
    if (create && !(keep && exists)) return "wb";
    return "r+b";  // an existing file, written from its start
  }
  return "rb";
}

bool fileExists(const std::string& path) {
  if (FILE* probe = std::fopen(path.c_str(), "rb")) {
    std::fclose(probe);
    return true;
  }
  return false;
}

}  // namespace

CStdioFile::~CStdioFile() { Close(); }

BOOL CStdioFile::Open(LPCWSTR fileName, UINT openFlags) {
  Close();
  if (!fileName || !*fileName) return FALSE;
  const std::string path = OdString(fileName).toUtf8();
  const bool keep = (openFlags & modeCreate) && (openFlags & modeNoTruncate);
  m_pStream = std::fopen(path.c_str(), streamMode(openFlags, keep && fileExists(path)));
  if (!m_pStream) return FALSE;
  // This system's C library opens a folder for reading; a file it is not.
  struct stat status {};
  if (fstat(fileno(m_pStream), &status) != 0 || S_ISDIR(status.st_mode)) {
    Close();
    return FALSE;
  }
  m_filePath = fileName;
  m_textMode = !(openFlags & typeBinary);
  return TRUE;
}

void CStdioFile::Close() {
  if (m_pStream) std::fclose(m_pStream);
  m_pStream = nullptr;
  m_filePath = OdString();
}

void CStdioFile::SeekToBegin() {
  if (m_pStream) std::fseek(m_pStream, 0, SEEK_SET);
}

UINT CStdioFile::Read(void* buffer, UINT count) {
  if (!m_pStream || !buffer) return 0;
  auto* out = static_cast<unsigned char*>(buffer);
  if (!m_textMode) return static_cast<UINT>(std::fread(out, 1, count, m_pStream));
  UINT n = 0;
  while (n < count) {
    int c = getc_unlocked(m_pStream);
    if (c == EOF) break;
    if (c == '\r') {
      const int next = getc_unlocked(m_pStream);
      if (next == '\n')
        c = '\n';
      else if (next != EOF)
        ungetc(next, m_pStream);
    }
    out[n++] = static_cast<unsigned char>(c);
  }
  return n;
}

void CStdioFile::Write(const void* buffer, UINT count) {
  if (buffer) writeBytes(static_cast<const char*>(buffer), count);
}

bool CStdioFile::readLineBytes(std::string& bytes) {
  bytes.clear();
  if (!m_pStream) return false;
  for (;;) {
    int c = getc_unlocked(m_pStream);
    if (c == EOF) return !bytes.empty();
    if (c == '\r' && m_textMode) {
      const int next = getc_unlocked(m_pStream);
      if (next == '\n')
        c = '\n';
      else if (next != EOF)
        ungetc(next, m_pStream);
    }
    bytes += static_cast<char>(c);
    if (c == '\n') return true;
  }
}

void CStdioFile::writeBytes(const char* bytes, size_t count) {
  if (!m_pStream || count == 0) return;
  if (!m_textMode) {
    std::fwrite(bytes, 1, count, m_pStream);
    return;
  }
  // Runs without a line feed go out whole; each line feed becomes CR LF.
  const char* end = bytes + count;
  while (bytes < end) {
    const char* feed = static_cast<const char*>(std::memchr(bytes, '\n', static_cast<size_t>(end - bytes)));
    const char* runEnd = feed ? feed : end;
    std::fwrite(bytes, 1, static_cast<size_t>(runEnd - bytes), m_pStream);
    if (!feed) break;
    std::fwrite("\r\n", 1, 2, m_pStream);
    bytes = feed + 1;
  }
}

BOOL CStdioFile::ReadString(OdString& line) {
  std::string bytes;
  if (!readLineBytes(bytes)) return FALSE;
  if (!bytes.empty() && bytes.back() == '\n') bytes.pop_back();
  line = OdString(bytes);
  return TRUE;
}

void CStdioFile::WriteString(LPCWSTR text) {
  if (!text) return;
  const std::string bytes = odWideToUtf8(text);
  writeBytes(bytes.data(), bytes.size());
}
