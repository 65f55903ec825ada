#include "json/data_file_sections.h"

#include <algorithm>
#include <string>

#include <rapidjson/reader.h>

#include "base/file_reading.h"
#include "json/nesting_limits.h"
#include "json/section_gatherer.h"

namespace quillon::lingomat {
namespace {

// Room before anything grows for a token count per sixteen bytes of file, and for five
// eighths as many different tokens, a little more than trained data files hold; within a
// bound for the table, whose slots are touched at once, while a large file may hold few
// tokens.
void reserve_for(SectionGatherer& gatherer, const std::string& text) {
  const std::size_t members = text.size() / 16;
  gatherer.reserve(members, std::min<std::size_t>(members / 8 * 5, 1 << 20));
}

// Gathers `text` into `sections` by the plain scan; false when the parser must read it.
bool gather_plain(const std::string& text, DataFileSections& sections) {
  SectionGatherer gatherer(sections, kRecursionSafeDepth);
  reserve_for(gatherer, text);
  if (!scan_plain(text, gatherer)) return false;
  gatherer.intern_batch();
  return true;
}

// Parses `text` into `sections` with `kFlags`; false when it nests deeper than `limit`.
template <unsigned kFlags>
bool gather_within(const std::string& text, DataFileSections& sections, std::size_t limit,
                   rapidjson::ParseResult& result) {
  SectionGatherer gatherer(sections, limit);
  reserve_for(gatherer, text);
  rapidjson::StringStream stream(text.c_str());
  rapidjson::Reader reader;
  result = reader.Parse<kFlags>(stream, gatherer);
  if (gatherer.too_deep()) return false;
  if (!result.IsError()) gatherer.intern_batch();
  return true;
}

}  // namespace

DataFileSections read_data_file_sections(const std::string& path) {
  const std::string text = read_data_file(path);
  {
    DataFileSections plain;
    if (gather_plain(text, plain)) return plain;
  }
  return parse_nesting_safely<DataFileSections>([&](DataFileSections& sections, bool iterative,
                                                    std::size_t limit,
                                                    rapidjson::ParseResult& result) {
    return iterative ? gather_within<rapidjson::kParseIterativeFlag>(text, sections, limit, result)
                     : gather_within<rapidjson::kParseDefaultFlags>(text, sections, limit, result);
  });
}

}  // namespace quillon::lingomat
