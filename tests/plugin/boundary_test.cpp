// No exception may leave the C entry points, whatever its type: this test replaces the global
// operator new, the one way to make the library throw at will, and fails each allocation.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "lingomat.h"
#include "test_support.h"

// The public header compiles as C++, keeps the options record's binary layout, and lets C++
// hosts call the entry points from code that must not throw.
static_assert(sizeof(LingomatOpts) == 56 && offsetof(LingomatOpts, maxScanBytes) == 8 &&
              offsetof(LingomatOpts, minTokens) == 24 &&
              offsetof(LingomatOpts, minScorePerToken) == 32 &&
              offsetof(LingomatOpts, restrictionCount) == 48);
static_assert(noexcept(lingomatCreate(nullptr, nullptr)));
static_assert(noexcept(lingomatIdentifyCode(nullptr, nullptr, 0, nullptr, nullptr)));
static_assert(noexcept(lingomatDestroy(nullptr)));
static_assert(noexcept(lingomatOptsInitWithDefaults(nullptr)));
static_assert(noexcept(lingomatPlugInGetErrorString(0)));

namespace {

// Not derived from std::exception: the kind a host's own code or a foreign runtime may throw.
struct ForeignError {};

enum class Failure { kNone, kForeign, kBadAlloc };

// Per thread, so that the test framework's own allocations elsewhere are never hit.
thread_local Failure armed_failure = Failure::kNone;
thread_local long allocations_left = 0;

void* allocate(std::size_t size) {
  if (armed_failure != Failure::kNone && allocations_left-- == 0) {
    const Failure failure = armed_failure;
    armed_failure = Failure::kNone;
    if (failure == Failure::kForeign) throw ForeignError();
    throw std::bad_alloc();
  }
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
// The non-throwing forms are never made to fail: their callers (a sort's scratch buffer) fall
// back quietly, so nothing would be there to see.
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return std::malloc(n + 1); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return std::malloc(n + 1); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace {

using quillon::lingomat::test_support::TempFile;

const char kData[] =
    R"({"filenames": {"Make": ["Makefile"]}, "extnames": {"C": [".c"], "Python": [".py"]},
        "interpreters": {"Python": ["python"]},
        "languages": {"C": 2, "Python": 2}, "language_tokens": {"C": 4, "Python": 4},
        "tokens": {"C": {"int": 2, ";": 2}, "Python": {"def": 2, "self": 2}},
        "tokens_total": 8, "languages_total": 4})";

// Fails each allocation of `call` in turn until it runs through: each failure must come back
// as its status, with `untouched()` still true. Returns how many failures were made.
template <typename Call, typename Untouched>
long fail_each_allocation(Failure failure, Call call, Untouched untouched) {
  const int expected =
      failure == Failure::kForeign ? LINGOMAT_ERROR_UNKNOWN : LINGOMAT_ERROR_MEMORY;
  for (long index = 0; index < 100000; ++index) {
    armed_failure = failure;  // the allocation numbered `index` (from 0) throws
    allocations_left = index;
    const int status = call();
    if (armed_failure != Failure::kNone) {  // not reached: the call ran to its end
      armed_failure = Failure::kNone;
      EXPECT_EQ(status, LINGOMAT_SUCCESS);
      return index;
    }
    EXPECT_EQ(status, expected) << "allocation " << index;
    EXPECT_TRUE(untouched()) << "allocation " << index;
  }
  return -1;
}

TEST(Boundary, EveryFailedAllocationBecomesAStatus) {
  const TempFile data(kData);
  LingomatOpts opts{};
  lingomatOptsInitWithDefaults(&opts);
  opts.dataFile = data.path().c_str();
  opts.minTokens = 0;
  const std::string code = "def self(): int x; <a href=y> def self";
  for (const Failure failure : {Failure::kForeign, Failure::kBadAlloc}) {
    LingomatHandle handle = nullptr;
    const auto create = [&] { return lingomatCreate(&handle, &opts); };
    EXPECT_GT(fail_each_allocation(failure, create, [&] { return handle == nullptr; }), 10);
    ASSERT_NE(handle, nullptr);
    const char sentinel[] = "untouched";
    const char* language = sentinel;
    const auto identify = [&] {
      return lingomatIdentifyCode(handle, code.data(), code.size(), "notes.txt", &language);
    };
    // The engine stays usable after every failure, and a failed call writes no answer.
    EXPECT_GT(fail_each_allocation(failure, identify, [&] { return language == sentinel; }), 10);
    EXPECT_STREQ(language, "Python");
    lingomatDestroy(&handle);
  }
}

}  // namespace
