// The native side of the JavaScript package's differential test. Reads "path<TAB>name" lines
// on standard input and, for each, writes the plug-in's answer (empty for none) and the
// engine's ranking before the floor, every score in enough digits to round-trip exactly:
//   answer<TAB>count{<TAB>language<TAB>score}
// Options, in the package's terms: --data FILE --max-scan-bytes N --max-tokens N
// --min-tokens N --min-score-per-token X --only LANGUAGE (repeatable).
// With --time RUNS it answers nothing and, as the JavaScript benchmark's native baseline,
// prints the median time to create an engine and to identify every listed file once.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "lingomat.h"

using quillon::lingomat::Lingomat;

namespace {

[[noreturn]] void fail(const std::string& message) {
  std::cerr << "native_answers: " << message << "\n";
  std::exit(2);
}

std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) fail("cannot read " + path);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

struct Options {
  LingomatOpts plugin{};
  Lingomat::Opts engine;
  std::string data_file;
  std::vector<std::string> only;
  std::vector<const char*> only_pointers;
  int timing_runs = 0;
};

Options parse(int argc, char** argv) {
  Options options;
  lingomatOptsInitWithDefaults(&options.plugin);
  for (int i = 1; i < argc; i += 2) {
    const std::string flag = argv[i];
    if (i + 1 >= argc) fail("missing value after " + flag);
    const char* value = argv[i + 1];
    if (flag == "--data") {
      options.data_file = value;
    } else if (flag == "--max-scan-bytes") {
      options.plugin.maxScanBytes = std::strtoull(value, nullptr, 10);
    } else if (flag == "--max-tokens") {
      options.plugin.maxTokens = std::strtoull(value, nullptr, 10);
    } else if (flag == "--min-tokens") {
      options.plugin.minTokens = std::strtoull(value, nullptr, 10);
    } else if (flag == "--min-score-per-token") {
      options.plugin.minScorePerToken = std::strtod(value, nullptr);
    } else if (flag == "--time") {
      options.timing_runs = std::atoi(value);
    } else if (flag == "--only") {
      options.only.emplace_back(value);
    } else {
      fail("unknown option " + flag);
    }
  }
  if (options.data_file.empty()) fail("--data is required");
  for (const auto& name : options.only) options.only_pointers.push_back(name.c_str());
  options.plugin.dataFile = options.data_file.c_str();
  options.plugin.restrictions = options.only_pointers.data();
  options.plugin.restrictionCount = options.only_pointers.size();

  options.engine.classifier.data_file = options.data_file;
  options.engine.tokenizer.max_bytes = options.plugin.maxScanBytes;
  options.engine.tokenizer.max_tokens = options.plugin.maxTokens;
  options.engine.classifier.min_tokens = options.plugin.minTokens;
  options.engine.classifier.min_score_per_token = options.plugin.minScorePerToken;
  options.engine.restrictions = options.only;
  return options;
}

template <typename Work>
double median_seconds(int runs, Work work) {
  std::vector<double> seconds;
  for (int run = 0; run < runs; ++run) {
    const auto start = std::chrono::steady_clock::now();
    work();
    seconds.push_back(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  std::sort(seconds.begin(), seconds.end());
  return seconds[seconds.size() / 2];
}

// Reads every listed file first, so that only the library's work is timed.
int time_native(const Options& options) {
  std::vector<std::pair<std::string, std::string>> files;  // name, text
  std::string line;
  while (std::getline(std::cin, line)) {
    const auto tab = line.find('\t');
    if (tab == std::string::npos) fail("expected path<TAB>name, got " + line);
    files.emplace_back(line.substr(tab + 1), read_file(line.substr(0, tab)));
  }
  const double create = median_seconds(options.timing_runs, [&] {
    LingomatHandle handle = nullptr;
    if (lingomatCreate(&handle, &options.plugin) != LINGOMAT_SUCCESS) fail("create failed");
    lingomatDestroy(&handle);
  });
  LingomatHandle handle = nullptr;
  if (lingomatCreate(&handle, &options.plugin) != LINGOMAT_SUCCESS) fail("create failed");
  const double identify = median_seconds(options.timing_runs, [&] {
    for (const auto& [name, text] : files) {
      const char* language = nullptr;
      lingomatIdentifyCode(handle, text.data(), text.size(), name.c_str(), &language);
    }
  });
  lingomatDestroy(&handle);
  std::printf("create_seconds\t%.6f\nidentify_all_seconds\t%.6f\nfiles\t%zu\n", create, identify,
              files.size());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = parse(argc, argv);
  if (options.timing_runs > 0) return time_native(options);
  LingomatHandle handle = nullptr;
  const int status = lingomatCreate(&handle, &options.plugin);
  if (status != LINGOMAT_SUCCESS) fail(lingomatPlugInGetErrorString(status));
  const Lingomat engine(options.engine);

  std::string line;
  while (std::getline(std::cin, line)) {
    const auto tab = line.find('\t');
    if (tab == std::string::npos) fail("expected path<TAB>name, got " + line);
    const std::string name = line.substr(tab + 1);
    const std::string code = read_file(line.substr(0, tab));
    const char* language = nullptr;
    if (lingomatIdentifyCode(handle, code.data(), code.size(), name.c_str(), &language) !=
        LINGOMAT_SUCCESS) {
      fail("identification failed for " + line);
    }
    // The C interface reads the name up to its first NUL; so does the ranking.
    const auto trace = engine.trace(name.c_str(), code);
    std::printf("%s\t%zu", language == nullptr ? "" : language, trace.ranking.size());
    for (const auto& [ranked, score] : trace.ranking) {
      std::printf("\t%s\t%.17g", ranked.c_str(), score);
    }
    std::printf("\n");
  }
  lingomatDestroy(&handle);
  return 0;
}
