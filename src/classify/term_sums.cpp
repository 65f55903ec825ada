#include "classify/term_sums.h"

#include <cstring>

namespace quillon::lingomat {
namespace {

// Sums of several languages side by side in one register; each lane is a plain double
// addition, so the lanes' sums are exactly those of scalar code.
using Lanes2 = double __attribute__((vector_size(16)));  // SSE2: always there on x86-64
using Lanes4 = double __attribute__((vector_size(32)));  // AVX2, where the processor has it

// Adds one block of columns of the rows, in order, to one block of sums.
template <typename Lanes>
__attribute__((always_inline)) inline void add_rows_with(const double* const* rows,
                                                         std::size_t count, std::size_t column,
                                                         double* sums) {
  constexpr std::size_t kWidth = sizeof(Lanes) / sizeof(double);
  constexpr std::size_t kRegisters = kSumBlock / kWidth;
  Lanes sum[kRegisters];
#pragma GCC unroll 8
  for (std::size_t r = 0; r < kRegisters; ++r)
    std::memcpy(&sum[r], sums + r * kWidth, sizeof(Lanes));
  for (std::size_t i = 0; i < count; ++i) {
    const double* row = rows[i] + column;
#pragma GCC unroll 8  // keeps the sums in registers
    for (std::size_t r = 0; r < kRegisters; ++r) {
      Lanes term;
      std::memcpy(&term, row + r * kWidth, sizeof term);
      sum[r] += term;
    }
  }
#pragma GCC unroll 8
  for (std::size_t r = 0; r < kRegisters; ++r)
    std::memcpy(sums + r * kWidth, &sum[r], sizeof(Lanes));
}

}  // namespace

void add_rows_sse2(const double* const* rows, std::size_t count, std::size_t column, double* sums) {
  add_rows_with<Lanes2>(rows, count, column, sums);
}

#if defined(__x86_64__) || defined(__i386__)
__attribute__((target("avx2"))) void add_rows_avx2(const double* const* rows, std::size_t count,
                                                   std::size_t column, double* sums) {
  add_rows_with<Lanes4>(rows, count, column, sums);
}

bool has_avx2() { return __builtin_cpu_supports("avx2"); }
#else
// Elsewhere the two-lane form serves.
void add_rows_avx2(const double* const* rows, std::size_t count, std::size_t column, double* sums) {
  add_rows_sse2(rows, count, column, sums);
}

bool has_avx2() { return false; }
#endif

AddRows fastest_add_rows() {
  static const AddRows fastest = has_avx2() ? add_rows_avx2 : add_rows_sse2;
  return fastest;
}

}  // namespace quillon::lingomat
