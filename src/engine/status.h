#pragma once

#include <string>

#include "base/status.h"

// The one mapping from the exceptions raised inside the library to status codes. The
// plug-in's entry points and the tools all report failures through it, so they cannot
// disagree.
namespace quillon::lingomat {

// Only inside a catch handler: the status code of the exception in flight. Data-file content
// errors, allocation failure, stream failure, logic errors and everything else, in that order.
int status_of_current_exception() noexcept;

// Only inside a catch handler: the message of the exception in flight, empty when it carries
// none.
std::string message_of_current_exception();

}  // namespace quillon::lingomat
