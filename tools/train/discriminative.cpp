#include "train/discriminative.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <unordered_map>

namespace quillon::lingomat::tools {

namespace {

constexpr std::uint64_t kMaxCount = std::numeric_limits<std::int32_t>::max();
// The smallest weight a count of 1 over the largest total can carry.
const double kLowestWeight = -std::log(static_cast<double>(kMaxCount));
// The smallest weight of a language is written with a count of at least this much,
// so that rounding moves no weight by more than about 1/200: finer resolution
// changed no held-out answer and cost a digit per entry.
constexpr double kResolution = 100.0;

// A sample as token ids, with the group whose counts are left out when it is scored.
struct EncodedSample {
  std::size_t language = 0;
  std::size_t group = 0;
  std::vector<std::pair<std::uint32_t, double>> tokens;  // id ascending, occurrences
};

// The counts a group of samples (one project, or one file) adds to its language.
struct Group {
  std::size_t language = 0;
  std::uint64_t samples = 0;
  std::uint64_t counted = 0;
  std::unordered_map<std::uint32_t, std::uint64_t> counts;
};

class PerceptronModel {
 public:
  PerceptronModel(const std::vector<LanguageStatistics>& statistics, const Calibration& calibration)
      : statistics_(statistics), scale_(static_cast<double>(calibration.count_scale)) {
    std::uint64_t counted = 0;
    for (const LanguageStatistics& language : statistics) {
      counted += language.tokens;
      samples_total_ += language.samples;
    }
    const std::uint64_t scale = calibration.count_scale;
    const std::uint64_t unseen_total =
        calibration.tokens_total > 0 ? calibration.tokens_total : counted;
    // As the data file writes it, so that training sees the engine's unseen weight.
    unseen_ = -std::log(
        static_cast<double>(std::max<std::uint64_t>(1, (unseen_total + scale / 2) / scale)));

    for (std::size_t language = 0; language < statistics.size(); ++language) {
      const LanguageStatistics& stats = statistics[language];
      prior_.push_back(stats.samples == 0 ? -std::numeric_limits<double>::infinity()
                                          : std::log(double(stats.samples) / samples_total_));
      for (const auto& [token, count] : stats.counts) {
        const auto [it, added] = ids_.emplace(token, static_cast<std::uint32_t>(rows_.size()));
        if (added) rows_.emplace_back();
        rows_[it->second].push_back(static_cast<std::uint32_t>(pairs_.size()));
        pairs_.push_back({language, it->second, count, base_weight(count, stats.tokens), 0, 0});
      }
    }
  }

  // Samples as ids, grouped by project where their language has several.
  void encode(const std::vector<SampleTokens>& samples) {
    std::map<std::size_t, std::map<std::string, std::size_t>> projects;
    for (const SampleTokens& sample : samples) projects[sample.language][sample.project] = 0;
    std::map<std::pair<std::size_t, std::string>, std::size_t> group_of_project;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const SampleTokens& sample = samples[i];
      EncodedSample encoded;
      encoded.language = sample.language;
      if (projects[sample.language].size() > 1) {
        const auto key = std::make_pair(sample.language, sample.project);
        const auto found = group_of_project.find(key);
        if (found == group_of_project.end()) {
          encoded.group = groups_.size();
          group_of_project.emplace(key, groups_.size());
          groups_.push_back({sample.language, 0, 0, {}});
        } else {
          encoded.group = found->second;
        }
      } else {
        encoded.group = groups_.size();
        groups_.push_back({sample.language, 0, 0, {}});
      }
      Group& group = groups_[encoded.group];
      ++group.samples;
      group.counted += sample.counted;
      for (const auto& [token, count] : sample.tokens) {
        const auto id = ids_.find(token);
        // A token no language kept costs every language the same.
        if (id == ids_.end()) continue;
        encoded.tokens.emplace_back(id->second, static_cast<double>(count));
        group.counts[id->second] += count;
      }
      std::sort(encoded.tokens.begin(), encoded.tokens.end());
      samples_.push_back(std::move(encoded));
    }
  }

