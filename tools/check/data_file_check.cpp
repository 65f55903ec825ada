#include "check/data_file_check.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>

#include "base/data_file_keys.h"
#include "check/json_outline.h"
#include "common/tool_error.h"
#include "common/utf8.h"
#include "engine/engine.h"

namespace quillon::lingomat::tools {
namespace {

using Kind = JsonNode::Kind;
using namespace data_keys;

constexpr const char* kLookupKeys[] = {kFilenames, kExtnames, kInterpreters};
constexpr const char* kLookupEntries[] = {"file name", "extension", "interpreter"};
// Every section whose member names are language names.
constexpr const char* kLanguageKeys[] = {kFilenames, kExtnames,       kInterpreters,
                                         kLanguages, kLanguageTokens, kTokens};

std::string quoted(const std::string& text) { return "\"" + sanitize_utf8(text) + "\""; }

class DataFileRules {
 public:
  DataFileRules(const JsonNode& root, CheckReport& report) : root_(root), report_(report) {}

  void run() {
    if (root_.kind != Kind::kObject) {
      report_.error(root_.offset, std::string("the root is not an object (") + kNotAnObject + ")");
      return;
    }
    check_language_names();
    for (std::size_t i = 0; i < std::size(kLookupKeys); ++i) {
      check_lookup(kLookupKeys[i], kLookupEntries[i]);
    }
    const JsonNode* counts = section(kLanguageTokens, Kind::kObject);
    const JsonNode* tokens = section(kTokens, Kind::kObject);
    const JsonNode* samples = section(kLanguages, Kind::kObject);
    const JsonNode* tokens_total = section(kTokensTotal, Kind::kNumber);
    const JsonNode* languages_total = section(kLanguagesTotal, Kind::kNumber);
    read_calibration();
    if (samples != nullptr) check_languages(*samples, counts, tokens);
    if (counts != nullptr) warn_unknown(*counts, kLanguageTokens);
    if (tokens != nullptr) warn_unknown(*tokens, kTokens);
    check_tokens_total(tokens_total);
    check_total(languages_total, kLanguagesTotal, samples_sum_, kLanguages);
    warn_unnamed();
  }

 private:
  // A member of the root, of the kind the engine requires; null (and reported) otherwise.
  const JsonNode* section(const char* key, Kind kind) {
    const JsonNode::Member* member = root_.find(key);
    if (member == nullptr) {
      report_.error(root_.offset,
                    std::string("the root has no \"") + key + "\" member (" + kMissingKey + ")");
      return nullptr;
    }
    if (member->value.kind != kind || (kind == Kind::kNumber && !member->value.is_int)) {
      report_.error(member->value.offset,
                    std::string("\"") + key + "\" must be " +
                        (kind == Kind::kObject ? "an object" : "an integer from 0 to 2147483647") +
                        " (" + kUnexpectedType + ")");
      return nullptr;
    }
    return &member->value;
  }

  // Names reach a C host, or are matched against its C strings: no NUL, and UTF-8.
  // Tokens are not checked: they are byte strings, matched against any input.
  void check_name(std::size_t offset, const std::string& name, const char* what) {
    if (name.find('\0') != std::string::npos) {
      report_.error(offset, std::string(what) + " " + quoted(name) +
                                " holds a NUL byte; a C host would see it cut short there");
    }
    if (!is_valid_utf8(name)) {
      report_.error(offset, std::string(what) + " " + quoted(name) + " is not valid UTF-8");
    }
  }

  void check_language_names() {
    for (const char* key : kLanguageKeys) {
      const JsonNode::Member* section = root_.find(key);
      if (section == nullptr || section->value.kind != Kind::kObject) continue;
      for (const JsonNode::Member& language : section->value.members) {
        check_name(language.name_offset, language.name, "language name");
      }
    }
  }

  void check_lookup(const char* key, const char* entry) {
    const JsonNode* lookup = section(key, Kind::kObject);
    if (lookup == nullptr) return;
    for (const JsonNode::Member& language : lookup->members) {
      named_.insert(language.name);
      if (language.value.kind != Kind::kArray) {
        report_.error(language.value.offset, std::string("the ") + key + " of " +
                                                 quoted(language.name) + " must be an array (" +
                                                 kUnexpectedType + ")");
        continue;
      }
      for (const JsonNode& name : language.value.elements) {
        if (name.kind != Kind::kString) {
          report_.error(name.offset, std::string("an entry of the ") + key + " of " +
                                         quoted(language.name) + " is not a string (" +
                                         kNotAString + ")");
        } else {
          check_name(name.offset, name.text, entry);
        }
      }
      if (!language.value.elements.empty()) lookup_languages_.push_back(&language);
    }
  }

