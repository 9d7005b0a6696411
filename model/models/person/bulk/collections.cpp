// Category values for gender keys, and gender keys for category values, whole columns at once.

#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bulk/columns.hpp"
#include "bulk/originals.hpp"
#include "bulk/signals.hpp"
#include "bulk/streams.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/texts.hpp"
#include "person/names.hpp"
#include "person/typed.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/function.hpp"
#include "python/iterate.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

// --- what pandas makes of results
// -------------------------------------------------------------------------------------------------------------------

Ref identity_body(Arguments arguments) {
    auto [x] = arguments.take<1>();
    return Ref::share(x);
}

constexpr Parameter kElement[] = {{.name = names::x}};
constexpr Function identity{.qualname = "PersonModel.generate_values_from_collections.<locals>.<lambda>",
                            .line = 447,
                            .parameters = kElement,
                            .body = identity_body};

/// `series.apply(...)` with results that are there already: what pandas makes of them is its own.
Ref applied(PyObject* series, PyObject* results) {
    Ref prepared = call(attr(global(names::pd), names::Series), {results},
                        {{names::index, attr(series, names::index)},
                         {names::dtype, reinterpret_cast<PyObject*>(&PyBaseObject_Type)},
                         {names::name, attr(series, names::name)}});
    return call_method(prepared, names::apply, {make_function(entry<identity>)});
}

// --- values of keys
// -----------------------------------------------------------------------------------------------------------

/// The values that a key may get, each as `numpy.random.choice` gives it.
struct Collection {
    std::vector<Ref> values;
};

using CollectionsByKey = std::unordered_map<std::string_view, Collection>;

/// numpy keeps texts in arrays of fixed width, which lose blanks of the kind that fills them up.
bool survives_numpy(PyObject* value) {
    if (!PyUnicode_CheckExact(value)) return false;
    const Py_ssize_t size = PyUnicode_GET_LENGTH(value);
    return size == 0 || PyUnicode_READ_CHAR(value, size - 1) != 0;
}

/// The type of what `numpy.random.choice` draws: a static one, which no Python code can make.
bool is_numpy_text(PyObject* type) {
    return PyType_Check(type) && std::string_view(reinterpret_cast<PyTypeObject*>(type)->tp_name) == "numpy.str_" &&
           PyType_HasFeature(reinterpret_cast<PyTypeObject*>(type), Py_TPFLAGS_HEAPTYPE) == 0;
}

std::optional<Collection> read_collection(std::string_view key, PyObject* collections, PyObject* make_text) {
    Collection collection;
    Ref name = owned(PyUnicode_DecodeUTF8(key.data(), static_cast<Py_ssize_t>(key.size()), nullptr));
    PyObject* values = find(collections, name);
    if (values == nullptr) return collection;
    if (!PyList_CheckExact(values)) return std::nullopt;
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(values); ++i) {
        Ref value = Ref::share(PyList_GET_ITEM(values, i));
        if (!survives_numpy(value)) return std::nullopt;
        collection.values.push_back(call(make_text, {value}));
    }
    return collection;
}

/// The key of a row without one is its text, which is not known here; it must not be a key whatever it is.
bool missing_has_no_collection(PyObject* collections) {
    for (const char* text : {"nan", "<NA>", "None", "NaN"}) {
        if (find(collections, text) != nullptr) return false;
    }
    return true;
}

/// The collection of each row; null for none.
std::optional<std::vector<const Collection*>> plan_rows(const Texts& keys, PyObject* collections,
                                                        CollectionsByKey& found) {
    if (keys.any_missing() && !missing_has_no_collection(collections)) return std::nullopt;
    Ref make_text = attr(global(names::np), names::str_);
    if (!is_numpy_text(make_text)) return std::nullopt;
    std::vector<const Collection*> rows;
    rows.reserve(keys.size());
    for (std::size_t row = 0; row < keys.size(); ++row) {
        let_signals_in(row);
        const Collection* collection = nullptr;
        if (!keys.is_missing(row)) {
            auto known = found.find(keys[row]);
            if (known == found.end()) {
                auto read = read_collection(keys[row], collections, make_text);
                if (!read) return std::nullopt;
                known = found.emplace(keys[row], std::move(*read)).first;
            }
            if (!known->second.values.empty()) collection = &known->second;
        }
        rows.push_back(collection);
    }
    return rows;
}

Ref draw_values(const std::vector<const Collection*>& rows, NumpyChoice& choice) {
    Ref no_value = attr(global(names::pd), names::NA);
    Ref drawn = list();
    NumpyChoice::Held held(choice);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        held.let_signals_in(row);
        PyObject* value = no_value;
        if (const Collection* collection = rows[row]) {
            value = collection->values[choice.below(static_cast<std::uint32_t>(collection->values.size()))];
        }
        append(drawn, value);
    }
    return drawn;
}

}  // namespace

Ref settled_titles(PyObject* texts) {
    if (!namespace_is_untouched()) return {};
    const auto titles = Texts::read(texts);
    if (!titles || !is_worth_it(titles->size()) || titles->any_missing() || !is_bare(texts)) return {};
    for (std::size_t row = 0; row < titles->size(); ++row) {
        if ((*titles)[row] == names::ambiguous.text) return {};
    }
    // What pandas makes of one row tells whether going through all of them would leave the column as it is.
    Ref like = applied(first_row(texts), list_of(first_row(texts)));
    const bool same = equal(attr(like, names::dtype), attr(texts, names::dtype));
    return same ? Ref::share(texts) : Ref();
}

Ref keys_of_values(PyObject* values, PyObject* collections) {
    if (!namespace_is_untouched() || !PyDict_CheckExact(collections)) return {};
    const auto texts = Texts::read(values);
    if (!texts || texts->any_missing()) return {};
    std::unordered_map<std::string_view, PyObject*> key_of;
    PyObject* key = nullptr;
    PyObject* collection = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(collections, &position, &key, &collection) != 0) {
        if (!PyList_CheckExact(collection)) return {};
        for (Py_ssize_t i = 0; i < PyList_GET_SIZE(collection); ++i) {
            const auto text = utf8(PyList_GET_ITEM(collection, i));
            if (!text) return {};
            key_of.try_emplace(*text, key);  // the first collection that holds a value gives its key
        }
    }
    Ref keys = list();
    for (std::size_t row = 0; row < texts->size(); ++row) {
        let_signals_in(row);
        if (const auto found = key_of.find((*texts)[row]); found != key_of.end()) append(keys, found->second);
    }
    return keys;
}

Ref collection_values(PyObject* self, PyObject* conditions, PyObject* collections) {
    if (!namespace_is_untouched()) return {};
    if (!has_our_method(self, names::generate_from_collections,
                        entry<person::person_model::generate_from_collections>)) {
        return {};
    }
    NumpyChoice choice(global(names::np));
    const auto given = choice.applies() ? Texts::read(conditions) : std::nullopt;
    if (!given || !is_worth_it(given->size()) || !is_bare(conditions)) return {};
    Ref keys = call_method(conditions, names::astype, {person::str_type()});
    const auto key_texts = Texts::read(keys);
    CollectionsByKey found;
    const auto rows = key_texts ? plan_rows(*key_texts, collections, found) : std::nullopt;
    return rows ? applied(keys, draw_values(*rows, choice)) : Ref();
}

}  // namespace bulk
