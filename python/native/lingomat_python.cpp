#include "lingomat_python.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/engine.h"
#include "engine/status.h"
#include "engine_options.h"
#include "explanation.h"
#include "input/binary_text.h"
#include "input/identification_text.h"
#include "language_catalog.h"
#include "result_output.h"

using quillon::lingomat::IdentificationText;
using quillon::lingomat::Lingomat;
namespace cli = quillon::lingomat::cli;
namespace lingomat = quillon::lingomat;

struct LingomatPyEngine {
  std::unique_ptr<Lingomat> engine;
};

namespace {

void copy_message(const std::string& text, char* message, size_t message_size) {
  if (message == nullptr || message_size == 0) return;
  const std::size_t length = std::min(text.size(), message_size - 1);
  std::memcpy(message, text.data(), length);
  message[length] = '\0';
}

char* malloc_copy(std::string_view text) {
  char* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

std::string_view name_of(const char* file_name) {
  return file_name == nullptr ? std::string_view() : lingomatPyBaseName(file_name);
}

// Only inside a catch handler.
int fail(char* message = nullptr, size_t message_size = 0) {
  copy_message(lingomat::message_of_current_exception(), message, message_size);
  return lingomat::status_of_current_exception();
}

}  // namespace

extern "C" {

void lingomatPyOptsInitWithDefaults(LingomatOpts* opts) {
  const Lingomat::Opts defaults;
  opts->maxScanBytes = defaults.tokenizer.max_bytes;
  opts->maxTokens = defaults.tokenizer.max_tokens;
  opts->minTokens = defaults.classifier.min_tokens;
  opts->minScorePerToken = defaults.classifier.min_score_per_token;
}

int lingomatPyCreate(const LingomatOpts* opts, LingomatPyEngine** engine, char* message,
                     size_t message_size) {
  if (opts == nullptr || opts->dataFile == nullptr || engine == nullptr) {
    return LINGOMAT_ERROR_BAD_PARAMETER;
  }
  try {
    lingomat::EngineCreation created = lingomat::create_engine(lingomat::engine_options(*opts));
    if (created.engine == nullptr) {
      copy_message(created.reason, message, message_size);
      return created.status;
    }
    *engine = new LingomatPyEngine{std::move(created.engine)};
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return fail(message, message_size);
  }
}

void lingomatPyDestroy(LingomatPyEngine* engine) { delete engine; }

uint64_t lingomatPyLanguageCount(const LingomatPyEngine* engine) {
  return engine->engine->classifier().languages().size();
}

const char* lingomatPyBaseName(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

int lingomatPyLooksBinary(const char* head, uint64_t length) {
  return lingomat::looks_binary(std::string_view(head, length)) ? 1 : 0;
}

uint64_t lingomatPyBinarySniffBytes(void) { return lingomat::kBinarySniffBytes; }

int lingomatPyIdentify(const LingomatPyEngine* engine, const char* code, uint64_t length,
                       const char* file_name, const char** language) {
  try {
    const Lingomat& lingomat = *engine->engine;
    const IdentificationText text(std::string_view(code, length), lingomat.tokenizer());
    *language = lingomat.classifier().language_resident_c_str(
        lingomat.identify(name_of(file_name), text.view()));
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return fail();
  }
}

int lingomatPyRank(const LingomatPyEngine* engine, const char* code, uint64_t length,
                   const char* file_name, uint64_t capacity, const char** languages, double* scores,
                   uint64_t* count) {
  try {
    const Lingomat& lingomat = *engine->engine;
    const IdentificationText text(std::string_view(code, length), lingomat.tokenizer());
    const Lingomat::Trace trace = lingomat.trace(name_of(file_name), text.view());
    uint64_t written = 0;
    for (const auto& [language, score] : trace.ranking) {
      if (written == capacity) break;
      // A language named by two strategies is ranked twice with the same score.
      const char* resident = lingomat.classifier().language_resident_c_str(language);
      if (resident == nullptr ||
          std::find(languages, languages + written, resident) != languages + written) {
        continue;
      }
      languages[written] = resident;
      scores[written] = score;
      ++written;
    }
    *count = written;
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return fail();
  }
}

int lingomatPyExplain(const LingomatPyEngine* engine, const char* code, uint64_t length,
                      const char* file_name, char** json) {
  try {
    const Lingomat& lingomat = *engine->engine;
    const IdentificationText text(std::string_view(code, length), lingomat.tokenizer());
    cli::InputItem item;
    item.path = file_name == nullptr ? "" : file_name;
    item.name = std::string(name_of(file_name));
    const Lingomat::Trace trace = lingomat.trace(item.name, text.view());
    cli::FileResult result;
    result.outcome = cli::FileOutcome::kIdentified;
    result.language = trace.answer;
    result.bytes = length;
    result.evidence = cli::explain_identification(trace, item.name);
    *json = malloc_copy(cli::json_line(item, result));
    return *json == nullptr ? LINGOMAT_ERROR_MEMORY : LINGOMAT_SUCCESS;
  } catch (...) {
    return fail();
  }
}

int lingomatPyDecode(const char* code, uint64_t length, uint64_t max_bytes, uint64_t max_tokens,
                     char** converted, uint64_t* converted_length) {
  try {
    lingomat::Tokenizer::Opts opts;
    opts.max_bytes = max_bytes;
    opts.max_tokens = max_tokens;
    const lingomat::Tokenizer tokenizer(opts);
    const IdentificationText text(std::string_view(code, length), tokenizer);
    *converted = nullptr;
    *converted_length = 0;
    if (!text.decoded()) return LINGOMAT_SUCCESS;
    *converted = malloc_copy(text.view());
    *converted_length = text.view().size();
    return *converted == nullptr ? LINGOMAT_ERROR_MEMORY : LINGOMAT_SUCCESS;
  } catch (...) {
    return fail();
  }
}

int lingomatPyCheckNames(const char* data_file, const char* const* names, uint64_t count,
                         char** message) {
  try {
    *message = nullptr;
    const std::vector<std::string> wanted(names, names + count);
    const std::vector<cli::LanguageEntry> catalog = cli::read_language_catalog(data_file);
    if (const std::string* name = cli::first_unknown_name(wanted, catalog)) {
      *message = malloc_copy("unknown language '" + *name + "' in only" +
                             cli::did_you_mean(*name, catalog));
      if (*message == nullptr) return LINGOMAT_ERROR_MEMORY;
    }
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return fail();
  }
}

const char* lingomatPyErrorString(int status) { return lingomat::status_text(status); }

void lingomatPyFree(void* buffer) { std::free(buffer); }

}  // extern "C"
