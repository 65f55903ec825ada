#include "eval/evaluation.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <new>

#include "common/file_io.h"
#include "common/parallel.h"
#include "common/progress_line.h"
#include "common/samples_tree.h"
#include "common/tool_error.h"

namespace quillon::lingomat::tools {

namespace {

using Clock = std::chrono::steady_clock;

struct LabelledFile {
  std::string language;
  std::string path;
  std::string file_name;  // the last component, as a host would pass it
};

std::unique_ptr<Lingomat> load_engine(const EvalConfig& config) {
  Lingomat::Opts opts;
  opts.tokenizer = config.tokenizer;
  opts.classifier.data_file = config.data_path;
  opts.classifier.min_tokens = config.min_tokens;
  opts.classifier.min_score_per_token = config.min_score_per_token;
  if (config.restrict_to_only) opts.restrictions = config.only;
  EngineCreation created = create_engine(opts);
  switch (created.status) {
    case LINGOMAT_SUCCESS:
      return std::move(created.engine);
    case LINGOMAT_ERROR_JSON:
      throw ToolError("data file " + config.data_path + " is not usable: " + created.reason);
    case LINGOMAT_ERROR_FILE_IO:
      throw ToolError("cannot read data file " + config.data_path + ": " + created.reason);
    case LINGOMAT_ERROR_MEMORY:
      throw std::bad_alloc();
    default:
      throw ToolError("cannot load data file " + config.data_path + ": " + created.reason);
  }
}

std::vector<LabelledFile> collect_test_set(const EvalConfig& config) {
  const std::vector<LanguageSamples> tree = walk_samples(config.samples_root);
  for (const std::string& name : config.only) {
    const bool found = std::any_of(tree.begin(), tree.end(),
                                   [&](const LanguageSamples& l) { return l.language == name; });
    if (!found) {
      throw ToolError("--only " + name + ": samples folder " + config.samples_root +
                      " has no folder of that name");
    }
  }
  std::vector<LabelledFile> files;
  for (const LanguageSamples& language : tree) {
    if (!config.only.empty() &&
        std::find(config.only.begin(), config.only.end(), language.language) == config.only.end()) {
      continue;
    }
    for (const SampleFile& file : select_split(language, config.split)) {
      const auto slash = file.relative_path.rfind('/');
      files.push_back({language.language, file.path, file.relative_path.substr(slash + 1)});
    }
  }
  if (files.empty()) {
    throw ToolError("no test file in " + config.samples_root + " on the " + describe(config.split));
  }
  return files;
}

}  // namespace

EvalRun run_evaluation(const EvalConfig& config) {
  const std::unique_ptr<Lingomat> engine = load_engine(config);
  const std::vector<LabelledFile> files = collect_test_set(config);

  EvalRun run;
  run.threads = std::max(1u, config.threads);
  const std::vector<std::string> known = engine->classifier().languages();
  for (const LabelledFile& file : files) {
    if (!std::binary_search(known.begin(), known.end(), file.language) &&
        (run.untrained_languages.empty() || run.untrained_languages.back() != file.language)) {
      run.untrained_languages.push_back(file.language);
    }
  }

  std::vector<Identification> content(files.size());
  std::vector<Identification> named(files.size());
  if (config.trace_scores) run.traces.resize(2 * files.size());
  const auto started = Clock::now();
  run_parallel(
      files.size(), run.threads,
      [&](std::size_t index, unsigned) {
        const LabelledFile& file = files[index];
        const std::string text = read_file(file.path, "sample");
        const auto identify = [&](const std::string& file_name, Identification& result) {
          const auto before = Clock::now();
          result.answer = engine->identify(file_name, text);
          result.seconds = std::chrono::duration<double>(Clock::now() - before).count();
          result.expected = file.language;
          result.bytes = text.size();
        };
        identify("", content[index]);
        identify(file.file_name, named[index]);
        if (config.trace_scores) {
          run.traces[2 * index] = trace_scores(*engine, "content", file.language, "", text);
          run.traces[2 * index + 1] =
              trace_scores(*engine, "filename", file.language, file.file_name, text);
        }
      },
      config.progress ? terminal_progress("identifying") : ProgressFn());
  run.wall_seconds = std::chrono::duration<double>(Clock::now() - started).count();

  run.modes.push_back(build_mode_report("content", "content only (no file name)", content));
  run.modes.push_back(build_mode_report("filename", "content and the file's own name", named));
  return run;
}

}  // namespace quillon::lingomat::tools