  // A count the engine reads: a signed 32-bit integer, and here also above zero.
  bool check_count(const JsonNode& value, const std::string& what) {
    if (value.kind != Kind::kNumber || !value.is_int) {
      report_.error(value.offset,
                    what + " must be an integer from 1 to 2147483647 (" + kUnexpectedType + ")");
      return false;
    }
    if (value.int_value <= 0) {
      report_.error(value.offset, what + " is " + std::to_string(value.int_value) +
                                      "; counts must be at least 1 (the engine would divide by "
                                      "zero or read a negative count as a huge one)");
      return false;
    }
    return true;
  }

  void check_languages(const JsonNode& samples, const JsonNode* counts, const JsonNode* tokens) {
    for (const JsonNode::Member& language : samples.members) {
      // A repeated language is already reported as a duplicate name.
      if (!known_.insert(language.name).second) continue;
      const std::string name = quoted(language.name);
      if (check_count(language.value, "the sample count of " + name)) {
        samples_sum_ += language.value.int_value;
      } else {
        sums_complete_ = false;
      }
      std::int64_t declared = -1;
      if (counts != nullptr) {
        const JsonNode::Member* count = counts->find(language.name);
        if (count == nullptr) {
          report_.error(language.name_offset,
                        name + " has no entry in \"language_tokens\" (" + kMissingKey + ")");
        } else if (check_count(count->value, "the token count of " + name)) {
          declared = count->value.int_value;
          tokens_sum_ += declared;
        } else {
          sums_complete_ = false;
        }
      }
      if (tokens != nullptr) check_token_counts(language, *tokens, declared);
    }
  }

  void check_token_counts(const JsonNode::Member& language, const JsonNode& tokens,
                          std::int64_t declared) {
    const std::string name = quoted(language.name);
    const JsonNode::Member* entry = tokens.find(language.name);
    if (entry == nullptr) {
      report_.error(language.name_offset,
                    name + " has no entry in \"tokens\" (" + kMissingKey + ")");
      return;
    }
    if (entry->value.kind != Kind::kObject) {
      report_.error(entry->value.offset,
                    "the tokens of " + name + " must be an object (" + kUnexpectedType + ")");
      return;
    }
    // A token repeated in one language keeps its last count, as the engine reads it.
    std::map<std::string, std::int64_t> counts;
    for (const JsonNode::Member& token : entry->value.members) {
      if (check_count(token.value, "the count of token " + quoted(token.name) + " in " + name)) {
        counts[token.name] = token.value.int_value;
      }
    }
    std::int64_t sum = 0;
    for (const auto& token : counts) sum += token.second;
    // Re-estimated weights need not add up to one: each is only bounded like a count.
    if (discriminative_ && declared >= 0) {
      for (const auto& [token, count] : counts) {
        if (count <= declared * count_scale_) continue;
        report_.error(entry->value.offset,
                      "the count of token " + quoted(token) + " in " + name + " is " +
                          std::to_string(count) + ", more than its \"language_tokens\" of " +
                          std::to_string(declared) + " times the count scale " +
                          std::to_string(count_scale_));
        break;
      }
    }
    if (!discriminative_ && declared >= 0 && sum > declared * count_scale_) {
      report_.error(entry->value.offset,
                    "the token counts of " + name + " add up to " + std::to_string(sum) +
                        ", more than its \"language_tokens\" of " + std::to_string(declared) +
                        (count_scale_ > 1 ? " times the count scale " + std::to_string(count_scale_)
                                          : std::string()) +
                        " (a token would be likelier than certain)");
    }
  }

  void warn_unknown(const JsonNode& section, const char* key) {
    for (const JsonNode::Member& language : section.members) {
      if (known_.count(language.name) == 0) {
        report_.warning(language.name_offset, quoted(language.name) + " in \"" + key +
                                                  "\" is not in \"languages\"; the engine "
                                                  "ignores it");
      }
    }
  }

  // The trainer's record of a deliberate calibration: counts scaled by "count_scale" and
  // "tokens_total" derived from the unseen-token total instead of the counted one.
  void read_calibration() {
    const JsonNode::Member* member = root_.find(kCalibration);
    if (member == nullptr) return;
    const JsonNode& calibration = member->value;
    const auto positive = [&](const char* key) -> std::int64_t {
      const JsonNode::Member* field =
          calibration.kind == Kind::kObject ? calibration.find(key) : nullptr;
      if (field == nullptr || field->value.kind != Kind::kNumber || !field->value.is_int ||
          field->value.int_value <= 0) {
        report_.error(
            field == nullptr ? calibration.offset : field->value.offset,
            std::string("\"calibration\" needs \"") + key + "\", an integer from 1 to 2147483647");
        return 0;
      }
      return field->value.int_value;
    };
    const std::int64_t scale = positive(kCountScale);
    const std::int64_t unseen_total = positive(kTokensTotal);
    const std::int64_t counted = positive(kCountedTokens);
    if (scale == 0 || unseen_total == 0 || counted == 0) return;
    count_scale_ = scale;
    calibrated_total_ = std::max<std::int64_t>(1, (unseen_total + scale / 2) / scale);
    counted_tokens_ = counted;
    counted_offset_ = calibration.find(kCountedTokens)->value.offset;
    read_discriminative(calibration);
  }

