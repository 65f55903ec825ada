#include "json/json_member_index.h"

namespace quillon::lingomat {

JsonMemberIndex::JsonMemberIndex(const JsonConstObject& object) {
  members_.reserve(object.MemberCount());
  for (const auto& member : object) {
    // A parsed document only has string names; anything else could never be found by name.
    if (!member.name.IsString()) continue;
    // emplace leaves an existing entry alone, so the first of equal names stays.
    members_.emplace(std::string_view(member.name.GetString(), member.name.GetStringLength()),
                     &member.value);
  }
}

const JsonValue* JsonMemberIndex::find(std::string_view name) const {
  const auto found = members_.find(name);
  return found == members_.end() ? nullptr : found->second;
}

const JsonValue& JsonMemberIndex::at(std::string_view name) const {
  const JsonValue* value = find(name);
  if (value == nullptr) throw JsonException(kMissingKey);
  return *value;
}

}  // namespace quillon::lingomat
