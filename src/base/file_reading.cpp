#include "base/file_reading.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace quillon::lingomat {
namespace {

constexpr std::size_t kFirstChunk = 64 * 1024;

[[noreturn]] void refuse(const std::string& path, const std::string& reason,
                         std::errc code = std::errc::io_error) {
  throw DataFileError(path, reason, std::make_error_code(code));
}

[[noreturn]] void refuse_errno(const std::string& path, int error) {
  refuse(path, std::generic_category().message(error), static_cast<std::errc>(error));
}

int fail_open(int error, std::string& reason, std::errc& code) {
  reason = std::generic_category().message(error);
  code = static_cast<std::errc>(error);
  return -1;
}

[[noreturn]] void refuse_too_large(const std::string& path, std::size_t max_bytes) {
  refuse(path, "larger than " + std::to_string(max_bytes) + " bytes", std::errc::file_too_large);
}

}  // namespace

int open_regular_file(const std::string& path, std::string& reason, std::errc& code) {
  // O_NONBLOCK: opening a FIFO for reading would otherwise wait for a writer.
  const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (fd < 0) return fail_open(errno, reason, code);
  FileDescriptor file(fd);
  struct stat info {};
  if (::fstat(fd, &info) != 0) return fail_open(errno, reason, code);
  if (S_ISDIR(info.st_mode)) return fail_open(EISDIR, reason, code);
  if (!S_ISREG(info.st_mode)) {
    reason = kNotRegularFile;
    code = std::errc::invalid_argument;
    return -1;
  }
  // Regular files ignore O_NONBLOCK; clearing it keeps reads plainly blocking anyway.
  const int flags = ::fcntl(fd, F_GETFL);
  if (flags >= 0) ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
  return file.release();
}

DataFileError::DataFileError(const std::string& path, const std::string& reason,
                             std::error_code code)
    : std::ios_base::failure(reason, code),
      message_("cannot load data file " + path + ": " + reason),
      reason_(reason) {}

std::string read_data_file(const std::string& path, std::size_t max_bytes) {
  std::string reason;
  std::errc code{};
  const FileDescriptor file(open_regular_file(path, reason, code));
  if (file.get() < 0) refuse(path, reason, code);
  struct stat info {};
  if (::fstat(file.get(), &info) != 0) refuse_errno(path, errno);
  if (static_cast<std::uint64_t>(info.st_size) > max_bytes) refuse_too_large(path, max_bytes);

  // The size is only a hint: some regular files (under /proc) report 0, and the file may
  // grow while it is read, so reading goes on to the end, within the ceiling. One byte of
  // slack lets the read that finds the end of an unchanged file do without growing.
  std::string text(std::max<std::size_t>(static_cast<std::size_t>(info.st_size) + 1, kFirstChunk),
                   '\0');
  std::size_t used = 0;
  for (;;) {
    if (used == text.size()) text.resize(std::min(text.size() * 2, max_bytes + 1));
    const ssize_t got = ::read(file.get(), &text[used], text.size() - used);
    if (got < 0) {
      if (errno == EINTR) continue;
      refuse_errno(path, errno);
    }
    if (got == 0) break;
    used += static_cast<std::size_t>(got);
    if (used > max_bytes) refuse_too_large(path, max_bytes);
  }
  text.resize(used);
  return text;
}

}  // namespace quillon::lingomat
