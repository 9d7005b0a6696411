#include "bulk/tables.hpp"

#include <algorithm>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>

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
    Ref code = attr(find(globals, "shape"), "__code__");
    return attr(code, "co_code");
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

/// Contents that were read, by the elements that they were read from.
class Table::Kept {
  public:
    static Kept& all() {
        static auto* const kept = new Kept;
        return *kept;
    }

    /// What was read from these elements with these keys (null where they have none of their own), if it still holds.
    std::shared_ptr<const Contents> find(PyObject* elements, PyObject* keys, bool by_weight) {
        const auto found = entries_.find(elements);
        if (found == entries_.end()) return nullptr;
        const Entry& entry = found->second;
        const bool holds = !entry.changed && entry.by_weight == by_weight && entry.keys.get() == keys &&
                           (!PyODict_Check(elements) || has_ends(elements, entry));
        return holds ? entry.contents : nullptr;
    }

    void add(PyObject* elements, PyObject* keys, bool by_weight, std::shared_ptr<const Contents> contents) {
        if (PyList_CheckExact(elements) || !watch(elements)) return;
        if (entries_.size() >= kMost) entries_.clear();
        Entry& entry = entries_[elements];
        entry = {.elements = Ref::share(elements),
                 .keys = Ref::share(keys),
                 .contents = std::move(contents),
                 .by_weight = by_weight};
        if (PyODict_Check(elements)) std::tie(entry.first, entry.last) = ends(elements);
    }

  private:
    static constexpr std::size_t kMost = 4096;

    struct Entry {
        Ref elements;  // kept, so that nothing else can take its place
        Ref keys;
        std::shared_ptr<const Contents> contents;
        bool by_weight = false;
        bool changed = false;
        Ref first{};
        Ref last{};
    };

    /// An ordered dict moves its keys about without a word.
    static std::pair<Ref, Ref> ends(PyObject* elements) {
        const auto next = [](Ref iterator) { return Ref::steal(PyIter_Next(iterator)); };
        Ref first = next(owned(PyObject_GetIter(elements)));
        return {std::move(first), next(owned(PyObject_CallMethod(elements, "__reversed__", nullptr)))};
    }

    static bool has_ends(PyObject* elements, const Entry& entry) {
        const auto [first, last] = ends(elements);
        return first.get() == entry.first.get() && last.get() == entry.last.get();
    }

    /// A tuple does not change; of a dict the interpreter tells.
    static bool watch(PyObject* elements) {
        if (PyTuple_CheckExact(elements)) return true;
        static const int watcher = [] {
            const int id = PyDict_AddWatcher(note_change);
            PyErr_Clear();  // of there being none left
            return id;
        }();
        if (watcher >= 0) require(PyDict_Watch(watcher, elements));
        return watcher >= 0;
    }

    static int note_change(PyDict_WatchEvent /*event*/, PyObject* dict, PyObject* /*key*/, PyObject* /*value*/) {
        const auto found = all().entries_.find(dict);
        if (found != all().entries_.end()) found->second.changed = true;
        return 0;
    }

    std::unordered_map<PyObject*, Entry> entries_;
};

std::optional<Table> Table::read(PyObject* elements, bool weighted) {
    const bool ordered_mapping = is_class_of(elements, "collections", "OrderedDict");
    if (!ordered_mapping && !PyTuple_CheckExact(elements) && !PyList_CheckExact(elements)) return std::nullopt;
    Ref keys = ordered_mapping ? quiet_attr(elements, kKeptKeys) : Ref();
    const bool by_weight = ordered_mapping && weighted;
    auto contents = Kept::all().find(elements, keys, by_weight);
    if (!contents) {
        contents = read_contents(elements, keys, by_weight);
        if (!contents) return std::nullopt;
        Kept::all().add(elements, keys, by_weight, contents);
    }
    Table table(std::move(contents));
    if (ordered_mapping && !keys) table.keyless_ = Ref::share(elements);
    return table;
}

