#pragma once

// Values of collections, such as titles, drawn for gender keys.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "bulk/codes.hpp"
#include "bulk/streams.hpp"
#include "bulk/text_column.hpp"
#include "python/ref.hpp"

namespace bulk {

class CategoryValues {
  public:
    /// The values that each key may get; empty where single calls must draw them. The keys outlive this object.
    static std::optional<CategoryValues> read(const Codes& keys, PyObject* collections);

    /// Whether the key has values; its rows get none otherwise.
    [[nodiscard]] bool has_values(Codes::Number key) const { return !collections_[key].empty(); }

    /// Whether the text is among the values.
    [[nodiscard]] bool may_give(std::string_view text) const;

    void draw(NumpyChoice& choice);

    /// Draws another one of these values, as `random.choice` does, for each row that got the text.
    void draw_again(std::string_view text, const std::vector<PyObject*>& values, Source& source);

    /// Adds each row's value: as numpy gives it, or as a plain str, as the cells are.
    void write(const std::vector<Cell>& cells, TextColumn& column) const;

  private:
    struct Value {
        python::Ref plain;
        python::Ref numpy;
        std::string_view text;
    };

    explicit CategoryValues(const Codes& keys) : keys_(&keys) {}

    const Codes* keys_;
    std::vector<std::vector<Value>> collections_;  ///< by number of the key
    std::vector<Value> others_;                    ///< what was drawn again
    std::vector<std::uint32_t> drawn_;             ///< by row: a position; from kOthers on, one of the others
    static constexpr std::uint32_t kOthers = 1U << 31U;
};

/// The cells of a column of drawn values: those of a key without any are what pandas makes of none.
std::vector<Cell> value_cells(PyObject* series, const CategoryValues& values);

}  // namespace bulk
