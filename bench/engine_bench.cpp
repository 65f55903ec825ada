// Engine creation time and memory, and identification throughput, on the shipped data file.
// Run: build/bench/lingomat_bench [--data FILE]
#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "engine/lingomat.h"

namespace {

using quillon::lingomat::Lingomat;

std::string g_data_file = LINGOMAT_BENCH_DATA;

std::string read_file(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

// The library's own sources: real text of a few kilobytes each.
const std::vector<std::pair<std::string, std::string>>& sample_files() {
  static const auto files = [] {
    std::vector<std::pair<std::string, std::string>> result;
    for (const auto& entry :
         std::filesystem::recursive_directory_iterator(LINGOMAT_BENCH_SOURCES)) {
      if (entry.is_regular_file()) {
        result.emplace_back(entry.path().filename().string(), read_file(entry.path()));
      }
    }
    return result;
  }();
  return files;
}

long resident_kib() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
  }
  return 0;
}

Lingomat::Opts engine_opts() {
  Lingomat::Opts opts;
  opts.classifier.data_file = g_data_file;
  return opts;
}

void BM_CreateEngine(benchmark::State& state) {
  const long before = resident_kib();
  long growth = 0;
  for (auto _ : state) {
    auto engine = std::make_unique<Lingomat>(engine_opts());
    growth = resident_kib() - before;
    benchmark::DoNotOptimize(engine.get());
  }
  state.counters["engine_rss_MiB"] = static_cast<double>(growth) / 1024.0;
  state.counters["data_file_MiB"] =
      static_cast<double>(std::filesystem::file_size(g_data_file)) / (1024.0 * 1024.0);
}
BENCHMARK(BM_CreateEngine)->Unit(benchmark::kMillisecond)->Iterations(3);

void identify_all(benchmark::State& state, bool with_names) {
  const Lingomat engine(engine_opts());
  const auto& files = sample_files();
  std::size_t bytes = 0;
  for (auto _ : state) {
    for (const auto& [name, text] : files) {
      benchmark::DoNotOptimize(engine.identify(with_names ? name : std::string(), text));
      bytes += text.size();
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(bytes));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * files.size()));
}

void BM_IdentifyContentOnly(benchmark::State& state) { identify_all(state, false); }
void BM_IdentifyWithFileNames(benchmark::State& state) { identify_all(state, true); }
BENCHMARK(BM_IdentifyContentOnly)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IdentifyWithFileNames)->Unit(benchmark::kMillisecond);

void BM_Tokenize(benchmark::State& state) {
  const quillon::lingomat::Tokenizer tokenizer({});
  const auto& files = sample_files();
  std::size_t bytes = 0;
  for (auto _ : state) {
    for (const auto& file : files) {
      benchmark::DoNotOptimize(tokenizer.extract_tokens(file.second));
      bytes += file.second.size();
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(bytes));
}
BENCHMARK(BM_Tokenize)->Unit(benchmark::kMillisecond);

// Texts that once made the tokenizer rescan the rest of the buffer at every byte.
void BM_TokenizeAdversarial(benchmark::State& state) {
  const quillon::lingomat::Tokenizer tokenizer({});
  std::string text;
  switch (state.range(0)) {
    case 0:
      text = std::string(2 << 20, '\n');
      break;
    case 1:
      for (int i = 0; i < 5000; ++i) text += "{-";
      text += std::string(2 << 20, 'x');
      break;
    default:
      text = "'";
      for (int i = 0; i < 5000; ++i) text += "\\'";
      text += std::string(2 << 20, ' ');
      break;
  }
  for (auto _ : state) benchmark::DoNotOptimize(tokenizer.extract_tokens(text));
  state.SetLabel(state.range(0) == 0   ? "2 MiB of line feeds"
                 : state.range(0) == 1 ? "5000 unclosed {- then 2 MiB"
                                       : "5000 escaped quotes then 2 MiB");
}
BENCHMARK(BM_TokenizeAdversarial)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], "--data") == 0) g_data_file = argv[i + 1];
  }
  if (!std::filesystem::exists(g_data_file)) {
    std::fprintf(stderr, "lingomat_bench: no data file at %s (use --data FILE)\n",
                 g_data_file.c_str());
    return 2;
  }
  std::vector<char*> rest;
  for (int i = 0; i < argc; ++i) {
    if (std::strcmp(argv[i], "--data") == 0) {
      ++i;
      continue;
    }
    rest.push_back(argv[i]);
  }
  int rest_count = static_cast<int>(rest.size());
  benchmark::Initialize(&rest_count, rest.data());
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
