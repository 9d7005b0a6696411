#include "bulk/tables.hpp"

#include <algorithm>
#include <unordered_set>

#include "bulk/known_code.hpp"
#include "bulk/originals.hpp"
#include "bulk/texts.hpp"
#include "python/call.hpp"
#include "python/error.hpp"

namespace bulk {

using namespace python;

namespace {

constexpr double kExactIntegers = 9007199254740992.0;  // 2**53

bool is_class_of(PyObject* object, const char* module, const char* name) {
    Ref imported_module = quiet_import(module);
    return imported_module && quiet_attr(imported_module, name).get() == reinterpret_cast<PyObject*>(Py_TYPE(object));
}

constexpr const char* kKeptKeys = "_key_cache";

/// Nothing that the object holds in its own names could be called.
bool holds_data_alone(PyObject* object) {
    Ref names = quiet_attr(object, "__dict__");
    if (!names || !PyDict_CheckExact(names.get())) return false;
    PyObject* name = nullptr;
    PyObject* value = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(names, &position, &name, &value) != 0) {
        if (PyCallable_Check(value) != 0) return false;
    }
    return true;
}

/// The instructions of a method that draws from an attribute.
Ref shape_of_drawing() {
    Ref globals = dict();
    const char* source = "def shape(self):\n    return self.random_element(self.elements)\n";
    Ref ran = owned(PyRun_String(source, Py_file_input, globals, globals));
    Ref code = owned(PyObject_GetAttrString(find(globals, "shape"), "__code__"));
    return owned(PyObject_GetAttrString(code, "co_code"));
}

/// The name of the attribute that a method draws from, where its whole body is `return self.random_element(self.name)`.
Ref drawn_attribute(PyObject* function) {
    // Not made by the initialiser: another thread would wait there with the lock that this one needs to go on.
    static PyObject* shape = nullptr;
    if (shape == nullptr) shape = shape_of_drawing().release();
    if (!PyFunction_Check(function)) return {};
    PyObject* code = PyFunction_GetCode(function);
    Ref instructions = quiet_attr(code, "co_code");
    Ref names = quiet_attr(code, "co_names");
    if (!instructions || !names || PyTuple_GET_SIZE(names.get()) != 2) return {};
    if (require(PyObject_RichCompareBool(instructions, shape, Py_EQ)) == 0) return {};
    if (PyUnicode_CompareWithASCIIString(PyTuple_GET_ITEM(names.get(), 0), "random_element") != 0) return {};
    return Ref::share(PyTuple_GET_ITEM(names.get(), 1));
}

}  // namespace

// --- tables
// -----------------------------------------------------------------------------------------------------------------

std::optional<Table> Table::read(PyObject* elements, bool weighted) {
    const bool ordered_mapping = is_class_of(elements, "collections", "OrderedDict");
    if (!ordered_mapping && !PyTuple_CheckExact(elements) && !PyList_CheckExact(elements)) return std::nullopt;
    Table table;
    Ref kept = ordered_mapping ? quiet_attr(elements, kKeptKeys) : Ref();
    if (ordered_mapping && !kept) table.keyless_ = Ref::share(elements);
    table.choices_ = owned(PySequence_Tuple(kept ? kept.get() : elements));
    if (!table.read_texts()) return std::nullopt;
    if (ordered_mapping && weighted && !table.read_weights(elements)) return std::nullopt;
    return table;
}

bool Table::read_texts() {
    const Py_ssize_t count = PyTuple_GET_SIZE(choices_.get());
    if (count == 0) return false;
    texts_.reserve(static_cast<std::size_t>(count));
    for (Py_ssize_t i = 0; i < count; ++i) {
        const auto text = utf8(PyTuple_GET_ITEM(choices_.get(), i));
        if (!text) return false;
        texts_.push_back(*text);
        has_nul_ |= text->find('\0') != std::string_view::npos;
    }
    return true;
}

