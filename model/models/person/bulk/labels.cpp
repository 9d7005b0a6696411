#include "bulk/labels.hpp"

#include "bulk/originals.hpp"
#include "person/names.hpp"
#include "python/call.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

std::optional<Labels> Labels::read(PyObject* self) {
    const std::array<PyObject*, kAttributes> fields{
        names::gender, names::title,    names::country,  names::firstname,     names::lastname,    names::fullname,
        names::email,  names::username, names::password, names::mobile_number, names::home_number, names::work_number};
    Ref record = attr(self, names::labels);
    Ref columns = reads_plainly(record) ? quiet_attr(record, "__dict__") : Ref();
    if (!columns || !PyDict_CheckExact(columns.get())) return std::nullopt;
    Labels labels;
    Ref different = owned(PySet_New(nullptr));
    for (std::size_t i = 0; i < kAttributes; ++i) {
        PyObject* column = find(columns, fields[i]);
        if (column == nullptr || plain_value(record, fields[i]).get() != column) return std::nullopt;
        if (column == Py_None) continue;
        if (!PyUnicode_CheckExact(column)) return std::nullopt;
        labels.columns_[i] = Ref::share(column);
        require(PySet_Add(different, column));
    }
    Py_ssize_t set = 0;  // further labels that a host may have among them
    PyObject* column = nullptr;
    for (Py_ssize_t position = 0; PyDict_Next(columns, &position, nullptr, &column) != 0;) set += column != Py_None;
    return set > 0 && set == PySet_GET_SIZE(different.get()) ? std::optional(std::move(labels)) : std::nullopt;
}

}  // namespace bulk
