// The engine's entry points for JavaScript. Identification goes through the same core the
// plug-in uses, with the same options and the same null answers; ranking and explanation
// read the engine's own trace of one identification.
#include <emscripten/emscripten.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "engine/engine.h"
#include "engine/status.h"

using quillon::lingomat::Lingomat;
using quillon::lingomat::Ranking;
using quillon::lingomat::status_of_current_exception;

namespace {

// How many tokens an explanation lists as the ones that decided.
constexpr std::size_t kDecidingTokens = 12;

struct WasmEngine {
  explicit WasmEngine(std::unique_ptr<Lingomat> created)
      : owned(std::move(created)), engine(*owned) {
    const auto& classifier = engine.classifier();
    for (const auto& name : classifier.languages()) {
      index_of.emplace(name, static_cast<std::uint32_t>(names.size()));
      names.push_back(classifier.language_resident_c_str(name));
    }
  }

  std::unique_ptr<Lingomat> owned;
  const Lingomat& engine;
  std::vector<const char*> names;  // the classifier's languages, in its order
  std::map<std::string, std::uint32_t, std::less<>> index_of;  // into `names`
  // The last ranking handed out, as language indices and scores, read by JavaScript in place.
  std::vector<std::uint32_t> ranked_languages;
  std::vector<double> ranked_scores;
  std::string text_result;  // the last explanation, as JSON
};

std::string_view view(const char* bytes, std::uint32_t length) {
  return length == 0 ? std::string_view() : std::string_view(bytes, length);
}

void keep_ranking(WasmEngine& wasm, const Ranking& ranking) {
  wasm.ranked_languages.clear();
  wasm.ranked_scores.clear();
  for (const auto& [language, score] : ranking) {
    wasm.ranked_languages.push_back(wasm.index_of.at(language));
    wasm.ranked_scores.push_back(score);
  }
}

template <typename Writer>
void write_string(Writer& writer, const std::string& text) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

template <typename Writer>
void write_list(Writer& writer, const char* key, const std::vector<std::string>& list) {
  writer.Key(key);
  writer.StartArray();
  for (const auto& name : list) write_string(writer, name);
  writer.EndArray();
}

const char* reason_name(const Lingomat::Trace& trace) {
  switch (trace.reason) {
    case Lingomat::Trace::Reason::kOnlyCandidate:
      return "only candidate";
    case Lingomat::Trace::Reason::kClassifier:
      return "classifier";
    case Lingomat::Trace::Reason::kFirstCandidate:
      return "first candidate";
    case Lingomat::Trace::Reason::kNone:
      break;
  }
  return "none";
}

struct DecidingToken {
  std::string token;
  std::uint32_t count = 0;
  double margin = 0.0;  // summed over its occurrences, in natural-log units
};

// The tokens that most favour the answer over its runner-up; with none, the tokens the
// answer's statistics find most likely. Each token's term is the classifier's own, so the
// margins add up to the difference of the two likelihoods.
std::vector<DecidingToken> deciding_tokens(const Lingomat& engine, std::string_view code,
                                           const Lingomat::Trace& trace, std::string& rival_name) {
  const auto& classifier = engine.classifier();
  const std::vector<std::string> languages = classifier.languages();
  if (!std::binary_search(languages.begin(), languages.end(), trace.answer)) return {};
  const std::vector<std::string> text_tokens = engine.tokenizer().extract_tokens(code);
  // The runner-up among the candidates; when the answer had no rival there, the best other
  // language the classifier would have ranked with no candidates at all.
  Ranking others = trace.ranking;
  if (others.size() < 2) others = classifier.classify(text_tokens, engine.default_restrictions());
  const std::string* rival = nullptr;
  for (const auto& entry : others) {
    if (entry.first != trace.answer) {
      rival = &entry.first;
      rival_name = entry.first;
      break;
    }
  }
  std::map<std::string, std::uint32_t> counts;
  for (const auto& token : text_tokens) ++counts[token];

  std::vector<DecidingToken> tokens;
  std::vector<std::string> one(1);
  for (const auto& [token, count] : counts) {
    one[0] = token;
    const double term = classifier.tokens_probability(one, trace.answer);
    const double base = rival != nullptr ? classifier.tokens_probability(one, *rival) : 0.0;
    const double margin = (term - base) * count;
    if (std::isfinite(margin)) tokens.push_back({token, count, margin});
  }
  const std::size_t shown = std::min(kDecidingTokens, tokens.size());
  std::partial_sort(tokens.begin(), tokens.begin() + shown, tokens.end(),
                    [](const DecidingToken& a, const DecidingToken& b) {
                      return a.margin > b.margin || (a.margin == b.margin && a.token < b.token);
                    });
  tokens.resize(shown);
  return tokens;
}

std::string explanation_json(const Lingomat& engine, std::string_view code,
                             const Lingomat::Trace& trace) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.StartObject();
  write_list(writer, "byFilename", trace.by_filename);
  writer.Key("interpreter");
  write_string(writer, trace.interpreter);
  write_list(writer, "byInterpreter", trace.by_interpreter);
  writer.Key("extension");
  write_string(writer, trace.extension);
  write_list(writer, "byExtension", trace.by_extension);
  write_list(writer, "candidates", trace.candidates);
  writer.Key("tokenCount");
  writer.Uint64(trace.token_count);
  writer.Key("keptCount");
  writer.Uint64(trace.kept.size());
  writer.Key("reason");
  writer.String(reason_name(trace));
  std::string rival;
  const auto tokens = deciding_tokens(engine, code, trace, rival);
  writer.Key("rival");
  write_string(writer, rival);
  writer.Key("decidingTokens");
  writer.StartArray();
  for (const auto& token : tokens) {
    writer.StartObject();
    writer.Key("token");
    write_string(writer, token.token);
    writer.Key("count");
    writer.Uint(token.count);
    writer.Key("margin");
    writer.Double(token.margin);
    writer.EndObject();
  }
  writer.EndArray();
  writer.EndObject();
  return std::string(buffer.GetString(), buffer.GetSize());
}

}  // namespace

