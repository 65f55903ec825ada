// Files per second on a tree: the command-line tool with -j1 (reading, mapping, walking and
// identifying, start-up included) against the engine identifying the same files already in
// memory, runs alternated so that a busy machine slows both alike.
// Run: build/bench/lingomat_tree_bench [--tree DIR] [--runs N] [--data FILE] [--tool PATH]
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "created_engine.h"
#include "engine/engine.h"

namespace {

using quillon::lingomat::Lingomat;
namespace fs = std::filesystem;

struct Timing {
  double wall_s;
  double cpu_s;
};

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double cpu_seconds(const rusage& usage) {
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Every regular file below `tree` (links not followed), as the tool walks it.
std::vector<std::pair<std::string, std::string>> load_tree(const std::string& tree) {
  std::vector<std::pair<std::string, std::string>> files;
  std::error_code error;
  for (auto it = fs::recursive_directory_iterator(tree, error);
       !error && it != fs::recursive_directory_iterator(); it.increment(error)) {
    if (!it->is_regular_file(error) || it->is_symlink(error)) continue;
    std::ifstream stream(it->path(), std::ios::binary);
    files.emplace_back(it->path().filename().string(),
                       std::string(std::istreambuf_iterator<char>(stream), {}));
  }
  return files;
}

Timing engine_pass(const Lingomat& engine,
                   const std::vector<std::pair<std::string, std::string>>& files) {
  rusage before{}, after{};
  getrusage(RUSAGE_SELF, &before);
  const auto start = std::chrono::steady_clock::now();
  std::size_t answered = 0;
  for (const auto& [name, text] : files) answered += !engine.identify(name, text).empty();
  const double wall = seconds_since(start);
  getrusage(RUSAGE_SELF, &after);
  if (answered == 0) std::fprintf(stderr, "no file was identified\n");
  return {wall, cpu_seconds(after) - cpu_seconds(before)};
}

// One run of the tool; its wall time and the CPU time it used.
Timing tool_pass(const std::vector<std::string>& args) {
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    const int null = open("/dev/null", O_WRONLY);
    if (null >= 0) dup2(null, STDOUT_FILENO);
    std::vector<char*> argv;
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
      WEXITSTATUS(status) > 1) {
    std::fprintf(stderr, "the tool failed\n");
    std::exit(1);
  }
  return {seconds_since(start), cpu_seconds(usage)};
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  std::string tree = "/usr/include";
  std::string data = LINGOMAT_BENCH_DATA;
  std::string tool = LINGOMAT_BENCH_TOOL;  // another build of the tool, to compare
  int runs = 5;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string option = argv[i];
    if (option == "--tree") tree = argv[i + 1];
    if (option == "--data") data = argv[i + 1];
    if (option == "--tool") tool = argv[i + 1];
    if (option == "--runs") runs = std::max(1, std::atoi(argv[i + 1]));
  }
  const auto files = load_tree(tree);
  if (files.empty()) {
    std::fprintf(stderr, "no files under %s\n", tree.c_str());
    return 1;
  }
  Lingomat::Opts opts;
  opts.classifier.data_file = data;
  const std::unique_ptr<Lingomat> created = quillon::lingomat::bench::created_engine(opts);
  const Lingomat& engine = *created;

  // The tool's start alone, on an empty file, is subtracted for its per-file cost.
  char folder[] = "/tmp/lingomat_tree_XXXXXX";
  if (mkdtemp(folder) == nullptr) return 1;
  const std::string empty = std::string(folder) + "/empty";
  std::ofstream(empty).close();

  std::vector<double> engine_wall, engine_cpu, tool_wall, tool_cpu, start_wall, start_cpu;
  for (int i = 0; i < runs; ++i) {
    const Timing in_memory = engine_pass(engine, files);
    const Timing walked = tool_pass({tool, "--data", data, "-j1", tree});
    const Timing start = tool_pass({tool, "--data", data, empty});
    engine_wall.push_back(in_memory.wall_s);
    engine_cpu.push_back(in_memory.cpu_s);
    tool_wall.push_back(walked.wall_s);
    tool_cpu.push_back(walked.cpu_s);
    start_wall.push_back(start.wall_s);
    start_cpu.push_back(start.cpu_s);
  }
  std::remove(empty.c_str());
  rmdir(folder);

  const double n = static_cast<double>(files.size());
  const double engine_rate = n / median(engine_wall);
  const double tool_rate = n / median(tool_wall);
  const double tool_walk_rate = n / (median(tool_wall) - median(start_wall));
  std::printf("%s: %zu files, medians of %d alternated runs\n", tree.c_str(), files.size(), runs);
  std::printf("%-34s %10s %10s\n", "", "files/s", "CPU s");
  std::printf("%-34s %10.0f %10.3f\n", "engine, texts in memory", engine_rate, median(engine_cpu));
  std::printf("%-34s %10.0f %10.3f\n", "tool -j1, start-up included", tool_rate, median(tool_cpu));
  std::printf("%-34s %10.0f %10.3f\n", "tool -j1, start-up subtracted", tool_walk_rate,
              median(tool_cpu) - median(start_cpu));
  std::printf(
      "ratio tool/engine: %.2f (start-up included), %.2f (subtracted); by CPU time "
      "%.2f, %.2f\n",
      tool_rate / engine_rate, tool_walk_rate / engine_rate, median(engine_cpu) / median(tool_cpu),
      median(engine_cpu) / (median(tool_cpu) - median(start_cpu)));
  return 0;
}
