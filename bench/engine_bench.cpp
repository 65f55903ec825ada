// Speed and memory of the engine, each figure next to the straightforward implementation's
// (tests/reference: ordered maps, std::regex) or a bare parse of the data file, in one run.
//
// Run: build/bench/lingomat_bench [--data FILE] [--files DIR] [benchmark options]
//   --files DIR: the real files to identify (for example the held-out side of a corpus
//   split); the repository's own sources when absent.
#include <benchmark/benchmark.h>

#include <malloc.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "created_engine.h"
#include "engine/engine.h"
#include "reference_engine.h"
#include "sample_texts.h"

namespace {

using quillon::lingomat::Lingomat;
using quillon::lingomat::Tokenizer;
using quillon::lingomat::TokenSink;
using quillon::lingomat::test_support::NamedText;
namespace reference = quillon::lingomat::reference;
namespace defaults = quillon::lingomat::defaults;

std::string g_data_file = LINGOMAT_BENCH_DATA;
std::string g_files_dir;

// Figures kept for the summary of ratios printed after the run.
std::map<std::string, double> g_figures;

const std::vector<NamedText>& real_files() {
  static const std::vector<NamedText> files =
      g_files_dir.empty()
          ? quillon::lingomat::test_support::repository_files(LINGOMAT_BENCH_REPOSITORY, 100000)
          : quillon::lingomat::test_support::files_under(g_files_dir, 100000);
  return files;
}

// Heap bytes in use through operator new, and their peak since the last reset.
std::size_t g_heap_now = 0;
std::size_t g_heap_peak = 0;

Lingomat::Opts engine_opts(std::uint64_t max_bytes = defaults::kMaxBytes,
                           std::uint64_t max_tokens = defaults::kMaxTokens) {
  Lingomat::Opts opts;
  opts.classifier.data_file = g_data_file;
  opts.tokenizer = {max_bytes, max_tokens};
  return opts;
}

reference::EngineOpts reference_opts() {
  reference::EngineOpts opts;
  opts.data_file = g_data_file;
  return opts;
}

const Lingomat& engine() {
  static const std::unique_ptr<Lingomat> instance =
      quillon::lingomat::bench::created_engine(engine_opts());
  return *instance;
}
const reference::Engine& reference_engine() {
  static const reference::Engine instance(reference_opts());
  return instance;
}

// Heap in use, through malloc or operator new alike.
double heap_in_use_mib() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd) / (1024.0 * 1024.0);
}

// Creation: time and the heap it keeps, for the engine, the reference and one bare RapidJSON
// parse of the same file (read whole with one read, then parsed).
template <typename Make>
void creation(benchmark::State& state, const char* figure, Make make) {
  double kept_mib = 0;
  for (auto _ : state) {
    const double before = heap_in_use_mib();
    auto made = make();
    kept_mib = heap_in_use_mib() - before;
    benchmark::DoNotOptimize(made.get());
  }
  state.counters["kept_MiB"] = kept_mib;
  g_figures[std::string(figure) + " MiB"] = kept_mib;
}

std::string read_whole(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::string text(std::filesystem::file_size(path), '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  return text;
}

void BM_CreateEngine(benchmark::State& state) {
  creation(state, "create engine",
           [] { return quillon::lingomat::bench::created_engine(engine_opts()); });
}
void BM_CreateReference(benchmark::State& state) {
  creation(state, "create reference",
           [] { return std::make_unique<reference::Engine>(reference_opts()); });
}
void BM_BareParse(benchmark::State& state) {
  creation(state, "bare parse", [] {
    const std::string text = read_whole(g_data_file);
    auto document = std::make_unique<rapidjson::Document>();
    document->Parse(text.c_str());
    return document;
  });
}
BENCHMARK(BM_BareParse)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);
BENCHMARK(BM_CreateEngine)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7);
BENCHMARK(BM_CreateReference)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

// Identification over the real files, one call each, as a host makes them.
template <typename Engine>
void identify_all(benchmark::State& state, const Engine& engine, bool with_names) {
  const auto& files = real_files();
  for (auto _ : state) {
    for (const NamedText& file : files) {
      benchmark::DoNotOptimize(engine.identify(with_names ? file.name : std::string(), file.text));
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * files.size()));
  state.counters["files"] = static_cast<double>(files.size());
}

void BM_IdentifyContentOnly(benchmark::State& state) { identify_all(state, engine(), false); }
void BM_IdentifyWithFileNames(benchmark::State& state) { identify_all(state, engine(), true); }
void BM_ReferenceContentOnly(benchmark::State& state) {
  identify_all(state, reference_engine(), false);
}
void BM_ReferenceWithFileNames(benchmark::State& state) {
  identify_all(state, reference_engine(), true);
}
BENCHMARK(BM_IdentifyContentOnly)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(BM_IdentifyWithFileNames)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(BM_ReferenceContentOnly)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);
BENCHMARK(BM_ReferenceWithFileNames)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