bool Table::read_weights(PyObject* elements) {
    Ref weights = owned(PySequence_Tuple(owned(PyObject_CallMethod(elements, "values", nullptr))));
    if (PyTuple_GET_SIZE(weights.get()) != static_cast<Py_ssize_t>(texts_.size())) return false;
    double sum = 0.0;
    for (std::size_t i = 0; i < texts_.size(); ++i) {
        PyObject* weight = PyTuple_GET_ITEM(weights.get(), static_cast<Py_ssize_t>(i));
        if (!PyFloat_CheckExact(weight) && !PyLong_CheckExact(weight)) return false;
        const double value = PyFloat_AsDouble(weight);
        if (value == -1.0 && PyErr_Occurred() != nullptr) {  // an integer beyond all floats
            PyErr_Clear();
            return false;
        }
        sum += value;
        if (!(value >= 0.0 && sum < kExactIntegers)) return false;  // not a number, too, is none of these
        cumulative_weights_.push_back(sum);
    }
    if (!(sum > 0.0)) return false;
    make_guide();
    return true;
}

Table::Drawn Table::draw(Mersenne& engine) {
    drawn_ = true;
    if (cumulative_weights_.empty()) return engine.below(static_cast<std::uint32_t>(texts_.size()));
    const double part = engine.uniform();
    const double drawn = part * cumulative_weights_.back();
    // As `bisect` finds it, but from a place that is seldom more than a step away.
    Drawn found = guide_[static_cast<std::size_t>(part * static_cast<double>(guide_.size()))];
    while (found > 0 && cumulative_weights_[found - 1] > drawn) --found;
    while (found + 1 < size() && cumulative_weights_[found] <= drawn) ++found;
    return found;
}

/// The guide table of H.-C. Chen and Y. Asau, "On generating random variates from an empirical distribution", AIIE
/// Transactions 6 (1974) 163.
void Table::make_guide() {
    guide_.reserve(size());
    Drawn place = 0;
    for (std::size_t part = 0; part < size(); ++part) {
        const double start = cumulative_weights_.back() * static_cast<double>(part) / static_cast<double>(size());
        while (place + 1 < size() && cumulative_weights_[place] <= start) ++place;
        guide_.push_back(place);
    }
}

void Table::leave_as_drawn() {
    if (!drawn_ || !keyless_) return;
    require(PyObject_SetAttrString(keyless_, kKeptKeys, choices_));
    keyless_ = Ref();
}

// --- Faker instances
// ----------------------------------------------------------------------------------------------------------

std::optional<KnownFaker> KnownFaker::recognise(PyObject* faker) {
    auto* type = reinterpret_cast<PyObject*>(Py_TYPE(faker));
    if (!faker_code().is_genuine()) return std::nullopt;
    if (!is_class_of(faker, "faker.proxy", "Faker")) return std::nullopt;
    if (!is_original(quiet_attr(type, "__getattr__"), {"faker.proxy", "Faker.__getattr__"})) return std::nullopt;
    if (!is_original(quiet_attr(type, "__getattribute__"), {"faker.proxy", "Faker.__getattribute__"}))
        return std::nullopt;

    Ref names = quiet_attr(faker, "__dict__");
    PyObject* factories = names ? find(names, "_factories") : nullptr;
    if (factories == nullptr || !PyList_CheckExact(factories) || PyList_GET_SIZE(factories) != 1) return std::nullopt;

    KnownFaker known;
    known.generator_ = Ref::share(PyList_GET_ITEM(factories, 0));
    if (!reads_plainly(known.generator_) || !is_class_of(known.generator_, "faker.generator", "Generator")) {
        return std::nullopt;
    }
    Ref random = quiet_attr(reinterpret_cast<PyObject*>(Py_TYPE(known.generator_.get())), "random");
    if (!random || !is_original(quiet_attr(random, "fget"), {"faker.generator", "Generator.random"}))
        return std::nullopt;
    known.source_ = quiet_attr(known.generator_, "random");
    if (!known.source_ || !is_plain_random(known.source_)) return std::nullopt;
    // A name in the proxy itself would come before the generator's.
    for (const char* method : {"first_name", "first_name_male", "first_name_female", "last_name", "domain_name"}) {
        if (find(names, method) != nullptr || quiet_attr(type, method)) return std::nullopt;
    }
    return known;
}

