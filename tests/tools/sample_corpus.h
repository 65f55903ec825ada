#pragma once

#include <string>
#include <vector>

namespace quillon::lingomat::test_support {

struct CorpusFile {
  std::string language;
  std::string project;
  std::string relative_path;  // below the language folder, project first
  std::string content;
};

// A small realistic corpus: four languages, three projects each, two files
// per project, every file long enough for the classifier to answer.
const std::vector<CorpusFile>& sample_corpus();

// Definitions for the corpus's languages plus one language without samples.
std::string sample_definitions();

// Writes sample_corpus() below `root` in the samples layout.
void write_sample_corpus(const std::string& root);

}  // namespace quillon::lingomat::test_support
