#include "base/token_hash.h"

#if defined(__EMSCRIPTEN__)
#include <unistd.h>  // getentropy: the browser's or Node's generator
#else
#include <sys/random.h>
#endif

#include <chrono>
#include <cstring>

namespace quillon::lingomat {
namespace {

std::uint64_t random_word() {
  std::uint64_t word = 0;
  // The kernel's generator, without opening a device file; GRND_NONBLOCK so that a host
  // started before the pool is ready never waits.
#if defined(__EMSCRIPTEN__)
  if (::getentropy(&word, sizeof word) == 0) return word;
#else
  if (::getrandom(&word, sizeof word, GRND_NONBLOCK) == sizeof word) return word;
#endif
  // Without it: the clock and an address, still unknown to whoever wrote the input.
  static std::uint64_t counter = 0;
  word = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  word ^= reinterpret_cast<std::uintptr_t>(&word) * 0x9E3779B97F4A7C15ull;
  return word ^ (++counter * 0xBF58476D1CE4E5B9ull);
}

std::uint64_t rotl(std::uint64_t x, int bits) { return (x << bits) | (x >> (64 - bits)); }

struct SipState {
  std::uint64_t v0, v1, v2, v3;
  void round() {
    v0 += v1;
    v1 = rotl(v1, 13);
    v1 ^= v0;
    v0 = rotl(v0, 32);
    v2 += v3;
    v3 = rotl(v3, 16);
    v3 ^= v2;
    v0 += v3;
    v3 = rotl(v3, 21);
    v3 ^= v0;
    v2 += v1;
    v1 = rotl(v1, 17);
    v1 ^= v2;
    v2 = rotl(v2, 32);
  }
};

std::uint64_t load_le(const char* p, std::size_t n) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < n; ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(p[i])} << (8 * i);
  }
  return word;
}

// SipHash with `kCompression` rounds per word and `kFinal` rounds at the end.
template <int kCompression, int kFinal>
std::uint64_t siphash(std::string_view bytes, const std::uint64_t key[2]) {
  SipState s{key[0] ^ 0x736f6d6570736575ull, key[1] ^ 0x646f72616e646f6dull,
             key[0] ^ 0x6c7967656e657261ull, key[1] ^ 0x7465646279746573ull};
  auto absorb = [&s](std::uint64_t word) {
    s.v3 ^= word;
    for (int i = 0; i < kCompression; ++i) s.round();
    s.v0 ^= word;
  };
  const char* p = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= 8; left -= 8, p += 8) absorb(load_le(p, 8));
  absorb(load_le(p, left) | (std::uint64_t{bytes.size() & 0xFF} << 56));
  s.v2 ^= 0xFF;
  for (int i = 0; i < kFinal; ++i) s.round();
  return s.v0 ^ s.v1 ^ s.v2 ^ s.v3;
}

}  // namespace

std::uint64_t siphash13(std::string_view bytes, const std::uint64_t key[2]) {
  return siphash<1, 3>(bytes, key);
}

std::uint64_t siphash24(std::string_view bytes, const std::uint64_t key[2]) {
  return siphash<2, 4>(bytes, key);
}

TokenHasher::TokenHasher() : seed_(random_word()), key_{random_word(), random_word()} {}

namespace {

std::uint64_t load64(const char* p) {
  std::uint64_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

std::uint64_t load32(const char* p) {
  std::uint32_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

}  // namespace

std::uint64_t TokenHasher::fast(std::string_view token) const {
  // Eight bytes at a time, multiply-and-rotate mixing: tokens are short and hashed often.
  // The last bytes come from whole loads that overlap bytes already taken, never from a
  // byte loop: bytes stored one by one and read back as a word stall the load. Within one
  // length every byte still lands in the mixed word, so equal-length tokens stay distinct.
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15ull;
  const std::size_t size = token.size();
  const char* p = token.data();
  std::uint64_t hash = seed_ ^ size;
  if (size > 8) {
    const char* const last = p + size - 8;
    for (; p < last; p += 8) {
      hash = (hash ^ load64(p)) * kMultiplier;
      hash ^= hash >> 29;
    }
    hash = (hash ^ load64(last)) * kMultiplier;
  } else if (size >= 4) {
    hash = (hash ^ (load32(p) | load32(p + size - 4) << 32)) * kMultiplier;
  } else if (size > 0) {
    const auto byte = [p](std::size_t i) {
      return std::uint64_t{static_cast<unsigned char>(p[i])};
    };
    hash = (hash ^ (byte(0) | byte(size / 2) << 8 | byte(size - 1) << 16)) * kMultiplier;
  }
  hash ^= hash >> 32;
  hash *= kMultiplier;
  return hash ^ (hash >> 29);
}

std::uint64_t TokenHasher::keyed(std::string_view token) const { return siphash13(token, key_); }

KeyedStringHash::KeyedStringHash() : key_{random_word(), random_word()} {}

}  // namespace quillon::lingomat
