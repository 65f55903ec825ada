#include <ios>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>

#include "engine/lingomat.h"
#include "json/json_exception.h"
#include "lingomat.h"

using quillon::lingomat::JsonException;
using quillon::lingomat::Lingomat;

static_assert(sizeof(LingomatOpts) == 56, "LingomatOpts is part of the binary interface");

struct LingomatEngine {
  Lingomat engine;
};

namespace {

// Called from inside a catch-all handler: rethrows and translates the exception in flight.
// No exception may cross into a C host, whatever its type, so the last clause takes the rest.
int handle_exception() noexcept {
  try {
    throw;
  } catch (const JsonException&) {
    return LINGOMAT_ERROR_JSON;
  } catch (const std::bad_alloc&) {
    return LINGOMAT_ERROR_MEMORY;
  } catch (const std::ios_base::failure&) {
    return LINGOMAT_ERROR_FILE_IO;
  } catch (const std::logic_error&) {
    return LINGOMAT_ERROR_BAD_PARAMETER;
  } catch (const std::exception&) {
    return LINGOMAT_ERROR_UNKNOWN;
  } catch (...) {
    return LINGOMAT_ERROR_UNKNOWN;
  }
}

Lingomat::Opts engine_opts(const LingomatOpts& opts) {
  Lingomat::Opts result;
  result.classifier.data_file = opts.dataFile;
  result.tokenizer.max_bytes = opts.maxScanBytes;
  result.classifier.min_score_per_token = opts.minScorePerToken;
  result.tokenizer.max_tokens = opts.maxTokens;
  result.classifier.min_tokens = opts.minTokens;
  if (opts.restrictionCount != 0 && opts.restrictions != nullptr) {
    result.restrictions.reserve(opts.restrictionCount);
    for (std::uint64_t i = 0; i < opts.restrictionCount; ++i) {
      const char* name = opts.restrictions[i];
      result.restrictions.emplace_back(name == nullptr ? "" : name);
    }
  }
  return result;
}

}  // namespace

extern "C" {

LINGOMAT_API const char* lingomatPlugInGetErrorString(int code) noexcept {
  switch (code) {
    case LINGOMAT_SUCCESS:
      return "Success";
    case LINGOMAT_ERROR_BAD_PARAMETER:
      return "Bad parameter";
    case LINGOMAT_ERROR_MEMORY:
      return "Memory";
    case LINGOMAT_ERROR_FILE_IO:
      return "File I/O";
    case LINGOMAT_ERROR_JSON:
      return "Unable to process JSON";
    default:
      return "Unknown error";
  }
}

LINGOMAT_API int lingomatOptsInitWithDefaults(LingomatOpts* opts) noexcept {
  if (opts == nullptr) return LINGOMAT_ERROR_BAD_PARAMETER;
  const Lingomat::Opts defaults;
  opts->maxScanBytes = defaults.tokenizer.max_bytes;
  opts->maxTokens = defaults.tokenizer.max_tokens;
  opts->minTokens = defaults.classifier.min_tokens;
  opts->minScorePerToken = defaults.classifier.min_score_per_token;
  return LINGOMAT_SUCCESS;
}

LINGOMAT_API int lingomatCreate(LingomatHandle* handle, const LingomatOpts* opts) noexcept {
  if (handle == nullptr || *handle != nullptr || opts == nullptr || opts->dataFile == nullptr) {
    return LINGOMAT_ERROR_BAD_PARAMETER;
  }
  try {
    *handle = new LingomatEngine{Lingomat(engine_opts(*opts))};
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return handle_exception();
  }
}

LINGOMAT_API int lingomatIdentifyCode(LingomatHandle handle, const char* code, uint64_t codeLength,
                                      const char* fileName, const char** language) noexcept {
  if (code == nullptr || language == nullptr || handle == nullptr) {
    return LINGOMAT_ERROR_BAD_PARAMETER;
  }
  try {
    // The caller's buffer is read where it lies; a length no string could hold is still
    // refused as a bad parameter.
    if (codeLength > std::string().max_size()) throw std::length_error("buffer length");
    const std::string_view text(code, codeLength);
    const std::string_view name = fileName == nullptr ? std::string_view() : fileName;
    const std::string identified = handle->engine.identify(name, text);
    *language = handle->engine.classifier().language_resident_c_str(identified);
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return handle_exception();
  }
}

LINGOMAT_API int lingomatDestroy(LingomatHandle* handle) noexcept {
  if (handle == nullptr || *handle == nullptr) return LINGOMAT_SUCCESS;
  delete *handle;
  *handle = nullptr;
  return LINGOMAT_SUCCESS;
}

}  // extern "C"
