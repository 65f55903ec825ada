#pragma once

// The status codes every entry point reports, with the names and values of the C interface.
// Its public header restates them so that it stands alone; the plug-in sees both, so a value
// that differed would be a macro redefinition, which the compiler reports.
#define LINGOMAT_SUCCESS 0
#define LINGOMAT_ERROR_UNKNOWN (-1)
#define LINGOMAT_ERROR_BAD_PARAMETER (-2)
#define LINGOMAT_ERROR_MEMORY (-3)
#define LINGOMAT_ERROR_FILE_IO (-4)
#define LINGOMAT_ERROR_JSON (-5)

namespace quillon::lingomat {

// The fixed text of a status code; "Unknown error" for a code that is not one.
const char* status_text(int status) noexcept;

}  // namespace quillon::lingomat
