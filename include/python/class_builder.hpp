#pragma once

#include <Python.h>

#include <span>

#include "python/function.hpp"
#include "python/name.hpp"
#include "python/ref.hpp"

namespace python {

struct ClassAttribute {
    const Name& name;
    const Name& value;
};

struct Class {
    const char* name;
    int line;
    const char* doc;
    std::span<const ClassAttribute> attributes;
    std::span<const Entry> members;
};

/// Makes the class over one base as a class statement does: bases resolved through `__mro_entries__`, the metaclass
/// found, its `__prepare__` called, the namespace filled in table order, the metaclass called. Members call `super()`,
/// so the namespace ends with the cell that `type.__new__` fills with the class.
Ref make_class(const Class& definition, PyObject* base);

}  // namespace python
