#include "bulk/category_values.hpp"

#include <algorithm>
#include <utility>

#include "bulk/columns.hpp"
#include "bulk/originals.hpp"
#include "bulk/rehearsal.hpp"
#include "bulk/signals.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/texts.hpp"
#include "person/names.hpp"
#include "person/plain.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

/// numpy keeps texts in arrays of fixed width, which lose blanks of the kind that fills them up.
bool survives_numpy(PyObject* value) {
    if (!PyUnicode_CheckExact(value)) return false;
    const Py_ssize_t size = PyUnicode_GET_LENGTH(value);
    return size == 0 || PyUnicode_READ_CHAR(value, size - 1) != 0;
}

/// The type of what `numpy.random.choice` draws: a static one, which no Python code can make.
bool is_numpy_text(PyObject* type) {
    return PyType_Check(type) && std::string_view(reinterpret_cast<PyTypeObject*>(type)->tp_name) == "numpy.str_" &&
           PyType_HasFeature(reinterpret_cast<PyTypeObject*>(type), Py_TPFLAGS_HEAPTYPE) == 0;
}

/// The key of a row without one is its text, which is not known here; it must not be a key whatever it is.
bool missing_has_no_collection(PyObject* collections) {
    return std::ranges::none_of(std::initializer_list<const char*>{"nan", "<NA>", "None", "NaN"},
                                [collections](const char* text) { return find(collections, text) != nullptr; });
}

}  // namespace

std::optional<CategoryValues> CategoryValues::read(const Codes& keys, PyObject* collections) {
    Ref make_text = attr(global(names::np), names::str_);
    if (!is_numpy_text(make_text) || !PyDict_CheckExact(collections)) return std::nullopt;
    CategoryValues read(keys);
    for (const std::string_view key : keys.values()) {
        std::vector<Value>& values = read.collections_.emplace_back();
        if (key.data() == nullptr) {
            if (!missing_has_no_collection(collections)) return std::nullopt;
            continue;
        }
        Ref name = string(key);
        PyObject* found = find(collections, name);
        if (found == nullptr) continue;
        if (!PyList_CheckExact(found)) return std::nullopt;
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(found); ++i) {
            Ref value = Ref::share(PyList_GET_ITEM(found, i));
            const auto text = survives_numpy(value) ? utf8(value) : std::nullopt;
            if (!text) return std::nullopt;
            Ref numpy = call(make_text, {value});
            values.push_back({.plain = std::move(value), .numpy = std::move(numpy), .text = *text});
        }
    }
    return read;
}

bool CategoryValues::may_give(std::string_view text) const {
    return std::ranges::any_of(collections_, [text](const auto& values) {
        return std::ranges::find(values, text, &Value::text) != values.end();
    });
}

void CategoryValues::draw(NumpyChoice& choice) {
    drawn_.reserve(keys_->size());
    NumpyChoice::Held held(choice);
    for (std::size_t row = 0; row < keys_->size(); ++row) {
        held.let_signals_in(row);
        const std::vector<Value>& values = collections_[(*keys_)[row]];
        drawn_.push_back(values.empty() ? 0 : choice.below(static_cast<std::uint32_t>(values.size())));
    }
}

void CategoryValues::draw_again(std::string_view text, const std::vector<PyObject*>& values, Source& source) {
    for (PyObject* value : values)
        others_.push_back({.plain = Ref::share(value), .numpy = Ref::share(value), .text = utf8(value).value()});
    for (std::size_t row = 0; row < keys_->size(); ++row) {
        const std::vector<Value>& given = collections_[(*keys_)[row]];
        if (given.empty() || given[drawn_[row]].text != text) continue;
        source.take_over();
        drawn_[row] = kOthers + source.engine().below(static_cast<std::uint32_t>(values.size()));
        source.breathe();
    }
    source.hand_back();
}

void CategoryValues::write(const std::vector<Cell>& cells, TextColumn& column) const {
    const bool as_numpy = std::ranges::any_of(
        cells, [](const Cell& cell) { return !cell.constant && !PyUnicode_CheckExact(cell.object.get()); });
    for (std::size_t row = 0; row < keys_->size(); ++row) {
        let_signals_in(row);
        const std::vector<Value>& values = collections_[(*keys_)[row]];
        if (values.empty()) {
            column.add("");  // gives way to the constant
            continue;
        }
        const Value& value = drawn_[row] < kOthers ? values[drawn_[row]] : others_[drawn_[row] - kOthers];
        column.add(as_numpy ? value.numpy : value.plain, value.text);
    }
}

std::vector<Cell> value_cells(PyObject* series, const CategoryValues& values) {
    std::vector<Cell> cells = cells_of(series);
    for (std::size_t key = 0; key < cells.size(); ++key)
        cells[key].constant |= !values.has_values(static_cast<Codes::Number>(key));
    return cells;
}

Ref collection_values(PyObject* self, PyObject* conditions, PyObject* collections) {
    if (!namespace_is_untouched()) return {};
    if (!has_our_method(self, names::generate_from_collections,
                        entry<person::person_model::generate_from_collections>)) {
        return {};
    }
    NumpyChoice choice(global(names::np));
    const auto given = choice.applies() ? Texts::read(conditions) : std::nullopt;
    if (!given || !is_worth_it(given->size()) || !is_bare(conditions)) return {};
    const Codes keys(*given);
    auto values = CategoryValues::read(keys, collections);
    if (!values) return {};
    const Rehearsed few = rehearsed(rows_at(conditions, keys.first_rows()),
                                    [&](PyObject* rows) { return person::plain_values(self, rows, collections); });
    if (!few.layout) return {};
    values->draw(choice);
    const auto cells = value_cells(few.made, *values);
    TextColumn column(*few.layout, keys, cells);
    values->write(cells, column);
    return few.series(column, conditions);
}

}  // namespace bulk
