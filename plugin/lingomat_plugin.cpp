#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "engine/engine.h"
#include "engine/status.h"
#include "engine_options.h"
#include "lingomat.h"

using quillon::lingomat::Lingomat;
using quillon::lingomat::status_of_current_exception;

static_assert(sizeof(LingomatOpts) == 56, "LingomatOpts is part of the binary interface");

struct LingomatEngine {
  std::unique_ptr<Lingomat> engine;
};

extern "C" {

LINGOMAT_API const char* lingomatPlugInGetErrorString(int code) noexcept {
  return quillon::lingomat::status_text(code);
}

LINGOMAT_API int lingomatOptsInitWithDefaults(LingomatOpts* opts) noexcept {
  if (opts == nullptr) return LINGOMAT_ERROR_BAD_PARAMETER;
  namespace defaults = quillon::lingomat::defaults;
  opts->maxScanBytes = defaults::kMaxBytes;
  opts->maxTokens = defaults::kMaxTokens;
  opts->minTokens = defaults::kMinTokens;
  opts->minScorePerToken = defaults::kMinScorePerToken;
  return LINGOMAT_SUCCESS;
}

LINGOMAT_API int lingomatCreate(LingomatHandle* handle, const LingomatOpts* opts) noexcept {
  if (handle == nullptr || *handle != nullptr || opts == nullptr || opts->dataFile == nullptr) {
    return LINGOMAT_ERROR_BAD_PARAMETER;
  }
  try {
    quillon::lingomat::EngineCreation created =
        quillon::lingomat::create_engine(quillon::lingomat::engine_options(*opts));
    if (created.engine == nullptr) return created.status;
    *handle = new LingomatEngine{std::move(created.engine)};
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return status_of_current_exception();
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
    const std::string identified = handle->engine->identify(name, text);
    // Nothing identified is null, even for a data file that names a language "".
    *language = identified.empty()
                    ? nullptr
                    : handle->engine->classifier().language_resident_c_str(identified);
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return status_of_current_exception();
  }
}

LINGOMAT_API int lingomatDestroy(LingomatHandle* handle) noexcept {
  if (handle == nullptr || *handle == nullptr) return LINGOMAT_SUCCESS;
  delete *handle;
  *handle = nullptr;
  quillon::lingomat::return_freed_memory();  // the engine's pages go back to the system
  return LINGOMAT_SUCCESS;
}

}  // extern "C"
