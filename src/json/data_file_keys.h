#pragma once

// The top-level keys of the data file, shared by the code that writes it and the code that
// reads it, so that the two cannot drift apart.
namespace quillon::lingomat::data_keys {

// Name lookups: language → list of names.
inline constexpr char kFilenames[] = "filenames";
inline constexpr char kExtnames[] = "extnames";
inline constexpr char kInterpreters[] = "interpreters";

// Sample statistics.
inline constexpr char kLanguages[] = "languages";
inline constexpr char kLanguageTokens[] = "language_tokens";
inline constexpr char kTokens[] = "tokens";
inline constexpr char kTokensTotal[] = "tokens_total";
inline constexpr char kLanguagesTotal[] = "languages_total";

}  // namespace quillon::lingomat::data_keys
