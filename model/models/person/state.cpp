#include "person/state.hpp"

#include <algorithm>
#include <iterator>

#include "person/names.hpp"
#include "python/builtins.hpp"
#include "python/call.hpp"
#include "python/error.hpp"
#include "python/module.hpp"

namespace person {

namespace {

/// Hands every object slot of the state to the action, with what fills it.
template <class Action>
void for_each_constant(Action action) {
#define PERSON_NAME(identifier, ...) action(names::identifier);
#define PERSON_INTEGER(identifier, value) action(integers::identifier);
#define PERSON_MESSAGE(identifier, text) action(messages::identifier);
#define PERSON_BUILTIN(name) action(python::builtins::name);
    PERSON_IDENTIFIERS(PERSON_NAME)
    PERSON_TEXTS(PERSON_NAME)
    PERSON_INTEGERS(PERSON_INTEGER)
    PERSON_MESSAGES(PERSON_MESSAGE)
    PYTHON_BUILTINS(PERSON_BUILTIN)
#undef PERSON_NAME
#undef PERSON_INTEGER
#undef PERSON_MESSAGE
#undef PERSON_BUILTIN
}

struct Fill {
    void operator()(python::Name& name) const {
        if (name.object == nullptr) name.object = python::owned(PyUnicode_InternFromString(name.text)).release();
    }
    void operator()(Integer& integer) const {
        if (integer.object == nullptr) integer.object = python::owned(PyLong_FromLong(integer.value)).release();
    }
    void operator()(Message& message) const {
        if (message.arguments != nullptr) return;
        python::Ref text = python::owned(PyUnicode_InternFromString(message.text));
        message.arguments = python::tuple({text}).release();
    }
    void operator()(python::Builtin& builtin) const {
        PyObject* found = python::find(python::module().builtins, builtin.name);
        if (found == nullptr) python::raise(PyExc_NameError, "name '%s' is not defined", builtin.name);
        Py_XSETREF(builtin.object, Py_NewRef(found));
    }
};

}  // namespace

State& state() {
    static constinit State instance;
    return instance;
}

void raise_value_error(const Message& message) {
    python::raise(python::owned(PyObject_Call(python::builtins::ValueError, message.arguments, nullptr)));
}

void fill_state() { for_each_constant(Fill{}); }

bool uses_name(std::string_view name) {
#define PERSON_TEXT(identifier) #identifier,
    constexpr std::string_view kIdentifiers[] = {PERSON_IDENTIFIERS(PERSON_TEXT)};
#undef PERSON_TEXT
    return std::ranges::find(kIdentifiers, name) != std::end(kIdentifiers);
}

}  // namespace person
