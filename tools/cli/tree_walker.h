#pragma once

#include <string>
#include <vector>

#include "input_collector.h"

namespace quillon::lingomat::cli {

// Adds the regular files below the directory `root` to `items`, and one item with list_error
// for each folder or ignore file that could not be read. Each folder is opened relative to
// its parent's descriptor and never through a symbolic link, so the walk stays in the tree
// even while the tree changes; paths of any length work. Links to files are followed (when
// read), links to folders are not.
void walk_tree(const std::string& root, const WalkOptions& options, std::vector<InputItem>& items);

}  // namespace quillon::lingomat::cli