// Tokenizing with the limits off, so every byte is read: the first 16 KiB of each file keeps
// the reference's recursive regular expressions within the stack.
const std::vector<std::string>& tokenizer_inputs() {
  static const std::vector<std::string> inputs = [] {
    std::vector<std::string> result;
    for (const NamedText& file : real_files()) result.push_back(file.text.substr(0, 16384));
    return result;
  }();
  return inputs;
}

class CountingSink : public TokenSink {
 protected:
  void take_view(std::string_view) override {}
  void take_copy(std::string_view) override {}
};

template <typename Tokenize>
void tokenize_all(benchmark::State& state, Tokenize tokenize) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    for (const std::string& text : tokenizer_inputs()) {
      tokenize(text);
      bytes += text.size();
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(bytes));
}

void BM_TokenizeViews(benchmark::State& state) {
  const Tokenizer tokenizer({0, 0});
  tokenize_all(state, [&](const std::string& text) {
    CountingSink sink;
    tokenizer.extract_tokens(text, sink);
    benchmark::DoNotOptimize(sink.count());
  });
}
void BM_TokenizeList(benchmark::State& state) {
  const Tokenizer tokenizer({0, 0});
  tokenize_all(state, [&](const std::string& text) {
    benchmark::DoNotOptimize(tokenizer.extract_tokens(text));
  });
}
void BM_TokenizeReference(benchmark::State& state) {
  tokenize_all(state, [](const std::string& text) {
    benchmark::DoNotOptimize(reference::extract_tokens(text, {0, 0}));
  });
}
BENCHMARK(BM_TokenizeViews)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(BM_TokenizeList)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(BM_TokenizeReference)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

// Growth: content-only identification of 1 KiB ... 1 MiB of real text with the limits off.
// Linear when the time per KiB stays flat.
void BM_GrowthLimitsOff(benchmark::State& state) {
  static const Lingomat unlimited(engine_opts(0, 0));
  std::string source;
  for (const NamedText& file : real_files()) source += file.text;
  const auto size = static_cast<std::size_t>(state.range(0)) * 1024;
  std::string text;
  while (text.size() < size) text += source.substr(0, size - text.size());
  for (auto _ : state) benchmark::DoNotOptimize(unlimited.identify("", text));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.counters["us_per_KiB"] = benchmark::Counter(
      static_cast<double>(state.range(0)) * 1e-6,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_GrowthLimitsOff)->RangeMultiplier(4)->Range(1, 1024)->Unit(benchmark::kMicrosecond);

// Identifies `text` repeatedly: time per MiB, and the most heap one call holds at once per
// MiB of input (from one call before the timed ones).
void identify_per_mib(benchmark::State& state, const Lingomat& identifier,
                      const std::string& text) {
  const std::size_t before = g_heap_now;
  g_heap_peak = before;
  benchmark::DoNotOptimize(identifier.identify("", text));
  const double peak_mib = static_cast<double>(g_heap_peak - before) / (1024.0 * 1024.0);
  for (auto _ : state) benchmark::DoNotOptimize(identifier.identify("", text));
  const double input_mib = static_cast<double>(text.size()) / (1024.0 * 1024.0);
  state.counters["ms_per_MiB"] =
      benchmark::Counter(input_mib * 1e-3, benchmark::Counter::kIsIterationInvariantRate |
                                               benchmark::Counter::kInvert);
  state.counters["heap_x_input"] = peak_mib / input_mib;
}

// Hostile shapes at 1, 4 and 16 MiB with the default limits: time per MiB and the peak
// resident memory one call adds, per MiB of input.
void BM_Hostile(benchmark::State& state) {
  const std::size_t mib = static_cast<std::size_t>(state.range(0));
  const auto& shape = quillon::lingomat::test_support::hostile_shapes().at(
      static_cast<std::size_t>(state.range(1)));
  const std::string text = shape.make(mib << 20);
  const Lingomat& identifier = engine();
  identify_per_mib(state, identifier, text);
  state.SetLabel(shape.name);
}
BENCHMARK(BM_Hostile)
    ->ArgsProduct({{1, 4, 16}, benchmark::CreateDenseRange(0, 20, 1)})
    ->MinTime(0.2)
    ->Unit(benchmark::kMillisecond);

// Tokens made to collide in the engine's fast hash whatever its seed, against the same lines
// without collisions, with the limits off so that every line counts: time per MiB.
void BM_CollidingTokens(benchmark::State& state) {
  static const Lingomat unlimited(engine_opts(0, 0));
  const bool colliding = state.range(0) != 0;
  const std::string text = quillon::lingomat::test_support::shebang_lines(1 << 20, colliding);
  for (auto _ : state) benchmark::DoNotOptimize(unlimited.identify("", text));
  const double input_mib = static_cast<double>(text.size()) / (1024.0 * 1024.0);
  state.counters["ms_per_MiB"] =
      benchmark::Counter(input_mib * 1e-3, benchmark::Counter::kIsIterationInvariantRate |
                                               benchmark::Counter::kInvert);
  state.SetLabel(colliding ? "colliding #! lines" : "the same lines, not colliding");
}
BENCHMARK(BM_CollidingTokens)->Arg(1)->Arg(0)->Repetitions(5)->Unit(benchmark::kMillisecond);

// One tag of the data file's own words, each distinct: every token is known and scored with
// its own row, the costliest tag there is. Time per MiB and the peak heap per MiB of input.
void BM_TagOfKnownWords(benchmark::State& state) {
  const Lingomat& identifier = engine();
  const auto& vocabulary = identifier.classifier().vocabulary();
  std::string text = "<t ";
  const std::size_t size = static_cast<std::size_t>(state.range(0)) << 20;
  for (std::uint32_t id = 0; text.size() < size; id = (id + 1) % vocabulary.size()) {
    const std::string_view token = vocabulary.token(id);
    const bool word = !token.empty() && std::all_of(token.begin(), token.end(), [](char c) {
      return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
    });
    if (word) text.append(token).push_back(' ');
  }
  text += ">";
  identify_per_mib(state, identifier, text);
}
BENCHMARK(BM_TagOfKnownWords)->Arg(1)->Arg(4)->MinTime(0.2)->Unit(benchmark::kMillisecond);

// Keeps each benchmark's figures for the summary: the median of its repetitions (CPU time,
// which other work on a shared machine disturbs less than wall time).
class SummaryReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      const bool repeated = run.repetitions > 1;
      if (repeated ? run.aggregate_name != "median" : run.run_type != Run::RT_Iteration) continue;
      const std::string name = run.run_name.function_name;
      g_figures[name + " ms"] = run.GetAdjustedCPUTime();
      const auto items = run.counters.find("items_per_second");
      if (items != run.counters.end()) g_figures[name + " /s"] = items->second.value;
      const auto bytes = run.counters.find("bytes_per_second");
      if (bytes != run.counters.end()) g_figures[name + " MB/s"] = bytes->second.value / 1e6;
    }
  }
};

