#pragma once

// The keys of the data file and the engine's messages about them, shared by the code that
// writes it, the code that reads it and the checker, so that they cannot drift apart.
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

// The trainer's record of a calibration, which the engine ignores and the checker reads:
// counts scaled by kCountScale, kTokensTotal derived from the unseen-token total, and with
// kDiscriminative, counts that encode re-estimated weights.
inline constexpr char kCalibration[] = "calibration";
inline constexpr char kCountScale[] = "count_scale";
inline constexpr char kCountedTokens[] = "counted_tokens";
inline constexpr char kDiscriminative[] = "discriminative";
inline constexpr char kEpochs[] = "epochs";
inline constexpr char kRate[] = "rate";
inline constexpr char kMargin[] = "margin";

// What the engine says of content it refuses.
inline constexpr const char* kNotAnObject = "Expected JSON value to be an object";
inline constexpr const char* kMissingKey = "JSON object missing expected key";
inline constexpr const char* kUnexpectedType = "JSON value was of an unexpected type";
inline constexpr const char* kNotAString = "Expected JSON value to be a string";

}  // namespace quillon::lingomat::data_keys
