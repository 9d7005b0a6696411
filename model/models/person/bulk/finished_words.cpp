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

/// `domain_word` run on a stand-in for the provider, whose company is known already.
Ref run_domain_word(PyObject* domain_word, PyObject* provider, const std::string& word) {
    Ref text = string(word);
    Ref company = dict({{identifier("company"), text}});
    Ref format = attr(company, "__getitem__");
    Ref to_ascii = attr(provider, "_to_ascii");
    Ref make_namespace = attr(owned(PyImport_ImportModule("types")), "SimpleNamespace");
    Ref generator = call(make_namespace, {}, {{identifier("format"), format}});
    Ref stand_in =
        call(make_namespace, {}, {{identifier("generator"), generator}, {identifier("_to_ascii"), to_ascii}});
    return call(domain_word, {stand_in});
}

/// A tuple of pairs of texts.
bool are_replacements(PyObject* replacements) {
    if (replacements == nullptr || !PyTuple_CheckExact(replacements)) return false;
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(replacements); ++i) {
        PyObject* pair = PyTuple_GET_ITEM(replacements, i);
        if (!PyTuple_CheckExact(pair) || PyTuple_GET_SIZE(pair) != 2) return false;
        if (!utf8(PyTuple_GET_ITEM(pair, 0)) || !utf8(PyTuple_GET_ITEM(pair, 1))) return false;
    }
    return true;
}

/// Whether each replacement looks for a character outside ASCII.
bool replaces_no_ascii(PyObject* replacements) {
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(replacements); ++i) {
        if (PyUnicode_IS_ASCII(PyTuple_GET_ITEM(PyTuple_GET_ITEM(replacements, i), 0))) return false;
    }
    return true;
}

/// `module.name.pattern` is the text.
bool has_pattern(PyObject* module, const char* name, std::string_view text) {
    Ref pattern = quiet_attr(module, name);
    Ref source = pattern ? quiet_attr(pattern, "pattern") : Ref();
    return source && utf8(source) == text;
}

/// Faker's way from any letters to those of ASCII is its own.
bool decodes_plainly(PyObject* provider) {
    Ref internet = quiet_import("faker.providers.internet");
    Ref decode = quiet_import("faker.decode");
    Ref codes = quiet_import("faker.decode.codes");
    if (!internet || !decode || !codes) return false;
    return has_base_method(provider, "_to_ascii", {"faker.providers.internet", "Provider._to_ascii"}) &&
           is_original(quiet_attr(internet, "unidecode"), {"faker.decode", "unidecode"}) &&
           quiet_attr(decode, "codes").get() == quiet_attr(codes, "codes").get();
}

}  // namespace

std::string ascii_slug(const std::string& word) {
    std::string slug;
    for (const char c : word) {
        if (c >= 'A' && c <= 'Z') {
            slug += static_cast<char>(c - 'A' + 'a');
        } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || (c == '-' && !slug.ends_with('-'))) {
            slug += c;
        }
    }
    return slug;
}

bool slugs_plainly() {
    Ref texts = quiet_import("faker.utils.text");
    return texts && is_original(quiet_attr(texts, "slugify"), {"faker.utils.text", "slugify"}) &&
           has_pattern(texts, "_re_pattern", R"([^\w\s-])") && has_pattern(texts, "_re_spaces", R"([-\s]+)");
}

FinishedWords::FinishedWords(Ref replacements, Ref domain_word)
    : replacements_(std::move(replacements)),
      domain_word_(std::move(domain_word)),
      keeps_ascii_(replaces_no_ascii(replacements_)) {}

FinishedWords* FinishedWords::of(PyObject* provider, PyObject* domain_word) {
    static auto* const all = new std::deque<FinishedWords>;
    Ref replacements = plain_value(provider, identifier("replacements"));
    if (!slugs_plainly() || !decodes_plainly(provider) || !are_replacements(replacements)) return nullptr;
    for (FinishedWords& words : *all) {
        if (words.replacements_.get() == replacements.get()) return &words;
    }
    all->push_back(FinishedWords(std::move(replacements), Ref::share(domain_word)));
    return &all->back();
}

std::string FinishedWords::finish(PyObject* provider, const std::string& word) {
    if (keeps_ascii_ && is_visible_ascii(word)) return ascii_slug(word);
    if (const auto known = finished_.find(word); known != finished_.end()) return known->second;
    Ref finished = run_domain_word(domain_word_, provider, word);
    const char* text = PyUnicode_AsUTF8(finished);
    if (text == nullptr) throw PythonError{};
    return finished_.emplace(word, text).first->second;
}

}  // namespace bulk
