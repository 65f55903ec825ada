#pragma once

#include <cstddef>
#include <cstdint>

namespace quillon::lingomat {

// Columns (languages) one call of an AddRows function sums.
inline constexpr std::size_t kSumBlock = 16;

// Adds columns `column` .. `column` + kSumBlock - 1 of the rows rows[0 .. count - 1], in that
// order, to kSumBlock running sums. Every sum gets its terms in the same order as scalar code
// would, so the results are bit for bit those of `sum += term` per position.
using AddRows = void (*)(const double* const* rows, std::size_t count, std::size_t column,
                         double* sums);

void add_rows_sse2(const double* const* rows, std::size_t count, std::size_t column, double* sums);
// Only where the processor has AVX2.
void add_rows_avx2(const double* const* rows, std::size_t count, std::size_t column, double* sums);
bool has_avx2();
AddRows fastest_add_rows();

}  // namespace quillon::lingomat
