#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "classify/classifier.h"
#include "tokenize/tokenizer.h"

namespace quillon::lingomat {

using LanguageLookup = std::map<std::string, std::vector<std::string>, std::less<>>;

// The identification engine: name lookups from the data file, a tokenizer and
// a classifier. Never modified after construction, so calls may run concurrently.
class Lingomat {
 public:
  struct Opts {
    Tokenizer::Opts tokenizer;
    Classifier::Opts classifier;
    std::vector<std::string> restrictions;  // empty: every language allowed
  };

  explicit Lingomat(const Opts& opts);

  // The language of `code`, or an empty string when nothing was identified. Both are read
  // where they lie; neither is copied.
  std::string identify(std::string_view file_name, std::string_view code) const;

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

 private:
  // Builds everything from the one parse of the data file.
  Lingomat(const Opts& opts, const JsonValue& document);

  Opts opts_;
  LanguageLookup filenames_;
  LanguageLookup extnames_;
  LanguageLookup interpreters_;
  Tokenizer tokenizer_;
  Classifier classifier_;
};

}  // namespace quillon::lingomat