std::shared_ptr<const Table::Contents> Table::read_contents(PyObject* elements, PyObject* keys, bool by_weight) {
    Contents contents;
    contents.choices = owned(PySequence_Tuple(keys != nullptr ? keys : elements));
    if (!contents.read_texts() || (by_weight && !contents.read_weights(elements))) return nullptr;
    return std::make_shared<const Contents>(std::move(contents));
}

bool Table::Contents::read_texts() {
    const Py_ssize_t count = PyTuple_GET_SIZE(choices.get());
    if (count == 0) return false;
    texts.reserve(static_cast<std::size_t>(count));
    for (Py_ssize_t i = 0; i < count; ++i) {
        const auto text = utf8(PyTuple_GET_ITEM(choices.get(), i));
        if (!text) return false;
        texts.push_back(*text);
        has_nul |= text->find('\0') != std::string_view::npos;
    }
    return true;
}

bool Table::Contents::read_weights(PyObject* elements) {
    Ref weights = owned(PySequence_Tuple(owned(PyObject_CallMethod(elements, "values", nullptr))));
    if (PyTuple_GET_SIZE(weights.get()) != static_cast<Py_ssize_t>(texts.size())) return false;
    double sum = 0.0;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        PyObject* weight = PyTuple_GET_ITEM(weights.get(), static_cast<Py_ssize_t>(i));
        if (!PyFloat_CheckExact(weight) && !PyLong_CheckExact(weight)) return false;
        const double value = PyFloat_AsDouble(weight);
        if (value == -1.0 && PyErr_Occurred() != nullptr) {  // an integer beyond all floats
            PyErr_Clear();
            return false;
        }
        sum += value;
        if (!(value >= 0.0 && sum < kExactIntegers)) return false;  // not a number, too, is none of these
        cumulative_weights.push_back(sum);
    }
    if (!(sum > 0.0)) return false;
    make_guide();
    return true;
}

Table::Drawn Table::draw(Mersenne& engine) {
    drawn_ = true;
    if (contents_->cumulative_weights.empty()) return engine.below(static_cast<std::uint32_t>(contents_->texts.size()));
    const double part = engine.uniform();
    const double drawn = part * contents_->cumulative_weights.back();
    // As `bisect` finds it, but from a place that is seldom more than a step away.
    Drawn found = contents_->guide[static_cast<std::size_t>(part * static_cast<double>(contents_->guide.size()))];
    while (found > 0 && contents_->cumulative_weights[found - 1] > drawn) --found;
    while (found + 1 < size() && contents_->cumulative_weights[found] <= drawn) ++found;
    return found;
}

/// The guide table of H.-C. Chen and Y. Asau, "On generating random variates from an empirical distribution", AIIE
/// Transactions 6 (1974) 163.
void Table::Contents::make_guide() {
    guide.reserve(texts.size());
    Drawn place = 0;
    for (std::size_t part = 0; part < texts.size(); ++part) {
        const double start = cumulative_weights.back() * static_cast<double>(part) / static_cast<double>(texts.size());
        while (place + 1 < texts.size() && cumulative_weights[place] <= start) ++place;
        guide.push_back(place);
    }
}

void Table::leave_as_drawn() {
    if (!drawn_ || !keyless_) return;
    require(PyObject_SetAttrString(keyless_, kKeptKeys, contents_->choices));
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
    if (!reads_plainly(provider) || plain_value(provider, identifier("generator")).get() != generator_.get()) return {};
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
    Ref generator = identifier("generator");
    std::unordered_set<PyObject*> own_providers;
    const auto is_own_provider = [&](PyObject* provider) {
        if (own_providers.contains(provider)) return true;
        const bool is_own = faker_code().has_class(Py_TYPE(provider)) && reads_plainly(provider) &&
                            holds_data_alone(provider) && plain_value(provider, generator).get() == generator_.get();
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
        if (quiet_attr(provider, attribute)) return table_of(provider, identifier(attribute));
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
    Ref weighting = plain_value(provider, identifier("__use_weighting__"));
    if (!elements || !weighting || !PyBool_Check(weighting.get())) return std::nullopt;
    return Table::read(elements, weighting.get() == Py_True);
}

}  // namespace bulk
