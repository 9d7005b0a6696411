#pragma once

// Columns of texts in the making, in the very form that pandas itself chose for a few of them.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "bulk/codes.hpp"
#include "bulk/growing_bytes.hpp"
#include "bulk/texts.hpp"
#include "python/ref.hpp"

namespace bulk {

/// How pandas holds a column of texts.
struct Layout {
    enum class Kind {
        arrow,
        strings,  ///< pandas' own dtype over Python strings
        objects,
    };

    /// Empty for any other column.
    static std::optional<Layout> of(PyObject* series);

    Kind kind;
    python::Ref dtype;
};

/// What stands in the rows of one gender.
struct Cell {
    python::Ref object;     ///< as pandas has it
    bool constant = false;  ///< in every such row
    bool missing = false;
};

/// The cells of a Series, one a row.
std::vector<Cell> cells_of(PyObject* series);

class TextColumn {
  public:
    /// Exactly so many rows are to be added.
    TextColumn(const Layout& layout, std::size_t rows);

    /// The same where the genders decide which rows have a constant, whatever is added for them.
    TextColumn(const Layout& layout, const Codes& genders, const std::vector<Cell>& cells);

    void add(std::string_view text);
    /// The same for a str that exists already; `text` is its UTF-8.
    void add(PyObject* object, std::string_view text);
    void add_missing(PyObject* missing);

    /// The column as pandas' array of its dtype, or numpy's of objects. Nothing may be added afterwards.
    python::Ref array();

    /// `pd.Series` of it; without an index or a name, it gets those that are usual.
    python::Ref series(PyObject* index = nullptr, PyObject* name = nullptr);

  private:
    bool add_constant();
    void put(std::string_view text);
    void put_missing(PyObject* missing);
    void put_object(python::Ref object);
    python::Ref arrow_array();

    const Layout& layout_;
    std::size_t rows_;
    std::size_t row_ = 0;
    const Codes* genders_ = nullptr;
    const std::vector<Cell>* cells_ = nullptr;
    python::Ref objects_;  ///< numpy's array, or empty where Arrow holds the texts
    std::optional<Buffer> slots_;
    std::optional<GrowingBytes> data_;
    std::optional<GrowingBytes> ends_;
    std::vector<std::uint8_t> valid_;  ///< a bit for each row; empty as long as nothing is missing
};

}  // namespace bulk
