/* Links against the installed library and checks that it answers. */
#include <lingomat.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  LingomatOpts opts;
  memset(&opts, 0, sizeof opts);
  if (lingomatOptsInitWithDefaults(&opts) != LINGOMAT_SUCCESS || opts.maxTokens != 500) return 1;
  opts.dataFile = "/nonexistent/lingomat.json";
  LingomatHandle engine = NULL;
  int status = lingomatCreate(&engine, &opts);
  printf("consumer: %s\n", lingomatPlugInGetErrorString(status));
  return status == LINGOMAT_ERROR_FILE_IO ? 0 : 1;
}
