#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "engine/engine.h"

namespace quillon::lingomat::bench {

// The engine for `opts`, or the end of the run with the reason: without one there is
// nothing to measure.
inline std::unique_ptr<Lingomat> created_engine(const Lingomat::Opts& opts) {
  EngineCreation created = create_engine(opts);
  if (created.engine == nullptr) {
    std::fprintf(stderr, "cannot create the engine: %s: %s\n", status_text(created.status),
                 created.reason.c_str());
    std::exit(1);
  }
  return std::move(created.engine);
}

}  // namespace quillon::lingomat::bench
