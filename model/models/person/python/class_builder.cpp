#include "python/class_builder.hpp"

#include "python/builtins.hpp"
#include "python/call.hpp"
#include "python/error.hpp"
#include "python/module.hpp"

namespace python {

namespace {

/// The bases as written, or what `__mro_entries__` gives in their place.
Ref resolved_bases(PyObject* base, PyObject* written_bases) {
    if (PyType_Check(base) != 0) return Ref::share(written_bases);
    Ref resolve = optional_attr(base, string("__mro_entries__"));
    if (!resolve) return Ref::share(written_bases);
    Ref entries = call(resolve, {written_bases});
    if (PyTuple_Check(entries.get()) == 0) raise(PyExc_TypeError, "__mro_entries__ must return a tuple");
    // Never the very tuple that was handed in: that one stands for "nothing resolved".
    return owned(PyList_AsTuple(list_of(entries)));
}

/// The most derived of the bases' types.
Ref metaclass_of(PyObject* bases) {
    const Py_ssize_t count = PyTuple_GET_SIZE(bases);
    PyTypeObject* most_derived = count == 0 ? &PyType_Type : Py_TYPE(PyTuple_GET_ITEM(bases, 0));
    for (Py_ssize_t i = 1; i < count; ++i) {
        PyTypeObject* type = Py_TYPE(PyTuple_GET_ITEM(bases, i));
        if (PyType_IsSubtype(most_derived, type) != 0) continue;
        if (PyType_IsSubtype(type, most_derived) == 0) {
            raise(PyExc_TypeError,
                  "metaclass conflict: the metaclass of a derived class must be a (non-strict) subclass of the "
                  "metaclasses of all its bases");
        }
        most_derived = type;
    }
    return Ref::share(reinterpret_cast<PyObject*>(most_derived));
}

/// The namespace that the metaclass prepares for the class.
Ref prepared_names(PyObject* metaclass, PyObject* name, PyObject* bases) {
    Ref prepare = optional_attr(metaclass, string("__prepare__"));
    if (!prepare) return dict();
    Ref names = call(prepare, {name, bases});
    if (PyMapping_Check(names) == 0) {
        raise(PyExc_TypeError, "%.200s.__prepare__() must return a mapping, not %.200s",
              reinterpret_cast<PyTypeObject*>(metaclass)->tp_name, Py_TYPE(names.get())->tp_name);
    }
    return names;
}

/// The property that a setter extends: read back from the class's namespace, else as any global name.
Ref stored_property(PyObject* names, PyObject* name) {
    if (PyObject* found = PyObject_GetItem(names, name)) return Ref::steal(found);
    RaisedException missing;
    if (!missing.matches(PyExc_KeyError)) missing.raise_again();
    return global(name);
}

Ref wrap(const Function& function, const Ref& made, PyObject* names, PyObject* name) {
    switch (function.kind) {
        case Kind::property:
            return call(builtins::property, {made});
        case Kind::setter:
            return call_method(stored_property(names, name), string("setter"), {made});
        case Kind::static_method:
            return call(builtins::staticmethod, {made});
        case Kind::class_method:
            return owned(PyClassMethod_New(made));
        case Kind::function:
            break;
    }
    return Ref::share(made);
}

void fill(const Class& definition, PyObject* names, PyObject* class_cell) {
    set_item(names, string("__module__"), string(module().name));
    set_item(names, string("__qualname__"), string(definition.name));
    set_item(names, string("__doc__"), string(definition.doc));
    for (const ClassAttribute& attribute : definition.attributes) set_item(names, attribute.name, attribute.value);
    for (const Entry& entry : definition.members) {
        Ref name = string(entry.function.name());
        const bool calls_parent = entry.function.free_variable != nullptr;
        Ref made = make_function(entry, calls_parent ? class_cell : nullptr);
        set_item(names, name, wrap(entry.function, made, names, name));
    }
    set_item(names, string("__classcell__"), class_cell);
}

/// A class must be the one that `type.__new__` has put into the cell; a metaclass may return what is no class, too.
void check_class_cell(PyObject* class_cell, PyObject* name, PyObject* made) {
    Ref held = Ref::steal(PyCell_Get(class_cell));
    if (PyType_Check(made) == 0 || held.get() == made) return;
    if (!held) {
        raise(PyExc_RuntimeError,
              "__class__ not set defining %.200R as %.200R. Was __classcell__ propagated to type.__new__?", name, made);
    }
    raise(PyExc_TypeError, "__class__ set to %.200R defining %.200R as %.200R", held.get(), name, made);
}

}  // namespace

Ref make_class(const Class& definition, PyObject* base) {
    Ref name = string(definition.name);
    Ref written_bases = tuple({base});
    Ref bases = resolved_bases(base, written_bases);
    Ref metaclass = metaclass_of(bases);
    Ref names = prepared_names(metaclass, name, bases);
    Ref class_cell = owned(PyCell_New(nullptr));
    fill(definition, names, class_cell);
    if (bases.get() != written_bases.get()) set_item(names, string("__orig_bases__"), written_bases);
    Ref made = call(metaclass, {name, bases, names});
    check_class_cell(class_cell, name, made);
    return made;
}

}  // namespace python
