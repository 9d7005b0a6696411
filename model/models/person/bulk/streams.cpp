#include "bulk/streams.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <utility>

#include "bulk/originals.hpp"
#include "bulk/signals.hpp"
#include "python/call.hpp"
#include "python/error.hpp"

namespace bulk {

using namespace python;

namespace {

constexpr Original kMethods[] = {
    {"random", "Random.choice"},
    {"random", "Random.choices"},
    {"random", "Random.randint"},
    {"random", "Random.randrange"},
};

/// `getrandbits` and `random` are the C methods of the base class, which no subclass and no assignment covers.
bool draws_in_c(PyObject* type) {
    Ref base = Ref::share(reinterpret_cast<PyObject*>(reinterpret_cast<PyTypeObject*>(type)->tp_base));
    for (const char* name : {"getrandbits", "random"}) {
        Ref method = quiet_attr(type, name);
        if (!method || !Py_IS_TYPE(method, &PyMethodDescr_Type)) return false;
        if (method.get() != quiet_attr(base, name).get()) return false;
    }
    return true;
}

bool is_plain_type(PyObject* type) {
    Ref module = quiet_import("random");
    if (!module || quiet_attr(module, "Random").get() != type) return false;
    for (const Original& method : kMethods) {
        const char* name = method.qualname + sizeof("Random.") - 1;
        if (!is_original(quiet_attr(type, name), method)) return false;
    }
    return is_original(quiet_attr(type, "_randbelow"), {"random", "Random._randbelow_with_getrandbits"}) &&
           draws_in_c(type);
}

/// Nothing but the saved deviate stands in the instance: no function put before the class's.
bool has_plain_names(PyObject* object) {
    Ref names = quiet_attr(object, "__dict__");
    if (!names || !PyDict_CheckExact(names.get())) return false;
    const Py_ssize_t own = PyDict_Size(names);
    return own == 0 || (own == 1 && find(names, "gauss_next") != nullptr);
}

/// `_random.Random.getstate` and `setstate`: the words alone, which leaves a saved deviate as it is.
Ref word_method(PyObject* source, const char* name) {
    return attr(reinterpret_cast<PyObject*>(Py_TYPE(source)->tp_base), name);
}

/// How CPython lays out a `_random.Random` (Modules/_randommodule.c). To go through `getstate` and `setstate` takes as
/// long as a hundred rows.
struct RandomObject {
    PyObject_HEAD;
    int next_word;
    Mersenne::Words words;
};

/// An entry of what `getstate` gives: the words, then how many are used up.
unsigned long entry_of(PyObject* state, std::size_t i) {
    return PyLong_AsUnsignedLong(PyTuple_GET_ITEM(state, static_cast<Py_ssize_t>(i)));
}

/// Whether it is laid out so: the version is the one that this was written for, and an object of known state has it
/// where it should be.
bool is_laid_out_so(PyTypeObject* type) {
    if (Py_Version >> 16U != PY_VERSION_HEX >> 16U || std::cmp_less(type->tp_basicsize, sizeof(RandomObject)))
        return false;
    Ref known = call(reinterpret_cast<PyObject*>(type), {integer(1)});
    call(attr(known, "getrandbits"), {integer(32)});  // so that a word is used up
    Ref state = call(attr(known, "getstate"));
    const auto* laid_out = reinterpret_cast<const RandomObject*>(known.get());
    bool same = entry_of(state, Mersenne::kWords) == static_cast<unsigned long>(laid_out->next_word);
    for (std::size_t i = 0; i < Mersenne::kWords; ++i) same = same && entry_of(state, i) == laid_out->words[i];
    return same;
}

/// The object as it lies in memory; null where that is not known.
RandomObject* in_memory(PyObject* source) {
    // Not made by the initialiser: another thread would wait there with the lock that this one needs to go on.
    static std::optional<bool> known;
    PyTypeObject* type = Py_TYPE(source)->tp_base;
    if (!known) known = is_laid_out_so(type);
    return *known ? reinterpret_cast<RandomObject*>(source) : nullptr;
}

void read_state(PyObject* source, Mersenne& engine) {
    if (const RandomObject* object = in_memory(source)) {
        engine.set(object->words, static_cast<std::size_t>(object->next_word));
        return;
    }
    Ref state = call(word_method(source, "getstate"), {source});
    Mersenne::Words words{};
    for (std::size_t i = 0; i < words.size(); ++i) words[i] = static_cast<std::uint32_t>(entry_of(state, i));
    engine.set(words, entry_of(state, words.size()));
}

void write_state(PyObject* source, const Mersenne& engine) {
    if (RandomObject* object = in_memory(source)) {
        object->words = engine.words();
        object->next_word = static_cast<int>(engine.used());
        return;
    }
    // All that needs memory comes first: where it is wanting, nothing has changed and this can be tried again.
    Ref set_state = word_method(source, "setstate");
    Ref state = owned(PyTuple_New(Mersenne::kWords + 1));
    for (std::size_t i = 0; i <= Mersenne::kWords; ++i) {
        const std::size_t word = i < Mersenne::kWords ? engine.words()[i] : engine.used();
        PyTuple_SET_ITEM(state.get(), static_cast<Py_ssize_t>(i), owned(PyLong_FromSize_t(word)).release());
    }
    call(set_state, {source, state});
}

}  // namespace

bool is_plain_random(PyObject* object) {
    return reads_plainly(object) && is_plain_type(reinterpret_cast<PyObject*>(Py_TYPE(object))) &&
           has_plain_names(object);
}

Ref module_random(PyObject* random_module, std::initializer_list<const char*> functions) {
    Ref source;
    for (const char* name : functions) {
        Ref method = quiet_attr(random_module, name);
        if (!method || !PyMethod_Check(method.get())) return {};
        PyObject* self = PyMethod_GET_SELF(method.get());
        Ref own = quiet_attr(reinterpret_cast<PyObject*>(Py_TYPE(self)), name);
        if (PyMethod_GET_FUNCTION(method.get()) != own.get()) return {};
        if (source && source.get() != self) return {};
        source = Ref::share(self);
    }
    return source && is_plain_random(source) ? std::move(source) : Ref();
}

// --- random.Random
// ----------------------------------------------------------------------------------------------------------

void Source::read() {
    read_state(random_, engine_);
    taken_over_ = true;
}

void Source::write() {
    write_state(random_, engine_);
    taken_over_ = false;
}

void Source::let_go() { together_.hand_back(); }

void Source::take_breath() {
    let_go();
    let_others_in();
    take_over();
}

Source::~Source() {
    if (!taken_over_) return;
    // Only want of memory leads here: what was drawn is drawn.
    PyObject* exception = PyErr_GetRaisedException();
    try {
        hand_back();
    } catch (...) {
        PyErr_Clear();
    }
    PyErr_SetRaisedException(exception);
}

Source& Sources::of(PyObject* random) {
    const auto known = std::ranges::find(all_, random, &Source::random);
    return known != all_.end() ? *known : all_.emplace_back(random, *this);
}

Mark::Mark(const Source& source)
    : random_(Ref::share(source.random())), state_(call(word_method(random_, "getstate"), {random_})) {}

void Mark::go_back() const { call(word_method(random_, "setstate"), {random_, state_}); }

// --- numpy
// ------------------------------------------------------------------------------------------------------------------

/// The interface that numpy's bit generators offer in their capsule (numpy/random/bitgen.h).
struct NumpyChoice::BitGenerator {
    void* state;
    std::uint64_t (*next_uint64)(void* state);
    std::uint32_t (*next_uint32)(void* state);
    double (*next_double)(void* state);
    std::uint64_t (*next_raw)(void* state);
};

/// numpy's own class of its global generator: a static type, which Python code can neither make nor change.
static bool is_legacy_generator(PyObject* object) {
    const PyTypeObject* type = Py_TYPE(object);
    return std::strcmp(type->tp_name, "numpy.random.mtrand.RandomState") == 0 &&
           PyType_HasFeature(Py_TYPE(object), Py_TPFLAGS_HEAPTYPE) == 0;
}

NumpyChoice::NumpyChoice(PyObject* numpy) {
    Ref random = quiet_attr(numpy, "random");
    Ref choice = random ? quiet_attr(random, "choice") : Ref();
    if (!choice || !PyMethod_Check(choice.get()) || !is_legacy_generator(PyMethod_GET_SELF(choice.get()))) return;
    PyObject* self = PyMethod_GET_SELF(choice.get());
    Ref own = quiet_attr(reinterpret_cast<PyObject*>(Py_TYPE(self)), "choice");
    if (PyMethod_GET_FUNCTION(choice.get()) != own.get()) return;
    Ref generator = quiet_attr(self, "_bit_generator");
    Ref capsule = generator ? quiet_attr(generator, "capsule") : Ref();
    if (!capsule || PyCapsule_IsValid(capsule, "BitGenerator") == 0) return;
    bits_ = static_cast<BitGenerator*>(PyCapsule_GetPointer(capsule, "BitGenerator"));
    lock_ = quiet_attr(generator, "lock");
    owner_ = std::move(generator);
}

std::uint32_t NumpyChoice::below(std::uint32_t n) {
    const std::uint32_t last = n - 1;
    if (last == 0) return 0;
    const std::uint32_t mask = ~std::uint32_t{0} >> std::countl_zero(last);
    std::uint32_t drawn = bits_->next_uint32(bits_->state) & mask;
    while (drawn > last) drawn = bits_->next_uint32(bits_->state) & mask;
    return drawn;
}

NumpyChoice::Held::Held(const NumpyChoice& choice) : choice_(choice) { acquire(); }

/// Takes the lock where one of so many tries, some 15 ms in all, finds it free.
static bool acquire_without_waiting(PyObject* acquire) {
    using std::chrono::microseconds;
    constexpr int kTries = 20;
    constexpr microseconds kLongestPause{1000};
    microseconds pause{20};
    for (int tries = 0; tries < kTries; ++tries) {
        if (truth(call(acquire, {Py_False}))) return true;
        let_others_in(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
    return false;
}

void NumpyChoice::Held::acquire() {
    Ref acquire = attr(choice_.lock_, "acquire");
    // A thread that waits for the lock owns it a moment before it has the global one back; where the process forks or
    // ends at that moment, nobody ever lets it go. Yet a thread that does nothing but draw holds it whenever it lets
    // others in: to get it from there takes waiting, as numpy itself waits.
    held_ = acquire_without_waiting(acquire) || truth(call(acquire));
}

void NumpyChoice::Held::release() {
    call(attr(choice_.lock_, "release"));
    held_ = false;
}

void NumpyChoice::Held::let_signals_in(std::size_t row) {
    if (!is_time_for_signals(row)) return;
    release();
    let_others_in();
    acquire();
}

NumpyChoice::Held::~Held() {
    if (!held_) return;
    PyObject* exception = PyErr_GetRaisedException();
    try {
        release();
    } catch (...) {
        PyErr_Clear();
    }
    PyErr_SetRaisedException(exception);
}

}  // namespace bulk
