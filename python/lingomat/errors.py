"""The exception raised for the library's failures."""

# The library's status codes, by name.
SUCCESS = 0
UNKNOWN = -1
BAD_PARAMETER = -2
MEMORY = -3
FILE_IO = -4
JSON = -5


class LingomatError(RuntimeError):
    """A failure reported by the library: `status` is its code, the message starts with its
    text ("File I/O", "Unable to process JSON", ...)."""

    def __init__(self, message, status):
        super().__init__(message)
        self.status = status
