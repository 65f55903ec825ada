// No exception may leave the C entry points, whatever its type. The only way to make the
// library throw at will without changing it is its allocator, so this test replaces the
// global operator new and makes the n-th allocation of a call throw, for every n.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "lingomat.h"
#include "test_support.h"

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

// Makes the allocation numbered `index` (from 0) of the current thread throw.
void arm(Failure failure, long index) {
  armed_failure = failure;
  allocations_left = index;
}

// True when the armed allocation was not reached, i.e. the call ran to its end.
bool disarm() {
  const bool untouched = armed_failure != Failure::kNone;
  armed_failure = Failure::kNone;
  return untouched;
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
// The non-throwing forms are never made to fail: callers of those (a sort's scratch buffer)
// fall back quietly, so nothing would be there to see.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size == 0 ? 1 : size);
}
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

// A call this many allocations long would mean a runaway sweep, not a real call.
constexpr long kMaxAllocations = 100000;

LingomatOpts options(const std::string& path) {
  LingomatOpts opts{};
  lingomatOptsInitWithDefaults(&opts);
  opts.dataFile = path.c_str();
  opts.minTokens = 0;
  return opts;
}

class BoundaryTest : public ::testing::TestWithParam<Failure> {
 protected:
  int expected_status() const {
    return GetParam() == Failure::kForeign ? LINGOMAT_ERROR_UNKNOWN : LINGOMAT_ERROR_MEMORY;
  }
};

TEST_P(BoundaryTest, CreateTurnsEveryFailedAllocationIntoAStatus) {
  const TempFile data(kData);
  const LingomatOpts opts = options(data.path());
  long failures = 0;
  for (long index = 0; index < kMaxAllocations; ++index) {
    LingomatHandle handle = nullptr;
    arm(GetParam(), index);
    const int status = lingomatCreate(&handle, &opts);
    if (disarm()) {
      ASSERT_EQ(status, LINGOMAT_SUCCESS);
      lingomatDestroy(&handle);
      break;
    }
    ++failures;
    ASSERT_EQ(status, expected_status()) << "allocation " << index;
    ASSERT_EQ(handle, nullptr) << "allocation " << index;
  }
  EXPECT_GT(failures, 10) << "creating an engine should allocate";
}

TEST_P(BoundaryTest, IdentifyTurnsEveryFailedAllocationIntoAStatusAndKeepsTheEngine) {
  const TempFile data(kData);
  const LingomatOpts opts = options(data.path());
  LingomatHandle handle = nullptr;
  ASSERT_EQ(lingomatCreate(&handle, &opts), LINGOMAT_SUCCESS);
  const std::string code = "def self(): int x; <a href=y> def self";

  const char* expected = nullptr;
  ASSERT_EQ(lingomatIdentifyCode(handle, code.data(), code.size(), "notes.txt", &expected),
            LINGOMAT_SUCCESS);
  ASSERT_STREQ(expected, "Python");

  long failures = 0;
  for (long index = 0; index < kMaxAllocations; ++index) {
    const char sentinel[] = "untouched";
    const char* language = sentinel;
    arm(GetParam(), index);
    const int status =
        lingomatIdentifyCode(handle, code.data(), code.size(), "notes.txt", &language);
    if (disarm()) {
      ASSERT_EQ(status, LINGOMAT_SUCCESS);
      EXPECT_EQ(language, expected);
      break;
    }
    ++failures;
    ASSERT_EQ(status, expected_status()) << "allocation " << index;
    ASSERT_EQ(language, sentinel) << "a failed call must not write the answer";
  }
  EXPECT_GT(failures, 10) << "identifying should allocate";
  lingomatDestroy(&handle);
}

INSTANTIATE_TEST_SUITE_P(Failures, BoundaryTest,
                         ::testing::Values(Failure::kForeign, Failure::kBadAlloc),
                         [](const ::testing::TestParamInfo<Failure>& info) {
                           return info.param == Failure::kForeign ? "ForeignException" : "BadAlloc";
                         });

}  // namespace

namespace {

// A data file may name a language "": an empty answer still means nothing was identified.
TEST(EmptyLanguageName, NothingIdentifiedIsNullEvenWhenADataFileNamesALanguageSo) {
  const TempFile data(R"({"filenames": {}, "extnames": {"": [".x"]}, "interpreters": {},
    "languages": {"": 1}, "language_tokens": {"": 1}, "tokens": {"": {"a": 1}},
    "tokens_total": 1, "languages_total": 1})");
  LingomatOpts opts;
  lingomatOptsInitWithDefaults(&opts);
  opts.dataFile = data.path().c_str();
  opts.restrictions = nullptr;
  opts.restrictionCount = 0;
  LingomatHandle handle = nullptr;
  ASSERT_EQ(lingomatCreate(&handle, &opts), LINGOMAT_SUCCESS);
  for (const char* name : {"file.x", "file.y"}) {
    const char* language = "unset";
    ASSERT_EQ(lingomatIdentifyCode(handle, "a", 1, name, &language), LINGOMAT_SUCCESS);
    EXPECT_EQ(language, nullptr) << name;
  }
  lingomatDestroy(&handle);
}

}  // namespace
