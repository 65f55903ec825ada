// Engine creation against one bare parse of the same data file, for the shipped file and for
// synthetic files with many languages (creation should grow linearly with their number), and
// a whole run of the command-line tool on one small file against the same parse.
// Run: build/bench/lingomat_loading_bench [--runs N] [--data FILE] [--tool PATH]
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include <rapidjson/document.h>

#include "base/token_hash.h"
#include "created_engine.h"
#include "engine/engine.h"
#include "json/json_member_index.h"

namespace {

using quillon::lingomat::Lingomat;

std::string read_whole(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

long resident_kib() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
  }
  return 0;
}

// `count` languages, each with a handful of tokens and names; the per-language objects list
// them in reverse order, as a file written by hand might.
std::string synthetic_data_file(int count) {
  auto name = [](int i) { return "Lang" + std::to_string(i); };
  std::string languages, language_tokens, tokens, extnames, filenames;
  for (int i = 0; i < count; ++i) {
    const std::string sep = i == 0 ? "" : ",";
    const std::string reverse = "\"" + name(count - 1 - i) + "\":";
    languages += sep + "\"" + name(i) + "\":" + std::to_string(1 + i % 50);
    language_tokens += sep + reverse + "40";
    tokens += sep + reverse + "{\"t" + std::to_string(i % 1000) + "\":30,\"u\":10}";
    extnames += sep + "\"" + name(i) + "\":[\".e" + std::to_string(i) + "\"]";
    filenames += sep + "\"" + name(i) + "\":[\"F" + std::to_string(i) + "\"]";
  }
  return "{\"languages\":{" + languages + "},\"language_tokens\":{" + language_tokens +
         "},\"tokens\":{" + tokens + "},\"extnames\":{" + extnames + "},\"filenames\":{" +
         filenames + "},\"interpreters\":{},\"tokens_total\":" + std::to_string(count * 40) +
         ",\"languages_total\":" + std::to_string(count * 25) + "}";
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// CPU time of this process, in ms: a busy machine stretches wall time far more than this.
double cpu_ms() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// The CPU time `work` takes, in ms.
double cpu_ms_of(const std::function<void()>& work) {
  const double start = cpu_ms();
  work();
  return cpu_ms() - start;
}

double median_ms(int runs, const std::function<void()>& work) {
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    times.push_back(
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
            .count());
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

// Resident memory that `keep` adds while what it builds is alive, measured in a fresh child
// process so that memory freed by earlier runs cannot hide it.
double added_mib(const std::function<std::shared_ptr<void>()>& keep) {
  int channel[2];
  if (pipe(channel) != 0) return -1;
  const pid_t child = fork();
  if (child == 0) {
    const long before = resident_kib();
    const std::shared_ptr<void> kept = keep();
    const long added = resident_kib() - before;
    const ssize_t ignored = write(channel[1], &added, sizeof added);
    (void)ignored;
    _exit(0);
  }
  long added = -1;
  close(channel[1]);
  if (read(channel[0], &added, sizeof added) != sizeof added) added = -1;
  close(channel[0]);
  waitpid(child, nullptr, 0);
  return static_cast<double>(added) / 1024.0;
}

// Finds every language of "languages" in "language_tokens" and "tokens", as loading does:
// by walking the objects (what loading did before) or through a member index.
double lookup_ms(const std::string& path, bool indexed) {
  using namespace quillon::lingomat;
  rapidjson::Document document;
  document.Parse(read_whole(path).c_str());
  const JsonConstObject language_tokens = std::as_const(document)["language_tokens"].GetObject();
  const JsonConstObject tokens = std::as_const(document)["tokens"].GetObject();
  const auto start = std::chrono::steady_clock::now();
  std::size_t found = 0;
  if (indexed) {
    const JsonMemberIndex language_tokens_index(language_tokens);
    const JsonMemberIndex tokens_index(tokens);
    for (const auto& member : document["languages"].GetObject()) {
      const std::string_view name(member.name.GetString(), member.name.GetStringLength());
      found += language_tokens_index.find(name) != nullptr && tokens_index.find(name) != nullptr;
    }
  } else {
    for (const auto& member : document["languages"].GetObject()) {
      found += language_tokens.FindMember(member.name) != language_tokens.MemberEnd() &&
               tokens.FindMember(member.name) != tokens.MemberEnd();
    }
  }
  const double ms =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  return found == document["languages"].MemberCount() ? ms : -1.0;
}

double median_lookup_ms(const std::string& path, int runs) {
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) times.push_back(lookup_ms(path, true));
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

// How well the fast token hash spreads the data file's distinct tokens: they go, in file
// order, into a linear-probing table at most half full, as the vocabulary keeps them, under
// `seeds` fresh hashers. Prints the median of the average probes and the longest probe seen.
void report_probes(const std::string& path, int seeds) {
  rapidjson::Document document;
  document.Parse(read_whole(path).c_str());
  std::vector<std::string_view> tokens;
  std::unordered_set<std::string_view> seen;
  for (const auto& language : std::as_const(document)["tokens"].GetObject()) {
    for (const auto& token : language.value.GetObject()) {
      const std::string_view text(token.name.GetString(), token.name.GetStringLength());
      if (seen.insert(text).second) tokens.push_back(text);
    }
  }
  std::size_t slot_count = 16;
  while (slot_count < tokens.size() * 2) slot_count *= 2;
  std::vector<double> averages;
  std::size_t longest = 0;
  for (int seed = 0; seed < seeds; ++seed) {
    const quillon::lingomat::TokenHasher hasher;
    std::vector<bool> taken(slot_count);
    std::size_t probes = 0;
    for (const std::string_view token : tokens) {
      const std::size_t start = hasher(token) & (slot_count - 1);
      std::size_t slot = start;
      while (taken[slot]) slot = (slot + 1) & (slot_count - 1);
      taken[slot] = true;
      const std::size_t probed = (slot - start) & (slot_count - 1);
      probes += probed;
      longest = std::max(longest, probed);
    }
    averages.push_back(static_cast<double>(probes) / static_cast<double>(tokens.size()));
  }
  std::printf(
      "fast hash on %zu distinct tokens, %zu slots: average probes %.3f (median of %d "
      "seeds), longest %zu\n",
      tokens.size(), slot_count, median(averages), seeds, longest);
}

#ifdef LINGOMAT_BENCH_TOOL
// One run of the tool, start to exit, on `file` with the data file `data`; -1 when it fails.
std::string g_tool = LINGOMAT_BENCH_TOOL;  // --tool: another build of the tool, to compare

double tool_run_ms(const std::string& data, const std::string& file, double& cpu) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    const int null = open("/dev/null", O_WRONLY);
    if (null >= 0) dup2(null, STDOUT_FILENO);
    execl(g_tool.c_str(), "lingomat", "--data", data.c_str(), file.c_str(),
          static_cast<char*>(nullptr));
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
      WEXITSTATUS(status) != 0) {
    return -1.0;
  }
  cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3 +
        static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

// The tool on one small file and the bare parse, alternated so that both see the same load.
void report_tool_start(const std::string& data, const std::string& folder, int runs) {
  const std::string file = folder + "/hello.c";
  std::ofstream(file) << "#include <stdio.h>\nint main(void) { puts(\"hi\"); return 0; }\n";
  std::vector<double> tool, parse, tool_cpu, parse_cpu;
  const auto bare_parse = [&] {
    rapidjson::Document document;
    document.Parse(read_whole(data).c_str());
  };
  for (int i = 0; i < runs; ++i) {
    double cpu = 0;
    tool.push_back(tool_run_ms(data, file, cpu));
    tool_cpu.push_back(cpu);
    parse.push_back(median_ms(1, bare_parse));
    parse_cpu.push_back(cpu_ms_of(bare_parse));
  }
  std::remove(file.c_str());
  const double tool_ms = median(tool), parse_ms = median(parse);
  std::printf("tool on one small file: %.1f ms, bare parse %.1f ms, ratio %.2f\n", tool_ms,
              parse_ms, tool_ms / parse_ms);
  std::printf("  by CPU time: %.1f ms, bare parse %.1f ms, ratio %.2f\n", median(tool_cpu),
              median(parse_cpu), median(tool_cpu) / median(parse_cpu));
}
#endif

struct Figures {
  double file_mib, parse_ms, create_ms, parse_mib, create_mib, parse_cpu_ms, create_cpu_ms;
};

// Memory first, in children forked before this process has allocated and freed anything
// big: freed memory kept by the allocator would otherwise hide the growth.
Figures measure(const std::string& path, int runs, bool timing) {
  Lingomat::Opts opts;
  opts.classifier.data_file = path;

  const auto bare_parse = [&] {
    auto document = std::make_shared<rapidjson::Document>();
    document->Parse(read_whole(path).c_str());
    return std::static_pointer_cast<void>(document);
  };
  const auto create = [&] {
    return std::static_pointer_cast<void>(
        std::shared_ptr<Lingomat>(quillon::lingomat::bench::created_engine(opts)));
  };
  Figures figures{};
  figures.file_mib = static_cast<double>(std::filesystem::file_size(path)) / (1 << 20);
  if (timing) {
    // Alternated, so that a busy machine slows both alike.
    std::vector<double> parse, creation, parse_cpu, creation_cpu;
    for (int i = 0; i < runs; ++i) {
      parse.push_back(median_ms(1, [&] { bare_parse(); }));
      creation.push_back(median_ms(1, [&] { create(); }));
      parse_cpu.push_back(cpu_ms_of([&] { bare_parse(); }));
      creation_cpu.push_back(cpu_ms_of([&] { create(); }));
    }
    figures.parse_ms = median(parse);
    figures.create_ms = median(creation);
    figures.parse_cpu_ms = median(parse_cpu);
    figures.create_cpu_ms = median(creation_cpu);
  } else {
    figures.parse_mib = added_mib(bare_parse);
    figures.create_mib = added_mib(create);
  }
  return figures;
}

}  // namespace

