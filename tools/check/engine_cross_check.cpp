#include "check/engine_cross_check.h"

#include "engine/engine.h"

namespace quillon::lingomat::tools {

void cross_check_with_engine(const std::string& path, CheckReport& report) {
  Lingomat::Opts opts;
  opts.classifier.data_file = path;
  const EngineCreation created = create_engine(opts);
  if (created.engine == nullptr) {
    report.error(0, "the engine refuses this file: " + created.reason);
  }
}

}  // namespace quillon::lingomat::tools
