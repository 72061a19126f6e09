// The container of DWG files of R2007 (AC1021): a file header whose data is
// Reed-Solomon coded and compressed, a page map (page number to file
// offset), a section map (section name to its pages), and data pages that
// are themselves coded and compressed with the R2007 form of LZ
// compression. What comes out is the decoded bytes of each named section
// ("AcDb:Header", "AcDb:Classes", "AcDb:Handles", "AcDb:AcDbObjects"), which
// the structure reader then reads like the sections of older files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

// De-interleaves Reed-Solomon coded data: `blocks` code words of 255 bytes
// stored byte by byte in turn (byte j of word i at j * blocks + i); keeps
// the first `dataBytes` bytes of every word (the parity bytes that follow
// are not checked). `in` must hold blocks * 255 bytes.
std::vector<uint8_t> odDwgRsDeinterleave(const uint8_t* in, size_t blocks, size_t dataBytes);

// Expands data compressed with the R2007 LZ variant into at most
// `expectedSize` bytes. Throws OdDwgDecodeError (bit position = 8 times the
// source offset) when an instruction reads past the source or copies from
// before the start of the output.
std::vector<uint8_t> odDwgR2007Decompress(const uint8_t* src, size_t size, size_t expectedSize);

struct OdDwgR2007Sections {
  std::map<std::string, std::vector<uint8_t>> byName;  // "AcDb:Header" -> bytes
  uint64_t fileSize = 0;                                // as the file header says
};

// Reads the R2007 container of `file`; `problem(offset, text)` is told of
// everything that could not be decoded. Returns false when no section
// could be found at all.
bool odDwgReadR2007Sections(const std::vector<uint8_t>& file, OdDwgR2007Sections& out,
                            const std::function<void(size_t, const std::string&)>& problem);
