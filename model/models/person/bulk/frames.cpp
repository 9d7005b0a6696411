// The frame around the columns.

#include "bulk/columns.hpp"
#include "bulk/originals.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/texts.hpp"
#include "person/names.hpp"
#include "python/call.hpp"
#include "python/iterate.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

Ref empty_frame(PyObject* make_frame, std::size_t rows) {
    if (!is_worth_it(rows) || !namespace_is_untouched()) return {};
    Ref index = call_method(global(names::pd), names::RangeIndex, {integer(static_cast<Py_ssize_t>(rows))});
    return call(make_frame, {}, {{names::index, index}});
}

/// Whether the list names each of the frame's columns, and each once.
static bool are_all_columns(PyObject* df, PyObject* columns) {
    Ref labels = list_of(attr(df, names::columns));
    const Py_ssize_t count = PyList_GET_SIZE(labels.get());
    if (count == 0 || count != PyList_GET_SIZE(columns)) return false;
    for (Py_ssize_t i = 0; i < count; ++i) {
        if (!PyUnicode_CheckExact(PyList_GET_ITEM(labels.get(), i))) return false;
        if (!PyUnicode_CheckExact(PyList_GET_ITEM(columns, i))) return false;
    }
    Ref in_frame = owned(PyFrozenSet_New(labels));
    Ref named = owned(PyFrozenSet_New(columns));
    return PySet_GET_SIZE(named.get()) == count && equal(in_frame, named);
}

bool nothing_to_blank(PyObject* df, PyObject* flags, PyObject* columns) {
    if (!namespace_is_untouched() || !are_all_columns(df, columns)) return false;
    const auto blanked = Flags::read(flags);
    if (!blanked || !is_worth_it(blanked->size()) || blanked->any()) return false;
    Ref index = attr(flags, names::index);
    if (!truth(call_method(attr(df, names::index), names::equals, {index}))) return false;
    for (Ref dtype : iterate(owned(PyObject_GetAttrString(df, "dtypes")))) {
        if (!holds_texts(dtype)) return false;
    }
    return true;
}

}  // namespace bulk