int main(int argc, char** argv) {
  int runs = 5;
  std::string data = LINGOMAT_BENCH_DATA;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--runs") {
      runs = std::max(1, std::atoi(argv[i + 1]));
    } else if (option == "--data") {
      data = argv[i + 1];
#ifdef LINGOMAT_BENCH_TOOL
    } else if (option == "--tool") {
      g_tool = argv[i + 1];
#endif
    }
  }
  char folder[] = "/tmp/lingomat_loading_XXXXXX";
  if (mkdtemp(folder) == nullptr) return 1;
  std::vector<std::pair<std::string, std::string>> files{{"shipped data file", data}};
  for (const int count : {20'000, 80'000}) {
    const std::string path = std::string(folder) + "/" + std::to_string(count) + ".json";
    std::ofstream(path, std::ios::binary) << synthetic_data_file(count);
    files.emplace_back(std::to_string(count) + " languages", path);
  }

  std::printf("medians of %d runs; memory is resident growth while the result is alive\n", runs);
  std::printf("%-22s %8s %10s %10s %7s %10s %10s %7s %9s %9s\n", "file", "MiB", "parse ms",
              "create ms", "ratio", "parse MiB", "create MiB", "x file", "walk ms", "index ms");
  std::vector<Figures> memory;
  for (const auto& file : files) memory.push_back(measure(file.second, runs, false));
  for (std::size_t i = 0; i < files.size(); ++i) {
    const Figures time = measure(files[i].second, runs, true);
    const Figures& mem = memory[i];
    // The walk takes seconds for many languages: one run is enough to see it.
    std::printf("%-22s %8.2f %10.1f %10.1f %7.2f %10.1f %10.1f %7.2f %9.1f %9.1f\n",
                files[i].first.c_str(), time.file_mib, time.parse_ms, time.create_ms,
                time.create_ms / time.parse_ms, mem.parse_mib, mem.create_mib,
                mem.create_mib / time.file_mib, lookup_ms(files[i].second, false),
                median_lookup_ms(files[i].second, runs));
    std::printf("%-22s by CPU time: parse %.1f ms, create %.1f ms, ratio %.2f\n", "",
                time.parse_cpu_ms, time.create_cpu_ms, time.create_cpu_ms / time.parse_cpu_ms);
  }
  report_probes(data, std::max(runs, 9));
#ifdef LINGOMAT_BENCH_TOOL
  report_tool_start(data, folder, runs);
#endif
  for (std::size_t i = 1; i < files.size(); ++i) std::remove(files[i].second.c_str());
  rmdir(folder);
  return 0;
}
