#include "data_file_locator.h"

#include <filesystem>
#include <system_error>

namespace quillon::lingomat::cli {

namespace fs = std::filesystem;

namespace {

// The running executable's directory; empty when the system does not say.
fs::path executable_directory() {
  std::error_code error;
  const fs::path exe = fs::read_symlink("/proc/self/exe", error);
  if (error) return {};
  return exe.parent_path();
}

// True for the binary the build produced, still where the build put it.
bool runs_from_build_tree(const fs::path& exe_dir) {
  std::error_code error;
  return !exe_dir.empty() && fs::equivalent(exe_dir, LINGOMAT_BUILD_DIR, error) && !error;
}

}  // namespace

std::vector<std::string> default_data_file_candidates() {
  std::vector<std::string> candidates;
  const fs::path exe_dir = executable_directory();
  if (!exe_dir.empty()) {
    candidates.push_back((exe_dir / LINGOMAT_DATA_FROM_BINDIR).lexically_normal().string());
  }
  candidates.push_back(LINGOMAT_INSTALLED_DATA);
  if (runs_from_build_tree(exe_dir)) candidates.push_back(LINGOMAT_SOURCE_TREE_DATA);
  return candidates;
}

std::string find_default_data_file() {
  for (const std::string& candidate : default_data_file_candidates()) {
    std::error_code error;
    if (fs::is_regular_file(candidate, error)) return candidate;
  }
  return {};
}

}  // namespace quillon::lingomat::cli
