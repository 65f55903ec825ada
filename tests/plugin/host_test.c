/* A host written in C that loads the plug-in at run time, as editors and indexers do,
 * and walks the whole life cycle of an engine. Usage: host_test PATH_TO_PLUGIN */
#include <dlfcn.h>
#include <math.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "lingomat.h"

typedef int (*CreateFn)(LingomatHandle*, const LingomatOpts*);
typedef int (*IdentifyFn)(LingomatHandle, const char*, uint64_t, const char*, const char**);
typedef int (*DestroyFn)(LingomatHandle*);
typedef int (*DefaultsFn)(LingomatOpts*);
typedef const char* (*ErrorStringFn)(int);

static CreateFn create;
static IdentifyFn identify;
static DestroyFn destroy;
static DefaultsFn init_defaults;
static ErrorStringFn error_string;

static int passed;
static int failed;

#define CHECK(condition)                                                            \
  do {                                                                              \
    if (condition) {                                                                \
      ++passed;                                                                     \
    } else {                                                                        \
      ++failed;                                                                     \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition); \
    }                                                                               \
  } while (0)

static int same_text(const char* a, const char* b) {
  return (a == NULL && b == NULL) || (a != NULL && b != NULL && strcmp(a, b) == 0);
}

/* C: "int" and ";"; Python: "def" and "self"; Shell is known only to the lookups. */
static const char kData[] =
    "{\"filenames\": {\"Shell\": [\".bashrc\"], \"Python\": [\"SConstruct\"]},\n"
    " \"extnames\": {\"C\": [\".c\", \".h\"], \"Python\": [\".py\"], \"Shell\": [\".sh\"]},\n"
    " \"interpreters\": {\"Python\": [\"python\"], \"Shell\": [\"sh\", \"bash\"]},\n"
    " \"languages\": {\"C\": 5, \"Python\": 5},\n"
    " \"language_tokens\": {\"C\": 100, \"Python\": 100},\n"
    " \"tokens\": {\"C\": {\"int\": 50, \";\": 50},\n"
    "            \"Python\": {\"def\": 50, \"self\": 50}},\n"
    " \"tokens_total\": 200, \"languages_total\": 10}\n";

static char data_path[64];
static char bad_json_path[64];
static char missing_key_path[64];

static void write_file(char* path, const char* content) {
  strcpy(path, "/tmp/lingomat_host_XXXXXX");
  int fd = mkstemp(path);
  if (fd < 0 || write(fd, content, strlen(content)) != (ssize_t)strlen(content)) {
    fprintf(stderr, "cannot write %s\n", path);
    exit(2);
  }
  close(fd);
}

static char* repeat(const char* piece, int times) {
  size_t length = strlen(piece);
  char* text = malloc(length * (size_t)times + 1);
  for (int i = 0; i < times; ++i) memcpy(text + length * (size_t)i, piece, length);
  text[length * (size_t)times] = '\0';
  return text;
}

static LingomatHandle make_engine(const char* const* restrictions, uint64_t count) {
  LingomatOpts opts;
  memset(&opts, 0, sizeof opts);
  init_defaults(&opts);
  opts.dataFile = data_path;
  opts.restrictions = restrictions;
  opts.restrictionCount = count;
  LingomatHandle handle = NULL;
  CHECK(create(&handle, &opts) == LINGOMAT_SUCCESS);
  return handle;
}

static const char* name_of(LingomatHandle handle, const char* text, const char* file_name) {
  const char* language = "untouched";
  CHECK(identify(handle, text, strlen(text), file_name, &language) == LINGOMAT_SUCCESS);
  return language;
}

static void test_defaults_and_messages(void) {
  /* Starts from a filled-in record, so that clearing a field the defaults must keep shows. */
  static const char* const kept_list[] = {"C", "Python"};
  LingomatOpts opts;
  memset(&opts, 0, sizeof opts);
  opts.dataFile = "kept.json";
  opts.restrictions = kept_list;
  opts.restrictionCount = 7;
  CHECK(init_defaults(&opts) == LINGOMAT_SUCCESS);
  CHECK(opts.maxScanBytes == 10240 && opts.maxTokens == 500 && opts.minTokens == 40);
  CHECK(opts.minScorePerToken == -8.0);
  CHECK(strcmp(opts.dataFile, "kept.json") == 0 && opts.restrictionCount == 7);
  CHECK(opts.restrictions == kept_list);
  CHECK(init_defaults(NULL) == LINGOMAT_ERROR_BAD_PARAMETER);

  CHECK(strcmp(error_string(0), "Success") == 0);
  CHECK(strcmp(error_string(-1), "Unknown error") == 0);
  CHECK(strcmp(error_string(-2), "Bad parameter") == 0);
  CHECK(strcmp(error_string(-3), "Memory") == 0);
  CHECK(strcmp(error_string(-4), "File I/O") == 0);
  CHECK(strcmp(error_string(-5), "Unable to process JSON") == 0);
  CHECK(strcmp(error_string(1), "Unknown error") == 0);
  CHECK(strcmp(error_string(-6), "Unknown error") == 0);
}

