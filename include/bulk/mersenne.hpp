#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace bulk {

/// The generator behind `random.Random`, drawing as its methods do. MT19937: M. Matsumoto and T. Nishimura, "Mersenne
/// Twister: a 623-dimensionally equidistributed uniform pseudo-random number generator", ACM TOMACS 8 (1998) 1.
class Mersenne {
  public:
    static constexpr std::size_t kWords = 624;
    using Words = std::array<std::uint32_t, kWords>;

    /// Goes on from a state.
    ///
    /// Args:
    ///     words: The block.
    ///     used: How many of its words are used up; at kWords a new block is due.
    void set(const Words& words, std::size_t used) {
        words_ = words;
        used_ = used;
        temper();
    }

    [[nodiscard]] const Words& words() const { return words_; }
    [[nodiscard]] std::size_t used() const { return used_; }

    /// `getrandbits(32)`
    std::uint32_t next() {
        if (used_ == kWords) twist();
        return tempered_[used_++];
    }

    /// `_randbelow(n)` for n from 1 to 2**32 - 1: as many bits as n has, again until they are below n.
    std::uint32_t below(std::uint32_t n) {
        const int spare = std::countl_zero(n);
        std::uint32_t drawn = next() >> spare;
        while (drawn >= n) drawn = next() >> spare;
        return drawn;
    }

    /// `below(n)` so many times, each handed to the action with its place. What is drawn in vain is handed over as well
    /// and overwritten by the next, which spares a branch that nobody could predict.
    template <class Action>
    void fill_below(std::uint32_t n, std::size_t count, Action action) {
        const int spare = std::countl_zero(n);
        for (std::size_t i = 0; i < count;) {
            const std::uint32_t drawn = next() >> spare;
            action(i, std::min(drawn, n - 1));
            i += drawn < n ? 1 : 0;
        }
    }

    /// `random()`: 53 bits from two words.
    double uniform() {
        const std::uint32_t high = next() >> 5;
        const std::uint32_t low = next() >> 6;
        return (high * 67108864.0 + low) * (1.0 / 9007199254740992.0);
    }

  private:
    /// All words of the block, many at once: it takes less than one at a time when each is drawn.
    void temper() {
        for (std::size_t i = 0; i < kWords; ++i) {
            std::uint32_t word = words_[i];
            word ^= word >> 11;
            word ^= word << 7 & 0x9d2c5680U;
            word ^= word << 15 & 0xefc60000U;
            tempered_[i] = word ^ word >> 18;
        }
    }

    void twist() {
        constexpr std::size_t kAhead = 397;
        const auto mixed = [this](std::size_t i, std::size_t after) {
            const std::uint32_t bits = (words_[i] & 0x80000000U) | (words_[after] & 0x7fffffffU);
            return bits >> 1 ^ ((bits & 1U) != 0 ? 0x9908b0dfU : 0U);
        };
        for (std::size_t i = 0; i < kWords - kAhead; ++i) words_[i] = words_[i + kAhead] ^ mixed(i, i + 1);
        for (std::size_t i = kWords - kAhead; i < kWords - 1; ++i)
            words_[i] = words_[i + kAhead - kWords] ^ mixed(i, i + 1);
        words_[kWords - 1] = words_[kAhead - 1] ^ mixed(kWords - 1, 0);
        used_ = 0;
        temper();
    }

    Words words_{};
    Words tempered_{};
    std::size_t used_ = kWords;
};

}  // namespace bulk
