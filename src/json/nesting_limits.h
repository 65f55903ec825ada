#pragma once

#include <cstddef>
#include <string>

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include "json/json_exception.h"

namespace quillon::lingomat {

// The ordinary parser recurses once per nesting level, so a hostile file of a million
// brackets would exhaust the stack, even a small host thread's at a few hundred. Real data
// files nest three levels; a file that nests deeper than this is parsed again by the
// iterative parser, which accepts and rejects the same documents.
inline constexpr std::size_t kRecursionSafeDepth = 32;
// Deeper documents are refused: each level costs the parser memory, so a file of nothing but
// '[' would otherwise take many times its size before failing. No data file nests anywhere
// near this deep.
inline constexpr std::size_t kMaxDepth = 1000;  // as the message says

// Parses with `parse(target, iterative, depth_limit, result)`, which returns false when the
// text nests deeper than the limit: the ordinary parser first, then, for a text that nests
// deeper than it is safe for, the iterative one, which accepts and rejects the same texts.
// Throws JsonException for malformed JSON and for a text nested deeper than kMaxDepth.
template <typename Target, typename Parse>
Target parse_nesting_safely(Parse parse) {
  Target target;
  rapidjson::ParseResult result;
  if (!parse(target, false, kRecursionSafeDepth, result)) {
    Target deep;
    if (!parse(deep, true, kMaxDepth, result)) {
      throw JsonException("nested deeper than 1000 levels");
    }
    if (result.IsError()) throw JsonException(rapidjson::GetParseError_En(result.Code()));
    return deep;
  }
  if (result.IsError()) throw JsonException(rapidjson::GetParseError_En(result.Code()));
  return target;
}

}  // namespace quillon::lingomat
