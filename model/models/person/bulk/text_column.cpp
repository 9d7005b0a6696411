#include "bulk/text_column.hpp"

#include <algorithm>

#include "bulk/originals.hpp"
#include "person/names.hpp"
#include "python/call.hpp"
#include "python/error.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

Ref array_of_objects(std::size_t rows) {
    Ref make = attr(owned(PyImport_ImportModule("numpy")), "empty");
    auto* any = reinterpret_cast<PyObject*>(&PyBaseObject_Type);
    return call(make, {integer(static_cast<Py_ssize_t>(rows)), any});
}

}  // namespace

std::optional<Layout> Layout::of(PyObject* series) {
    Ref dtype = quiet_attr(series, "dtype");
    if (!dtype) return std::nullopt;
    if (is_arrow_backed(dtype)) return Layout{Kind::arrow, std::move(dtype)};
    if (is_string_dtype(dtype)) return Layout{Kind::strings, std::move(dtype)};
    if (is_object_dtype(dtype)) return Layout{Kind::objects, std::move(dtype)};
    return std::nullopt;
}

std::vector<Cell> cells_of(PyObject* series) {
    Ref objects = list_of(series);
    std::vector<Cell> cells;
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(objects.get()); ++i) {
        Ref object = Ref::share(PyList_GET_ITEM(objects.get(), i));
        const bool missing = is_missing_value(object);
        cells.push_back({.object = std::move(object), .constant = missing, .missing = missing});
    }
    return cells;
}

TextColumn::TextColumn(const Layout& layout, std::size_t rows) : layout_(layout), rows_(rows) {
    if (layout.kind == Layout::Kind::arrow) {
        data_.emplace();
        ends_.emplace().reserve((rows + 1) * sizeof(std::int64_t));
        ends_->append(std::int64_t{0});
    } else {
        objects_ = array_of_objects(rows);
        slots_.emplace(objects_, PyBUF_WRITABLE);
    }
}

TextColumn::TextColumn(const Layout& layout, const Codes& genders, const std::vector<Cell>& cells)
    : TextColumn(layout, genders.size()) {
    if (std::ranges::none_of(cells, &Cell::constant)) return;
    genders_ = &genders;
    cells_ = &cells;
}

void TextColumn::add(std::string_view text) {
    if (!add_constant()) put(text);
}

void TextColumn::add(PyObject* object, std::string_view text) {
    if (add_constant()) return;
    if (slots_) {
        put_object(Ref::share(object));
    } else {
        put(text);
    }
}

void TextColumn::add_missing(PyObject* missing) {
    if (!add_constant()) put_missing(missing);
}

bool TextColumn::add_constant() {
    if (cells_ == nullptr) return false;
    const Cell& cell = (*cells_)[(*genders_)[row_]];
    if (!cell.constant) return false;
    if (cell.missing) {
        put_missing(cell.object);
    } else if (slots_) {
        put_object(Ref::share(cell.object));
    } else {
        put(utf8(cell.object).value_or(std::string_view()));
    }
    return true;
}

void TextColumn::put(std::string_view text) {
    if (slots_) {
        return put_object(string(text));
    }
    data_->append(text.data(), text.size());
    ends_->append(static_cast<std::int64_t>(data_->size()));
    ++row_;
}

void TextColumn::put_object(Ref object) {
    const Ref before = Ref::steal(std::exchange(slots_->writable<PyObject*>()[row_++], object.release()));
}

void TextColumn::put_missing(PyObject* missing) {
    if (slots_) return put_object(Ref::share(missing));
    if (valid_.empty()) {
        valid_.assign((rows_ + 7) / 8, 0xff);
        valid_.back() = static_cast<std::uint8_t>(0xff >> (8 * valid_.size() - rows_));
    }
    valid_[row_ / 8] = static_cast<std::uint8_t>(valid_[row_ / 8] & ~(1U << row_ % 8));
    put("");
}

Ref TextColumn::array() {
    if (layout_.kind == Layout::Kind::arrow) return arrow_array();
    slots_.reset();
    if (layout_.kind == Layout::Kind::objects) return std::move(objects_);
    Ref make = attr(global(names::pd), "array");
    return call(make, {objects_}, {{names::dtype, layout_.dtype}, {names::copy, Py_False}});
}

Ref TextColumn::arrow_array() {
    Ref pyarrow = owned(PyImport_ImportModule("pyarrow"));
    Ref as_buffer = attr(pyarrow, "py_buffer");
    Ref valid = none();
    if (!valid_.empty()) {
        GrowingBytes bits;
        bits.append(valid_.data(), valid_.size());
        valid = call(as_buffer, {bits.finish()});
    }
    Ref ends = call(as_buffer, {ends_->finish()});
    Ref data = call(as_buffer, {data_->finish()});
    Ref make = attr(attr(pyarrow, "LargeStringArray"), "from_buffers");
    Ref array = call(make, {integer(static_cast<Py_ssize_t>(rows_)), ends, data, valid});
    return call(attr(layout_.dtype, "__from_arrow__"), {array});
}

Ref TextColumn::series(PyObject* index, PyObject* name) {
    Ref made = array();
    return call(attr(global(names::pd), names::Series), {made},
                {{names::index, index == nullptr ? Py_None : index},
                 {names::dtype, layout_.dtype},
                 {names::name, name == nullptr ? Py_None : name},
                 {names::copy, Py_False}});
}

}  // namespace bulk
