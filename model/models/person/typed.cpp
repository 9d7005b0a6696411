#include "person/typed.hpp"

#include "person/names.hpp"
#include "python/call.hpp"
#include "python/module.hpp"

namespace person {

using namespace python;

Ref cast(PyObject* type, PyObject* value) { return call(global(names::cast), {type, value}); }

Ref cast_to_dict_of(PyObject* value_type, PyObject* value) {
    Ref type = item(global(names::Dict), tuple({str_type(), value_type}));
    return cast(type, value);
}

}  // namespace person
