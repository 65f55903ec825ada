#pragma once

// Kept for code not yet moved to base/data_file_keys.h.
#include "base/data_file_keys.h"
