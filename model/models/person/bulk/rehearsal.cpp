#include "bulk/rehearsal.hpp"

#include <pthread.h>

#include "person/names.hpp"
#include "python/call.hpp"
#include "python/function.hpp"
#include "python/iterate.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

Ref made_by(const char* module, const char* function, Positionals arguments, Keywords keywords = {}) {
    Ref make = attr(owned(PyImport_ImportModule(module)), function);
    return call(make, arguments, keywords);
}

PyObject* kept_sources = nullptr;

/// Stands in for the modules `random` and `numpy`.
PyObject* sources() {
    // Not made by an initialiser: another thread would wait there with the lock that this one needs to go on.
    if (kept_sources == nullptr) {
        Ref seed = integer(0);
        Ref random = made_by("numpy.random", "RandomState", {seed});
        Ref numpy = made_by("types", "SimpleNamespace", {},
                            {{names::random, random}, {names::nan, attr(global(names::np), names::nan)}});
        kept_sources = dict({{names::random, made_by("random", "Random", {seed})}, {names::np, numpy}}).release();
        // In a forked process nobody may be left to let go of the lock of numpy's source.
        [[maybe_unused]] static const int told = pthread_atfork(nullptr, nullptr, [] { kept_sources = nullptr; });
    }
    return kept_sources;
}

Ref same_text_body(Arguments /*arguments*/) { return Ref::share(names::x); }

constexpr Function same_text{.qualname = "same_text", .line = 0, .body = same_text_body};

}  // namespace

Rehearsal::Rehearsal() : overlay_(sources()) {}

Ref Rehearsed::series(TextColumn& column, PyObject* given) const {
    Ref index = attr(given, names::index);
    const bool hands_on = attr(made, names::index).get() == attr(rows, names::index).get();
    if (!hands_on) index = call(attr(index, "view"));
    return column.series(index, attr(made, names::name));
}

Ref rehearsing_model(PyObject* self, PyObject* countries) {
    Ref text = make_function(entry<same_text>);
    Ref provider = made_by("types", "SimpleNamespace", {},
                           {{names::first_name, text},
                            {names::first_name_male, text},
                            {names::first_name_female, text},
                            {names::last_name, text},
                            {names::domain_name, text}});
    Ref providers = dict();
    for (Ref country : iterate(countries)) set_item(providers, country, provider);
    Ref make = attr(reinterpret_cast<PyObject*>(&PyBaseObject_Type), "__new__");
    Ref model = call(make, {reinterpret_cast<PyObject*>(Py_TYPE(self))});
    Ref own_names = attr(model, names::dunder_dict);
    call_method(own_names, names::update, {attr(self, names::dunder_dict)});
    set_item(own_names, names::_country_to_provider_map, providers);
    return model;
}

}  // namespace bulk
