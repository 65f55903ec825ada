// lingomat-eval: measures how well a data file identifies a labelled test set.
#include <unistd.h>

#include <iostream>

#include "base/option_defaults.h"
#include "common/file_io.h"
#include "common/options.h"
#include "common/parallel.h"
#include "common/tool_error.h"
#include "common/tool_main.h"
#include "eval/eval_output.h"
#include "eval/evaluation.h"

namespace lm = quillon::lingomat;
namespace lt = quillon::lingomat::tools;

namespace {

constexpr const char* kProgram = "lingomat-eval";

int evaluate(int argc, char** argv) {
  lt::EvalConfig config;
  std::uint64_t threads = lt::default_thread_count();
  std::uint64_t max_confusions = 20;
  bool json = false;
  std::string scores_path;
  lt::SplitOptions split;

  lt::OptionParser parser(kProgram,
                          "Measures how well a data file identifies a labelled test set.\n"
                          "\n"
                          "Identifies every file of the test set (same layout as the samples "
                          "folder)\ntwice: from its content only and with its own file name, "
                          "and reports the\naccuracy of each mode.");
  parser.add_positional("DATA_FILE", "The data file to evaluate.", &config.data_path);
  parser.add_positional("SAMPLES", "The labelled test set, one folder per language.",
                        &config.samples_root);
  parser.add_uint("max-bytes", "N",
                  "Engine option: tokens start in the first N bytes (default " +
                      std::to_string(lm::defaults::kMaxBytes) + "; 0: no limit).",
                  &config.tokenizer.max_bytes);
  parser.add_uint("max-tokens", "N",
                  "Engine option: at most N tokens (default " +
                      std::to_string(lm::defaults::kMaxTokens) + "; 0: no limit).",
                  &config.tokenizer.max_tokens);
  parser.add_uint("min-tokens", "N",
                  "Engine option: fewer tokens give no classifier answer (default " +
                      std::to_string(lm::defaults::kMinTokens) + ").",
                  &config.min_tokens);
  parser.add_double("min-score", "X",
                    "Engine option: classifier answers scoring below X per token are dropped "
                    "(default " +
                        lt::OptionParser::format_default(lm::defaults::kMinScorePerToken) +
                        "; 0: off).",
                    &config.min_score_per_token);
  parser.add_strings("only", "LANG", "Evaluate this language's files only; repeat for several.",
                     &config.only);
  parser.add_flag("restrict",
                  "Engine option: tell the engine that only the --only languages are possible "
                  "(its restriction list), as a host that knows them would.",
                  &config.restrict_to_only);
  split.add_to(parser);
  parser.add_uint("jobs", "N", "Identification threads (default: one per core).", &threads, 1,
                  1024);
  parser.add_alias('j', "jobs");
  parser.add_uint("confusions", "N", "Confusions listed in the text report (default 20).",
                  &max_confusions);
  parser.add_flag("json", "Print the report as JSON.", &json);
  parser.add_string("scores", "FILE",
                    "Also write, per file and mode, the name fallback, the token count and each "
                    "candidate's score split into seen-token part and unseen-token count, as "
                    "tab-separated lines (tools/eval/calibration_sweep.py replays them).",
                    &scores_path);

  if (!parser.parse(argc, argv)) {
    std::cout << parser.exit_text();
    return 0;
  }
  if (config.restrict_to_only && config.only.empty()) {
    throw lt::UsageError("--restrict needs --only LANG");
  }
  config.split = split.finish();
  config.threads = static_cast<unsigned>(threads);
  config.progress = isatty(STDERR_FILENO) != 0;
  config.trace_scores = !scores_path.empty();

  const lt::EvalRun run = lt::run_evaluation(config);
  if (config.trace_scores)
    lt::write_file_atomically(scores_path, lt::format_score_traces(run.traces));
  std::cout << (json ? lt::format_json_report(config, run)
                     : lt::format_text_report(config, run, max_confusions));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return lt::run_tool(kProgram, [&] { return evaluate(argc, argv); });
}