extern "C" {

// Counts arrive as doubles: JavaScript numbers, checked to be whole and in range before.
EMSCRIPTEN_KEEPALIVE int lm_create(const char* data_path, double max_bytes, double max_tokens,
                                   double min_tokens, double min_score_per_token,
                                   const char* const* only, std::uint32_t only_count,
                                   WasmEngine** engine) {
  try {
    Lingomat::Opts opts;
    opts.classifier.data_file = data_path;
    opts.tokenizer.max_bytes = static_cast<std::uint64_t>(max_bytes);
    opts.tokenizer.max_tokens = static_cast<std::uint64_t>(max_tokens);
    opts.classifier.min_tokens = static_cast<std::uint64_t>(min_tokens);
    opts.classifier.min_score_per_token = min_score_per_token;
    opts.restrictions.assign(only, only + only_count);
    quillon::lingomat::EngineCreation created = quillon::lingomat::create_engine(opts);
    if (created.engine == nullptr) return created.status;
    *engine = new WasmEngine(std::move(created.engine));
    return LINGOMAT_SUCCESS;
  } catch (...) {
    return status_of_current_exception();
  }
}

EMSCRIPTEN_KEEPALIVE void lm_destroy(WasmEngine* engine) { delete engine; }

EMSCRIPTEN_KEEPALIVE std::uint32_t lm_language_count(const WasmEngine* engine) {
  return static_cast<std::uint32_t>(engine->names.size());
}

// The classifier's copy of the name, valid as long as the engine.
EMSCRIPTEN_KEEPALIVE const char* lm_language_name(const WasmEngine* engine, std::uint32_t index) {
  return index < engine->names.size() ? engine->names[index] : nullptr;
}

// The answer as the plug-in hands it out (null for none), or null with a failure in `status`.
EMSCRIPTEN_KEEPALIVE const char* lm_identify(const WasmEngine* engine, const char* code,
                                             std::uint32_t code_length, const char* file_name,
                                             std::uint32_t name_length, int* status) {
  try {
    const std::string answer =
        engine->engine.identify(view(file_name, name_length), view(code, code_length));
    *status = LINGOMAT_SUCCESS;
    return engine->engine.classifier().language_resident_c_str(answer);
  } catch (...) {
    *status = status_of_current_exception();
    return nullptr;
  }
}

// The classifier's ranking before the floor, kept for lm_ranked_*; the number of entries, or
// a negative status.
EMSCRIPTEN_KEEPALIVE int lm_rank(WasmEngine* engine, const char* code, std::uint32_t code_length,
                                 const char* file_name, std::uint32_t name_length) {
  try {
    const auto trace = engine->engine.trace(view(file_name, name_length), view(code, code_length));
    keep_ranking(*engine, trace.ranking);
    return static_cast<int>(trace.ranking.size());
  } catch (...) {
    return status_of_current_exception();
  }
}

// As lm_rank, and the rest of the trace as JSON for lm_text_result.
EMSCRIPTEN_KEEPALIVE int lm_explain(WasmEngine* engine, const char* code, std::uint32_t code_length,
                                    const char* file_name, std::uint32_t name_length) {
  try {
    const std::string_view text = view(code, code_length);
    const auto trace = engine->engine.trace(view(file_name, name_length), text);
    keep_ranking(*engine, trace.ranking);
    engine->text_result = explanation_json(engine->engine, text, trace);
    return static_cast<int>(trace.ranking.size());
  } catch (...) {
    return status_of_current_exception();
  }
}

EMSCRIPTEN_KEEPALIVE const std::uint32_t* lm_ranked_languages(const WasmEngine* engine) {
  return engine->ranked_languages.data();
}

EMSCRIPTEN_KEEPALIVE const double* lm_ranked_scores(const WasmEngine* engine) {
  return engine->ranked_scores.data();
}

EMSCRIPTEN_KEEPALIVE const char* lm_text_result(const WasmEngine* engine) {
  return engine->text_result.c_str();
}

EMSCRIPTEN_KEEPALIVE const char* lm_status_text(int status) {
  return quillon::lingomat::status_text(status);
}

}  // extern "C"
