#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace quillon::lingomat::testing {

// Texts the differential tests feed to both implementations.

// The repository's own sources: real code in several languages, with their file names.
inline std::vector<std::pair<std::string, std::string>> repository_files(std::size_t limit) {
  std::vector<std::pair<std::string, std::string>> files;
  for (const char* folder : {"src", "plugin", "tools", "tests", "bench", "scripts", "docs"}) {
    const std::filesystem::path root = std::filesystem::path(LINGOMAT_TEST_SOURCE_DIR) / folder;
    if (!std::filesystem::exists(root)) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      if (!entry.is_regular_file() || files.size() >= limit) continue;
      std::ifstream stream(entry.path(), std::ios::binary);
      files.emplace_back(entry.path().filename().string(),
                         std::string(std::istreambuf_iterator<char>(stream), {}));
    }
  }
  return files;
}

// Random texts over the bytes that matter to some tokenizer rule, plus a few that matter to none.
inline std::vector<std::string> random_texts(std::size_t count, std::size_t max_length,
                                             unsigned seed) {
  static const std::string alphabet =
      std::string("#!/\\\"'<>=-+*%&|.@_;{}()[]0x1e9aFuUlLE \t\r\n\v\f") + "\x80\xC3\xFF" +
      std::string(1, '\0') + "zZ,abcdefint";
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
  for (std::size_t i = 0; i < times; ++i) text += piece;
  return text;
}

// Shapes that once cost far more than their size, each `size` bytes or so.
inline std::vector<std::string> hostile_texts(std::size_t size) {
  const std::size_t n = size / 2;
  return {
      "<a " + repeat("b ", n) + ">",
      "<a " + repeat("b c=\"d\" ", n / 4) + ">",
      "<t" + std::to_string(n) + " " +
          [&] {
            std::string attributes;
            for (std::size_t i = 0; attributes.size() < size; ++i)
              attributes += "x" + std::to_string(i) + " ";
            return attributes;
          }() +
          ">",
      "<a b=\"" + repeat("c ", n) + ">",
      "<a b='" + repeat("\\' ", n / 2) + ">",
      repeat("\"", 1) + repeat("x \\\" ", n / 3),
      repeat("'\\'", n / 2),
      repeat("/*", n),
      repeat("{-", n) + repeat("x", n),
      repeat("\n", size),
      repeat(" ", size) + "# x",
      repeat("a", size),
      repeat("9", size),
      repeat("\xC3\xA9", n),
      std::string(size, '\0'),
      repeat("#!/usr/bin/env python\n", size / 22),
      repeat("<", size),
      "<" + repeat("a", size),
      repeat("a=", n),
  };
}

}  // namespace quillon::lingomat::testing
