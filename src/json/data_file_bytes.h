#pragma once

#include <cstddef>
#include <string>

namespace quillon::lingomat {

// The largest data file the engine loads: 32 times the shipped one. Parsing costs several
// times the file's size in memory, so a bigger file is refused before any of it is read.
inline constexpr std::size_t kMaxDataFileBytes = std::size_t{256} << 20;

// The whole content of a regular file, read once through one descriptor (the file cannot
// change between a size check and the read, and nothing is opened twice). Anything else
// (a FIFO, a device such as /dev/zero, a directory) is refused without being read, since it
// may block or never end; so is a file longer than `max_bytes`. Every refusal, like a file
// that cannot be opened, is a std::ios_base::failure naming the reason.
std::string read_data_file(const std::string& path, std::size_t max_bytes = kMaxDataFileBytes);

}  // namespace quillon::lingomat
