#include "engine/engine.h"

namespace quillon::lingomat {
namespace {

std::vector<std::string> languages_for(const LanguageLookup& lookup, std::string_view key) {
  const auto found = lookup.find(key);
  return found == lookup.end() ? std::vector<std::string>() : found->second;
}

}  // namespace

std::vector<std::string> Lingomat::identify_by_filename(std::string_view file_name) const {
  return languages_for(filenames_, file_name);
}

std::vector<std::string> Lingomat::identify_by_shebang(std::string_view code) const {
  return identify_by_interpreter(tokenizer_.shebang_view(code));
}

std::vector<std::string> Lingomat::identify_by_interpreter(std::string_view interpreter) const {
  return languages_for(interpreters_, interpreter);
}

std::string_view extension_of(std::string_view file_name) {
  // Only the last dot counts, wherever it is: "archive.tar.gz" is looked up as ".gz".
  const auto dot = file_name.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : file_name.substr(dot);
}

std::vector<std::string> Lingomat::identify_by_extension(std::string_view file_name) const {
  const std::string_view extension = extension_of(file_name);
  if (extension.empty()) return {};
  return languages_for(extnames_, extension);
}

}  // namespace quillon::lingomat
