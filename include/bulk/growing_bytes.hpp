#pragma once

#include <Python.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "python/error.hpp"
#include "python/ref.hpp"

namespace bulk {

/// A Python bytes object in the making. The C library moves large blocks page by page, so that nothing is copied, not
/// when it grows and not when it is finished: some hundred megabytes would keep signals waiting.
class GrowingBytes {
  public:
    GrowingBytes() : bytes_(python::owned(PyBytes_FromStringAndSize(nullptr, 0))) {}

    void reserve(std::size_t count) {
        if (count > capacity()) resize(count);
    }

    void append(const void* data, std::size_t count) {
        if (count > capacity() - size_) resize(std::max(2 * capacity(), size_ + count));
        std::memcpy(PyBytes_AS_STRING(bytes_.get()) + size_, data, count);
        size_ += count;
    }

    /// Appends the number as it lies in memory.
    template <class Number>
    void append(Number number) {
        append(&number, sizeof number);
    }

    [[nodiscard]] std::size_t size() const { return size_; }

    /// The object, as long as what was appended. Nothing may be appended afterwards.
    python::Ref finish() {
        resize(size_);
        return std::move(bytes_);
    }

  private:
    [[nodiscard]] std::size_t capacity() const { return static_cast<std::size_t>(PyBytes_GET_SIZE(bytes_.get())); }

    void resize(std::size_t capacity) {
        PyObject* resized = bytes_.release();  // which a failure frees
        python::require(_PyBytes_Resize(&resized, static_cast<Py_ssize_t>(capacity)));
        bytes_ = python::Ref::steal(resized);
    }

    python::Ref bytes_;
    std::size_t size_ = 0;
};

}  // namespace bulk
