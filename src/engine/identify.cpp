#include <algorithm>

#include "classify/text_scorer.h"
#include "engine/engine.h"

namespace quillon::lingomat {
namespace {

void append(std::vector<std::string>& list, std::vector<std::string>&& more) {
  list.insert(list.end(), std::make_move_iterator(more.begin()),
              std::make_move_iterator(more.end()));
}

std::vector<std::string> languages_for(const LanguageLookup& lookup, std::string_view key) {
  const auto found = lookup.find(key);
  return found == lookup.end() ? std::vector<std::string>() : found->second;
}

}  // namespace

// The name strategies: exact lookups in the tables built from the data file.
std::vector<std::string> Lingomat::identify_by_filename(std::string_view file_name) const {
  return languages_for(filenames_, file_name);
}

std::vector<std::string> Lingomat::identify_by_shebang(std::string_view code) const {
  return identify_by_interpreter(tokenizer_.shebang_view(code));
}

std::vector<std::string> Lingomat::identify_by_interpreter(std::string_view interpreter) const {
  return languages_for(interpreters_, interpreter);
}

std::string_view extension_of(std::string_view file_name) {
  // Only the last dot counts, wherever it is: "archive.tar.gz" is looked up as ".gz".
  const auto dot = file_name.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : file_name.substr(dot);
}

std::vector<std::string> Lingomat::identify_by_extension(std::string_view file_name) const {
  const std::string_view extension = extension_of(file_name);
  if (extension.empty()) return {};
  return languages_for(extnames_, extension);
}

bool Lingomat::apply_restrictions() const { return !opts_.restrictions.empty(); }

std::vector<std::string> Lingomat::default_restrictions() const {
  return apply_restrictions() ? opts_.restrictions : classifier_.languages();
}

Lingomat::FloorPolicy Lingomat::default_floors() const {
  const Floors floors{opts_.classifier.min_tokens, opts_.classifier.min_score_per_token};
  return FloorPolicy{floors, floors};
}

Ranking Lingomat::identify_by_classifier(std::string_view code,
                                         const std::vector<std::string>& candidates) const {
  return rank(code, candidates, default_floors().content_only, nullptr, nullptr);
}

Ranking Lingomat::rank(std::string_view code, const std::vector<std::string>& candidates,
                       const Floors& floors, Ranking* before_floor,
                       std::uint64_t* token_count) const {
  // No candidates and no restrictions: every language, without copying their names first.
  const std::vector<std::string>* names = &candidates;
  if (candidates.empty()) names = apply_restrictions() ? &opts_.restrictions : nullptr;
  TextScorer scorer(classifier_, names);
  tokenizer_.extract_tokens(code, scorer);
  if (token_count != nullptr) *token_count = scorer.count();
  // The classifier applies the options' minimum itself; a caller's higher one is checked here.
  if (floors.min_tokens != 0 && scorer.count() < floors.min_tokens) return Ranking();
  Ranking ranking = classifier_.classify(scorer);
  if (before_floor != nullptr) *before_floor = ranking;

  const double floor = floors.min_score_per_token;
  if (floor != 0.0) {  // -0.0 compares equal too, and also switches the floor off
    const double count = static_cast<double>(scorer.count());
    // A NaN score per token compares false and is kept.
    ranking.erase(std::remove_if(ranking.begin(), ranking.end(),
                                 [&](const auto& entry) { return floor > entry.second / count; }),
                  ranking.end());
  }
  return ranking;
}

void Lingomat::restrict(std::vector<std::string>& names) const {
  if (!apply_restrictions()) return;
  const auto& allowed = opts_.restrictions;
  names.erase(std::remove_if(names.begin(), names.end(),
                             [&](const std::string& name) {
                               return !std::binary_search(allowed.begin(), allowed.end(), name);
                             }),
              names.end());
}

std::vector<std::string> Lingomat::candidates(std::string_view file_name,
                                              std::string_view code) const {
  std::vector<std::string> names = identify_by_filename(file_name);
  append(names, identify_by_shebang(code));
  append(names, identify_by_extension(file_name));
  restrict(names);
  return names;
}

std::string Lingomat::identify(std::string_view file_name, std::string_view code) const {
  return decide(file_name, code, default_floors(), nullptr);
}

Lingomat::Trace Lingomat::trace(std::string_view file_name, std::string_view code) const {
  return trace(file_name, code, default_floors());
}

std::string Lingomat::identify(std::string_view file_name, std::string_view code,
                               const FloorPolicy& floors) const {
  return decide(file_name, code, floors, nullptr);
}

Lingomat::Trace Lingomat::trace(std::string_view file_name, std::string_view code,
                                const FloorPolicy& floors) const {
  Trace trace;
  decide(file_name, code, floors, &trace);
  return trace;
}

std::string Lingomat::decide(std::string_view file_name, std::string_view code,
                             const FloorPolicy& floors, Trace* trace) const {
  std::vector<std::string> candidates = identify_by_filename(file_name);
  // A view: the "#!" line may be as long as the text.
  const std::string_view interpreter = tokenizer_.shebang_view(code);
  std::vector<std::string> by_interpreter = identify_by_interpreter(interpreter);
  std::vector<std::string> by_extension = identify_by_extension(file_name);
  if (trace != nullptr) {
    trace->by_filename = candidates;
    trace->interpreter = std::string(interpreter);
    trace->by_interpreter = by_interpreter;
    trace->extension = std::string(extension_of(file_name));
    trace->by_extension = by_extension;
  }
  append(candidates, std::move(by_interpreter));
  append(candidates, std::move(by_extension));
  restrict(candidates);

  // One candidate, however often listed, is the answer whatever the classifier says; only a
  // trace asks the classifier anyway.
  const bool only_candidate =
      !candidates.empty() &&
      std::all_of(candidates.begin(), candidates.end(),
                  [&](const std::string& name) { return name == candidates.front(); });
  if (only_candidate && trace == nullptr) return candidates.front();

  const Floors& applied = candidates.empty() ? floors.content_only : floors.among_candidates;
  Ranking kept = rank(code, candidates, applied, trace != nullptr ? &trace->ranking : nullptr,
                      trace != nullptr ? &trace->token_count : nullptr);
  std::string answer;
  Trace::Reason reason = Trace::Reason::kNone;
  if (only_candidate) {
    answer = candidates.front();
    reason = Trace::Reason::kOnlyCandidate;
  } else if (!kept.empty()) {
    answer = kept.front().first;
    reason = Trace::Reason::kClassifier;
  } else if (!candidates.empty()) {
    // The classifier is silent: file name beats interpreter, interpreter beats extension.
    answer = candidates.front();
    reason = Trace::Reason::kFirstCandidate;
  }
  if (trace != nullptr) {
    trace->candidates = std::move(candidates);
    trace->kept = std::move(kept);
    trace->floors = applied;
    trace->answer = answer;
    trace->reason = reason;
  }
  return answer;
}

}  // namespace quillon::lingomat
