/* The Python package's own native library: the engine with what the five plug-in functions
 * do not offer (rankings, explanations, the tool's handling of UTF-16 and binary bytes, the
 * tool's checks of language names). Loaded with ctypes; not a public interface. */
#ifndef LINGOMAT_PYTHON_H
#define LINGOMAT_PYTHON_H

#include <stddef.h>
#include <stdint.h>

#include "lingomat.h"

#define LINGOMAT_PY_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

typedef struct LingomatPyEngine LingomatPyEngine;

/* The library's defaults for fields 2 to 5 of `opts`, as lingomatOptsInitWithDefaults. */
LINGOMAT_PY_API void lingomatPyOptsInitWithDefaults(LingomatOpts* opts);

/* Status as lingomatCreate. On failure `message` (if not null) receives a NUL-terminated
 * reason of at most `message_size` bytes: why the data file cannot be read, what is wrong with
 * it, or which restriction names the data file does not know (with the closest known ones). */
LINGOMAT_PY_API int lingomatPyCreate(const LingomatOpts* opts, LingomatPyEngine** engine,
                                     char* message, size_t message_size);
LINGOMAT_PY_API void lingomatPyDestroy(LingomatPyEngine* engine);

/* The number of languages the classifier knows: the most entries a ranking can hold. */
LINGOMAT_PY_API uint64_t lingomatPyLanguageCount(const LingomatPyEngine* engine);

/* The file-name part of `path` (after its last '/'), as the tool hands names to the engine. */
LINGOMAT_PY_API const char* lingomatPyBaseName(const char* path);

/* 1 when `head` (the first bytes of a file) marks it as binary, as the tool's tree walk
 * decides it; lingomatPyBinarySniffBytes is how many bytes that decision looks at. */
LINGOMAT_PY_API int lingomatPyLooksBinary(const char* head, uint64_t length);
LINGOMAT_PY_API uint64_t lingomatPyBinarySniffBytes(void);

/* Identifies `code` as the tool does (UTF-16 with a byte-order mark decoded). `language`
 * receives a name owned by the engine, or null. */
LINGOMAT_PY_API int lingomatPyIdentify(const LingomatPyEngine* engine, const char* code,
                                       uint64_t length, const char* file_name,
                                       const char** language);

/* The classifier's ranking before the floors, best first, one entry per language, at most
 * `capacity` entries; `count` receives how many were written. */
LINGOMAT_PY_API int lingomatPyRank(const LingomatPyEngine* engine, const char* code,
                                   uint64_t length, const char* file_name, uint64_t capacity,
                                   const char** languages, double* scores, uint64_t* count);

/* The tool's --json --explain record for `code` named `file_name`, as a NUL-terminated JSON
 * object to be freed with lingomatPyFree. */
LINGOMAT_PY_API int lingomatPyExplain(const LingomatPyEngine* engine, const char* code,
                                      uint64_t length, const char* file_name, char** json);

/* The UTF-8 the engine reads of `code` (see lingomatPyIdentify), for hosts that identify
 * through the plug-in: null when `code` is handed over as it is, else a buffer to free with
 * lingomatPyFree, its length in `converted_length`. */
LINGOMAT_PY_API int lingomatPyDecode(const char* code, uint64_t length, uint64_t max_bytes,
                                     uint64_t max_tokens, char** converted,
                                     uint64_t* converted_length);

/* Null when every one of `names` is a language of the data file; otherwise a message naming
 * the first unknown one and the closest known names, to free with lingomatPyFree. */
LINGOMAT_PY_API int lingomatPyCheckNames(const char* data_file, const char* const* names,
                                         uint64_t count, char** message);

/* The library's text for a status code, as lingomatPlugInGetErrorString. */
LINGOMAT_PY_API const char* lingomatPyErrorString(int status);

LINGOMAT_PY_API void lingomatPyFree(void* buffer);

#ifdef __cplusplus
}
#endif

#endif
