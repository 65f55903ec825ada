// The native side of the JavaScript package's differential test. For each "path<TAB>name" line
// on standard input, writes the plug-in's answer and the engine's ranking before the floor,
// scores in round-trip digits: answer<TAB>count{<TAB>language<TAB>score}. Options are named as
// the package names them, plus --data FILE. With --time RUNS, as the JavaScript benchmark's
// native baseline, prints the median times to create an engine and to identify every file.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "engine_options.h"
#include "lingomat.h"

namespace {

[[noreturn]] void fail(const std::string& message) {
  std::cerr << "native_answers: " << message << "\n";
  std::exit(2);
}

// The listed files as {name, text}.
std::vector<std::pair<std::string, std::string>> read_listed_files() {
  std::vector<std::pair<std::string, std::string>> files;
  for (std::string line; std::getline(std::cin, line);) {
    const auto tab = line.find('\t');
    std::ifstream in(line.substr(0, tab), std::ios::binary);
    if (tab == std::string::npos || !in) fail("cannot read the file of " + line);
    files.emplace_back(line.substr(tab + 1), std::string(std::istreambuf_iterator<char>(in), {}));
  }
  return files;
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

LingomatHandle create(const LingomatOpts& options) {
  LingomatHandle handle = nullptr;
  const int status = lingomatCreate(&handle, &options);
  if (status != LINGOMAT_SUCCESS) fail(lingomatPlugInGetErrorString(status));
  return handle;
}

}  // namespace

int main(int argc, char** argv) {
  LingomatOpts options{};
  lingomatOptsInitWithDefaults(&options);
  std::string data_file;
  std::vector<std::string> only;
  int timing_runs = 0;
  // The package's numeric options, and where they go.
  const std::pair<const char*, uint64_t*> counts[] = {{"--maxScanBytes", &options.maxScanBytes},
                                                      {"--maxTokens", &options.maxTokens},
                                                      {"--minTokens", &options.minTokens}};
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string flag = argv[i];
    const char* value = argv[i + 1];
    const auto count = std::find_if(std::begin(counts), std::end(counts),
                                    [&](const auto& entry) { return flag == entry.first; });
    if (count != std::end(counts)) *count->second = std::strtoull(value, nullptr, 10);
    if (flag == "--minScorePerToken") options.minScorePerToken = std::strtod(value, nullptr);
    if (flag == "--data") data_file = value;
    if (flag == "--only") only.emplace_back(value);
    if (flag == "--time") timing_runs = std::atoi(value);
  }
  if (data_file.empty() || argc % 2 == 0) fail("usage: --data FILE [--option VALUE]...");
  std::vector<const char*> only_pointers;
  for (const auto& name : only) only_pointers.push_back(name.c_str());
  options.dataFile = data_file.c_str();
  options.restrictions = only_pointers.data();
  options.restrictionCount = only_pointers.size();
  const auto files = read_listed_files();  // first, so that only the library's work is timed
  LingomatHandle handle = create(options);

  if (timing_runs > 0) {
    const double create_seconds = median_seconds(timing_runs, [&] {
      LingomatHandle another = create(options);
      lingomatDestroy(&another);
    });
    const double identify_seconds = median_seconds(timing_runs, [&] {
      for (const auto& [name, text] : files) {
        const char* language = nullptr;
        lingomatIdentifyCode(handle, text.data(), text.size(), name.c_str(), &language);
      }
    });
    std::printf("create_seconds\t%.6f\nidentify_all_seconds\t%.6f\nfiles\t%zu\n", create_seconds,
                identify_seconds, files.size());
  } else {
    const quillon::lingomat::Lingomat engine(quillon::lingomat::engine_options(options));
    for (const auto& [name, code] : files) {
      const char* language = nullptr;
      if (lingomatIdentifyCode(handle, code.data(), code.size(), name.c_str(), &language) !=
          LINGOMAT_SUCCESS) {
        fail("identification failed for " + name);
      }
      // The C interface reads the name up to its first NUL; so does the ranking.
      const auto trace = engine.trace(name.c_str(), code);
      std::printf("%s\t%zu", language == nullptr ? "" : language, trace.ranking.size());
      for (const auto& [ranked, score] : trace.ranking)
        std::printf("\t%s\t%.17g", ranked.c_str(), score);
      std::printf("\n");
    }
  }
  lingomatDestroy(&handle);
  return 0;
}
