#include "python/class_builder.hpp"

#include "python/builtins.hpp"
#include "python/call.hpp"
#include "python/error.hpp"
#include "python/module.hpp"

namespace python {

namespace {

/// The resolved bases, the metaclass, and the namespace that it prepared.
struct Preparation {
    Ref bases;
    Ref metaclass;
    Ref names;
    Ref keywords;
};

Preparation prepare(const Class& definition, PyObject* original_bases) {
    Ref types = owned(PyImport_ImportModule("types"));
    Ref bases = call_method(types, string("resolve_bases"), {original_bases});
    Ref prepared = call_method(types, string("prepare_class"), {string(definition.name).get(), bases});
    return {std::move(bases), item(prepared, integer(0)), item(prepared, integer(1)), item(prepared, integer(2))};
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
}

}  // namespace

Ref make_class(const Class& definition, PyObject* base) {
    Ref original_bases = tuple({base});
    Preparation prepared = prepare(definition, original_bases);
    Ref class_cell = owned(PyCell_New(nullptr));
    fill(definition, prepared.names, class_cell);
    if (prepared.bases.get() != original_bases.get()) {
        set_item(prepared.names, string("__orig_bases__"), original_bases);
    }
    Ref arguments = tuple({string(definition.name).get(), prepared.bases, prepared.names});
    Ref made = owned(PyObject_Call(prepared.metaclass, arguments, prepared.keywords));
    require(PyCell_Set(class_cell, made));
    return made;
}

}  // namespace python
