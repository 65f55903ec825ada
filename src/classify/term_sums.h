#pragma once

#include <cstddef>
#include <cstdint>

namespace quillon::lingomat {

// Columns (languages) one call of an AddRows function sums.
inline constexpr std::size_t kSumBlock = 16;

// Adds the rows of terms starting at rows + offsets[i], i = 0 .. count - 1, in that order, to
// kSumBlock running sums. Every sum gets its terms in the same order as scalar code would, so
// the results are bit for bit those of `sum += term` per position.
using AddRows = void (*)(const double* rows, const std::uint32_t* offsets, std::size_t count,
                         double* sums);

void add_rows_sse2(const double* rows, const std::uint32_t* offsets, std::size_t count,
                   double* sums);
// Only where the processor has AVX2.
void add_rows_avx2(const double* rows, const std::uint32_t* offsets, std::size_t count,
                   double* sums);
bool has_avx2();
AddRows fastest_add_rows();

}  // namespace quillon::lingomat
