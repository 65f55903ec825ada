#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "common/utf8.h"
#include "eval/eval_output.h"

namespace quillon::lingomat::tools {

namespace {

std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));

std::string format(const char* pattern, ...) {
  va_list args;
  va_start(args, pattern);
  va_list again;
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, pattern, args);
  va_end(args);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, pattern, again);
  va_end(again);
  return text;
}

std::string percent(std::uint64_t part, std::uint64_t whole) {
  return format("%.1f%%", whole == 0 ? 0.0 : 100.0 * double(part) / double(whole));
}

std::string mode_report(const ModeReport& mode, unsigned threads, std::size_t max_confusions) {
  std::string out = "== " + mode.description + " ==\n";
  out += format("files %llu, correct %llu (%s), wrong %llu (%s), no answer %llu (%s)\n",
                (unsigned long long)mode.files, (unsigned long long)mode.correct,
                percent(mode.correct, mode.files).c_str(), (unsigned long long)mode.wrong,
                percent(mode.wrong, mode.files).c_str(), (unsigned long long)mode.no_answer,
                percent(mode.no_answer, mode.files).c_str());
  out +=
      format("accuracy over files %.1f%%, averaged over %zu languages %.1f%%; answers right %s\n",
             100.0 * mode.accuracy(), mode.languages.size(), 100.0 * mode.language_accuracy(),
             percent(mode.correct, mode.correct + mode.wrong).c_str());
  out += format("throughput %.1f files/s, %.2f MB/s of engine time (%.3f s summed over %u %s)\n\n",
                mode.files_per_second(), mode.megabytes_per_second(), mode.seconds, threads,
                threads == 1 ? "thread" : "threads, i.e. one thread's speed");

  std::size_t width = 8;
  for (const LanguageReport& language : mode.languages) {
    width = std::max(width, sanitize_utf8(language.language).size());
  }
  const int w = static_cast<int>(width);
  out += format("%-*s %7s %7s %7s %9s %8s  %s\n", w, "language", "files", "correct", "wrong",
                "no answer", "accuracy", "mistaken most for");
  for (const LanguageReport& language : mode.languages) {
    std::string mistaken;
    if (language.mistaken_for_count > 0) {
      mistaken = sanitize_utf8(language.mistaken_for) +
                 format(" (%llu)", (unsigned long long)language.mistaken_for_count);
    }
    out += format("%-*s %7llu %7llu %7llu %9llu %7.1f%%", w,
                  sanitize_utf8(language.language).c_str(), (unsigned long long)language.files,
                  (unsigned long long)language.correct, (unsigned long long)language.wrong,
                  (unsigned long long)language.no_answer, 100.0 * language.accuracy()) +
           (mistaken.empty() ? "" : "  " + mistaken) + "\n";
  }

  if (!mode.confusions.empty()) {
    const std::size_t shown = std::min(max_confusions, mode.confusions.size());
    out += format("\nmost frequent confusions (%zu of %zu):\n", shown, mode.confusions.size());
    for (std::size_t i = 0; i < shown; ++i) {
      const Confusion& confusion = mode.confusions[i];
      out += format("%7llu  ", (unsigned long long)confusion.count) +
             sanitize_utf8(confusion.expected) + " -> " + sanitize_utf8(confusion.answer) + "\n";
    }
  }
  return out + "\n";
}

}  // namespace

std::string format_text_report(const EvalConfig& config, const EvalRun& run,
                               std::size_t max_confusions) {
  std::string out = "data file " + config.data_path + ", test set " + config.samples_root + " (" +
                    describe(config.split) + ")\n";
  out += format("engine options: max-bytes %llu, max-tokens %llu, min-tokens %llu, min-score %g\n",
                (unsigned long long)config.tokenizer.max_bytes,
                (unsigned long long)config.tokenizer.max_tokens,
                (unsigned long long)config.min_tokens, config.min_score_per_token);
  if (config.restrict_to_only) {
    out += format("restricted to the %zu languages evaluated\n", config.only.size());
  }
  out += format("%u identification %s, %.2f s wall clock including file reading\n", run.threads,
                run.threads == 1 ? "thread" : "threads", run.wall_seconds);
  if (!run.untrained_languages.empty()) {
    out += "note: the data file has no statistics for";
    for (const std::string& name : run.untrained_languages) out += " " + sanitize_utf8(name);
    out += "\n";
  }
  out += "\n";
  for (const ModeReport& mode : run.modes) out += mode_report(mode, run.threads, max_confusions);
  return out;
}

}  // namespace quillon::lingomat::tools
