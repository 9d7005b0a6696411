#pragma once

// Columns of texts, read out of pandas.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "python/call.hpp"
#include "python/ref.hpp"

namespace bulk {

/// A memory view that is let go with its owner.
class Buffer {
  public:
    explicit Buffer(PyObject* exporter, int flags = PyBUF_SIMPLE);
    Buffer(Buffer&& other) noexcept : view_(other.view_) { other.view_.obj = nullptr; }
    Buffer& operator=(Buffer&&) = delete;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() {
        if (view_.obj != nullptr) PyBuffer_Release(&view_);
    }

    template <class Element>
    [[nodiscard]] const Element* data() const {
        return static_cast<const Element*>(view_.buf);
    }
    template <class Element>
    [[nodiscard]] Element* writable() const {
        return static_cast<Element*>(view_.buf);
    }
    [[nodiscard]] std::size_t bytes() const { return static_cast<std::size_t>(view_.len); }

  private:
    Py_buffer view_{};
};

/// The elements of a pandas Series, as UTF-8. A view without data is a missing value.
class Texts {
  public:
    /// Empty where an element is neither exactly a str nor missing, or the object is no Series of a kind that is known.
    static std::optional<Texts> read(PyObject* series);

    [[nodiscard]] std::size_t size() const { return views_.size(); }
    std::string_view operator[](std::size_t row) const { return views_[row]; }
    [[nodiscard]] bool is_missing(std::size_t row) const { return views_[row].data() == nullptr; }
    [[nodiscard]] bool any_missing() const { return missing_ > 0; }

  private:
    void add_missing();
    bool read_arrow(PyObject* chunked);
    bool read_chunk(PyObject* chunk);
    bool read_objects(PyObject* objects);

    std::vector<std::string_view> views_;
    std::size_t missing_ = 0;
    std::vector<python::Ref> owners_;
    std::vector<Buffer> buffers_;
};

/// The elements of a Series of truth values.
class Flags {
  public:
    /// Empty where the object is no Series of numpy's bool.
    static std::optional<Flags> read(PyObject* series);

    [[nodiscard]] std::size_t size() const { return values_.size(); }
    bool operator[](std::size_t row) const { return values_[row] != 0; }
    [[nodiscard]] bool any() const;
    [[nodiscard]] bool all() const;

  private:
    std::vector<std::uint8_t> values_;
};

/// Whether every character is a visible one of ASCII.
bool is_visible_ascii(std::string_view text);

/// `text.lower()`
std::string lower_case(std::string_view text);

/// A method that was to give a text did not.
struct NoText {};

/// The text that the method gives. Throws NoText where it fails, or gives no str of valid text without a NUL.
python::Ref text_of_call(PyObject* method);

/// The UTF-8 of exactly a str, owned by it; empty for anything else and for lone surrogates.
std::optional<std::string_view> utf8(PyObject* text);

/// Whether the dtype is pandas' own for texts; the second also asks whether Arrow holds them.
bool is_string_dtype(PyObject* dtype);
bool is_arrow_backed(PyObject* dtype);
bool is_object_dtype(PyObject* dtype);

/// A missing value as columns of texts hold it.
bool is_missing_value(PyObject* value);

/// No attributes or flags of a user's, which pandas would pass on.
bool is_bare(PyObject* series);

/// The rows of a Series at these positions, with a new index.
python::Ref rows_at(PyObject* series, const std::vector<std::size_t>& positions);

/// Whether the index of a Series counts its rows from 0.
bool counts_rows(PyObject* series);

}  // namespace bulk
