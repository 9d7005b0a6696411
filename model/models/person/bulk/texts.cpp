#include "bulk/texts.hpp"

#include <algorithm>
#include <cmath>

#include "bulk/originals.hpp"
#include "bulk/signals.hpp"
#include "python/call.hpp"
#include "python/error.hpp"

namespace bulk {

using namespace python;

namespace {

/// The name of the object's type, with its module: what pandas calls its own.
bool has_type(PyObject* object, const char* module, const char* name) {
    auto* type = reinterpret_cast<PyObject*>(Py_TYPE(object));
    return text_equals(quiet_attr(type, "__name__"), name) && text_equals(quiet_attr(type, "__module__"), module);
}

/// Nothing is put before the methods of the class.
bool has_own_names(PyObject* series) {
    constexpr const char* kNames[] = {"_mgr", "_name", "_attrs", "_flags", "_item_cache", "_is_copy", "_cacher"};
    Ref names = quiet_attr(series, "__dict__");
    if (!names || !PyDict_CheckExact(names.get())) return false;
    PyObject* name = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(names, &position, &name, nullptr) != 0) {
        if (std::ranges::none_of(kNames, [name](const char* own) { return text_equals(name, own); })) return false;
    }
    return true;
}

bool is_series(PyObject* object) {
    return (has_type(object, "pandas", "Series") || has_type(object, "pandas.core.series", "Series")) &&
           has_own_names(object);
}

Ref method_result(PyObject* object, const char* name) { return call(attr(object, name)); }

}  // namespace

bool is_string_dtype(PyObject* dtype) {
    return has_type(dtype, "pandas", "StringDtype") || has_type(dtype, "pandas.core.arrays.string_", "StringDtype");
}

bool is_arrow_backed(PyObject* dtype) {
    return is_string_dtype(dtype) && text_equals(quiet_attr(dtype, "storage"), "pyarrow");
}

bool is_object_dtype(PyObject* dtype) { return text_equals(quiet_attr(dtype, "name"), "object"); }

bool is_missing_value(PyObject* value) {
    if (value == Py_None) return true;
    if (PyFloat_CheckExact(value)) return std::isnan(PyFloat_AS_DOUBLE(value));
    return has_type(value, "pandas._libs.missing", "NAType") || has_type(value, "pandas.api.typing", "NAType");
}

bool is_visible_ascii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c > ' ' && c <= '~'; });
}

std::string lower_case(std::string_view text) {
    std::string lower(text);
    if (is_visible_ascii(text)) {
        for (char& c : lower) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        return lower;
    }
    Ref object = string(text);
    Ref lowered = owned(PyObject_CallMethod(object, "lower", nullptr));
    Py_ssize_t bytes = 0;
    const char* data = PyUnicode_AsUTF8AndSize(lowered, &bytes);
    if (data == nullptr) throw PythonError{};
    return {data, static_cast<std::size_t>(bytes)};
}

std::optional<std::string_view> utf8(PyObject* text) {
    if (!PyUnicode_CheckExact(text)) return std::nullopt;
    Py_ssize_t bytes = 0;
    const char* data = PyUnicode_AsUTF8AndSize(text, &bytes);
    if (data != nullptr) return std::string_view(data, static_cast<std::size_t>(bytes));
    if (PyErr_ExceptionMatches(PyExc_UnicodeEncodeError) == 0) throw PythonError{};
    PyErr_Clear();
    return std::nullopt;
}

Ref text_of_call(PyObject* method) {
    Ref made = quiet_call(method);
    const auto text = made ? utf8(made) : std::nullopt;
    if (!text || text->find('\0') != std::string_view::npos) throw NoText{};
    return made;
}

Ref rows_at(PyObject* series, const std::vector<std::size_t>& positions) {
    Ref wanted = list();
    for (const std::size_t position : positions) append(wanted, integer(static_cast<Py_ssize_t>(position)));
    Ref rows = item(attr(series, "iloc"), wanted);
    return call(attr(rows, "reset_index"), {}, {{string("drop"), Py_True}});
}

bool counts_rows(PyObject* series) {
    Ref index = attr(series, "index");
    if (!has_type(index, "pandas", "RangeIndex") && !has_type(index, "pandas.core.indexes.range", "RangeIndex"))
        return false;
    return require(PyObject_RichCompareBool(attr(index, "start"), integer(0), Py_EQ)) == 1 &&
           require(PyObject_RichCompareBool(attr(index, "step"), integer(1), Py_EQ)) == 1;
}

