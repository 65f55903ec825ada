#pragma once

#include <string_view>

namespace quillon::lingomat::cli {

// How many leading bytes of a text the prose test reads: as many as the engine tokenizes.
inline constexpr std::size_t kProseWindow = 10240;

// True when the start of `text` reads like English prose: at least three words in ten are
// function words ("the", "of", "and", ...). Licences, changelogs and READMEs do; source
// code, even with long comments, rarely does.
bool reads_as_prose(std::string_view text);

}  // namespace quillon::lingomat::cli
