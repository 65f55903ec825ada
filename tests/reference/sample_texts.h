#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace quillon::lingomat::test_support {

struct NamedText {
  std::string name;
  std::string text;
};

// Every regular file under `root`, in a fixed order, named by its file name.
inline std::vector<NamedText> files_under(const std::filesystem::path& root, std::size_t limit) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    if (entry.is_regular_file()) paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  if (paths.size() > limit) paths.resize(limit);
  std::vector<NamedText> files;
  for (const auto& path : paths) {
    std::ifstream stream(path, std::ios::binary);
    files.push_back({path.filename().string(), {std::istreambuf_iterator<char>(stream), {}}});
  }
  return files;
}

// The repository's own sources: real code in several languages, with their file names.
inline std::vector<NamedText> repository_files(const std::filesystem::path& repository,
                                               std::size_t limit) {
  std::vector<NamedText> files;
  for (const char* folder : {"src", "plugin", "tools", "tests", "bench", "scripts", "docs"}) {
    const std::filesystem::path root = repository / folder;
    if (!std::filesystem::exists(root) || files.size() >= limit) continue;
    for (NamedText& file : files_under(root, limit - files.size())) files.push_back(file);
  }
  return files;
}

// Random texts over the bytes that matter to some tokenizer rule, plus a few that matter to none.
inline std::vector<std::string> random_texts(std::size_t count, std::size_t max_length,
                                             unsigned seed) {
  static const std::string alphabet =
      std::string("#!/\\\"'<>=-+*%&|.@_;{}()[]0x1e9aFuUlLE \t\r\n\v\f") + "\x80\xC3\xFF" +
      std::string(1, '\0') + "zZX,abcdefint";
  std::mt19937 random(seed);
  std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
  std::uniform_int_distribution<std::size_t> length(0, max_length);
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < count; ++i) {
    std::string text;
    for (std::size_t n = length(random); n > 0; --n) text += alphabet[pick(random)];
    texts.push_back(text);
  }
  return texts;
}

inline std::string repeat(const std::string& piece, std::size_t times) {
  std::string text;
  text.reserve(piece.size() * times);
  for (std::size_t i = 0; i < times; ++i) text += piece;
  return text;
}

// Lines "#!" + name whose tokens "SHEBANG#!" + name all share one 64-bit hash under a
// multiply-and-xorshift hash of 8-byte words, whatever its seed: flipping the top bit of one
// word changes the state by a fixed difference, which the next word cancels. Bit j of the
// variant number picks the flip in the j-th pair of words. With `colliding` false the same
// bytes are rotated, so that the lines are alike in every way but the collisions.
inline std::string shebang_lines(std::size_t size, bool colliding) {
  constexpr std::size_t kPairs = 12;
  constexpr std::size_t kNameLength = 16 * kPairs - 1;  // the token fills whole words
  std::string text;
  for (std::size_t variant = 0; text.size() < size; ++variant) {
    std::string name(kNameLength, 'A');
    for (std::size_t pair = 0; pair < kPairs; ++pair) {
      if ((variant >> pair & 1) == 0) continue;
      // Word c of the token covers name bytes 8c - 9 .. 8c - 2 ("SHEBANG#" is word 0).
      const std::size_t word = 2 * pair + 1;
      name[8 * word - 2] ^= '\x80';
      name[8 * (word + 1) - 2] ^= '\x80';
      name[8 * (word + 1) - 5] ^= '\x04';
    }
    if (!colliding) std::rotate(name.begin(), name.begin() + variant % kNameLength, name.end());
    text += "#!/usr/bin/" + name + "\n";
  }
  return text;
}

// Shapes that once cost far more than their size.
struct HostileShape {
  const char* name;
  std::string (*make)(std::size_t size);  // about `size` bytes of the shape
};

inline const std::vector<HostileShape>& hostile_shapes() {
  using Size = std::size_t;
  static const std::vector<HostileShape> shapes = {
      {"one tag, one attribute repeated", [](Size n) { return "<a " + repeat("b ", n / 2) + ">"; }},
      {"one tag, quoted values", [](Size n) { return "<a " + repeat("b c=\"d\" ", n / 8) + ">"; }},
      {"one tag, distinct attributes",
       [](Size n) {
         std::string text = "<t ";
         for (std::size_t i = 0; text.size() < n; ++i) text += "x" + std::to_string(i) + " ";
         return text + ">";
       }},
      {"one tag, unclosed quoted value",
       [](Size n) { return "<a b=\"" + repeat("c ", n / 2) + ">"; }},
      {"one tag, escaped quotes", [](Size n) { return "<a b='" + repeat("\\' ", n / 3) + ">"; }},
      {"unclosed string, escaped quotes", [](Size n) { return "\"" + repeat("x \\\" ", n / 5); }},
      {"escaped quotes", [](Size n) { return repeat("'\\'", n / 3); }},
      {"unclosed comments", [](Size n) { return repeat("/*", n / 2); }},
      {"unclosed nested comments",
       [](Size n) { return repeat("{-", n / 4) + std::string(n / 2, 'x'); }},
      {"line feeds", [](Size n) { return std::string(n, '\n'); }},
      {"blank line then comment", [](Size n) { return std::string(n, ' ') + "# x"; }},
      {"one long word", [](Size n) { return std::string(n, 'a'); }},
      {"digits", [](Size n) { return std::string(n, '9'); }},
      {"UTF-8", [](Size n) { return repeat("\xC3\xA9", n / 2); }},
      {"NUL bytes", [](Size n) { return std::string(n, '\0'); }},
      {"random bytes",
       [](Size n) {
         std::string text(n, '\0');
         std::mt19937 random(7);
         for (char& byte : text) byte = static_cast<char>(random());
         return text;
       }},
      {"shebang lines", [](Size n) { return repeat("#!/usr/bin/env python\n", n / 22); }},
      {"open angles", [](Size n) { return std::string(n, '<'); }},
      {"one unclosed tag", [](Size n) { return "<" + std::string(n, 'a'); }},
      {"assignments", [](Size n) { return repeat("a=", n / 2); }},
      {"colliding #! lines", [](Size n) { return shebang_lines(n, true); }},
  };
  return shapes;
}

inline std::vector<NamedText> hostile_texts(std::size_t size) {
  std::vector<NamedText> texts;
  for (const HostileShape& shape : hostile_shapes())
    texts.push_back({shape.name, shape.make(size)});
  return texts;
}

}  // namespace quillon::lingomat::test_support
