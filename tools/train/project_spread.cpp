#include "train/project_spread.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quillon::lingomat::tools {

namespace {

// The group of every sample of one language, numbered from 0.
std::vector<std::size_t> group_of_samples(const std::vector<const SampleTokens*>& samples) {
  std::map<std::string, std::size_t> projects;
  for (const SampleTokens* sample : samples) projects.emplace(sample->project, projects.size());
  std::vector<std::size_t> groups;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    groups.push_back(projects.size() > 1 ? projects.at(samples[i]->project) : i);
  }
  return groups;
}

struct Spread {
  std::size_t last_group = SIZE_MAX;
  std::uint64_t groups = 0;
};

void prune_language(LanguageStatistics& statistics, const std::vector<const SampleTokens*>& samples,
                    std::uint64_t min_groups) {
  const std::vector<std::size_t> groups = group_of_samples(samples);
  // A language with fewer groups than asked keeps what all of them share.
  const std::size_t group_count =
      groups.empty() ? 0 : *std::max_element(groups.begin(), groups.end()) + 1;
  min_groups = std::min<std::uint64_t>(min_groups, group_count);
  // Visit the samples group by group, so that a token's group changes only between groups.
  std::vector<std::size_t> order(samples.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return groups[a] < groups[b]; });
  std::unordered_map<std::string_view, Spread> spread;
  for (const std::size_t index : order) {
    for (const auto& token : samples[index]->tokens) {
      Spread& seen = spread[token.first];
      if (seen.last_group != groups[index]) {
        seen.last_group = groups[index];
        ++seen.groups;
      }
    }
  }
  const std::size_t before = statistics.counts.size();
  for (auto it = statistics.counts.begin(); it != statistics.counts.end();) {
    const auto found = spread.find(it->first);
    const bool wide = found != spread.end() && found->second.groups >= min_groups;
    it = wide ? std::next(it) : statistics.counts.erase(it);
  }
  statistics.pruned_tokens += before - statistics.counts.size();
}

}  // namespace

void prune_by_project_spread(std::vector<LanguageStatistics>& statistics,
                             const std::vector<SampleTokens>& samples, std::uint64_t min_groups) {
  if (min_groups <= 1) return;
  std::vector<std::vector<const SampleTokens*>> by_language(statistics.size());
  for (const SampleTokens& sample : samples) by_language.at(sample.language).push_back(&sample);
  for (std::size_t language = 0; language < statistics.size(); ++language) {
    prune_language(statistics[language], by_language[language], min_groups);
  }
}

}  // namespace quillon::lingomat::tools
