// lingomat-train: builds a data file from a definitions file and a samples tree.
#include <unistd.h>

#include <iostream>

#include "base/option_defaults.h"
#include "common/options.h"
#include "common/parallel.h"
#include "common/tool_error.h"
#include "common/tool_main.h"
#include "train/trainer.h"

namespace lm = quillon::lingomat;
namespace lt = quillon::lingomat::tools;

namespace {

constexpr const char* kProgram = "lingomat-train";

int train(int argc, char** argv) {
  lt::TrainConfig config;
  std::uint64_t threads = lt::default_thread_count();
  bool whole = false;
  lt::SplitOptions split;

  lt::OptionParser parser(kProgram,
                          "Builds the engine's data file.\n"
                          "\n"
                          "Reads a language definitions file and a samples folder\n"
                          "(<samples>/<Language>/<project>/.../<file>) and writes the data file "
                          "the\nengine loads.");
  parser.add_positional("DEFINITIONS", "The language definitions file.", &config.definitions_path);
  parser.add_positional("SAMPLES", "The samples folder, one folder per language.",
                        &config.samples_root);
  parser.add_string("output", "FILE", "Where to write the data file (required).",
                    &config.output_path);
  parser.add_alias('o', "output");
  parser.add_uint("max-bytes", "N",
                  "Tokens start only in the first N bytes of a sample, as at identification "
                  "(default " +
                      std::to_string(lm::defaults::kMaxBytes) + "; 0: no limit).",
                  &config.tokenizer.max_bytes);
  parser.add_uint("max-tokens", "N",
                  "At most N tokens per sample, as at identification (default " +
                      std::to_string(lm::defaults::kMaxTokens) + "; 0: no limit).",
                  &config.tokenizer.max_tokens);
  parser.add_flag("whole", "Tokenize whole samples: --max-bytes 0 --max-tokens 0.", &whole);
  parser.add_uint("max-samples", "N",
                  "At most N samples per language, a fixed choice spread over the projects "
                  "(default: all).",
                  &config.max_samples);
  parser.add_uint("max-repeats", "N",
                  "Count a token at most N times per sample; 1 counts the samples a token occurs "
                  "in (default: every occurrence).",
                  &config.max_repeats);
  parser.add_uint("min-count", "N",
                  "Drop a language's tokens seen fewer than N times in it (default 1: keep all).",
                  &config.min_count, 1);
  parser.add_uint("max-singleton-bytes", "N",
                  "Drop a language's tokens seen only once that are longer than N bytes: one "
                  "file's names and strings, which other projects' files rarely meet "
                  "(default 0: keep them).",
                  &config.max_singleton_bytes);
  parser.add_uint("max-tokens-per-language", "N",
                  "Keep at most the N most frequent distinct tokens per language (default: all).",
                  &config.max_tokens_per_language);
  parser.add_uint("count-scale", "K",
                  "Multiply every token count by K and divide tokens_total by K: every score per "
                  "token rises by ln K against the engine's floor, no ranking changes (default 1).",
                  &config.calibration.count_scale, 1, 2147483647);
  parser.add_uint("tokens-total", "N",
                  "The tokens_total written before scaling, which sets the cost of a token a "
                  "language never saw to ln(1/N) (default: the number of tokens counted).",
                  &config.calibration.tokens_total, 1, 2147483647);
  parser.add_uint("discriminative-epochs", "N",
                  "Then adjust the weights for N passes of an averaged perceptron that ranks "
                  "each sample with its own project left out (default 0: counts as counted).",
                  &config.discriminative.epochs, 0, 1000);
  parser.add_double("learning-rate", "R",
                    "How much a misranked sample moves the weights, spread over its token "
                    "occurrences (default 0.5).",
                    &config.discriminative.rate);
  parser.add_double("margin", "M",
                    "Adjust also when the sample's language leads by M or less (default 0).",
                    &config.discriminative.margin);
  std::string loss = "perceptron";
  parser.add_string("discriminative-loss", "LOSS",
                    "perceptron: move the weights for misranked samples only; logistic: for "
                    "every sample, by the softmax cross-entropy's gradient (default perceptron).",
                    &loss);
  parser.add_double("l2", "F",
                    "With the logistic loss, shrink every weight change by the fraction F after "
                    "each epoch (default 0).",
                    &config.discriminative.l2);
  parser.add_string("prior-shares", "FILE",
                    "Set each language's prior from its share of public code, lines "
                    "'SHARE LANGUAGE' in percent; unlisted languages get the smallest share "
                    "(default: from the sample counts, nearly balanced).",
                    &config.prior_shares_path);
  parser.add_strings("only", "LANG",
                     "Build the data file for this language only; repeat for several.",
                     &config.only);
  split.add_to(parser);
  parser.add_uint("jobs", "N", "Tokenizing threads (default: one per core).", &threads, 1, 1024);
  parser.add_alias('j', "jobs");

  if (!parser.parse(argc, argv)) {
    std::cout << parser.exit_text();
    return 0;
  }
  if (config.output_path.empty()) throw lt::UsageError("missing --output FILE");
  if (whole) {
    if (parser.given("max-bytes") || parser.given("max-tokens")) {
      throw lt::UsageError("--whole cannot be combined with --max-bytes or --max-tokens");
    }
    config.tokenizer = {0, 0};
  }
  const lt::DiscriminativeConfig& discriminative = config.discriminative;
  if (!(discriminative.rate > 0 && discriminative.rate <= 1000)) {
    throw lt::UsageError("--learning-rate must be above 0 and at most 1000");
  }
  if (!(discriminative.margin >= 0 && discriminative.margin <= 1e6)) {
    throw lt::UsageError("--margin must be from 0 to 1000000");
  }
  if (discriminative.epochs == 0 && (parser.given("learning-rate") || parser.given("margin"))) {
    throw lt::UsageError("--learning-rate and --margin need --discriminative-epochs");
  }
  if (loss == "logistic") {
    config.discriminative.loss = lt::DiscriminativeConfig::Loss::kLogistic;
  } else if (loss != "perceptron") {
    throw lt::UsageError("--discriminative-loss must be perceptron or logistic");
  }
  if (!(discriminative.l2 >= 0 && discriminative.l2 < 1)) {
    throw lt::UsageError("--l2 must be from 0 to below 1");
  }
  if (parser.given("l2") && loss != "logistic") {
    throw lt::UsageError("--l2 needs --discriminative-loss logistic");
  }
  if (parser.given("margin") && loss == "logistic") {
    throw lt::UsageError("--margin is for the perceptron; the logistic loss has no margin");
  }
  config.split = split.finish();
  config.threads = static_cast<unsigned>(threads);
  config.progress = isatty(STDERR_FILENO) != 0;

  const lt::TrainSummary summary = lt::run_training(config);
  std::cout << "wrote " << config.output_path << " (" << summary.output_bytes
            << " bytes): " << summary.languages << " languages, " << summary.trained_languages
            << " with samples\n"
            << summary.samples << " samples, " << summary.tokens << " tokens, "
            << summary.distinct_tokens << " distinct tokens kept";
  if (summary.pruned_tokens > 0) std::cout << ", " << summary.pruned_tokens << " pruned";
  std::cout << "\n";
  if (summary.invalid_tokens > 0) {
    std::cout << summary.invalid_tokens << " token occurrences dropped for not being UTF-8\n";
  }
  if (!summary.misranked.empty()) {
    std::cout << "misranked with their project left out, of " << summary.scored_samples
              << " samples: " << summary.misranked.front() << " before adjusting";
    for (std::size_t epoch = 1; epoch < summary.misranked.size(); ++epoch) {
      std::cout << ", " << summary.misranked[epoch] << " in epoch " << epoch;
    }
    std::cout << "\n";
  }
  if (!summary.names_only.empty()) {
    std::cout << summary.names_only.size() << " without samples (names only): ";
    for (std::size_t i = 0; i < summary.names_only.size(); ++i) {
      std::cout << (i == 0 ? "" : ", ") << summary.names_only[i];
    }
    std::cout << "\n";
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  return lt::run_tool(kProgram, [&] { return train(argc, argv); });
}