  // One pass over the samples in a fixed pseudo-random order; returns the misranked.
  std::size_t epoch(std::uint64_t number, const DiscriminativeConfig& config, bool update) {
    std::vector<std::size_t> order(samples_.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::mt19937_64 random(0x6c696e676f6d6174ULL + number);
    for (std::size_t i = order.size(); i > 1; --i) std::swap(order[i - 1], order[random() % i]);

    std::size_t errors = 0;
    std::vector<double> scores(prior_.size());
    for (const std::size_t index : order) {
      const EncodedSample& sample = samples_[index];
      if (!score(sample, scores)) continue;
      const std::size_t own = sample.language;
      std::size_t rival = own == 0 ? 1 : 0;
      for (std::size_t language = 0; language < scores.size(); ++language) {
        if (language != own && scores[language] > scores[rival]) rival = language;
      }
      if (scores[own] <= scores[rival]) ++errors;
      if (!update) continue;
      if (config.loss == DiscriminativeConfig::Loss::kLogistic) {
        adjust_logistic(sample, scores, config.rate);
      } else if (scores[own] - scores[rival] <= config.margin) {
        adjust(sample, own, rival, config.rate);
      }
      ++step_;
    }
    if (update && config.loss == DiscriminativeConfig::Loss::kLogistic && config.l2 > 0) {
      shrink(config.l2);
    }
    return errors;
  }

  std::size_t scorable() const {
    std::size_t count = 0;
    std::vector<double> scores(prior_.size());
    for (const EncodedSample& sample : samples_) count += score(sample, scores) ? 1 : 0;
    return count;
  }

  // The averaged weights encoded as counts over per-language totals. A weight stays
  // at most ln(count scale), as a scaled count stays at most the scale times its total.
  std::vector<LanguageStatistics> encoded() const {
    std::vector<double> lowest(statistics_.size(), 0.0);
    std::vector<double> highest(statistics_.size(), kLowestWeight);
    std::vector<double> weights(pairs_.size());
    for (std::size_t p = 0; p < pairs_.size(); ++p) {
      const Pair& pair = pairs_[p];
      const double averaged =
          pair.delta - (step_ == 0 ? 0.0 : pair.weighted_changes / double(step_));
      weights[p] = std::clamp(pair.base + averaged, kLowestWeight, std::log(scale_));
      lowest[pair.language] = std::min(lowest[pair.language], weights[p]);
      highest[pair.language] = std::max(highest[pair.language], weights[p]);
    }
    std::vector<LanguageStatistics> result(statistics_.size());
    for (std::size_t language = 0; language < statistics_.size(); ++language) {
      result[language].samples = statistics_[language].samples;
      result[language].invalid_tokens = statistics_[language].invalid_tokens;
      result[language].pruned_tokens = statistics_[language].pruned_tokens;
      if (statistics_[language].samples > 0) {
        result[language].tokens =
            total_for_weights(lowest[language], highest[language], kResolution);
      }
    }
    std::vector<std::string> names(rows_.size());
    for (const auto& [token, id] : ids_) names[id] = token;
    for (std::size_t p = 0; p < pairs_.size(); ++p) {
      LanguageStatistics& language = result[pairs_[p].language];
      language.counts[names[pairs_[p].token]] = count_for_weight(weights[p], language.tokens);
    }
    return result;
  }

 private:
  struct Pair {
    std::size_t language;
    std::uint32_t token;
    std::uint64_t count;      // as counted, before scaling
    double base;              // the naive-Bayes weight
    double delta;             // the perceptron's change
    double weighted_changes;  // each change times the step it was made at, for averaging
  };

  double base_weight(std::uint64_t count, std::uint64_t language_tokens) const {
    return std::log(scale_ * double(count) / double(language_tokens));
  }

  // The scores of every language for `sample`; its own language's with its group's
  // counts left out. False when that leaves the language without samples.
  bool score(const EncodedSample& sample, std::vector<double>& scores) const {
    const Group& group = groups_[sample.group];
    const LanguageStatistics& own = statistics_[sample.language];
    if (own.samples <= group.samples || own.tokens <= group.counted) return false;
    double occurrences = 0;
    for (const auto& token : sample.tokens) occurrences += token.second;
    for (std::size_t language = 0; language < scores.size(); ++language) {
      scores[language] = prior_[language] + occurrences * unseen_;
    }
    scores[sample.language] =
        std::log(double(own.samples - group.samples) / double(samples_total_ - group.samples)) +
        occurrences * unseen_;
    const double own_tokens = double(own.tokens - group.counted);
    for (const auto& [token, occurs] : sample.tokens) {
      for (const std::uint32_t p : rows_[token]) {
        const Pair& pair = pairs_[p];
        if (pair.language != sample.language) {
          scores[pair.language] += occurs * (pair.base + pair.delta - unseen_);
          continue;
        }
        const std::uint64_t left = pair.count - group.counts.at(token);
        if (left == 0) continue;  // only the left-out group saw it: unseen
        const double weight = std::log(scale_ * double(left) / own_tokens) + pair.delta;
        scores[pair.language] += occurs * (weight - unseen_);
      }
    }
    return true;
  }

  // The rate spread over the sample's tokens, so that a long file moves the weights no more
  // than a short one.
  static double spread(const EncodedSample& sample, double rate) {
    double occurrences = 0;
    for (const auto& token : sample.tokens) occurrences += token.second;
    return rate / std::max(1.0, occurrences);
  }

  // Moves a weight, and keeps the sum of its changes weighted by the step for the average.
  void move(Pair& pair, double change) {
    pair.delta += change;
    pair.weighted_changes += double(step_) * change;
  }

  void adjust(const EncodedSample& sample, std::size_t own, std::size_t rival, double rate) {
    const Group& group = groups_[sample.group];
    rate = spread(sample, rate);
    for (const auto& [token, occurs] : sample.tokens) {
      for (const std::uint32_t p : rows_[token]) {
        Pair& pair = pairs_[p];
        double change = 0;
        if (pair.language == own && pair.count > group.counts.at(token)) {
          change = rate * occurs;
        } else if (pair.language == rival) {
          change = -rate * occurs;
        }
        move(pair, change);
      }
    }
  }

  // One step down the gradient of -ln softmax(scores)[own]: each language's weights for
  // the sample's tokens move by (y - p) times their occurrences, p its softmax share and
  // y 1 for the sample's own language. Spread over the occurrences like adjust().
  void adjust_logistic(const EncodedSample& sample, std::vector<double>& scores, double rate) {
    const double top = *std::max_element(scores.begin(), scores.end());
    double sum = 0;
    for (double& score : scores) sum += score = std::exp(score - top);  // -inf gives 0
    for (double& score : scores) score /= sum;
    scores[sample.language] -= 1.0;  // now p - y
    const Group& group = groups_[sample.group];
    rate = spread(sample, rate);
    for (const auto& [token, occurs] : sample.tokens) {
      for (const std::uint32_t p : rows_[token]) {
        Pair& pair = pairs_[p];
        const double gradient = scores[pair.language];
        // Shares this small move no weight by a representable amount; skipping them
        // keeps an epoch near the perceptron's cost.
        if (std::abs(gradient) < 1e-12) continue;
        // The left-out group's own tokens scored as unseen: their weights played no part.
        if (pair.language == sample.language && pair.count <= group.counts.at(token)) continue;
        const double change = -rate * occurs * gradient;
        move(pair, change);
      }
    }
  }

  void shrink(double fraction) {
    for (Pair& pair : pairs_) move(pair, -fraction * pair.delta);
  }

  const std::vector<LanguageStatistics>& statistics_;
  double scale_;
  double unseen_ = 0;
  std::uint64_t samples_total_ = 0;
  std::vector<double> prior_;
  std::unordered_map<std::string, std::uint32_t> ids_;
  std::vector<std::vector<std::uint32_t>> rows_;  // per token id: its pairs, languages ascending
  std::vector<Pair> pairs_;
  std::vector<Group> groups_;
  std::vector<EncodedSample> samples_;
  std::uint64_t step_ = 0;
};

}  // namespace

std::uint64_t total_for_weights(double lowest, double highest, double resolution) {
  const double wanted = std::ceil(resolution * std::exp(-lowest));
  const double room = std::floor(double(kMaxCount) * std::exp(-std::max(highest, lowest)));
  const double total = std::min({wanted, room, double(kMaxCount)});
  return total < 1 ? 1 : static_cast<std::uint64_t>(total);
}

std::uint64_t count_for_weight(double weight, std::uint64_t total) {
  const double count = std::round(std::exp(weight) * double(total));
  if (!(count < double(kMaxCount))) return kMaxCount;
  return count < 1 ? 1 : static_cast<std::uint64_t>(count);
}

std::vector<LanguageStatistics> train_discriminatively(
    const std::vector<LanguageStatistics>& statistics, const Calibration& calibration,
    const std::vector<SampleTokens>& samples, const DiscriminativeConfig& config,
    DiscriminativeReport& report) {
  PerceptronModel model(statistics, calibration);
  model.encode(samples);
  report.samples = model.scorable();
  report.errors.push_back(model.epoch(0, config, false));
  for (std::uint64_t epoch = 1; epoch <= config.epochs; ++epoch) {
    report.errors.push_back(model.epoch(epoch, config, true));
  }
  return model.encoded();
}

}  // namespace quillon::lingomat::tools
