#include "common/help_layout.h"

#include <vector>

namespace quillon::lingomat::tools {

namespace {

using Line = std::vector<std::string>;

std::vector<std::string> words_of(const std::string& text) {
  std::vector<std::string> words;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t blank = text.find(' ', start);
    const std::size_t end = blank == std::string::npos ? text.size() : blank;
    if (end > start) words.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return words;
}

std::size_t width_of(const Line& line) {
  std::size_t width = 0;
  for (const std::string& word : line) width += (width == 0 ? 0 : 1) + word.size();
  return width;
}

// Greedy filling, except that a line never starts with '-': the words before go along, back
// to the nearest one that does not start with '-'. Without one, the line runs long: overlong
// beats being read as an option.
std::vector<Line> fill(const std::vector<std::string>& words, std::size_t room) {
  std::vector<Line> lines(1);
  for (const std::string& word : words) {
    Line& line = lines.back();
    if (!line.empty() && width_of(line) + 1 + word.size() > room) {
      std::size_t split = line.size();
      if (word[0] == '-') {
        do --split;
        while (split > 0 && line[split][0] == '-');
      }
      if (split > 0) {
        Line next(line.begin() + static_cast<std::ptrdiff_t>(split), line.end());
        line.resize(split);
        lines.push_back(std::move(next));
      }
    }
    lines.back().push_back(word);
  }
  return lines;
}

std::string joined(const Line& line) {
  std::string text;
  for (const std::string& word : line) text += (text.empty() ? "" : " ") + word;
  return text;
}

}  // namespace

std::string help_entry(const std::string& term, const std::string& text) {
  const std::vector<std::string> words = words_of(text);
  if (words.empty()) return term + "\n";
  const std::string indent(kHelpColumn, ' ');
  const bool beside_term = term.size() + 2 <= kHelpColumn;
  std::string out =
      beside_term ? term + std::string(kHelpColumn - term.size(), ' ') : term + "\n" + indent;
  const std::vector<Line> lines = fill(words, kHelpWidth - kHelpColumn);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    out += (i == 0 ? "" : indent) + joined(lines[i]) + "\n";
  }
  return out;
}

}  // namespace quillon::lingomat::tools
