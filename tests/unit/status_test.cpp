#include "engine/status.h"

#include <gtest/gtest.h>

#include <ios>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "json/json_exception.h"

namespace quillon::lingomat {
namespace {

// The status and message of `thrown`, as a catch-all handler sees them.
template <typename Exception>
std::pair<int, std::string> translate(Exception thrown) {
  try {
    throw thrown;
  } catch (...) {
    return {status_of_current_exception(), message_of_current_exception()};
  }
}

TEST(Status, EachExceptionKindHasItsCode) {
  EXPECT_EQ(translate(JsonException("bad key")),
            std::make_pair(LINGOMAT_ERROR_JSON, std::string("bad key")));
  EXPECT_EQ(translate(std::bad_alloc()).first, LINGOMAT_ERROR_MEMORY);
  EXPECT_EQ(translate(std::ios_base::failure("read")).first, LINGOMAT_ERROR_FILE_IO);
  EXPECT_EQ(translate(std::out_of_range("map::at")),
            std::make_pair(LINGOMAT_ERROR_BAD_PARAMETER, std::string("map::at")));
  EXPECT_EQ(translate(std::length_error("length")).first, LINGOMAT_ERROR_BAD_PARAMETER);
  EXPECT_EQ(translate(std::runtime_error("other")),
            std::make_pair(LINGOMAT_ERROR_UNKNOWN, std::string("other")));
  // Not even a standard exception: still a code, and no message.
  EXPECT_EQ(translate(42), std::make_pair(LINGOMAT_ERROR_UNKNOWN, std::string()));
}

TEST(Status, EveryCodeHasItsTextAndOthersAreUnknown) {
  EXPECT_STREQ(status_text(LINGOMAT_SUCCESS), "Success");
  EXPECT_STREQ(status_text(LINGOMAT_ERROR_UNKNOWN), "Unknown error");
  EXPECT_STREQ(status_text(LINGOMAT_ERROR_BAD_PARAMETER), "Bad parameter");
  EXPECT_STREQ(status_text(LINGOMAT_ERROR_MEMORY), "Memory");
  EXPECT_STREQ(status_text(LINGOMAT_ERROR_FILE_IO), "File I/O");
  EXPECT_STREQ(status_text(LINGOMAT_ERROR_JSON), "Unable to process JSON");
  EXPECT_STREQ(status_text(1), "Unknown error");
  EXPECT_STREQ(status_text(-6), "Unknown error");
}

}  // namespace
}  // namespace quillon::lingomat