Ref KnownFaker::provider_of(PyObject* method) const {
    if (method == nullptr || !PyMethod_Check(method)) return {};
    PyObject* provider = PyMethod_GET_SELF(method);
    if (!reads_plainly(provider) || plain_value(provider, string("generator")).get() != generator_.get()) return {};
    if (!has_base_method(provider, "random_element", {"faker.providers", "BaseProvider.random_element"})) return {};
    if (!has_base_method(provider, "random_elements", {"faker.providers", "BaseProvider.random_elements"})) return {};
    Ref distribution = quiet_import("faker.providers");
    if (!is_original(quiet_attr(distribution, "choices_distribution"),
                     {"faker.utils.distribution", "choices_distribution"})) {
        return {};
    }
    return Ref::share(provider);
}

std::optional<Table> KnownFaker::table(const char* method) const {
    return table_behind(quiet_attr(generator_, method));
}

Ref KnownFaker::own_method(const char* method) const {
    Ref bound = quiet_attr(generator_, method);
    Ref provider = provider_of(bound);
    return provider && has_own_methods_alone() ? std::move(bound) : Ref();
}

bool KnownFaker::has_own_methods_alone() const {
    Ref generator = string("generator");
    std::unordered_set<PyObject*> own_providers;
    const auto is_own_provider = [&](PyObject* provider) {
        if (own_providers.contains(provider)) return true;
        const bool is_own = faker_code().has_class(Py_TYPE(provider)) && reads_plainly(provider) &&
                            holds_data_alone(provider) &&
                            plain_value(provider, generator).get() == generator_.get();
        if (is_own) own_providers.insert(provider);
        return is_own;
    };
    const auto is_own_method = [&](PyObject* value) {
        if (!PyMethod_Check(value)) return PyCallable_Check(value) == 0 || faker_code().defines(value);
        return faker_code().defines(PyMethod_GET_FUNCTION(value)) && is_own_provider(PyMethod_GET_SELF(value));
    };
    Ref names = quiet_attr(generator_, "__dict__");
    if (!names || !PyDict_CheckExact(names.get())) return false;
    Ref values = owned(PyDict_Values(names));
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(values.get()); ++i) {
        if (!is_own_method(PyList_GET_ITEM(values.get(), i))) return false;
    }
    return true;
}

std::optional<Table> KnownFaker::table_behind(PyObject* method) const {
    Ref provider = provider_of(method);
    if (!provider) return std::nullopt;
    if (Ref attribute = drawn_attribute(PyMethod_GET_FUNCTION(method))) return table_of(provider, attribute);
    return gendered_table(method, provider);
}

/// `first_name_male` and `first_name_female`: a table of their own, or else that of `first_name`.
std::optional<Table> KnownFaker::gendered_table(PyObject* bound, PyObject* provider) const {
    struct Gendered {
        Original method;
        const char* attribute;
    };
    constexpr Gendered kMethods[] = {
        {{"faker.providers.person", "Provider.first_name_male"}, "first_names_male"},
        {{"faker.providers.person", "Provider.first_name_female"}, "first_names_female"},
    };
    for (const auto& [method, attribute] : kMethods) {
        if (bound_to(bound, method) == nullptr) continue;
        if (quiet_attr(provider, attribute)) return table_of(provider, string(attribute));
        Ref neutral = quiet_attr(provider, "first_name");
        if (!neutral || !PyMethod_Check(neutral.get()) || PyMethod_GET_SELF(neutral.get()) != provider)
            return std::nullopt;
        Ref drawn = drawn_attribute(PyMethod_GET_FUNCTION(neutral.get()));
        return drawn ? table_of(provider, drawn) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<Table> KnownFaker::table_of(PyObject* provider, PyObject* attribute) {
    Ref elements = plain_value(provider, attribute);
    Ref weighting = plain_value(provider, string("__use_weighting__"));
    if (!elements || !weighting || !PyBool_Check(weighting.get())) return std::nullopt;
    return Table::read(elements, weighting.get() == Py_True);
}

}  // namespace bulk
