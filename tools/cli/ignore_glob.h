#pragma once

#include <string_view>

namespace quillon::lingomat::cli {

// Ignore-file globs as git reads them.
//
// One name (no '/') against a glob: '*' for any run of characters, '?' for one, '[...]'
// for a set ("[!...]" or "[^...]" for its complement, ranges "a-z", classes "[:alpha:]"),
// '\' to take the next character literally. A malformed set matches nothing.
bool glob_matches_name(std::string_view glob, std::string_view name);

// A '/'-separated path against a glob of the same shape, one name per part: a part that is
// only "**" matches any number of folders (none too), or, at the end, everything below.
bool glob_matches_path(std::string_view glob, std::string_view path);

}  // namespace quillon::lingomat::cli