static void test_create_refusals_and_failures(void) {
  LingomatOpts opts;
  memset(&opts, 0, sizeof opts);
  init_defaults(&opts);
  LingomatHandle handle = NULL;

  CHECK(create(NULL, &opts) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(create(&handle, NULL) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(create(&handle, &opts) == LINGOMAT_ERROR_BAD_PARAMETER); /* no data file */
  CHECK(handle == NULL);

  opts.dataFile = "/nonexistent/lingomat.json";
  CHECK(create(&handle, &opts) == LINGOMAT_ERROR_FILE_IO);
  CHECK(handle == NULL);
  opts.dataFile = "";
  CHECK(create(&handle, &opts) == LINGOMAT_ERROR_FILE_IO);
  opts.dataFile = bad_json_path;
  CHECK(create(&handle, &opts) == LINGOMAT_ERROR_JSON);
  opts.dataFile = missing_key_path;
  CHECK(create(&handle, &opts) == LINGOMAT_ERROR_JSON);
  CHECK(handle == NULL);

  /* An existing engine is never overwritten. */
  LingomatHandle existing = make_engine(NULL, 0);
  LingomatHandle kept = existing;
  opts.dataFile = data_path;
  CHECK(create(&existing, &opts) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(existing == kept);
  CHECK(same_text(name_of(existing, "x", "a.c"), "C"));
  CHECK(destroy(&existing) == LINGOMAT_SUCCESS && existing == NULL);

  /* A restriction count beyond any possible list is a bad parameter, not a crash. */
  const char* one[] = {"C"};
  opts.restrictions = one;
  opts.restrictionCount = UINT64_MAX;
  CHECK(create(&handle, &opts) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(handle == NULL);
}

static void test_identification(void) {
  LingomatHandle engine = make_engine(NULL, 0);
  char* c_code = repeat("int x; ", 30);
  char* python_code = repeat("def self ", 30);

  CHECK(same_text(name_of(engine, c_code, NULL), "C"));
  CHECK(same_text(name_of(engine, python_code, ""), "Python"));
  CHECK(same_text(name_of(engine, "pass", "SConstruct"), "Python"));          /* file name */
  CHECK(same_text(name_of(engine, "x", "util.h"), "C"));                      /* extension */
  CHECK(same_text(name_of(engine, "#!/usr/bin/python3\nx", NULL), "Python")); /* interpreter */
  CHECK(same_text(name_of(engine, python_code, "tool.h"), "C"));              /* one candidate */
  CHECK(same_text(name_of(engine, python_code, "tool.c.py"), "Python"));
  /* A language known only to the lookups is answered with null. */
  CHECK(name_of(engine, "echo hi", "run.sh") == NULL);
  CHECK(name_of(engine, " \n\t ", NULL) == NULL);

  /* Language names are resident: the same pointer every time, valid until destroy. */
  const char* first = name_of(engine, c_code, NULL);
  const char* second = name_of(engine, "y", "b.c");
  CHECK(first != NULL && first == second);

  /* Buffers are length-counted: bytes after the length are never read. With no name the
   * classifier decides, and the Python tail would outvote the C head if it were read. */
  char* c_then_python = malloc(strlen(c_code) + strlen(python_code) * 3 + 1);
  strcpy(c_then_python, c_code);
  for (int i = 0; i < 3; ++i) strcat(c_then_python, python_code);
  CHECK(same_text(name_of(engine, c_then_python, NULL), "Python"));
  const char* language = "untouched";
  CHECK(identify(engine, c_then_python, strlen(c_code), NULL, &language) == LINGOMAT_SUCCESS);
  CHECK(same_text(language, "C"));
  CHECK(identify(engine, "", 0, NULL, &language) == LINGOMAT_SUCCESS && language == NULL);
  /* A NUL byte is text like any other: what follows it is read, and here outvotes the head. */
  size_t head = strlen(c_code);
  c_then_python[head] = '\0';
  CHECK(identify(engine, c_then_python, strlen(c_then_python + head + 1) + head + 1, NULL,
                 &language) == LINGOMAT_SUCCESS);
  CHECK(same_text(language, "Python"));
  free(c_then_python);

  /* Refusals leave the answer untouched. */
  language = "untouched";
  CHECK(identify(engine, NULL, 0, NULL, &language) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(identify(engine, "x", 1, NULL, NULL) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(identify(NULL, "x", 1, NULL, &language) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(identify(engine, "x", UINT64_MAX, NULL, &language) == LINGOMAT_ERROR_BAD_PARAMETER);
  CHECK(strcmp(language, "untouched") == 0);

  CHECK(destroy(&engine) == LINGOMAT_SUCCESS && engine == NULL);
  CHECK(destroy(&engine) == LINGOMAT_SUCCESS);
  CHECK(destroy(NULL) == LINGOMAT_SUCCESS);
  free(c_code);
  free(python_code);
}

static void test_restrictions(void) {
  char* python_code = repeat("def self ", 30);

  const char* only_c[] = {"C"};
  LingomatHandle engine = make_engine(only_c, 1);
  CHECK(same_text(name_of(engine, python_code, NULL), "C"));
  CHECK(name_of(engine, "x", "a.py") == NULL); /* the only candidate is excluded */
  destroy(&engine);

  /* A count with a null array means no restriction. */
  engine = make_engine(NULL, 2);
  CHECK(same_text(name_of(engine, python_code, NULL), "Python"));
  destroy(&engine);

  /* Null entries become empty names, which allow nothing. */
  const char* nulls[] = {NULL, NULL};
  engine = make_engine(nulls, 2);
  CHECK(name_of(engine, python_code, "a.py") == NULL);
  CHECK(name_of(engine, "int x;", "a.c") == NULL);
  destroy(&engine);
  free(python_code);
}

struct ThreadWork {
  LingomatHandle engine;
  const char* const* texts;
  const char* const* names;
  const char* const* expected;
  int count;
  int mismatches;
};

static void* identify_repeatedly(void* argument) {
  struct ThreadWork* work = argument;
  for (int round = 0; round < 200; ++round) {
    for (int i = 0; i < work->count; ++i) {
      const char* language = NULL;
      if (identify(work->engine, work->texts[i], strlen(work->texts[i]), work->names[i],
                   &language) != LINGOMAT_SUCCESS ||
          language != work->expected[i]) {
        ++work->mismatches;
      }
    }
  }
  return NULL;
}

static void test_threads_share_one_engine(void) {
  LingomatHandle engine = make_engine(NULL, 0);
  char* c_code = repeat("int x; ", 30);
  char* python_code = repeat("def self <a href=x> ", 30);
  const char* texts[] = {c_code, python_code, "#!/bin/sh\necho", "x", python_code};
  const char* names[] = {NULL, NULL, NULL, "y.h", "z.c"};
  const char* expected[5];
  for (int i = 0; i < 5; ++i) {
    expected[i] = NULL;
    identify(engine, texts[i], strlen(texts[i]), names[i], &expected[i]);
  }
  enum { kThreads = 4 };
  pthread_t threads[kThreads];
  struct ThreadWork work[kThreads];
  for (int t = 0; t < kThreads; ++t) {
    struct ThreadWork item = {engine, texts, names, expected, 5, 0};
    work[t] = item;
    pthread_create(&threads[t], NULL, identify_repeatedly, &work[t]);
  }
  int mismatches = 0;
  for (int t = 0; t < kThreads; ++t) {
    pthread_join(threads[t], NULL);
    mismatches += work[t].mismatches;
  }
  CHECK(mismatches == 0);
  CHECK(same_text(expected[0], "C") && same_text(expected[1], "Python"));
  destroy(&engine);
  free(c_code);
  free(python_code);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s PATH_TO_PLUGIN\n", argv[0]);
    return 2;
  }
  void* plugin = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (plugin == NULL) {
    fprintf(stderr, "dlopen: %s\n", dlerror());
    return 2;
  }
  *(void**)&create = dlsym(plugin, "lingomatCreate");
  *(void**)&identify = dlsym(plugin, "lingomatIdentifyCode");
  *(void**)&destroy = dlsym(plugin, "lingomatDestroy");
  *(void**)&init_defaults = dlsym(plugin, "lingomatOptsInitWithDefaults");
  *(void**)&error_string = dlsym(plugin, "lingomatPlugInGetErrorString");
  if (!create || !identify || !destroy || !init_defaults || !error_string) {
    fprintf(stderr, "the plug-in lacks an entry point\n");
    return 2;
  }

  write_file(data_path, kData);
  write_file(bad_json_path, "{\"filenames\": {");
  write_file(missing_key_path, "{\"filenames\": {}, \"extnames\": {}}");

  test_defaults_and_messages();
  test_create_refusals_and_failures();
  test_identification();
  test_restrictions();
  test_threads_share_one_engine();

  unlink(data_path);
  unlink(bad_json_path);
  unlink(missing_key_path);
  dlclose(plugin);
  printf("%d passed, %d failed\n", passed, failed);
  return failed == 0 ? 0 : 1;
}
