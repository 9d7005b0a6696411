#pragma once

// Python functions whose bodies are C++. A Function is one row of a table, and the row is all there is to know about
// the function. From it comes a real `types.FunctionType`, so signatures, help, mocks, pickling by name and binding
// work as for any function; only its vectorcall entry is ours.

#include <Python.h>

#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>

#include "python/name.hpp"
#include "python/ref.hpp"

namespace python {

inline constexpr std::size_t kMaxParameters = 8;

struct Function;

/// The arguments of one call, bound to the parameters in order. All are borrowed for the time of the call.
class Arguments {
  public:
    Arguments(const Function& function, PyObject* object, std::span<PyObject* const> values)
        : function_(function), object_(object), values_(values) {}

    template <std::size_t count>
    [[nodiscard]] std::array<PyObject*, count> take() const {
        std::array<PyObject*, count> taken;
        for (std::size_t i = 0; i < count; ++i) taken[i] = values_[i];
        return taken;
    }

    [[nodiscard]] const Function& function() const { return function_; }

    /// The content of the function's one closure cell.
    [[nodiscard]] Ref free_variable() const;

    /// `super()`: the parent's view of the object, through the `__class__` cell.
    [[nodiscard]] Ref parent(PyObject* self) const;

  private:
    const Function& function_;
    PyObject* object_;
    std::span<PyObject* const> values_;
};

struct Parameter {
    const Name& name;
    const char* annotation = nullptr;
    PyTypeObject* exact = nullptr;  ///< the one type that is taken; null takes anything
    bool optional = false;          ///< takes None beside that type
    Ref (*default_)() = nullptr;    ///< makes the default, once, when the function is made
};

enum class Kind { function, property, setter, static_method, class_method };

struct Result {
    PyTypeObject* exact = nullptr;  ///< the one type that may be returned beside None; null lets anything pass
    const char* name = nullptr;     ///< what the message calls it
};

struct Function {
    const char* qualname;  ///< its last part is the name
    int line;
    Kind kind = Kind::function;
    std::span<const Parameter> parameters = {};
    const char* returns = nullptr;  ///< annotation
    const char* doc = nullptr;
    std::initializer_list<const char*> locals = {};  ///< the names that its code shows after the parameters
    const char* free_variable = nullptr;             ///< name of its one closure cell
    Result result = {};
    Ref (*body)(Arguments arguments);

    [[nodiscard]] const char* name() const;
};

/// The free variable of a function that calls `super()`.
inline constexpr const char* kClassCell = "__class__";

/// Calls the function's body as Python calls a function: binds, checks, runs, and leaves a traceback entry on failure.
PyObject* enter(const Function& function, PyObject* object, PyObject* const* arguments, std::size_t flagged_count,
                PyObject* keyword_names) noexcept;

/// A row with the vectorcall entry that leads to it.
struct Entry {
    const Function& function;
    vectorcallfunc vectorcall;
};

template <const Function& function>
inline constexpr Entry entry = {
    function, [](PyObject* object, PyObject* const* arguments, std::size_t flagged_count, PyObject* keyword_names) {
        return enter(function, object, arguments, flagged_count, keyword_names);
    }};

/// Makes the function object; `cell` is its closure cell where the row names a free variable.
Ref make_function(const Entry& entry, PyObject* cell = nullptr);

}  // namespace python
