/* A host written in C that loads the plug-in at run time, as editors and indexers do,
 * and walks the whole life cycle of an engine. Usage: host_test PATH_TO_PLUGIN */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "lingomat.h"

static int (*create)(LingomatHandle*, const LingomatOpts*);
static int (*identify)(LingomatHandle, const char*, uint64_t, const char*, const char**);
static int (*destroy)(LingomatHandle*);
static int (*init_defaults)(LingomatOpts*);
static const char* (*error_string)(int);
static int failed;
#define CHECK(ok) \
  ((ok) ? (void)0 : (void)(++failed, fprintf(stderr, "line %d: %s\n", __LINE__, #ok)))
#define IS(language, expected) CHECK((language) != NULL && strcmp((language), (expected)) == 0)

/* C: "int" and ";"; Python: "def" and "self"; Shell is known only to the lookups. The
 * language "" wins the ".e" files and the texts of "e". */
static const char kData[] =
    "{\"filenames\": {\"Python\": [\"SConstruct\"]}, \"interpreters\": {\"Python\": [\"python\"]},"
    " \"extnames\": {\"C\": [\".c\", \".h\"], \"Python\": [\".py\"], \"Shell\": [\".sh\"], \"\": "
    "[\".e\"]}, \"languages\": {\"C\": 5, \"Python\": 5, \"\": 1}, \"language_tokens\": {\"C\": "
    "100, \"Python\": 100, \"\": 10}, \"tokens\": {\"C\": {\"int\": 50, \";\": 50}, \"Python\": "
    "{\"def\": 50, \"self\": 50}, \"\": {\"e\": 10}}, \"tokens_total\": 210, \"languages_total\": "
    "11}";
static char data_path[] = "/tmp/lingomat_host_XXXXXX";

/* `piece` repeated: texts long enough for the classifier, in a buffer that lasts. */
static const char* repeat(const char* piece, int times) {
  static char pool[4096];
  static size_t used;
  char* text = pool + used;
  while (times-- > 0) strcat(text, piece);
  used += strlen(text) + 1;
  return text;
}

static LingomatHandle make_engine(const char* const* restrictions, uint64_t count) {
  LingomatOpts opts = {data_path, 0, 0, 0, 0.0, restrictions, count};
  init_defaults(&opts);
  LingomatHandle handle = NULL;
  CHECK(create(&handle, &opts) == LINGOMAT_SUCCESS);
  return handle;
}

static const char* name_of(LingomatHandle handle, const char* text, const char* file_name) {
  const char* language = "untouched";
  CHECK(identify(handle, text, strlen(text), file_name, &language) == LINGOMAT_SUCCESS);
  return language;
}

static void test_options_and_creation(void) {
  /* The defaults leave the fields they do not own as the host set them. */
  static const char* const kept_list[] = {"C"};
  LingomatOpts opts = {"kept.json", 0, 0, 0, 0.0, kept_list, 7};
  CHECK(init_defaults(&opts) == LINGOMAT_SUCCESS &&
        init_defaults(NULL) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(opts.maxScanBytes == 10240 && opts.maxTokens == 500 && opts.minTokens == 40 &&
        opts.minScorePerToken == -8.0);
  CHECK(!strcmp(opts.dataFile, "kept.json") && opts.restrictions == kept_list &&
        opts.restrictionCount == 7);
  const char* const messages[] = {"Success",  "Unknown error",          "Bad parameter", "Memory",
                                  "File I/O", "Unable to process JSON", "Unknown error"};
  for (int code = 0; code >= -6; --code) CHECK(strcmp(error_string(code), messages[-code]) == 0);
  CHECK(strcmp(error_string(1), "Unknown error") == 0);

  LingomatHandle handle = NULL;
  CHECK(create(NULL, &opts) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(create(&handle, NULL) == LINGOMAT_ERROR_BAD_PARAMETER);
  opts.restrictionCount = UINT64_MAX; /* a list no vector can hold */
  opts.dataFile = data_path;
  CHECK(create(&handle, &opts) == LINGOMAT_ERROR_BAD_PARAMETER);
  opts.restrictionCount = 0;
  const char* const paths[] = {NULL, "/nonexistent/lingomat.json", "/proc/self/status"};
  const int statuses[] = {LINGOMAT_ERROR_BAD_PARAMETER, LINGOMAT_ERROR_FILE_IO,
                          LINGOMAT_ERROR_JSON};
  for (int i = 0; i < 3; ++i) {
    opts.dataFile = paths[i];
    CHECK(create(&handle, &opts) == statuses[i] && handle == NULL);
  }
  /* An existing engine is never overwritten. */
  LingomatHandle existing = make_engine(NULL, 0), kept = existing;
  opts.dataFile = data_path;
  CHECK(create(&existing, &opts) == LINGOMAT_ERROR_BAD_PARAMETER && existing == kept);
  IS(name_of(existing, "x", "a.c"), "C");
  CHECK(destroy(&existing) == LINGOMAT_SUCCESS && existing == NULL);
  CHECK(destroy(&existing) == LINGOMAT_SUCCESS && destroy(NULL) == LINGOMAT_SUCCESS);
}

static void test_identification(void) {
  LingomatHandle engine = make_engine(NULL, 0);
  const char* c_code = repeat("int x; ", 30);
  const char* python_code = repeat("def self ", 30);
  const char* e_code = repeat("e ", 50);
  IS(name_of(engine, c_code, NULL), "C");
  IS(name_of(engine, "#!/usr/bin/python3\nx", ""), "Python");
  IS(name_of(engine, python_code, "tool.c.h"), "C"); /* the only candidate, by the last dot */
  /* No answer, a language known only to the lookups, and the language "": all null. */
  CHECK(name_of(engine, " \n\t ", NULL) == NULL && name_of(engine, "echo hi", "run.sh") == NULL);
  CHECK(name_of(engine, "x", "a.e") == NULL && name_of(engine, e_code, NULL) == NULL);
  /* Names are resident: the same pointer every time, valid until destroy. */
  CHECK(name_of(engine, c_code, NULL) == name_of(engine, "y", "b.c"));

  /* Buffers are length-counted: bytes after the length are never read, while a NUL byte
   * is text like any other. With no name the classifier decides by the tokens it reads. */
  char mixed[2048];
  size_t head = strlen(c_code);
  strcat(strcat(strcat(strcpy(mixed, c_code), python_code), python_code), python_code);
  const char* language = "untouched";
  CHECK(identify(engine, mixed, head, NULL, &language) == LINGOMAT_SUCCESS);
  IS(language, "C");
  size_t length = strlen(mixed);
  mixed[head] = '\0';
  CHECK(identify(engine, mixed, length, NULL, &language) == LINGOMAT_SUCCESS);
  IS(language, "Python");
  CHECK(identify(engine, "", 0, NULL, &language) == LINGOMAT_SUCCESS && language == NULL);
  language = "untouched"; /* refusals leave it so */
  CHECK(identify(engine, NULL, 0, NULL, &language) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(identify(engine, "x", 1, NULL, NULL) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(identify(NULL, "x", 1, NULL, &language) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(identify(engine, "x", UINT64_MAX, NULL, &language) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(strcmp(language, "untouched") == 0);
  destroy(&engine);

  /* A count with a null array means no restriction; null entries become empty names,
   * which allow no language with a name. */
  static const char* const nulls[] = {NULL, NULL};
  engine = make_engine(NULL, 2);
  IS(name_of(engine, python_code, NULL), "Python");
  destroy(&engine);
  engine = make_engine(nulls, 2);
  CHECK(name_of(engine, "int;", "a.c") == NULL && name_of(engine, c_code, NULL) == NULL);
  destroy(&engine);
}

int main(int argc, char** argv) {
  void* plugin = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  int fd = mkstemp(data_path);
  if (plugin == NULL || fd < 0 || write(fd, kData, strlen(kData)) != (ssize_t)strlen(kData)) {
    fprintf(stderr, "usage: %s PATH_TO_PLUGIN (%s)\n", argv[0], plugin ? "" : dlerror());
    return 2;
  }
  close(fd);
  *(void**)&create = dlsym(plugin, "lingomatCreate");
  *(void**)&identify = dlsym(plugin, "lingomatIdentifyCode");
  *(void**)&destroy = dlsym(plugin, "lingomatDestroy");
  *(void**)&init_defaults = dlsym(plugin, "lingomatOptsInitWithDefaults");
  *(void**)&error_string = dlsym(plugin, "lingomatPlugInGetErrorString");
  if (!create || !identify || !destroy || !init_defaults || !error_string) return 2;
  test_options_and_creation();
  test_identification();
  unlink(data_path);
  dlclose(plugin);
  printf("host test: %d checks failed\n", failed);
  return failed == 0 ? 0 : 1;
}
