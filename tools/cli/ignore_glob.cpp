#include "ignore_glob.h"

#include <cctype>
#include <string>
#include <vector>

namespace quillon::lingomat::cli {

namespace {

enum class SetResult { kMatch, kNoMatch, kMalformed };

bool in_named_class(std::string_view name, unsigned char c) {
  if (name == "alnum") return std::isalnum(c);
  if (name == "alpha") return std::isalpha(c);
  if (name == "blank") return c == ' ' || c == '\t';
  if (name == "cntrl") return std::iscntrl(c);
  if (name == "digit") return std::isdigit(c);
  if (name == "graph") return std::isgraph(c);
  if (name == "lower") return std::islower(c);
  if (name == "print") return std::isprint(c);
  if (name == "punct") return std::ispunct(c);
  if (name == "space") return std::isspace(c);
  if (name == "upper") return std::isupper(c);
  return std::isxdigit(c);  // the caller has checked that the name is one of these
}

bool is_class_name(std::string_view name) {
  for (const char* known : {"alnum", "alpha", "blank", "cntrl", "digit", "graph", "lower", "print",
                            "punct", "space", "upper", "xdigit"}) {
    if (name == known) return true;
  }
  return false;
}

// Matches `c` against the set that opens at glob[at] == '['; on success `at` is moved past
// its closing ']'.
SetResult match_set(std::string_view glob, std::size_t& at, unsigned char c) {
  std::size_t i = at + 1;
  const bool negated = i < glob.size() && (glob[i] == '!' || glob[i] == '^');
  if (negated) ++i;
  bool found = false;
  bool first = true;
  for (;; first = false) {
    if (i >= glob.size()) return SetResult::kMalformed;
    unsigned char low = static_cast<unsigned char>(glob[i]);
    if (low == ']' && !first) break;
    if (low == '[' && i + 1 < glob.size() && glob[i + 1] == ':') {
      const std::size_t close = glob.find(']', i + 2);
      if (close == std::string_view::npos) return SetResult::kMalformed;
      if (close > i + 2 && glob[close - 1] == ':') {
        const std::string_view name = glob.substr(i + 2, close - i - 3);
        if (!is_class_name(name)) return SetResult::kMalformed;
        found = found || in_named_class(name, c);
        i = close + 1;
        continue;
      }
      // No ":]": the '[' is an ordinary member.
    }
    if (low == '\\') {
      if (++i >= glob.size()) return SetResult::kMalformed;
      low = static_cast<unsigned char>(glob[i]);
    }
    ++i;
    if (i + 1 < glob.size() && glob[i] == '-' && glob[i + 1] != ']') {
      std::size_t end = i + 1;
      if (glob[end] == '\\' && ++end >= glob.size()) return SetResult::kMalformed;
      const auto high = static_cast<unsigned char>(glob[end]);
      found = found || (low <= c && c <= high);
      i = end + 1;
    } else {
      found = found || c == low;
    }
  }
  at = i + 1;
  return found != negated ? SetResult::kMatch : SetResult::kNoMatch;
}

// Splits at '/'; an escaped slash ("\/") separates parts too, as it can only match one.
std::vector<std::string_view> parts_of(std::string_view text) {
  std::vector<std::string_view> parts;
  std::size_t start = 0;
  for (std::size_t slash; (slash = text.find('/', start)) != std::string_view::npos;
       start = slash + 1) {
    std::string_view part = text.substr(start, slash - start);
    if (!part.empty() && part.back() == '\\') part.remove_suffix(1);
    parts.push_back(part);
  }
  parts.push_back(text.substr(start));
  return parts;
}

bool is_globstar(std::string_view part) {
  return part.size() >= 2 && part.find_first_not_of('*') == std::string_view::npos;
}

}  // namespace

// Left to right, remembering the last '*': on a mismatch the star takes one more character
// and matching resumes after it, which is enough since a later '*' supersedes an earlier one.
bool glob_matches_name(std::string_view glob, std::string_view name) {
  std::size_t g = 0;
  std::size_t n = 0;
  std::size_t star = std::string_view::npos;  // glob position after the last '*'
  std::size_t star_name = 0;                  // where that star's run of characters ends
  while (n < name.size() || g < glob.size()) {
    if (g < glob.size()) {
      const char c = glob[g];
      if (c == '*') {
        while (g < glob.size() && glob[g] == '*') ++g;
        star = g;
        star_name = n;
        continue;
      }
      if (n < name.size()) {
        const auto current = static_cast<unsigned char>(name[n]);
        if (c == '?') {
          ++g;
          ++n;
          continue;
        }
        if (c == '[') {
          std::size_t after = g;
          const SetResult set = match_set(glob, after, current);
          if (set == SetResult::kMalformed) return false;
          if (set == SetResult::kMatch) {
            g = after;
            ++n;
            continue;
          }
        } else {
          std::size_t literal = g;
          if (c == '\\' && ++literal >= glob.size()) return false;
          if (glob[literal] == name[n]) {
            g = literal + 1;
            ++n;
            continue;
          }
        }
      }
    }
    if (star == std::string_view::npos || star_name >= name.size()) return false;
    g = star;
    n = ++star_name;
  }
  return true;
}

bool glob_matches_path(std::string_view glob, std::string_view path) {
  const std::vector<std::string_view> globs = parts_of(glob);
  const std::vector<std::string_view> names = parts_of(path);
  const std::size_t columns = names.size() + 1;
  // reachable[i * columns + j]: glob parts from i on match names from j on. Filled from the
  // end, so the cost is parts times names, whatever the number of "**".
  std::vector<char> reachable((globs.size() + 1) * columns, 0);
  reachable[globs.size() * columns + names.size()] = 1;
  for (std::size_t i = globs.size(); i-- > 0;) {
    const bool last = i + 1 == globs.size();
    for (std::size_t j = names.size() + 1; j-- > 0;) {
      bool match = false;
      if (is_globstar(globs[i])) {
        // At the end it stands for something below; elsewhere for any folders, or none.
        match = last ? j < names.size()
                     : reachable[(i + 1) * columns + j] ||
                           (j < names.size() && reachable[i * columns + j + 1]);
      } else if (j < names.size()) {
        match = reachable[(i + 1) * columns + j + 1] && glob_matches_name(globs[i], names[j]);
      }
      reachable[i * columns + j] = match;
    }
  }
  return reachable[0];
}

}  // namespace quillon::lingomat::cli
