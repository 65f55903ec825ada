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

// C++ hosts may call the entry points from code that must not throw.
static_assert(noexcept(lingomatCreate(nullptr, nullptr)), "entry points are noexcept");
static_assert(noexcept(lingomatIdentifyCode(nullptr, nullptr, 0, nullptr, nullptr)),
              "entry points are noexcept");
static_assert(noexcept(lingomatDestroy(nullptr)), "entry points are noexcept");
static_assert(noexcept(lingomatOptsInitWithDefaults(nullptr)), "entry points are noexcept");
static_assert(noexcept(lingomatPlugInGetErrorString(0)), "entry points are noexcept");

int main() { return LINGOMAT_SUCCESS; }
