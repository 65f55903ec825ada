#pragma once

#include <string>

// The status codes of the C interface (their values are defined by its header) and the one
// mapping from the exceptions raised inside the library to them. The plug-in's entry points
// and the tools all report failures through this mapping, so they cannot disagree.
#include "lingomat.h"

namespace quillon::lingomat {

// Only inside a catch handler: the status code of the exception in flight. Data-file content
// errors, allocation failure, stream failure, logic errors and everything else, in that order.
int status_of_current_exception() noexcept;

// Only inside a catch handler: the message of the exception in flight, empty when it carries
// none.
std::string message_of_current_exception();

// The fixed text of a status code; "Unknown error" for a code that is not one.
const char* status_text(int status) noexcept;

}  // namespace quillon::lingomat