void print_ratio(const char* what, const std::string& mine, const std::string& theirs) {
  const auto a = g_figures.find(mine);
  const auto b = g_figures.find(theirs);
  if (a == g_figures.end() || b == g_figures.end() || b->second == 0) return;
  std::printf("%-36s %12.2f vs %12.2f  ratio %.2f\n", what, a->second, b->second,
              a->second / b->second);
}

void print_summary() {
  std::printf("\nSummary, medians (engine vs reference implementation or bare parse)\n");
  print_ratio("content only, files/s", "BM_IdentifyContentOnly /s", "BM_ReferenceContentOnly /s");
  print_ratio("with file names, files/s", "BM_IdentifyWithFileNames /s",
              "BM_ReferenceWithFileNames /s");
  print_ratio("tokenizer to views, MB/s", "BM_TokenizeViews MB/s", "BM_TokenizeReference MB/s");
  print_ratio("tokenizer to a list, MB/s", "BM_TokenizeList MB/s", "BM_TokenizeReference MB/s");
  print_ratio("creation ms vs bare parse", "BM_CreateEngine ms", "BM_BareParse ms");
  print_ratio("creation ms vs reference", "BM_CreateEngine ms", "BM_CreateReference ms");
  g_figures["data file MiB"] =
      static_cast<double>(std::filesystem::file_size(g_data_file)) / (1024.0 * 1024.0);
  print_ratio("heap kept MiB vs data file size", "create engine MiB", "data file MiB");
  print_ratio("heap kept MiB vs bare parse", "create engine MiB", "bare parse MiB");
  print_ratio("heap kept MiB vs reference", "create engine MiB", "create reference MiB");
}

}  // namespace

// Counting allocator: lets the hostile-shape runs report the heap one call needs. It hands
// out malloc's blocks, so freeing them with free is right.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size) {
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  g_heap_now += malloc_usable_size(block);
  g_heap_peak = std::max(g_heap_peak, g_heap_now);
  return block;
}
void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  g_heap_now -= malloc_usable_size(block);
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

int main(int argc, char** argv) {
  std::vector<char*> rest;
  for (int i = 0; i < argc; ++i) {
    const bool has_value = i + 1 < argc;
    if (has_value && std::strcmp(argv[i], "--data") == 0) {
      g_data_file = argv[++i];
    } else if (has_value && std::strcmp(argv[i], "--files") == 0) {
      g_files_dir = argv[++i];
    } else {
      rest.push_back(argv[i]);
    }
  }
  if (!std::filesystem::exists(g_data_file)) {
    std::fprintf(stderr, "lingomat_bench: no data file at %s (use --data FILE)\n",
                 g_data_file.c_str());
    return 2;
  }
  int rest_count = static_cast<int>(rest.size());
  benchmark::Initialize(&rest_count, rest.data());
  SummaryReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  print_summary();
  return 0;
}
