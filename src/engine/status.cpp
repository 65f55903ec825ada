#include "engine/status.h"

#include <exception>
#include <ios>
#include <new>
#include <stdexcept>

#include "json/json_exception.h"

namespace quillon::lingomat {

// Rethrows the exception in flight to translate it. Nothing may escape: the last clause
// takes whatever the others do not.
int status_of_current_exception() noexcept {
  try {
    throw;
  } catch (const JsonException&) {
    return LINGOMAT_ERROR_JSON;
  } catch (const std::bad_alloc&) {
    return LINGOMAT_ERROR_MEMORY;
  } catch (const std::ios_base::failure&) {
    return LINGOMAT_ERROR_FILE_IO;
  } catch (const std::logic_error&) {
    return LINGOMAT_ERROR_BAD_PARAMETER;
  } catch (...) {
    return LINGOMAT_ERROR_UNKNOWN;
  }
}

std::string message_of_current_exception() {
  try {
    throw;
  } catch (const std::exception& e) {
    return e.what();
  } catch (...) {
    return std::string();
  }
}

}  // namespace quillon::lingomat
