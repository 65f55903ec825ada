/* lingomat: names the programming or markup language of a piece of text.
 *
 * Usage: lingomatOptsInitWithDefaults(&opts); set opts.dataFile (and optionally
 * the restrictions); lingomatCreate(&handle, &opts); lingomatIdentifyCode(...)
 * any number of times, from any number of threads; lingomatDestroy(&handle). */
#ifndef LINGOMAT_PLUGIN_H
#define LINGOMAT_PLUGIN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define LINGOMAT_API __declspec(dllexport)
#else
#define LINGOMAT_API __attribute__((visibility("default")))
#endif

/* No exception ever leaves these functions; C++ hosts may rely on it. */
#if defined(__cplusplus)
#define LINGOMAT_NOEXCEPT noexcept
#else
#define LINGOMAT_NOEXCEPT
#endif

/* Status codes returned by the functions below. */
#define LINGOMAT_SUCCESS 0
#define LINGOMAT_ERROR_UNKNOWN (-1)
#define LINGOMAT_ERROR_BAD_PARAMETER (-2)
#define LINGOMAT_ERROR_MEMORY (-3)
#define LINGOMAT_ERROR_FILE_IO (-4)
#define LINGOMAT_ERROR_JSON (-5)

/* An engine; null means none. */
typedef struct LingomatEngine* LingomatHandle;

/* Part of the binary interface: seven 8-byte fields, no padding. */
typedef struct LingomatOpts {
  /* JSON data file; required */
  const char* dataFile;
  /* tokens start only below this offset; 0: no limit */
  uint64_t maxScanBytes;
  /* tokenizing stops at this many tokens; 0: no limit */
  uint64_t maxTokens;
  /* fewer tokens give no classifier answer; 0: no minimum */
  uint64_t minTokens;
  /* classifier answers scoring below this per token are dropped; 0.0: off */
  double minScorePerToken;
  /* the only languages that may be answered */
  const char* const* restrictions;
  /* entries in restrictions; 0: every language */
  uint64_t restrictionCount;
} LingomatOpts;

/* Writes the defaults (10240, 500, 40, -8.0) into fields 2 to 5; leaves the others. */
LINGOMAT_API int lingomatOptsInitWithDefaults(LingomatOpts* opts) LINGOMAT_NOEXCEPT;

/* Creates an engine from opts->dataFile. *handle must be null; it is set only on success. */
LINGOMAT_API int lingomatCreate(LingomatHandle* handle, const LingomatOpts* opts) LINGOMAT_NOEXCEPT;

/* Identifies codeLength bytes at code; fileName may be null. On success *language is
 * the language name, valid until the engine is destroyed, or null for no answer.
 * The caller guarantees that code points to at least codeLength readable bytes: the
 * library cannot check a length, and reads within it as it needs (the whole buffer when
 * maxScanBytes is 0, a few KiB by default). */
LINGOMAT_API int lingomatIdentifyCode(LingomatHandle handle, const char* code, uint64_t codeLength,
                                      const char* fileName,
                                      const char** language) LINGOMAT_NOEXCEPT;

/* Destroys the engine, hands its memory back to the system and sets *handle to null.
 * Always succeeds. */
LINGOMAT_API int lingomatDestroy(LingomatHandle* handle) LINGOMAT_NOEXCEPT;

/* The static message for a status code; never null. */
LINGOMAT_API const char* lingomatPlugInGetErrorString(int code) LINGOMAT_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif /* LINGOMAT_PLUGIN_H */
