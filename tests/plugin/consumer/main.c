/* Links against the installed library, loads the installed data file and names a text. */
#include <lingomat.h>
#include <stdio.h>
#include <string.h>

#ifndef LINGOMAT_DATA
#error "build with -DLINGOMAT_DATA=\"path of the installed data file\""
#endif

static const char kProgram[] =
    "#include <stdio.h>\n"
    "int main(void) {\n"
    "  printf(\"hello\\n\");\n"
    "  return 0;\n"
    "}\n";

int main(void) {
  LingomatOpts opts;
  memset(&opts, 0, sizeof opts);
  if (lingomatOptsInitWithDefaults(&opts) != LINGOMAT_SUCCESS || opts.maxTokens != 500) return 1;

  opts.dataFile = "/nonexistent/lingomat.json";
  LingomatHandle engine = NULL;
  if (lingomatCreate(&engine, &opts) != LINGOMAT_ERROR_FILE_IO) return 1;

  opts.dataFile = LINGOMAT_DATA;
  int status = lingomatCreate(&engine, &opts);
  if (status != LINGOMAT_SUCCESS) {
    fprintf(stderr, "consumer: %s: %s\n", LINGOMAT_DATA, lingomatPlugInGetErrorString(status));
    return 1;
  }
  const char* language = NULL;
  status = lingomatIdentifyCode(engine, kProgram, sizeof kProgram - 1, "hello.c", &language);
  printf("consumer: %s\n", language ? language : "(none)");
  lingomatDestroy(&engine);
  return status == LINGOMAT_SUCCESS && language != NULL && strcmp(language, "C") == 0 ? 0 : 1;
}
