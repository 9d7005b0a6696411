#include "python/arguments.hpp"

#include <algorithm>
#include <optional>
#include <utility>

#include "python/error.hpp"

namespace python {

namespace {

[[noreturn]] void raise_count(const Function& function, std::size_t required, Py_ssize_t given) {
    const std::size_t accepted = function.parameters.size();
    if (accepted == 0) raise(PyExc_TypeError, "%.200s() takes no arguments (%zd given)", function.name(), given);
    const bool too_few = std::cmp_less(given, required);
    const std::size_t bound = too_few ? required : accepted;
    const char* how = required == accepted ? "exactly" : too_few ? "at least" : "at most";
    raise(PyExc_TypeError, "%.200s() takes %.8s %zd positional argument%.1s (%zd given)", function.name(), how,
          static_cast<Py_ssize_t>(bound), bound == 1 ? "" : "s", given);
}

/// The index of the parameter that a keyword names. Nearly every keyword is the very string that names the parameter.
std::optional<std::size_t> parameter_index(const Function& function, PyObject* keyword) {
    const auto& parameters = function.parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (parameters[i].name.object == keyword) return i;
    }
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const int order = PyUnicode_Compare(parameters[i].name, keyword);
        if (order == 0) return i;
        if (order == -1 && PyErr_Occurred() != nullptr) throw PythonError{};
    }
    return std::nullopt;
}

/// A keyword that cannot be bound; null where all can.
struct Misfit {
    PyObject* keyword = nullptr;
    const char* format = nullptr;
};

Misfit bind_keywords(const Function& function, const CallSite& site, std::span<PyObject*> values) {
    Misfit first;
    const Py_ssize_t count = site.keyword_names == nullptr ? 0 : PyTuple_GET_SIZE(site.keyword_names);
    for (Py_ssize_t i = 0; i < count; ++i) {
        PyObject* keyword = PyTuple_GET_ITEM(site.keyword_names, i);
        const auto index = parameter_index(function, keyword);
        if (index && values[*index] == nullptr) {
            values[*index] = site.arguments[site.positional_count + i];
        } else if (first.keyword == nullptr) {
            first = {keyword, index ? "%.200s() got multiple values for keyword argument '%U'"
                                    : "%.200s() got an unexpected keyword argument '%U'"};
        }
    }
    return first;
}

void check_types(const Function& function, std::span<PyObject* const> values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Parameter& parameter = function.parameters[i];
        if (parameter.exact == nullptr || Py_IS_TYPE(values[i], parameter.exact)) continue;
        if (parameter.optional && values[i] == Py_None) continue;
        raise(PyExc_TypeError, "Argument '%.200s' has incorrect type (expected %.200s, got %.200U)",
              parameter.name.text, parameter.exact->tp_name, type_name(values[i]).get());
    }
}

}  // namespace

void bind(const Function& function, const CallSite& site, PyObject* defaults, std::span<PyObject*> values) {
    const std::size_t accepted = values.size();
    const std::size_t default_count = defaults == nullptr ? 0 : static_cast<std::size_t>(PyTuple_GET_SIZE(defaults));
    const std::size_t required = accepted - std::min(accepted, default_count);
    if (std::cmp_greater(site.positional_count, accepted)) {
        raise_count(function, required, site.positional_count);
    }
    std::copy_n(site.arguments, site.positional_count, values.begin());
    const Misfit misfit = bind_keywords(function, site, values);
    for (std::size_t i = 0; i < required; ++i) {
        if (values[i] == nullptr) raise_count(function, required, static_cast<Py_ssize_t>(i));
    }
    if (misfit.keyword != nullptr) raise(PyExc_TypeError, misfit.format, function.name(), misfit.keyword);
    for (std::size_t i = required; i < accepted; ++i) {
        if (values[i] == nullptr)
            values[i] = PyTuple_GET_ITEM(defaults, static_cast<Py_ssize_t>(i + default_count - accepted));
    }
    check_types(function, values);
}

}  // namespace python
