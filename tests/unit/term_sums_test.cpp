#include "classify/term_sums.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace quillon::lingomat {
namespace {

// Both kernels must give exactly the sums of adding term by term, in order, including the
// infinities and NaNs that odd data files produce.
TEST(TermSums, KernelsAddInTextOrderBitForBit) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> term(-30.0, 0.0);
  const std::size_t rows = 50;
  std::vector<double> table(rows * kSumBlock);
  for (double& value : table) value = term(random);
  table[3] = -std::numeric_limits<double>::infinity();
  table[kSumBlock + 5] = std::numeric_limits<double>::infinity();
  table[2 * kSumBlock + 7] = std::numeric_limits<double>::quiet_NaN();
  table[4 * kSumBlock + 8] = 1e300;

  std::vector<const double*> picked;
  std::uniform_int_distribution<std::size_t> pick(0, rows - 1);
  for (int i = 0; i < 3000; ++i) picked.push_back(table.data() + pick(random) * kSumBlock);

  std::vector<double> expected(kSumBlock, 0.5);
  for (const double* row : picked) {
    for (std::size_t c = 0; c < kSumBlock; ++c) expected[c] += row[c];
  }
  std::vector<AddRows> kernels = {add_rows_sse2};
  if (has_avx2()) kernels.push_back(add_rows_avx2);
  for (const AddRows kernel : kernels) {
    std::vector<double> sums(kSumBlock, 0.5);
    // In two calls, as the chunked caller makes them.
    kernel(picked.data(), 1000, 0, sums.data());
    kernel(picked.data() + 1000, picked.size() - 1000, 0, sums.data());
    EXPECT_EQ(std::memcmp(sums.data(), expected.data(), kSumBlock * sizeof(double)), 0);
  }
}

}  // namespace
}  // namespace quillon::lingomat
