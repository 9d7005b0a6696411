#pragma once

// Columns of texts: read out of pandas, and put into pandas in the very form that pandas itself chose for a few of
// them.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bulk/growing_bytes.hpp"
#include "python/call.hpp"
#include "python/ref.hpp"

namespace bulk {

/// A memory view that is let go with its owner.
class Buffer {
  public:
    explicit Buffer(PyObject* exporter);
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

/// How pandas makes a column, seen from what it made of a few rows.
struct Form {
    python::Ref made;
    python::Ref from{};  ///< the rows, where they were a Series
};

/// A column in the making. It is laid out as Arrow does it where that is what the finished Series holds, and as Python
/// strings otherwise.
class TextSeries {
  public:
    /// The column is to look like the form; exactly so many rows are to be added.
    TextSeries(const Form& form, std::size_t rows);

    void add(std::string_view text);
    /// The same for a str that exists already; `text` is its UTF-8.
    void add(PyObject* object, std::string_view text);
    void add_missing(PyObject* missing);

    /// `make_series(elements, **keywords)`, exactly as pandas makes it.
    python::Ref finish(PyObject* make_series, python::Keywords keywords = {});
    /// The same with the dtype and the name of the form, made from another Series.
    python::Ref finish_from(PyObject* make_series, PyObject* series);

  private:
    python::Ref arrow_array();

    python::Ref dtype_;
    python::Ref name_;
    bool hands_index_on_;
    bool arrow_;
    std::size_t rows_;
    python::Ref objects_;
    GrowingBytes data_;
    GrowingBytes ends_;
    std::vector<std::uint8_t> valid_;  ///< a bit for each row; empty as long as nothing is missing
};

/// Whether every character is a visible one of ASCII.
bool is_visible_ascii(std::string_view text);

/// `text.lower()`
std::string lower_case(std::string_view text);

/// The UTF-8 of exactly a str, owned by it; empty for anything else and for lone surrogates.
std::optional<std::string_view> utf8(PyObject* text);

/// Whether columns of the dtype hold texts, or any objects.
bool holds_texts(PyObject* dtype);

/// No attributes or flags of a user's, which pandas would pass on.
bool is_bare(PyObject* series);

/// `series.iloc[:1]`
python::Ref first_row(PyObject* series);

}  // namespace bulk
