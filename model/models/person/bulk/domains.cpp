#include "bulk/domains.hpp"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "bulk/originals.hpp"
#include "bulk/signals.hpp"
#include "bulk/texts.hpp"
#include "python/call.hpp"
#include "python/error.hpp"

namespace bulk {

using namespace python;

namespace {

constexpr const char* kInternet = "faker.providers.internet";
constexpr const char* kInternetOfChina = "faker.providers.internet.zh_CN";
constexpr Original kLowercase{"faker.utils.decorators", "lowercase.<locals>.wrapper"};
constexpr Original kSlugify{"faker.utils.decorators", "slugify.<locals>.wrapper"};
constexpr Original kSlugifyUnicode{"faker.utils.decorators", "slugify_unicode.<locals>.wrapper"};
constexpr Original kSlugifyDomain{"faker.utils.decorators", "slugify_domain.<locals>.wrapper"};

constexpr auto kAllWords = static_cast<std::size_t>(-1);

/// A method `domain_word` of Faker's: it finishes the first words of what one method of the generator gives.
struct WordMethod {
    Original function;
    Original slugify;
    bool is_in_lower_case;
    const char* drawn_from;
    std::size_t words;
    AsciiWords ascii;
};

constexpr WordMethod kWordMethods[] = {
    {{kInternet, "Provider.domain_word"}, kSlugifyUnicode, true, "company", 1, AsciiWords::slugged},
    {{"faker.providers.internet.es_CL", "Provider.domain_word"},
     kSlugifyUnicode,
     true,
     "company",
     2,
     AsciiWords::joined},
    {{"faker.providers.internet.el_GR", "Provider.domain_word"},
     kSlugifyDomain,
     false,
     "company",
     1,
     AsciiWords::called},
    {{"faker.providers.internet.zh_TW", "Provider.domain_word"},
     kSlugify,
     false,
     "last_romanized_name",
     kAllWords,
     AsciiWords::slugged},
};

/// The function inside a decorator's wrapper; empty where the wrapper is another one.
Ref unwrapped(PyObject* wrapper, const Original& original) {
    if (!is_original(wrapper, original)) return {};
    PyObject* closure = PyFunction_GetClosure(wrapper);
    if (closure == nullptr || PyTuple_GET_SIZE(closure) != 1) return {};
    return Ref::share(PyCell_GET(PyTuple_GET_ITEM(closure, 0)));
}

/// Whether the provider's method is that function inside these wrappers.
bool is_wrapped(PyObject* method, PyObject* provider, std::initializer_list<Original> wrappers, const Original& inner) {
    if (method == nullptr || !PyMethod_Check(method) || PyMethod_GET_SELF(method) != provider) return false;
    Ref function = Ref::share(PyMethod_GET_FUNCTION(method));
    for (const Original& wrapper : wrappers) {
        function = unwrapped(function, wrapper);
        if (!function) return false;
    }
    return is_original(function, inner);
}

bool has_only_visible_ascii(const Table& table) {
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (!is_visible_ascii(table.text(i))) return false;
    }
    return true;
}

/// Whether putting it in lower case is known to change nothing.
bool is_in_lower_case(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c > ' ' && c <= '~' && (c < 'A' || c > 'Z'); });
}

constexpr auto kUnknown = static_cast<std::uint32_t>(-1);

bool is_word_method(PyObject* method, PyObject* provider, const WordMethod& known) {
    return known.is_in_lower_case ? is_wrapped(method, provider, {kLowercase, known.slugify}, known.function)
                                  : is_wrapped(method, provider, {known.slugify}, known.function);
}

/// A place for each element of the first piece, where the words end before the next piece that is drawn; else none.
std::vector<std::uint32_t> words_by_element(const Format& format, std::size_t words) {
    if (format.empty() || format[0].kind != Piece::Kind::element) return {};
    const bool decides = format.size() == 1 || (format[1].kind == Piece::Kind::literal &&
                                                std::cmp_greater_equal(std::ranges::count(format[1].text, ' '), words));
    return std::vector<std::uint32_t>(decides ? format[0].table->size() : 0, kUnknown);
}

