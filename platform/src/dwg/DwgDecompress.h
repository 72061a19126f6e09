// The compression of the pages of a paged DWG file (R2004 on): an LZ77
// variant whose stream is a run of literal bytes followed by opcodes, each a
// copy of earlier output (length and distance) with up to three literal
// bytes after it, or a longer literal run.
#pragma once

#include <cstddef>
#include <cstdint>

#include "dwg/DwgBitReader.h"

// Decompresses `size` bytes at `src` into `dst` (room for `capacity`
// bytes). Returns the number of bytes written. A stream that reads past its
// end, copies from before the start of the output or writes past
// `capacity` throws OdDwgDecodeError whose `bit` is the bit position in the
// compressed data where it went wrong.
size_t odDwgDecompress(const uint8_t* src, size_t size, uint8_t* dst, size_t capacity);
