#include "base/SipHash.h"

#include <array>
#include <bit>

namespace installer {

namespace {

constexpr std::size_t kBlock = 8;  // bytes

class State {
 public:
  explicit State(const HashKey& key)
      : _words{key.low ^ 0x736f6d6570736575U, key.high ^ 0x646f72616e646f6dU,
               key.low ^ 0x6c7967656e657261U, key.high ^ 0x7465646279746573U} {}

  void take(std::uint64_t block, int rounds) {
    _words[3] ^= block;
    turn(rounds);
    _words[0] ^= block;
  }

  std::uint64_t finish(int rounds) {
    _words[2] ^= 0xFF;
    turn(rounds);
    return _words[0] ^ _words[1] ^ _words[2] ^ _words[3];
  }

 private:
  void turn(int rounds) {
    for (; rounds > 0; --rounds) {
      mix(0, 1, 13);
      _words[0] = std::rotl(_words[0], 32);
      mix(2, 3, 16);
      mix(0, 3, 21);
      mix(2, 1, 17);
      _words[2] = std::rotl(_words[2], 32);
    }
  }

  void mix(std::size_t sum, std::size_t turned, int bits) {
    _words[sum] += _words[turned];
    _words[turned] = std::rotl(_words[turned], bits) ^ _words[sum];
  }

  std::array<std::uint64_t, 4> _words;
};

// The bytes as a number, the first one lowest, whatever the machine's own order. Written so that
// compilers make one load of a whole block.
std::uint64_t blockAt(const char* bytes) {
  const auto byte = [bytes](int at) {
    return std::uint64_t{static_cast<unsigned char>(bytes[at])} << 8 * at;
  };
  return byte(0) | byte(1) | byte(2) | byte(3) | byte(4) | byte(5) | byte(6) | byte(7);
}

std::uint64_t littleEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (std::size_t at = bytes.size(); at > 0; --at)
    number = number << 8 | static_cast<unsigned char>(bytes[at - 1]);
  return number;
}

}  // namespace

std::uint64_t sipHash(std::string_view bytes, const HashKey& key, int rounds, int lastRounds) {
  State state(key);
  std::string_view rest = bytes;
  for (; rest.size() >= kBlock; rest.remove_prefix(kBlock))
    state.take(blockAt(rest.data()), rounds);
  state.take(littleEndian(rest) | static_cast<std::uint64_t>(bytes.size()) << 56, rounds);
  return state.finish(lastRounds);
}

}  // namespace installer
