#include "bulk/domains.hpp"

#include <algorithm>

#include "bulk/originals.hpp"
#include "bulk/texts.hpp"
#include "python/call.hpp"
#include "python/error.hpp"
#include "python/iterate.hpp"

namespace bulk {

using namespace python;

namespace {

constexpr Original kLowercase{"faker.utils.decorators", "lowercase.<locals>.wrapper"};
constexpr Original kSlugify{"faker.utils.decorators", "slugify_unicode.<locals>.wrapper"};

std::string_view view_of(PyObject* text) {
    Py_ssize_t bytes = 0;
    const char* data = PyUnicode_AsUTF8AndSize(text, &bytes);
    if (data == nullptr) throw PythonError{};
    return {data, static_cast<std::size_t>(bytes)};
}

/// The function inside a decorator's wrapper; empty where the wrapper is another one.
Ref unwrapped(PyObject* wrapper, const Original& original) {
    if (!is_original(wrapper, original)) return {};
    PyObject* closure = PyFunction_GetClosure(wrapper);
    if (closure == nullptr || PyTuple_GET_SIZE(closure) != 1) return {};
    return Ref::share(PyCell_GET(PyTuple_GET_ITEM(closure, 0)));
}

/// Whether the provider's attribute is a method of the internet's base provider inside these wrappers.
bool is_wrapped(PyObject* method, PyObject* provider, std::initializer_list<Original> wrappers, const Original& inner) {
    if (method == nullptr || !PyMethod_Check(method) || PyMethod_GET_SELF(method) != provider) return false;
    Ref function = Ref::share(PyMethod_GET_FUNCTION(method));
    for (const Original& wrapper : wrappers) {
        function = unwrapped(function, wrapper);
        if (!function) return false;
    }
    return is_original(function, inner);
}

/// `generator.format` and `generator.parse` are the class's own, so a token is a call of the generator's attribute.
bool formats_plainly(PyObject* generator) {
    struct Method {
        const char* name;
        const char* qualname;
    };
    for (const auto& [name, qualname] : {Method{"format", "Generator.format"},
                                         Method{"get_formatter", "Generator.get_formatter"},
                                         Method{"parse", "Generator.parse"},
                                         Method{"_Generator__format_token", "Generator.__format_token"}}) {
        if (bound_to(quiet_attr(generator, name), {"faker.generator", qualname}) != generator) return false;
    }
    return true;
}

}  // namespace

std::optional<Domains> Domains::read(const KnownFaker& faker) {
    Domains domains;
    Ref domain_name = quiet_attr(faker.generator(), "domain_name");
    domains.provider_ = faker.provider_of(domain_name);
    PyObject* provider = domains.provider_;
    if (provider == nullptr || !formats_plainly(faker.generator())) return std::nullopt;
    if (!is_wrapped(domain_name, provider, {kLowercase}, {"faker.providers.internet", "Provider.domain_name"})) {
        return std::nullopt;
    }
    Ref domain_word = quiet_attr(provider, "domain_word");
    if (!is_wrapped(domain_word, provider, {kLowercase, kSlugify}, {"faker.providers.internet", "Provider.domain_word"})) {
        return std::nullopt;
    }
    domains.domain_word_ = Ref::share(PyMethod_GET_FUNCTION(domain_word.get()));
    domains.top_levels_ = faker.table_behind(quiet_attr(provider, "tld"));

    Ref company = quiet_attr(faker.generator(), "company");
    Ref company_provider = faker.provider_of(company);
    if (!domains.top_levels_ || !company_provider) return std::nullopt;
    if (bound_to(company, {"faker.providers.company", "Provider.company"}) == nullptr) return std::nullopt;
    if (!domains.read_formats(faker, company_provider)) return std::nullopt;
    return domains;
}

bool Domains::read_formats(const KnownFaker& faker, PyObject* company_provider) {
    format_texts_ = KnownFaker::table_of(company_provider, string("formats"));
    if (!format_texts_) return false;
    Ref generator_module = owned(PyImport_ImportModule("faker.generator"));
    Ref token = owned(PyObject_GetAttrString(generator_module, "_re_token"));
    for (std::size_t i = 0; i < format_texts_->size(); ++i) {
        Ref tokens = owned(PyObject_CallMethod(token, "finditer", "O", format_texts_->object(i)));
        if (!read_format(faker, tokens, format_texts_->text(i))) return false;
    }
    return true;
}

bool Domains::read_format(const KnownFaker& faker, PyObject* tokens, std::string_view text) {
    Format format;
    std::size_t done = 0;
    for (Ref match : iterate(tokens)) {
        auto [name, argument] = unpack_pair(owned(PyObject_CallMethod(match, "groups", nullptr)));
        if (argument.get() != Py_None) return false;
        const Table* table = token_table(faker, std::string(view_of(name)));
        if (table == nullptr) return false;
        Ref whole = owned(PyObject_CallMethod(match, "group", nullptr));
        const std::string_view token = view_of(whole);
        const std::size_t start = text.find(token, done);
        format.pieces.push_back({std::string(text.substr(done, start - done)), table});
        done = start + token.size();
    }
    format.rest = text.substr(done);
    formats_.push_back(std::move(format));
    return true;
}

const Table* Domains::token_table(const KnownFaker& faker, const std::string& token) {
    for (const auto& [known, table] : tables_) {
        if (known == token) return &table;
    }
    auto table = faker.table(token.c_str());
    return table ? &tables_.emplace_back(token, std::move(*table)).second : nullptr;
}

// --- drawing ----------------------------------------------------------------------------------------------------------------

Domains::Drawn Domains::draw(Mersenne& source) {
    const Format& format = formats_[format_texts_->draw(source)];
    std::string word;
    bool complete = false;
    const auto extend = [&](std::string_view text) {
        if (complete) return;
        const std::size_t blank = text.find(' ');
        word += text.substr(0, blank);
        complete = blank != std::string_view::npos;
    };
    for (const auto& [literal, table] : format.pieces) {
        extend(literal);
        extend(table->text(table->draw(source)));
    }
    extend(format.rest);
    return {word_number(std::move(word)), top_levels_->draw(source)};
}

std::size_t Domains::word_number(std::string word) {
    const auto [entry, is_new] = numbers_.try_emplace(std::move(word), words_.size());
    if (is_new) words_.push_back(&entry->first);
    return entry->second;
}

// --- finishing --------------------------------------------------------------------------------------------------------------

/// Faker's own `domain_word`, with a stand-in for the provider whose company is known already.
Ref Domains::finished_word(const std::string& word) const {
    Ref types = owned(PyImport_ImportModule("types"));
    Ref make_namespace = owned(PyObject_GetAttrString(types, "SimpleNamespace"));
    Ref company = dict({{string("company").get(), owned(PyUnicode_DecodeUTF8(word.data(), static_cast<Py_ssize_t>(word.size()), nullptr))}});
    Ref format = owned(PyObject_GetAttrString(company, "__getitem__"));
    Ref generator = call(make_namespace, {}, {{owned(PyUnicode_InternFromString("format")), format}});
    Ref to_ascii = owned(PyObject_GetAttrString(provider_, "_to_ascii"));
    Ref provider = call(make_namespace, {},
                        {{owned(PyUnicode_InternFromString("generator")), generator},
                         {owned(PyUnicode_InternFromString("_to_ascii")), to_ascii}});
    return call(domain_word_, {provider});
}

void Domains::finish_words() {
    while (finished_.size() < words_.size()) {
        finished_.emplace_back(view_of(finished_word(*words_[finished_.size()])));
    }
}

void Domains::append(const Drawn& drawn, std::string& text) const {
    const std::string& word = finished_[drawn.word];
    const std::string_view top_level = top_levels_->text(drawn.top_level);
    if (is_ascii(word) && is_ascii(top_level)) {
        const std::size_t start = text.size();
        text.append(word).append(".").append(top_level);
        std::transform(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(),
                       text.begin() + static_cast<std::ptrdiff_t>(start),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        return;
    }
    const std::string name = word + "." + std::string(top_level);
    Ref lower = owned(PyObject_CallMethod(
        owned(PyUnicode_DecodeUTF8(name.data(), static_cast<Py_ssize_t>(name.size()), nullptr)), "lower", nullptr));
    text += view_of(lower);
}

}  // namespace bulk
