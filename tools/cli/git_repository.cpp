#include "git_repository.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace quillon::lingomat::cli {

namespace fs = std::filesystem;

namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string first_line_of(const fs::path& file) {
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back()))) line.pop_back();
  return line;
}

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// The value of a configuration line after its '=': quotes removed, escapes resolved,
// a comment cut off.
std::string config_value(const std::string& raw) {
  std::string value;
  bool quoted = false;
  std::size_t end_of_text = 0;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const char c = raw[i];
    if (c == '"') {
      quoted = !quoted;
      end_of_text = value.size();
    } else if (c == '\\' && i + 1 < raw.size()) {
      const char next = raw[++i];
      value += next == 'n' ? '\n' : next == 't' ? '\t' : next;
      end_of_text = value.size();
    } else if (!quoted && (c == '#' || c == ';')) {
      break;
    } else if (quoted || !std::isspace(static_cast<unsigned char>(c))) {
      value += c;
      end_of_text = value.size();
    } else if (!value.empty()) {
      value += c;
    }
  }
  value.resize(end_of_text);
  return value;
}

// core.excludesFile as `file` sets it, or `found` unchanged.
void read_excludes_setting(const fs::path& file, std::optional<std::string>& found) {
  std::ifstream in(file);
  std::string line;
  bool in_core = false;
  while (std::getline(in, line)) {
    std::size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos) continue;
    if (line[start] == '[') {
      const std::size_t close = line.find(']', start);
      std::string section = lower(line.substr(start + 1, close - start - 1));
      in_core = section.find_first_not_of(" \t") != std::string::npos &&
                section.substr(section.find_first_not_of(" \t")) == "core";
      if (close == std::string::npos) continue;
      start = line.find_first_not_of(" \t", close + 1);  // "[core] excludesFile = x"
      if (start == std::string::npos) continue;
    }
    if (!in_core) continue;
    const std::size_t equals = line.find('=', start);
    std::string key =
        line.substr(start, equals == std::string::npos ? std::string::npos : equals - start);
    while (!key.empty() && std::isspace(static_cast<unsigned char>(key.back()))) key.pop_back();
    if (lower(key) != "excludesfile" || equals == std::string::npos) continue;
    found = config_value(line.substr(equals + 1));
  }
}

std::string expanded(const std::string& path, const fs::path& top) {
  if (path.rfind("~/", 0) == 0) return environment("HOME") + path.substr(1);
  if (!path.empty() && path[0] != '/') return (top / path).string();
  return path;
}

std::string configuration_home() {
  const std::string xdg = environment("XDG_CONFIG_HOME");
  return xdg.empty() ? environment("HOME") + "/.config" : xdg;
}

// The repository folder a ".git" entry stands for, or "" when it is neither a folder nor
// a "gitdir:" file.
fs::path git_folder_of(const fs::path& dot_git) {
  std::error_code error;
  if (fs::is_directory(dot_git, error)) return dot_git;
  if (!fs::is_regular_file(dot_git, error)) return {};
  const std::string line = first_line_of(dot_git);
  if (line.rfind("gitdir:", 0) != 0) return {};
  std::string target = line.substr(7);
  target.erase(0, target.find_first_not_of(" \t"));
  return dot_git.parent_path() / target;  // an absolute target replaces the folder
}

}  // namespace

std::optional<GitWorkTree> find_git_work_tree(const std::string& folder) {
  std::error_code error;
  const fs::path start = fs::canonical(folder, error);
  if (error) return std::nullopt;
  for (fs::path top = start;; top = top.parent_path()) {
    const fs::path git_folder = git_folder_of(top / ".git");
    if (!git_folder.empty()) {
      // A linked work tree keeps its shared files (info/, config) in the common folder.
      fs::path common = git_folder;
      const std::string common_link = first_line_of(git_folder / "commondir");
      if (!common_link.empty()) common = git_folder / common_link;
      GitWorkTree tree;
      tree.top = top.string();
      tree.below_top = start.lexically_relative(top).string();
      if (tree.below_top == ".") tree.below_top.clear();
      tree.info_exclude = (common / "info" / "exclude").string();
      std::optional<std::string> setting;
      if (environment("GIT_CONFIG_NOSYSTEM").empty()) {
        read_excludes_setting("/etc/gitconfig", setting);
      }
      read_excludes_setting(configuration_home() + "/git/config", setting);
      read_excludes_setting(environment("HOME") + "/.gitconfig", setting);
      read_excludes_setting(common / "config", setting);
      tree.excludes_file = setting ? expanded(*setting, top) : configuration_home() + "/git/ignore";
      return tree;
    }
    if (top == top.root_path()) return std::nullopt;
  }
}

}  // namespace quillon::lingomat::cli
