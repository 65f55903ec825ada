#include "common/input_text.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <vector>

#include "json/file_descriptor.h"

namespace quillon::lingomat::tools {

namespace {

constexpr std::size_t kChunk = 1 << 20;

std::string errno_text(int error) { return std::generic_category().message(error); }

InputResult failed(std::string reason) {
  InputResult result;
  result.error = std::move(reason);
  return result;
}

InputResult read_instead(ReadResult read) {
  InputResult result;
  result.status = read.status;
  result.error = std::move(read.error);
  if (read.status == ReadStatus::kRead) result.text = InputText(std::move(read.content));
  return result;
}

// An unlinked file in $TMPDIR, gone as soon as its last descriptor and mapping are.
int unnamed_temporary_file() {
  const char* dir = std::getenv("TMPDIR");
  const std::string folder = dir != nullptr && *dir != '\0' ? dir : "/tmp";
  const int fd = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (fd >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return fd;
  // Filesystems without O_TMPFILE: a named file, removed at once.
  std::string pattern = folder + "/lingomat_stdin_XXXXXX";
  const int named = ::mkostemp(pattern.data(), O_CLOEXEC);
  if (named >= 0) ::unlink(pattern.c_str());
  return named;
}

bool write_all(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(fd, data, size);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

// Reads into `buffer` until it holds `limit` bytes or the stream ends; -1 (errno set) on error.
ssize_t fill(int fd, std::string& buffer, std::size_t limit) {
  while (buffer.size() < limit) {
    const std::size_t used = buffer.size();
    buffer.resize(std::min(limit, used + kChunk));
    const ssize_t got = ::read(fd, &buffer[used], buffer.size() - used);
    const int error = errno;
    buffer.resize(used + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    if (got == 0) return 0;
    if (got < 0) {
      if (error == EINTR) continue;
      errno = error;
      return -1;
    }
  }
  return static_cast<ssize_t>(buffer.size());
}

// Writes `head` and then the rest of the stream to a temporary file, and maps it.
InputResult spool(int fd, std::string head) {
  const FileDescriptor spool_file(unnamed_temporary_file());
  if (spool_file.get() < 0) return failed("cannot spool standard input: " + errno_text(errno));
  if (!write_all(spool_file.get(), head.data(), head.size())) {
    return failed("cannot spool standard input: " + errno_text(errno));
  }
  head = std::string();  // from here on, one chunk at a time
  std::string chunk;
  for (;;) {
    chunk.clear();
    if (fill(fd, chunk, kChunk) < 0) return failed(errno_text(errno));
    if (chunk.empty()) break;
    if (!write_all(spool_file.get(), chunk.data(), chunk.size())) {
      return failed("cannot spool standard input: " + errno_text(errno));
    }
  }
  struct stat info {};
  InputResult result;
  if (::fstat(spool_file.get(), &info) != 0 ||
      !result.text.map(spool_file.get(), static_cast<std::size_t>(info.st_size), 0)) {
    return failed("cannot map spooled standard input: " + errno_text(errno));
  }
  result.status = ReadStatus::kRead;
  return result;
}

}  // namespace

InputText::InputText(InputText&& other) noexcept { *this = std::move(other); }

InputText& InputText::operator=(InputText&& other) noexcept {
  if (this == &other) return *this;
  unmap();
  mapping_ = other.mapping_;
  mapped_size_ = other.mapped_size_;
  other.mapping_ = nullptr;
  other.mapped_size_ = 0;
  if (mapping_ != nullptr) {
    view_ = other.view_;
  } else {
    owned_ = std::move(other.owned_);
    view_ = owned_;  // a moved short string changes address
  }
  other.owned_.clear();
  other.view_ = std::string_view();
  return *this;
}

bool InputText::map(int fd, std::size_t size, std::size_t offset) {
  unmap();
  owned_.clear();
  view_ = std::string_view();
  if (size == 0) return true;
  void* mapping = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
  if (mapping == MAP_FAILED) return false;
  mapping_ = mapping;
  mapped_size_ = size;
  view_ = std::string_view(static_cast<const char*>(mapping) + offset, size - offset);
  return true;
}

void InputText::unmap() {
  if (mapping_ != nullptr) ::munmap(mapping_, mapped_size_);
  mapping_ = nullptr;
  mapped_size_ = 0;
}

InputResult open_input_file(const std::string& path, bool stop_if_binary) {
  std::string reason;
  const FileDescriptor file(open_regular_file(path, reason));
  if (file.get() < 0) return failed(std::move(reason));
  struct stat info {};
  InputResult result;
  if (::fstat(file.get(), &info) != 0 || info.st_size <= 0 ||
      !result.text.map(file.get(), static_cast<std::size_t>(info.st_size), 0)) {
    return read_instead(try_read_descriptor(file.get(), stop_if_binary));
  }
  result.status =
      stop_if_binary && looks_binary(result.text.view()) ? ReadStatus::kBinary : ReadStatus::kRead;
  return result;
}

InputResult open_input_descriptor(int fd, std::size_t memory_limit) {
  struct stat info {};
  if (::fstat(fd, &info) == 0) {
    if (S_ISDIR(info.st_mode)) return failed(errno_text(EISDIR));
    const off_t offset = S_ISREG(info.st_mode) ? ::lseek(fd, 0, SEEK_CUR) : -1;
    InputResult result;
    if (offset >= 0 && offset < info.st_size &&
        result.text.map(fd, static_cast<std::size_t>(info.st_size),
                        static_cast<std::size_t>(offset))) {
      result.status = ReadStatus::kRead;
      return result;
    }
  }
  std::string head;
  if (fill(fd, head, memory_limit) < 0) return failed(errno_text(errno));
  if (head.size() < memory_limit) {
    InputResult result;
    result.status = ReadStatus::kRead;
    result.text = InputText(std::move(head));
    return result;
  }
  return spool(fd, std::move(head));
}

}  // namespace quillon::lingomat::tools
