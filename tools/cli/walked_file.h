#pragma once

#include <cstdint>
#include <string>

#include "input_collector.h"

namespace quillon::lingomat::cli {

// Opens a file found by walking (item.walk_root set) for reading: the walked directory as
// named, then each folder below it relative to the one before, never through a symbolic link,
// so a folder swapped for a link after the walk cannot lead out of the tree. Only the file's
// own link is followed, when the walk found a link to a file. Returns a descriptor of a regular
// file and its size, or -1 with the reason. Each thread keeps the folder of the last file it
// opened, since the walk lists a folder's files together.
int open_walked_file(const InputItem& item, std::string& reason, std::uint64_t& size);

}  // namespace quillon::lingomat::cli
