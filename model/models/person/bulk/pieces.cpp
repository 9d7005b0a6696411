#include "bulk/pieces.hpp"

#include <algorithm>
#include <memory>
#include <unordered_map>

#include "bulk/known_code.hpp"
#include "bulk/originals.hpp"
#include "bulk/texts.hpp"
#include "python/call.hpp"
#include "python/iterate.hpp"

namespace bulk {

using namespace python;

namespace {

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr const char* kProviders = "faker.providers";

std::string text_of(PyObject* object) {
    const auto text = utf8(object);
    if (!text) raise(PyExc_TypeError, "a token is no text");
    return std::string(*text);
}

Piece literal(std::string_view text) { return {Piece::Kind::literal, std::string(text)}; }

/// `string.ascii_letters`, which Faker draws letters from, is what it was.
bool letters_are_plain() {
    Ref module = owned(PyImport_ImportModule("string"));
    Ref letters = quiet_attr(module, "ascii_letters");
    return letters && !quiet_attr(module, "letters") && utf8(letters) == kLetters;
}

/// A token's name, or what stands between tokens.
struct Part {
    bool is_token;
    std::string text;
};

using Parts = std::vector<Part>;

/// The parts of a format as Faker's own pattern finds them; empty where a token has an argument.
std::optional<Parts> parts_of(PyObject* text) {
    Parts parts;
    const std::string whole = text_of(text);
    Ref pattern = attr(owned(PyImport_ImportModule("faker.generator")), "_re_token");
    Ref matches = owned(PyObject_CallMethod(pattern, "finditer", "O", text));
    std::size_t done = 0;
    for (Ref match : iterate(matches)) {
        auto [name, argument] = unpack_pair(owned(PyObject_CallMethod(match, "groups", nullptr)));
        if (argument.get() != Py_None) return std::nullopt;
        const std::string matched = text_of(owned(PyObject_CallMethod(match, "group", nullptr)));
        const std::size_t start = whole.find(matched, done);
        if (start > done) parts.push_back({.is_token = false, .text = whole.substr(done, start - done)});
        parts.push_back({.is_token = true, .text = text_of(name)});
        done = start + matched.size();
    }
    if (done < whole.size()) parts.push_back({.is_token = false, .text = whole.substr(done)});
    return parts;
}

/// The same, found once for each text as long as nothing of Faker changes, its pattern included. They are shared, for
/// another thread may drop the kept ones meanwhile.
std::shared_ptr<const std::optional<Parts>> kept_parts_of(PyObject* text) {
    constexpr std::size_t kMost = 4096;
    static auto* const kept = new std::unordered_map<std::string, std::shared_ptr<const std::optional<Parts>>>;
    static std::uint64_t found_after = 0;
    if (found_after != faker_code().changes() || kept->size() > kMost) {
        kept->clear();
        found_after = faker_code().changes();
    }
    std::string key = text_of(text);
    if (const auto found = kept->find(key); found != kept->end()) return found->second;
    auto parts = std::make_shared<const std::optional<Parts>>(parts_of(text));
    kept->insert_or_assign(std::move(key), parts);
    return parts;
}

}  // namespace

std::string_view Piece::draw(Source& taken_over, std::string& buffer) const {
    const auto size = static_cast<std::uint32_t>(kLetters.size());
    Mersenne& source = taken_over.engine();
    switch (kind) {
        case Kind::literal:
            return text;
        case Kind::element:
            return table->text(table->draw(source));
        case Kind::digit:
            buffer.assign(1, static_cast<char>('0' + source.below(10)));
            break;
        case Kind::letter:
            buffer.assign(1, kLetters[source.below(size)]);
            break;
        case Kind::acronym: {
            buffer.resize(2 + source.below(3));
            for (char& letter : buffer) {
                letter = kLetters[static_cast<std::size_t>(source.uniform() * size) % (kLetters.size() / 2) +
                                  kLetters.size() / 2];
            }
            break;
        }
        case Kind::called:
            taken_over.let_go();
            buffer = *utf8(text_of_call(method));
            taken_over.take_over();
            break;
    }
    return buffer;
}

bool formats_plainly(PyObject* generator) {
    struct Method {
        const char* name;
        const char* qualname;
    };
    constexpr Method kMethods[] = {{"format", "Generator.format"},
                                   {"get_formatter", "Generator.get_formatter"},
                                   {"parse", "Generator.parse"},
                                   {"_Generator__format_token", "Generator.__format_token"}};
    return std::ranges::all_of(kMethods, [generator](const Method& method) {
        return has_base_method(generator, method.name, {"faker.generator", method.qualname});
    });
}

std::optional<Format> FormatReader::tokens(PyObject* text) {
    const auto parts = kept_parts_of(text);
    if (!*parts) return std::nullopt;
    Format format;
    for (const Part& part : **parts) {
        auto piece = part.is_token ? token(part.text) : std::optional(literal(part.text));
        if (!piece) return std::nullopt;
        format.push_back(std::move(*piece));
    }
    return format;
}

std::optional<Piece> FormatReader::token(const std::string& name) {
    for (auto& [known, table] : tables_) {
        if (known == name) return Piece{Piece::Kind::element, {}, &table};
    }
    if (auto table = faker_.table(name.c_str())) {
        return Piece{Piece::Kind::element, {}, &tables_.emplace_back(name, std::move(*table)).second};
    }
    if (is_acronym(name)) return Piece{Piece::Kind::acronym, {}};
    Ref method = faker_.own_method(name.c_str());
    if (!method) return std::nullopt;
    return Piece{.kind = Piece::Kind::called, .text = {}, .method = std::move(method)};
}

bool FormatReader::is_acronym(const std::string& name) const {
    Ref method = quiet_attr(faker_.generator(), name.c_str());
    Ref provider = faker_.provider_of(method);
    if (!provider || !letters_are_plain()) return false;
    return bound_to(method, {"faker.providers.company.es_ES", "Provider.random_company_acronym"}) != nullptr &&
           has_base_method(provider, "random_int", {kProviders, "BaseProvider.random_int"}) &&
           has_base_method(provider, "random_letters", {kProviders, "BaseProvider.random_letters"}) &&
           has_base_method(provider, "random_choices", {kProviders, "BaseProvider.random_choices"});
}

std::optional<Format> FormatReader::placeholders(std::string_view text) const {
    Format format;
    const bool has_digits = text.find('#') != std::string_view::npos;
    const bool has_letters = text.find('?') != std::string_view::npos;
    // Digits are filled in before letters, and there are more signs than these two.
    if ((has_digits && has_letters) || text.find_first_of("%$!@{") != std::string_view::npos) return std::nullopt;
    for (const char c : text) {
        if (c == '#') {
            format.push_back({Piece::Kind::digit, {}});
        } else if (c == '?') {
            format.push_back({Piece::Kind::letter, {}});
        } else {
            format.push_back(literal({&c, 1}));
        }
    }
    return letters_are_plain() ? std::optional(std::move(format)) : std::nullopt;
}

}  // namespace bulk
