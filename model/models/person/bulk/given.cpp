#include "bulk/given.hpp"

#include <algorithm>
#include <cstdint>

#include "bulk/originals.hpp"
#include "bulk/texts.hpp"
#include "person/names.hpp"
#include "python/call.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

std::optional<Given> Given::draw(PyObject* model, PyObject* rows, PyObject* produce_nans) {
    if (!reads_plainly(model)) return std::nullopt;
    Ref sample = attr(model, names::sample);
    if (!PyMethod_Check(sample.get()) || PyMethod_GET_SELF(sample.get()) != model) return std::nullopt;
    Ref draw = quiet_attr(PyMethod_GET_FUNCTION(sample.get()), "positions");
    if (!draw) return std::nullopt;
    return drawn(call(draw, {model, rows, produce_nans}));
}

Ref Given::series() const { return drawn_ ? call(attr(drawn_, names::series)) : Ref::share(series_); }

Ref Given::few(const std::vector<std::size_t>& positions) const {
    if (!drawn_) return rows_at(series_, positions);
    Ref rows = list();
    for (const std::size_t position : positions) append(rows, integer(static_cast<Py_ssize_t>(position)));
    return call(attr(drawn_, names::series), {rows});
}

std::optional<Codes> Given::codes(std::size_t rows) const {
    if (!drawn_) {
        const auto texts = Texts::read(series_);
        return texts && texts->size() == rows && counts_rows(series_) ? std::optional<Codes>(*texts) : std::nullopt;
    }
    Ref values = attr(drawn_, names::values);
    const Buffer positions(attr(drawn_, names::positions));
    if (!PyList_CheckExact(values.get()) || positions.bytes() != rows * sizeof(std::int64_t)) return std::nullopt;
    return Codes::of_positions(values, {positions.data<std::int64_t>(), rows});
}

std::string Given::form() const {
    if (!drawn_) {
        Ref dtype = owned(PyObject_Repr(attr(series_, "dtype")));
        return std::string(utf8(dtype).value_or(std::string_view()));
    }
    return Py_TYPE(drawn_.get())->tp_name;
}

}  // namespace bulk
