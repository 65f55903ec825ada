#include "base/status.h"

namespace quillon::lingomat {

const char* status_text(int status) noexcept {
  switch (status) {
    case LINGOMAT_SUCCESS:
      return "Success";
    case LINGOMAT_ERROR_BAD_PARAMETER:
      return "Bad parameter";
    case LINGOMAT_ERROR_MEMORY:
      return "Memory";
    case LINGOMAT_ERROR_FILE_IO:
      return "File I/O";
    case LINGOMAT_ERROR_JSON:
      return "Unable to process JSON";
    default:
      return "Unknown error";
  }
}

}  // namespace quillon::lingomat