bool is_bare(PyObject* series) {
    Ref attributes = quiet_attr(series, "attrs");
    Ref flags = quiet_attr(series, "flags");
    Ref duplicates = flags ? quiet_attr(flags, "allows_duplicate_labels") : Ref();
    return attributes && PyDict_Check(attributes.get()) && PyDict_Size(attributes) == 0 && duplicates.get() == Py_True;
}

Buffer::Buffer(PyObject* exporter, int flags) { require(PyObject_GetBuffer(exporter, &view_, flags)); }

// --- reading
// ----------------------------------------------------------------------------------------------------------------

std::optional<Texts> Texts::read(PyObject* series) {
    if (!is_series(series)) return std::nullopt;
    Ref dtype = quiet_attr(series, "dtype");
    if (!dtype) return std::nullopt;
    Texts texts;
    if (is_arrow_backed(dtype)) {
        Ref array = attr(series, "array");
        if (!texts.read_arrow(method_result(array, "__arrow_array__"))) return std::nullopt;
        return texts;
    }
    if (!is_object_dtype(dtype) && !is_string_dtype(dtype)) return std::nullopt;
    Ref array = call(attr(series, "to_numpy"), {reinterpret_cast<PyObject*>(&PyBaseObject_Type)});
    if (!texts.read_objects(method_result(array, "tolist"))) return std::nullopt;
    return texts;
}

bool Texts::read_arrow(PyObject* chunked) {
    Ref chunks = attr(chunked, "chunks");
    for (Py_ssize_t i = 0; i < length(chunks); ++i) {
        if (!read_chunk(item(chunks, integer(i)))) return false;
    }
    return true;
}

bool Texts::read_chunk(PyObject* chunk) {
    Ref type = owned(PyObject_Str(attr(chunk, "type")));
    if (!text_equals(type, "large_string")) return false;
    const auto rows = static_cast<std::size_t>(length(chunk));
    const std::size_t first = PyLong_AsSize_t(attr(chunk, "offset"));
    Ref parts = method_result(chunk, "buffers");
    if (rows == 0) return true;

    const auto part = [&](Py_ssize_t index) { return item(parts, integer(index)); };
    const std::uint8_t* valid = nullptr;
    if (Ref bitmap = part(0); bitmap.get() != Py_None) valid = buffers_.emplace_back(bitmap).data<std::uint8_t>();
    const auto* ends = buffers_.emplace_back(part(1)).data<std::int64_t>() + first;
    const char* data = "";
    if (Ref bytes = part(2); bytes.get() != Py_None) data = buffers_.emplace_back(bytes).data<char>();
    if (data == nullptr) data = "";

    views_.reserve(views_.size() + rows);
    for (std::size_t row = 0; row < rows; ++row) {
        let_signals_in(row);
        const std::size_t bit = first + row;
        const bool present = valid == nullptr || (valid[bit / 8] >> (bit % 8) & 1U) != 0;
        if (present) {
            views_.emplace_back(data + ends[row], static_cast<std::size_t>(ends[row + 1] - ends[row]));
        } else {
            add_missing();
        }
    }
    return true;
}

bool Texts::read_objects(PyObject* objects) {
    const Py_ssize_t rows = PyList_GET_SIZE(objects);
    views_.reserve(static_cast<std::size_t>(rows));
    for (Py_ssize_t row = 0; row < rows; ++row) {
        let_signals_in(static_cast<std::size_t>(row));
        PyObject* value = PyList_GET_ITEM(objects, row);
        if (const auto text = utf8(value)) {
            views_.push_back(*text);
        } else if (is_missing_value(value)) {
            add_missing();
        } else {
            return false;
        }
    }
    owners_.push_back(Ref::share(objects));
    return true;
}

void Texts::add_missing() {
    views_.emplace_back();
    ++missing_;
}

std::optional<Flags> Flags::read(PyObject* series) {
    if (!is_series(series)) return std::nullopt;
    Ref dtype = quiet_attr(series, "dtype");
    if (!dtype || !text_equals(quiet_attr(dtype, "name"), "bool")) return std::nullopt;
    Ref array = call(attr(series, "to_numpy"));
    Ref bytes = method_result(array, "tobytes");
    const auto* data = reinterpret_cast<const std::uint8_t*>(PyBytes_AS_STRING(bytes.get()));
    Flags flags;
    flags.values_.assign(data, data + PyBytes_GET_SIZE(bytes.get()));
    return flags;
}

bool Flags::any() const {
    return std::ranges::any_of(values_, [](std::uint8_t value) { return value != 0; });
}

bool Flags::all() const {
    return std::ranges::all_of(values_, [](std::uint8_t value) { return value != 0; });
}

}  // namespace bulk
