#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/file_io.h"
#include "tokenize/tokenizer.h"

namespace quillon::lingomat::tools {

// The most bytes read of one input. Identification of an ordinary file reads a few KiB of
// it; only an input whose first tokenizing step runs on (an unclosed comment or string at
// its start, a first line of many megabytes) or a run with no byte limit can need more, and
// such an input is then identified by its first kMaxInputBytes.
inline constexpr std::size_t kMaxInputBytes = std::size_t{32} << 20;

// What identification reads of one input, copied into memory: files are read, never
// mapped, so a file that shrinks while it is read only ends early.
struct InputResult {
  ReadStatus status = ReadStatus::kFailed;
  std::string text;        // the bytes read, from the start of the input
  std::uint64_t size = 0;  // the whole input's size where known, else the bytes read
  bool truncated = false;  // identification would have read past the ceiling
  std::string error;       // the reason when kFailed
};

// Reads a regular file (as open_regular_file decides it): as much of it as `tokenizer`
// needs to tokenize it exactly as the whole (all of it without a tokenizer), up to
// `ceiling` bytes. With stop_if_binary, a file whose first kBinarySniffBytes hold a NUL is
// kBinary.
InputResult open_input_file(const std::string& path, bool stop_if_binary = false,
                            const Tokenizer* tokenizer = nullptr,
                            std::size_t ceiling = kMaxInputBytes);

// The same from an open descriptor, from its current offset; a stream (a pipe, a terminal)
// is read only as far as needed, so an endless one cannot exhaust memory or disk. Only a
// directory fails.
InputResult open_input_descriptor(int fd, bool stop_if_binary = false,
                                  const Tokenizer* tokenizer = nullptr,
                                  std::size_t ceiling = kMaxInputBytes);

// The same from a regular file just opened, whose size the caller has taken.
InputResult open_input_regular(int fd, std::uint64_t size, bool stop_if_binary = false,
                               const Tokenizer* tokenizer = nullptr,
                               std::size_t ceiling = kMaxInputBytes);

}  // namespace quillon::lingomat::tools