  // The record of counts that encode re-estimated weights over chosen divisors: then
  // neither a language's token counts nor "language_tokens" relate to occurrences.
  void read_discriminative(const JsonNode& calibration) {
    const JsonNode::Member* member = calibration.find(kDiscriminative);
    if (member == nullptr) return;
    const JsonNode& record = member->value;
    const JsonNode::Member* epochs = record.kind == Kind::kObject ? record.find(kEpochs) : nullptr;
    if (epochs == nullptr || epochs->value.kind != Kind::kNumber || !epochs->value.is_int ||
        epochs->value.int_value <= 0) {
      report_.error(epochs == nullptr ? record.offset : epochs->value.offset,
                    "\"discriminative\" needs \"epochs\", an integer from 1 to 2147483647");
      return;
    }
    discriminative_ = true;
  }

  void check_tokens_total(const JsonNode* total) {
    if (calibrated_total_ == 0) {
      check_total(total, kTokensTotal, tokens_sum_, kLanguageTokens);
      return;
    }
    if (!discriminative_ && sums_complete_ && counted_tokens_ != tokens_sum_) {
      report_.error(counted_offset_, "the calibration's \"counted_tokens\" is " +
                                         std::to_string(counted_tokens_) +
                                         ", but the counts of \"language_tokens\" add up to " +
                                         std::to_string(tokens_sum_));
    }
    if (total != nullptr && total->int_value != calibrated_total_) {
      report_.error(total->offset, "\"tokens_total\" is " + std::to_string(total->int_value) +
                                       ", but the calibration's tokens_total divided by its "
                                       "count_scale gives " +
                                       std::to_string(calibrated_total_));
    }
  }

  void check_total(const JsonNode* total, const char* key, std::int64_t sum, const char* source) {
    if (total == nullptr) return;
    if (total->int_value < 0 || (total->int_value == 0 && sum > 0)) {
      report_.error(total->offset, std::string("\"") + key + "\" is " +
                                       std::to_string(total->int_value) + "; it must be positive");
    } else if (sums_complete_ && total->int_value != sum) {
      report_.error(total->offset, std::string("\"") + key + "\" is " +
                                       std::to_string(total->int_value) + ", but the counts of \"" +
                                       source + "\" add up to " + std::to_string(sum));
    }
  }

  void warn_unnamed() {
    for (const JsonNode::Member* language : lookup_languages_) {
      if (known_.count(language->name) == 0) {
        report_.warning(language->name_offset,
                        quoted(language->name) +
                            " has names but no statistics in \"languages\"; the plug-in "
                            "answers no language where only it is named");
      }
    }
    const JsonNode::Member* samples = root_.find(kLanguages);
    if (samples == nullptr || samples->value.kind != Kind::kObject) return;
    for (const JsonNode::Member& language : samples->value.members) {
      if (named_.count(language.name) == 0) {
        report_.warning(language.name_offset,
                        quoted(language.name) +
                            " has statistics but no file name, extension or interpreter; only "
                            "the classifier can name it");
      }
    }
  }

  const JsonNode& root_;
  CheckReport& report_;
  std::set<std::string> known_;  // languages with statistics
  std::set<std::string> named_;  // languages under any name lookup
  std::vector<const JsonNode::Member*> lookup_languages_;
  std::int64_t tokens_sum_ = 0;
  std::int64_t samples_sum_ = 0;
  std::int64_t count_scale_ = 1;
  std::int64_t calibrated_total_ = 0;  // 0: not calibrated, "tokens_total" is the counted sum
  std::int64_t counted_tokens_ = 0;
  std::size_t counted_offset_ = 0;
  bool discriminative_ = false;  // the counts encode weights; their sums are not bounded
  bool sums_complete_ = true;    // false once a count is bad: the sums would mislead
};

}  // namespace

CheckReport check_data_text(const std::string& text) {
  CheckReport report;
  JsonNode root;
  if (read_outline(text, root, report)) DataFileRules(root, report).run();
  return report;
}

void require_valid_data_file(const std::string& text, const std::string& path) {
  const CheckReport report = check_data_text(text);
  if (report.count(Severity::kError) == 0) return;
  const LineIndex lines(text);
  std::string message = "refusing to write a data file that fails its check:";
  for (const Problem& problem : report.problems) {
    if (problem.severity == Severity::kError)
      message += "\n  " + format_problem(path, lines, problem);
  }
  throw ToolError(message);
}

void cross_check_with_engine(const std::string& path, CheckReport& report) {
  Lingomat::Opts opts;
  opts.classifier.data_file = path;
  const EngineCreation created = create_engine(opts);
  if (created.engine == nullptr) {
    report.error(0, "the engine refuses this file: " + created.reason);
  }
}

}  // namespace quillon::lingomat::tools
