#include "bulk/finished_words.hpp"

#include <algorithm>
#include <deque>
#include <ranges>
#include <utility>

#include "bulk/originals.hpp"
#include "bulk/texts.hpp"
#include "python/call.hpp"
#include "python/error.hpp"

namespace bulk {

using namespace python;

namespace {

/// `domain_word` run on a stand-in for the provider: whatever it takes the words from gives these.
std::string run_domain_word(PyObject* domain_word, PyObject* provider, const std::string& words) {
    Ref text = string(words);
    Ref drawn = dict({{identifier("company"), text}, {identifier("last_romanized_name"), text}});
    Ref format = attr(drawn, "__getitem__");
    Ref to_ascii = attr(provider, "_to_ascii");
    Ref make_namespace = attr(owned(PyImport_ImportModule("types")), "SimpleNamespace");
    Ref generator = call(make_namespace, {}, {{identifier("format"), format}});
    Ref stand_in =
        call(make_namespace, {}, {{identifier("generator"), generator}, {identifier("_to_ascii"), to_ascii}});
    Ref finished = call(domain_word, {stand_in});
    const char* finished_text = PyUnicode_AsUTF8(finished);
    if (finished_text == nullptr) throw PythonError{};
    return finished_text;
}

/// A tuple of pairs of texts, none of which has to do with dashes.
bool are_replacements(PyObject* replacements) {
    if (replacements == nullptr || !PyTuple_CheckExact(replacements)) return false;
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(replacements); ++i) {
        PyObject* pair = PyTuple_GET_ITEM(replacements, i);
        if (!PyTuple_CheckExact(pair) || PyTuple_GET_SIZE(pair) != 2) return false;
        for (Py_ssize_t side = 0; side < 2; ++side) {
            const auto text = utf8(PyTuple_GET_ITEM(pair, side));
            if (!text || text->find('-') != std::string_view::npos) return false;
        }
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
           has_pattern(texts, "_re_pattern", R"([^\w\s-])") && has_pattern(texts, "_re_spaces", R"([-\s]+)") &&
           has_pattern(texts, "_re_pattern_allow_dots", R"([^\.\w\s-])");
}

FinishedWords::FinishedWords(Ref replacements, Ref domain_word, AsciiWords ascii)
    : replacements_(std::move(replacements)),
      domain_word_(std::move(domain_word)),
      ascii_(replaces_no_ascii(replacements_) ? ascii : AsciiWords::called) {}

FinishedWords* FinishedWords::of(PyObject* provider, PyObject* domain_word, AsciiWords ascii) {
    static auto* const all = new std::deque<FinishedWords>;
    Ref replacements = plain_value(provider, identifier("replacements"));
    if (!slugs_plainly() || !decodes_plainly(provider) || !are_replacements(replacements)) return nullptr;
    if (!substitutes_plainly(quiet_import("re"))) return nullptr;
    for (FinishedWords& words : *all) {
        if (words.replacements_.get() == replacements.get() && words.domain_word_.get() == domain_word) return &words;
    }
    all->push_back(FinishedWords(std::move(replacements), Ref::share(domain_word), ascii));
    return &all->back();
}

bool FinishedWords::is_plain(std::string_view words) const {
    const char lowest = ascii_ == AsciiWords::joined ? ' ' : '!';
    return ascii_ != AsciiWords::called &&
           std::ranges::all_of(words, [lowest](char c) { return c >= lowest && c <= '~'; });
}

std::string FinishedWords::finish(PyObject* provider, const std::string& words) {
    if (is_plain(words)) return ascii_slug(words);
    std::string finished;
    for (const auto part : std::views::split(words, '-')) {
        const std::string& done = finish_part(provider, {part.begin(), part.end()});
        // Where dashes meet or stand at an end, the slug's rules look beyond the part.
        if (done.empty() || done.starts_with('-') || done.ends_with('-'))
            return run_domain_word(domain_word_, provider, words);
        if (!finished.empty()) finished += '-';
        finished += done;
    }
    return finished;
}

const std::string& FinishedWords::finish_part(PyObject* provider, std::string part) {
    if (const auto known = finished_.find(part); known != finished_.end()) return known->second;
    std::string finished = is_plain(part) ? ascii_slug(part) : run_domain_word(domain_word_, provider, part);
    return finished_.emplace(std::move(part), std::move(finished)).first->second;
}

}  // namespace bulk
