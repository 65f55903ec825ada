#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "common/file_io.h"

namespace quillon::lingomat::tools {

// A stream (a pipe, a terminal) is held in memory up to this size; a longer one is spooled to
// an unlinked temporary file in $TMPDIR (default /tmp) and mapped like a file.
inline constexpr std::size_t kStreamMemoryBytes = std::size_t{16} << 20;

// The whole content of one input as a single view, however large, without holding it all in
// memory: a file is mapped, so only the pages that are looked at are ever read.
class InputText {
 public:
  InputText() = default;
  explicit InputText(std::string content) : owned_(std::move(content)), view_(owned_) {}
  ~InputText() { unmap(); }
  InputText(InputText&& other) noexcept;
  InputText& operator=(InputText&& other) noexcept;
  InputText(const InputText&) = delete;
  InputText& operator=(const InputText&) = delete;

  // Maps `size` bytes of `fd` and shows them from `offset` on; false (errno set) on failure.
  bool map(int fd, std::size_t size, std::size_t offset);

  std::string_view view() const { return view_; }

 private:
  void unmap();

  std::string owned_;
  void* mapping_ = nullptr;
  std::size_t mapped_size_ = 0;
  std::string_view view_;
};

struct InputResult {
  ReadStatus status = ReadStatus::kFailed;
  InputText text;     // the whole input when kRead
  std::string error;  // the reason when kFailed
};

// A regular file (as try_read_file decides it), mapped. With stop_if_binary, a file whose
// first kBinarySniffBytes hold a NUL is kBinary. Files that report no size (under /proc) or
// cannot be mapped are read instead.
InputResult open_input_file(const std::string& path, bool stop_if_binary = false);

// Everything left on a descriptor: a regular file is mapped from its current offset; any
// other stream is read into memory up to `memory_limit` bytes and, if it goes on, spooled
// to a temporary file that is mapped. Only a directory fails.
InputResult open_input_descriptor(int fd, std::size_t memory_limit = kStreamMemoryBytes);

}  // namespace quillon::lingomat::tools
