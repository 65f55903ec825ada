#include "check/engine_cross_check.h"

#include <exception>

#include "engine/engine.h"

namespace quillon::lingomat::tools {

void cross_check_with_engine(const std::string& path, CheckReport& report) {
  Lingomat::Opts opts;
  opts.classifier.data_file = path;
  try {
    const Lingomat engine(opts);
  } catch (const std::exception& error) {
    report.error(0, std::string("the engine refuses this file: ") + error.what());
  }
}

}  // namespace quillon::lingomat::tools
