#pragma once

#include <map>
#include <string>
#include <vector>

#include "classify/classifier.h"
#include "tokenize/tokenizer.h"

namespace quillon::lingomat {

using LanguageLookup = std::map<std::string, std::vector<std::string>>;

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

  // The language of `code`, or an empty string when nothing was identified.
  std::string identify(const std::string& file_name, const std::string& code) const;

  std::vector<std::string> identify_by_filename(const std::string& file_name) const;
  std::vector<std::string> identify_by_shebang(const std::string& code) const;
  std::vector<std::string> identify_by_extension(const std::string& file_name) const;
  Ranking identify_by_classifier(const std::string& code,
                                 const std::vector<std::string>& candidates) const;

  bool apply_restrictions() const;
  std::vector<std::string> default_restrictions() const;

  const Opts& opts() const { return opts_; }
  const Tokenizer& tokenizer() const { return tokenizer_; }
  const Classifier& classifier() const { return classifier_; }

 private:
  Opts opts_;
  LanguageLookup filenames_;
  LanguageLookup extnames_;
  LanguageLookup interpreters_;
  Tokenizer tokenizer_;
  Classifier classifier_;
};

}  // namespace quillon::lingomat
