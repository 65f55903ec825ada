#include "train/trainer.h"

#include <iomanip>
#include <optional>
#include <sstream>

#include "check/data_file_check.h"
#include "common/definitions.h"
#include "common/file_io.h"
#include "common/progress_line.h"
#include "common/samples_tree.h"
#include "train/class_prior.h"
#include "train/data_file_writer.h"
#include "train/discriminative.h"
#include "train/sample_selection.h"
#include "train/token_statistics.h"

namespace quillon::lingomat::tools {

namespace {

std::string decimal(double value) {
  std::ostringstream text;
  text << std::setprecision(6) << value;
  return text.str();
}

}  // namespace

TrainSummary run_training(const TrainConfig& config) {
  const LanguageDefinitions definitions = read_definitions_file(config.definitions_path);
  const TrainingSet set =
      select_training_set(definitions, walk_samples(config.samples_root), config);

  // Read first, so that a bad table fails before the long part.
  std::optional<LanguageShares> shares;
  if (!config.prior_shares_path.empty()) {
    shares = parse_language_shares(read_file(config.prior_shares_path, "language shares file"),
                                   config.prior_shares_path);
  }

  const Tokenizer tokenizer(config.tokenizer);
  // Read once: the counts and the re-estimation both use these.
  const std::vector<SampleTokens> samples =
      read_sample_tokens(set.files, tokenizer, config.threads, config.max_repeats,
                         config.progress ? terminal_progress("tokenizing") : ProgressFn());
  std::vector<LanguageStatistics> statistics = tally_samples(samples, set.files.size());

  // Long singletons are dropped only after the re-estimation: while it runs they
  // still take their share of each misranked sample's correction, which measured
  // better on held-out projects than re-estimating without them.
  std::vector<std::vector<std::string>> singletons;
  for (LanguageStatistics& language : statistics) {
    prune_tokens(language, config.min_count, config.max_tokens_per_language);
    singletons.push_back(long_singletons(language, config.max_singleton_bytes));
  }

  TrainSummary summary;
  DiscriminativeRecord record;
  if (config.discriminative.epochs > 0) {
    DiscriminativeReport report;
    statistics = train_discriminatively(statistics, config.calibration, samples,
                                        config.discriminative, report);
    summary.misranked = report.errors;
    summary.scored_samples = report.samples;
    record = {config.discriminative.epochs, decimal(config.discriminative.rate),
              decimal(config.discriminative.margin), 0, ""};
    if (config.discriminative.loss == DiscriminativeConfig::Loss::kLogistic) {
      record.l2 = decimal(config.discriminative.l2);
    }
  }

  summary.languages = set.languages.size();
  for (std::size_t i = 0; i < statistics.size(); ++i) {
    LanguageStatistics& language = statistics[i];
    drop_tokens(language, singletons[i]);
    if (language.samples == 0) {
      summary.names_only.push_back(set.languages[i].name);
      continue;
    }
    ++summary.trained_languages;
    summary.samples += language.samples;
    summary.distinct_tokens += language.counts.size();
    summary.pruned_tokens += language.pruned_tokens;
    summary.invalid_tokens += language.invalid_tokens;
  }
  // The occurrences counted; re-estimated statistics hold an encoding total instead.
  for (const SampleTokens& sample : samples) summary.tokens += sample.counted;
  record.counted_tokens = summary.tokens;

  // Set last: the re-estimation leaves each sample's project out of its own
  // language's prior, which needs the true sample counts.
  if (shares) weight_priors_by_shares(set.languages, statistics, *shares);

  const std::string json = render_data_file(set.languages, statistics, config.calibration, record);
  require_valid_data_file(json, config.output_path);
  write_file_atomically(config.output_path, json);
  summary.output_bytes = json.size();
  return summary;
}

}  // namespace quillon::lingomat::tools
