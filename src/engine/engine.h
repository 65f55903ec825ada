#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/option_defaults.h"
#include "base/status.h"
#include "classify/classifier.h"
#include "tokenize/tokenizer.h"

namespace quillon::lingomat {

using LanguageLookup = std::map<std::string, std::vector<std::string>, std::less<>>;

// The part of a file name that the extension lookup uses: from its last '.', dot included;
// empty when there is none.
std::string_view extension_of(std::string_view file_name);

// Hands the pages the allocator keeps after large frees back to the system.
void return_freed_memory();

// The identification engine: name lookups from the data file, a tokenizer and
// a classifier. Never modified after construction, so calls may run concurrently.
class Lingomat {
 public:
  struct Opts {
    Tokenizer::Opts tokenizer;
    Classifier::Opts classifier;
    std::vector<std::string> restrictions;  // empty: every language allowed
  };

  // The classifier's two floors: it stays silent below `min_tokens` tokens (0: no minimum),
  // and a language scoring below `min_score_per_token` per token is dropped (exactly 0.0: no
  // such floor).
  struct Floors {
    std::uint64_t min_tokens = defaults::kMinTokens;
    double min_score_per_token = defaults::kMinScorePerToken;
  };
  // The floors for each kind of classifier question: ranking the candidates that the file's
  // name or interpreter gave, or naming a text from its content alone. The options' own
  // min_tokens still silences the classifier first, so lower ones need an engine created
  // with a lower one.
  struct FloorPolicy {
    Floors among_candidates;
    Floors content_only;
  };

  // Everything one identification went through, in the order the pipeline met it.
  struct Trace {
    // Why the answer is what it is.
    enum class Reason {
      kNone,            // no candidate and no classifier answer
      kOnlyCandidate,   // one language among the candidates, however often listed
      kClassifier,      // the best language of the classifier's ranking after the floor
      kFirstCandidate,  // the classifier was silent: the first candidate
    };

    std::vector<std::string> by_filename;
    std::string interpreter;  // named on a leading "#!" line; empty when none
    std::vector<std::string> by_interpreter;
    std::string extension;  // from the last '.' of the file name; empty when none
    std::vector<std::string> by_extension;
    std::vector<std::string> candidates;  // all of the above, in that order, that are allowed
    std::uint64_t token_count = 0;
    Ranking ranking;  // the classifier's ranking before the per-token floor
    Ranking kept;     // what the floor kept
    Floors floors;    // the floors that applied
    std::string answer;
    Reason reason = Reason::kNone;
  };

  explicit Lingomat(const Opts& opts);

  // The language of `code`, or an empty string when nothing was identified. Both are read
  // where they lie; neither is copied.
  std::string identify(std::string_view file_name, std::string_view code) const;
  // The same identification, recorded step by step; its answer is identify()'s. The
  // classifier also runs when a single candidate makes it moot, so its view is recorded too.
  Trace trace(std::string_view file_name, std::string_view code) const;
  // The same two with floors chosen per kind of question instead of the options' floors.
  std::string identify(std::string_view file_name, std::string_view code,
                       const FloorPolicy& floors) const;
  Trace trace(std::string_view file_name, std::string_view code, const FloorPolicy& floors) const;
  // The options' floors, for every kind of question.
  FloorPolicy default_floors() const;

  // The candidates the name strategies give, in pipeline order, less those the restrictions
  // exclude: empty when the classifier would answer from content alone.
  std::vector<std::string> candidates(std::string_view file_name, std::string_view code) const;

  std::vector<std::string> identify_by_filename(std::string_view file_name) const;
  std::vector<std::string> identify_by_shebang(std::string_view code) const;
  std::vector<std::string> identify_by_extension(std::string_view file_name) const;
  Ranking identify_by_classifier(std::string_view code,
                                 const std::vector<std::string>& candidates) const;

  bool apply_restrictions() const;
  std::vector<std::string> default_restrictions() const;

  const Opts& opts() const { return opts_; }
  const Tokenizer& tokenizer() const { return tokenizer_; }
  const Classifier& classifier() const { return classifier_; }
  // The three lookups as the data file lists them, for hosts that describe the languages.
  const LanguageNames& filenames_by_language() const { return filename_lists_; }
  const LanguageNames& extnames_by_language() const { return extname_lists_; }
  const LanguageNames& interpreters_by_language() const { return interpreter_lists_; }

 private:
  // Builds everything from the one read of the data file.
  Lingomat(const Opts& opts, DataFileSections&& sections);

  // The pipeline behind identify() and trace(); records into `trace` when it is not null.
  std::string decide(std::string_view file_name, std::string_view code, const FloorPolicy& floors,
                     Trace* trace) const;
  std::vector<std::string> identify_by_interpreter(std::string_view interpreter) const;
  // Removes the names the restrictions exclude, keeping the order of the others.
  void restrict(std::vector<std::string>& names) const;
  // The classifier strategy; also hands out the ranking before the floor and the token
  // count when asked for them.
  Ranking rank(std::string_view code, const std::vector<std::string>& candidates,
               const Floors& floors, Ranking* before_floor, std::uint64_t* token_count) const;

  Opts opts_;
  LanguageLookup filenames_;
  LanguageLookup extnames_;
  LanguageLookup interpreters_;
  LanguageNames filename_lists_;
  LanguageNames extname_lists_;
  LanguageNames interpreter_lists_;
  Tokenizer tokenizer_;
  Classifier classifier_;
};

// An engine, or the reason there is none.
struct EngineCreation {
  std::unique_ptr<Lingomat> engine;  // null when creation failed
  int status = LINGOMAT_SUCCESS;
  // Why creation failed, stated once: for a data file that cannot be read the bare reason
  // ("No such file or directory", "larger than N bytes"), else the error's own message.
  std::string reason;
};

// The way every caller builds an engine: never throws, and reports a failure as the status
// code the C interface gives for it together with its reason.
EngineCreation create_engine(const Lingomat::Opts& opts) noexcept;

// The three name lookups and the languages with statistics, as the data file lists them,
// for callers that describe the languages without building an engine.
struct DataFileNames {
  LanguageNames filenames;
  LanguageNames extnames;
  LanguageNames interpreters;
  std::vector<std::string> languages;
};
DataFileNames read_data_file_names(const std::string& data_file);

}  // namespace quillon::lingomat
