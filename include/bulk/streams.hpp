#pragma once

// The random sources, word for word. A source is taken over for a stretch in which no Python code can run, and handed
// back exactly where the single calls would have left it.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <initializer_list>

#include "bulk/mersenne.hpp"
#include "python/ref.hpp"

namespace bulk {

/// Whether the object is a `random.Random` that draws as the standard library's does, with nothing replaced.
bool is_plain_random(PyObject* object);

/// The source behind the functions of the module `random`, where those that the names list are its own; else empty.
python::Ref module_random(PyObject* random_module, std::initializer_list<const char*> functions);

class Sources;

/// A `random.Random` that is drawn from with others.
class Source {
  public:
    Source(PyObject* random, Sources& together) : random_(python::Ref::share(random)), together_(together) {}
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source();

    [[nodiscard]] PyObject* random() const { return random_; }

    /// What to draw with, and only between the two calls below. It stays where it is.
    Mersenne& engine() { return engine_; }

    /// Either does nothing where it is done already.
    void take_over() {
        if (!taken_over_) read();
    }
    void hand_back() {
        if (taken_over_) write();
    }

    /// Lets pending signals be handled now and then, with all sources handed back meanwhile. Call it once a row; a
    /// row's work is counted in draws.
    void breathe(std::size_t draws = 1);

    /// Hands back all sources, for a call that may let signals and other threads in.
    void let_go();

  private:
    void read();
    void write();
    void take_breath();

    python::Ref random_;
    Sources& together_;
    Mersenne engine_;
    bool taken_over_ = false;
};

/// Sources that are drawn from by turns: none is taken over while others are let in.
class Sources {
  public:
    Sources() = default;
    Sources(const Sources&) = delete;
    Sources& operator=(const Sources&) = delete;
    ~Sources() = default;

    /// The source of that object, of which there is one.
    Source& of(PyObject* random);

    void hand_back() {
        for (Source& source : all_) source.hand_back();
    }

    [[nodiscard]] const std::deque<Source>& all() const { return all_; }

    /// Whether so much has been done since the last time that it is time to breathe.
    bool is_out_of_breath(std::size_t draws) {
        work_ += kRowWork + draws;
        if (work_ < kWorkBetweenBreaths) return false;
        work_ = 0;
        return true;
    }

  private:
    // A draw costs a few nanoseconds and a row as much as some tens of draws, so this is a few milliseconds.
    static constexpr std::size_t kRowWork = 32;
    static constexpr std::size_t kWorkBetweenBreaths = 1U << 20U;

    std::deque<Source> all_;
    std::size_t work_ = 0;
};

inline void Source::breathe(std::size_t draws) {
    if (together_.is_out_of_breath(draws)) take_breath();
}

/// Where a source stood, to go back to.
class Mark {
  public:
    /// The source is not taken over, neither here nor when it goes back.
    explicit Mark(const Source& source);
    void go_back() const;

  private:
    python::Ref random_;
    python::Ref state_;
};

/// numpy's global generator, drawing as `numpy.random.choice(list)` does for lists of up to 2**32 elements. It draws
/// from numpy's own state, so there is nothing to hand back; numpy's lock is held meanwhile.
class NumpyChoice {
  public:
    /// Empty-handed (`applies()` is false) unless `numpy.random.choice` is numpy's own.
    explicit NumpyChoice(PyObject* numpy);
    NumpyChoice(const NumpyChoice&) = delete;
    NumpyChoice& operator=(const NumpyChoice&) = delete;
    ~NumpyChoice() = default;

    [[nodiscard]] bool applies() const { return static_cast<bool>(lock_); }

    /// A position below n, n from 1 on.
    std::uint32_t below(std::uint32_t n);

    /// Holds numpy's lock as long as it lives; every draw needs one.
    class Held {
      public:
        explicit Held(const NumpyChoice& choice);
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;
        ~Held();

        /// Lets signals in every so many rows, with the lock released: a process that is forked meanwhile would find
        /// it held by a thread that it does not have.
        void let_signals_in(std::size_t row);

      private:
        void acquire();
        void release();

        const NumpyChoice& choice_;
        bool held_ = false;
    };

  private:
    struct BitGenerator;

    python::Ref owner_;
    python::Ref lock_;
    BitGenerator* bits_ = nullptr;
};

}  // namespace bulk
