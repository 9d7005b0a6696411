#pragma once

// What the module keeps for as long as it lives: the interned names, the small integers, the arguments of fixed
// messages and the builtins that its code uses. There is one module a process, so the state is static.

#include <Python.h>

#include <string_view>

namespace person {

struct Integer {
    long value = 0;
    PyObject* object = nullptr;

    operator PyObject*() const noexcept { return object; }
};

#define PERSON_INTEGERS(X) X(zero, 0) X(one, 1) X(eight, 8) X(nine, 9) X(sixteen, 16) X(hundred, 100)

namespace integers {
#define PERSON_DECLARE(identifier, value) inline constinit Integer identifier{value};
PERSON_INTEGERS(PERSON_DECLARE)
#undef PERSON_DECLARE
}  // namespace integers

/// A text that never changes, and the arguments of every exception that is raised with it: one tuple for all.
struct Message {
    const char* text = nullptr;
    PyObject* arguments = nullptr;
};

#define PERSON_MESSAGES(X)                                                           \
    X(no_number_of_rows, "One of 'n' or 'conditions' must be given.")                \
    X(no_countries, "Got country label but no country conditions or country model.") \
    X(unknown_gender, "Unrecognised gender: {gender}")

namespace messages {
#define PERSON_DECLARE(identifier, text) inline constinit Message identifier{text};
PERSON_MESSAGES(PERSON_DECLARE)
#undef PERSON_DECLARE
}  // namespace messages

/// Raises ValueError with the message.
[[noreturn]] void raise_value_error(const Message& message);

struct State {
    PyObject* module = nullptr;  ///< the executed module; owned, so that it is there when it is imported again
};

State& state();

/// Makes every name, integer and tuple that is not there yet, and looks up every builtin; raises NameError for a
/// builtin that is missing. What is made stays for the life of the process: functions may outlive a module whose body
/// failed.
void fill_state();

/// Whether the module's code has an identifier of that name.
bool uses_name(std::string_view name);

}  // namespace person