/// Adds the part to the words, up to the blank behind the last of those that are missing.
void add_words(std::string_view part, std::size_t& missing, std::string& words) {
    for (const char c : part) {
        if (c == ' ' && missing > 0) --missing;
        if (missing == 0) return;
        words += c;
    }
}

}  // namespace

// --- reading
// ----------------------------------------------------------------------------------------------------------------

std::optional<Domains> Domains::read(const KnownFaker& faker) {
    Domains domains;
    Ref domain_name = quiet_attr(faker.generator(), "domain_name");
    domains.provider_ = faker.provider_of(domain_name);
    if (!domains.provider_ || !formats_plainly(faker.generator())) return std::nullopt;
    domains.top_levels_ = faker.table_behind(quiet_attr(domains.provider_, "tld"));
    if (!domains.top_levels_) return std::nullopt;
    if (domains.read_first_words(faker, domain_name) || domains.read_words_with_formats(faker, domain_name))
        return domains;
    return std::nullopt;
}

bool Domains::read_first_words(const KnownFaker& faker, PyObject* domain_name) {
    if (!is_wrapped(domain_name, provider_, {kLowercase}, {kInternet, "Provider.domain_name"})) return false;
    Ref domain_word = quiet_attr(provider_, "domain_word");
    const auto* known = std::ranges::find_if(
        kWordMethods, [&](const WordMethod& method) { return is_word_method(domain_word, provider_, method); });
    if (known == std::end(kWordMethods)) return false;
    words_in_domain_ = known->words;
    const bool from_company = std::string_view(known->drawn_from) == "company";
    if (!(from_company ? read_company_formats(faker) : read_single_format(faker, known->drawn_from))) return false;
    finisher_ = FinishedWords::of(provider_, PyMethod_GET_FUNCTION(domain_word.get()), known->ascii);
    return finisher_ != nullptr;
}

bool Domains::read_company_formats(const KnownFaker& faker) {
    Ref company = quiet_attr(faker.generator(), "company");
    Ref provider = faker.provider_of(company);
    if (!provider || bound_to(company, {"faker.providers.company", "Provider.company"}) == nullptr) return false;
    format_texts_ = KnownFaker::table_of(provider, identifier("formats"));
    FormatReader reader(faker);
    return format_texts_ && read_formats(reader, *format_texts_, false);
}

bool Domains::read_single_format(const KnownFaker& faker, const char* token) {
    auto table = faker.table(token);
    if (!table) return false;
    tables_.emplace_back(token, std::move(*table));
    Format format;
    format.push_back({.kind = Piece::Kind::element, .text = {}, .table = &tables_.back().second});
    add_format(std::move(format));
    return true;
}

bool Domains::read_words_with_formats(const KnownFaker& faker, PyObject* domain_name) {
    if (!is_wrapped(domain_name, provider_, {}, {kInternetOfChina, "Provider.domain_name"})) return false;
    Ref domain_word = quiet_attr(provider_, "domain_word");
    if (!is_wrapped(domain_word, provider_, {kSlugify}, {kInternetOfChina, "Provider.domain_word"})) return false;
    for (const char* name : {"bothify", "numerify", "lexify", "random_digit"}) {
        const std::string qualname = std::string("BaseProvider.") + name;
        if (!has_base_method(provider_, name, {"faker.providers", qualname.c_str()})) return false;
    }
    format_texts_ = KnownFaker::table_of(provider_, identifier("domain_formats"));
    FormatReader reader(faker);
    if (!format_texts_ || !read_formats(reader, *format_texts_, true) || !read_refused_words()) return false;
    // The words are finished as they are drawn, which their own characters must allow.
    return slugs_plainly() && has_only_visible_ascii(*format_texts_) &&
           std::ranges::all_of(tables_, [](const auto& entry) { return has_only_visible_ascii(entry.second); });
}

bool Domains::read_refused_words() {
    Ref words = quiet_attr(provider_, "second_level_domains");
    if (!words || !PyTuple_CheckExact(words.get())) return false;
    for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(words.get()); ++i) {
        const auto word = utf8(PyTuple_GET_ITEM(words.get(), i));
        if (!word) return false;
        refused_.emplace(*word);
    }
    return true;
}

