#pragma once

// Kept for code not yet moved to base/option_defaults.h.
#include "base/option_defaults.h"
