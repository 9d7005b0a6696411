#include "bulk/finished_words.hpp"

#include <algorithm>
#include <deque>
#include <utility>

#include "bulk/originals.hpp"
#include "bulk/texts.hpp"
#include "python/call.hpp"
#include "python/error.hpp"

namespace bulk {

using namespace python;

namespace {

Ref interned(const char* text) { return owned(PyUnicode_InternFromString(text)); }

/// `domain_word` run on a stand-in for the provider, whose company is known already.
Ref run_domain_word(PyObject* domain_word, PyObject* provider, const std::string& word) {
    Ref text = owned(PyUnicode_DecodeUTF8(word.data(), static_cast<Py_ssize_t>(word.size()), nullptr));
    Ref company = dict({{interned("company"), text}});
    Ref format = owned(PyObject_GetAttrString(company, "__getitem__"));
    Ref to_ascii = owned(PyObject_GetAttrString(provider, "_to_ascii"));
    Ref make_namespace = owned(PyObject_GetAttrString(owned(PyImport_ImportModule("types")), "SimpleNamespace"));
    Ref generator = call(make_namespace, {}, {{interned("format"), format}});
    Ref stand_in = call(make_namespace, {}, {{interned("generator"), generator}, {interned("_to_ascii"), to_ascii}});
    return call(domain_word, {stand_in});
}

/// Whether each replacement looks for a character outside ASCII.
bool replaces_no_ascii(PyObject* replacements) {
    if (replacements == nullptr || !PyTuple_CheckExact(replacements)) return false;
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(replacements); ++i) {
        PyObject* pair = PyTuple_GET_ITEM(replacements, i);
        if (!PyTuple_CheckExact(pair) || PyTuple_GET_SIZE(pair) != 2) return false;
        PyObject* search = PyTuple_GET_ITEM(pair, 0);
        if (!PyUnicode_CheckExact(search) || PyUnicode_IS_ASCII(search)) return false;
    }
    return true;
}

}  // namespace

std::string ascii_slug(const std::string& word) {
    std::string slug;
    for (const char c : word) {
        if (c >= 'A' && c <= 'Z') {
            slug += static_cast<char>(c - 'A' + 'a');
        } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_') {
            slug += c;
        } else if (c == '-' && !slug.ends_with('-')) {
            slug += c;
        }
    }
    return slug;
}

FinishedWords::FinishedWords(Parts parts) : parts_(std::move(parts)) {
    const auto& [domain_word, to_ascii, replacements, slugify, unidecode] = parts_;
    keeps_ascii_ = is_original(to_ascii, {"faker.providers.internet", "Provider._to_ascii"}) &&
                   is_original(slugify, {"faker.utils.text", "slugify"}) &&
                   is_original(unidecode, {"faker.decode", "unidecode"}) && replaces_no_ascii(replacements);
}

FinishedWords::Parts FinishedWords::parts_of(PyObject* provider, PyObject* domain_word) {
    Ref texts = owned(PyImport_ImportModule("faker.utils.text"));
    Ref internet = owned(PyImport_ImportModule("faker.providers.internet"));
    Ref to_ascii = quiet_attr(provider, "_to_ascii");
    if (to_ascii && PyMethod_Check(to_ascii.get())) to_ascii = Ref::share(PyMethod_GET_FUNCTION(to_ascii.get()));
    return {Ref::share(domain_word), std::move(to_ascii), quiet_attr(provider, "replacements"),
            quiet_attr(texts, "slugify"), quiet_attr(internet, "unidecode")};
}

FinishedWords& FinishedWords::of(PyObject* provider, PyObject* domain_word) {
    static auto* const all = new std::deque<FinishedWords>;
    Parts parts = parts_of(provider, domain_word);
    for (FinishedWords& words : *all) {
        const auto same = [](const Ref& left, const Ref& right) { return left.get() == right.get(); };
        if (std::equal(parts.begin(), parts.end(), words.parts_.begin(), same)) return words;
    }
    all->push_back(FinishedWords(std::move(parts)));
    return all->back();
}

std::string FinishedWords::finish(PyObject* provider, const std::string& word) {
    if (keeps_ascii_ && is_visible_ascii(word)) return ascii_slug(word);
    if (const auto known = finished_.find(word); known != finished_.end()) return known->second;
    Ref finished = run_domain_word(parts_[0], provider, word);
    const char* text = PyUnicode_AsUTF8(finished);
    if (text == nullptr) throw PythonError{};
    return finished_.emplace(word, text).first->second;
}

}  // namespace bulk