/// A format is read for its placeholders, where these count and it has any, or else for its tokens.
bool Domains::read_formats(FormatReader& reader, const Table& texts, bool with_placeholders) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string_view text = texts.text(i);
        const bool has_placeholders = with_placeholders && text.find_first_of("#?") != std::string_view::npos;
        auto format = has_placeholders ? reader.placeholders(text) : reader.tokens(texts.object(i));
        if (!format) return false;
        add_format(std::move(*format));
    }
    tables_ = reader.take_tables();
    return true;
}

void Domains::add_format(Format pieces) {
    auto words = words_by_element(pieces, words_in_domain_);
    formats_.push_back({.pieces = std::move(pieces), .words = std::move(words)});
}

// --- drawing
// ----------------------------------------------------------------------------------------------------------------

Domains::Drawn Domains::draw(Source& source) {
    const std::uint32_t word = finisher_ != nullptr ? draw_first_words(source) : draw_whole_word(source);
    return Drawn(word, top_levels_->draw(source));
}

bool Domains::calls_methods() const {
    return std::ranges::any_of(formats_, [](const WordFormat& format) {
        return std::ranges::any_of(format.pieces, [](const Piece& piece) { return piece.kind == Piece::Kind::called; });
    });
}

void Domains::leave_as_drawn() {
    if (format_texts_) format_texts_->leave_as_drawn();
    top_levels_->leave_as_drawn();
    for (auto& [token, table] : tables_) table.leave_as_drawn();
}

std::uint32_t Domains::draw_first_words(Source& source) {
    WordFormat& format = formats_[format_texts_ ? format_texts_->draw(source) : 0];
    if (!format.words.empty()) {
        const Table::Drawn element = format.pieces[0].table->draw(source);
        for (std::size_t i = 1; i < format.pieces.size(); ++i) format.pieces[i].draw(source, buffer_);
        return words_of_element(format, element);
    }
    word_.clear();
    std::size_t missing = words_in_domain_;
    for (const Piece& piece : format.pieces) add_words(piece.draw(source, buffer_), missing, word_);
    return words_.add(word_);
}

std::uint32_t Domains::words_of_element(WordFormat& format, Table::Drawn element) {
    std::uint32_t& number = format.words[element];
    if (number == kUnknown) {
        word_.clear();
        std::size_t missing = words_in_domain_;
        add_words(format.pieces[0].table->text(element), missing, word_);
        if (format.pieces.size() > 1) add_words(format.pieces[1].text, missing, word_);
        number = words_.add(word_);
    }
    return number;
}

std::uint32_t Domains::draw_whole_word(Source& source) {
    while (true) {
        word_.clear();
        for (const Piece& piece : formats_[format_texts_->draw(source)].pieces) word_ += piece.draw(source, buffer_);
        word_ = ascii_slug(word_);
        if (!refused_.contains(word_)) return words_.add(word_);
        source.breathe();  // for all that is known, every word is refused
    }
}

// --- finishing
// --------------------------------------------------------------------------------------------------------------

void Domains::finish_words() {
    if (finisher_ == nullptr) {
        finished_ = std::move(words_);
        is_lower_case_ = true;  // or stays as it is drawn
        return;
    }
    is_lower_case_ = true;
    for (std::size_t i = 0; i < top_levels_->size(); ++i) is_lower_case_ &= is_in_lower_case(top_levels_->text(i));
    for (std::size_t i = 0; i < words_.size(); ++i) {
        let_signals_in(i);
        const std::string finished = finisher_->finish(provider_, std::string(words_[i]));
        is_lower_case_ &= is_in_lower_case(finished);
        finished_.add(finished);
    }
}

void Domains::append(const Drawn& drawn, std::string& text) const {
    const std::size_t start = text.size();
    text.append(finished_[drawn.word]).append(".").append(top_levels_->text(drawn.top_level));
    if (is_lower_case_) return;
    // Of company words, the whole name is put in lower case.
    const std::string name = lower_case(std::string_view(text).substr(start));
    text.replace(start, std::string::npos, name);
}

}  // namespace bulk
