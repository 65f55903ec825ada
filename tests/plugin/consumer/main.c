/* Links against the installed library, loads the installed data file and names a text. */
#include <lingomat.h>
#include <stdio.h>
#include <string.h>

#ifndef LINGOMAT_DATA
#error "build with -DLINGOMAT_DATA=\"path of the installed data file\""
#endif

int main(void) {
  static const char kProgram[] = "#include <stdio.h>\nint main(void) {\n  return 0;\n}\n";
  LingomatOpts opts;
  memset(&opts, 0, sizeof opts);
  lingomatOptsInitWithDefaults(&opts);
  opts.dataFile = LINGOMAT_DATA;
  LingomatHandle engine = NULL;
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
