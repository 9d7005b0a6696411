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

Ref empty_frame(PyObject* make_frame, Py_ssize_t rows) {
    if (rows < kShortest || !namespace_is_untouched()) return {};
    Ref index = call_method(global(names::pd), names::RangeIndex, {integer(rows)});
    return call(make_frame, {}, {{names::index, index}});
}

bool nothing_to_blank(PyObject* df, PyObject* flags) {
    if (!namespace_is_untouched()) return false;
    const auto blanked = Flags::read(flags);
    if (!blanked || blanked->any()) return false;
    Ref index = attr(flags, names::index);
    if (!truth(call_method(attr(df, names::index), names::equals, {index}))) return false;
    for (Ref dtype : iterate(owned(PyObject_GetAttrString(df, "dtypes")))) {
        if (!holds_texts(dtype)) return false;
    }
    return true;
}

}  // namespace bulk
