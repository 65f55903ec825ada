#include "common/input_text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "base/file_reading.h"
#include "input/identification_text.h"

namespace quillon::lingomat::tools {

namespace {

// Enough for every ordinary file at the default limits in one read.
constexpr std::size_t kFirstRead = std::size_t{64} << 10;
// Bytes kept clear of the end of a prefix that is not the whole input: a UTF-16 prefix may
// end inside a character, whose conversion must not count as read.
constexpr std::size_t kTailMargin = 8;

std::string errno_text(int error) { return std::generic_category().message(error); }

InputResult failed(std::string reason) {
  InputResult result;
  result.error = std::move(reason);
  return result;
}

// Reads until `buffer` holds `limit` bytes or the input ends; false (errno set) on error.
// A regular file of `known_size` bytes (0: not known) ends where a read that reached that
// size comes back short, which spares the read that would only find the end. Files that
// report no size (some under /proc) may read short anywhere, so they are read to the end.
bool fill(int fd, std::string& buffer, std::size_t limit, std::uint64_t known_size, bool& at_end) {
  at_end = false;
  while (buffer.size() < limit) {
    const std::size_t used = buffer.size();
    buffer.resize(limit);
    const ssize_t got = ::read(fd, &buffer[used], limit - used);
    const int error = errno;
    buffer.resize(used + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    const bool short_at_size =
        known_size != 0 && buffer.size() >= known_size && buffer.size() < limit;
    if (got == 0 || (got > 0 && short_at_size)) {
      at_end = true;
      return true;
    }
    if (got < 0 && error != EINTR) {
      errno = error;
      return false;
    }
  }
  return true;
}

// Counts tokens and keeps none: only how far the tokenizer reads matters here.
class TokenCounter : public TokenSink {
 protected:
  void take_view(std::string_view) override {}
  void take_copy(std::string_view) override {}
};

// Whether identification of `prefix` reads nothing beyond it, so that it answers for the
// whole input.
bool identification_fits(const std::string& prefix, const Tokenizer& tokenizer) {
  const IdentificationText text(prefix, tokenizer);
  TokenCounter counter;
  const std::size_t reach = tokenizer.extract_tokens_and_reach(text.view(), counter);
  return reach + kTailMargin <= text.view().size();
}

// `size_hint` is the bytes left in a regular file, else 0.
InputResult read_prefix(int fd, std::uint64_t size_hint, bool stop_if_binary,
                        const Tokenizer* tokenizer, std::size_t ceiling) {
  InputResult result;
  // One more byte than a regular file holds finds its end in the same read.
  std::size_t target = std::min(ceiling, size_hint != 0 && size_hint < kFirstRead
                                             ? static_cast<std::size_t>(size_hint) + 1
                                             : kFirstRead);
  for (bool first = true;; first = false) {
    bool at_end = false;
    if (!fill(fd, result.text, target, size_hint, at_end)) return failed(errno_text(errno));
    if (first && stop_if_binary && looks_binary(result.text)) {
      result.status = ReadStatus::kBinary;
      return result;
    }
    if (at_end || (tokenizer != nullptr && identification_fits(result.text, *tokenizer))) break;
    if (target >= ceiling) {
      result.truncated = true;
      break;
    }
    target = ceiling / 4 < target ? ceiling : target * 4;
    // Room for every later read at once: growing the buffer would copy it, and the room is
    // only committed as it is read into.
    if (result.text.capacity() < ceiling) result.text.reserve(ceiling);
  }
  result.status = ReadStatus::kRead;
  result.size = std::max<std::uint64_t>(size_hint, result.text.size());
  return result;
}

}  // namespace

InputResult open_input_file(const std::string& path, bool stop_if_binary,
                            const Tokenizer* tokenizer, std::size_t ceiling) {
  std::string reason;
  const FileDescriptor file(open_regular_file(path, reason));
  if (file.get() < 0) return failed(std::move(reason));
  return open_input_descriptor(file.get(), stop_if_binary, tokenizer, ceiling);
}

InputResult open_input_descriptor(int fd, bool stop_if_binary, const Tokenizer* tokenizer,
                                  std::size_t ceiling) {
  struct stat info {};
  std::uint64_t size_hint = 0;
  if (::fstat(fd, &info) == 0) {
    if (S_ISDIR(info.st_mode)) return failed(errno_text(EISDIR));
    if (S_ISREG(info.st_mode)) {
      const off_t offset = ::lseek(fd, 0, SEEK_CUR);
      if (offset >= 0 && offset < info.st_size) {
        size_hint = static_cast<std::uint64_t>(info.st_size - offset);
      }
    }
  }
  return read_prefix(fd, size_hint, stop_if_binary, tokenizer, ceiling);
}

InputResult open_input_regular(int fd, std::uint64_t size, bool stop_if_binary,
                               const Tokenizer* tokenizer, std::size_t ceiling) {
  return read_prefix(fd, size, stop_if_binary, tokenizer, ceiling);
}

}  // namespace quillon::lingomat::tools
