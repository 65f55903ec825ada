// The public header compiles as C++ too, and its options record keeps its binary layout.
#include <cstddef>

#include "lingomat.h"

static_assert(sizeof(LingomatOpts) == 56, "seven 8-byte fields");
static_assert(offsetof(LingomatOpts, dataFile) == 0, "field order");
static_assert(offsetof(LingomatOpts, maxScanBytes) == 8, "field order");
static_assert(offsetof(LingomatOpts, maxTokens) == 16, "field order");
static_assert(offsetof(LingomatOpts, minTokens) == 24, "field order");
static_assert(offsetof(LingomatOpts, minScorePerToken) == 32, "field order");
static_assert(offsetof(LingomatOpts, restrictions) == 40, "field order");
static_assert(offsetof(LingomatOpts, restrictionCount) == 48, "field order");

int main() { return LINGOMAT_SUCCESS; }
