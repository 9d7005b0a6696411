// The frame of all labelled columns at once.

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bulk/category_values.hpp"
#include "bulk/clashes.hpp"
#include "bulk/codes.hpp"
#include "bulk/columns.hpp"
#include "bulk/emails.hpp"
#include "bulk/given.hpp"
#include "bulk/known_code.hpp"
#include "bulk/labels.hpp"
#include "bulk/names.hpp"
#include "bulk/numbers.hpp"
#include "bulk/originals.hpp"
#include "bulk/providers.hpp"
#include "bulk/rehearsal.hpp"
#include "bulk/signals.hpp"
#include "bulk/surroundings.hpp"
#include "bulk/text_column.hpp"
#include "bulk/texts.hpp"
#include "person/model.hpp"
#include "person/names.hpp"
#include "person/plain.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/iterate.hpp"
#include "python/module.hpp"

namespace bulk {

using namespace python;
namespace names = person::names;

namespace {

/// Every method and property that the single calls go through is the class's own.
bool has_our_methods(PyObject* self) {
    using namespace person::person_model;
    return has_our_property(self, names::labels, entry<labels>) && addresses_pass(self) &&
           has_our_method(self, names::generate_values_from_collections, entry<generate_values_from_collections>) &&
           has_our_method(self, names::generate_from_collections, entry<generate_from_collections>) &&
           has_our_method(self, names::generate_first_names, entry<generate_first_names>) &&
           has_our_method(self, names::generate_random_first_name, entry<generate_random_first_name>) &&
           has_our_method(self, names::generate_last_names, entry<generate_last_names>) &&
           has_our_method(self, names::generate_emails, entry<generate_emails>) &&
           has_our_method(self, names::generate_passwords, entry<generate_passwords>) &&
           has_our_method(self, names::generate_phone_numbers, entry<generate_phone_numbers>);
}

/// First and last names that were drawn, as usernames are made of them.
struct DrawnNames {
    NameTexts first_names;
    NameTexts last_names;

    [[nodiscard]] std::size_t size() const { return first_names.size(); }
    [[nodiscard]] std::string_view first(std::size_t row) const { return first_names[row]; }
    [[nodiscard]] std::string_view last(std::size_t row) const { return last_names[row]; }
};

bool has_nul(NameDraws& names) {
    bool found = false;
    names.for_each_known([&found](const Table& table) { found |= table.has_nul(); });
    return found;
}

/// The columns in that order, where it is one of them all.
Ref in_order(const Ref& columns, PyObject* order) {
    Ref sorted = dict();
    for (Ref column : iterate(order)) {
        PyObject* found = find(columns, column);
        if (found != nullptr) set_item(sorted, column, found);
    }
    return Ref::share(PyDict_Size(sorted) == PyDict_Size(columns) ? sorted : columns);
}

/// What pandas makes of a column: how it is held, and what stands in the rows of each gender.
struct ColumnForm {
    Layout layout;
    std::vector<Cell> cells;
};

struct FrameForm {
    std::array<std::optional<ColumnForm>, kAttributes> columns;
    bool keeps_objects = false;  ///< an array of objects stays one, though all of them are texts

    [[nodiscard]] const ColumnForm& of(Attribute attribute) const { return *columns[index_of(attribute)]; }
};

/// Whether pandas leaves an array of objects as it is.
bool keeps_objects() {
    Ref array = call(attr(owned(PyImport_ImportModule("numpy")), "array"),
                     {list({names::x}), reinterpret_cast<PyObject*>(&PyBaseObject_Type)});
    Ref frame = call(attr(global(names::pd), names::DataFrame), {dict({{names::x, array}})});
    return is_object_dtype(attr(item(frame, names::x), "dtype"));
}

/// One frame in the making. Everything is looked at before the first draw.
class Frame {
  public:
    Frame(PyObject* self, const Given& genders, const Given& countries, Codes gender_codes, Codes country_codes)
        : self_(self),
          given_genders_(genders),
          given_countries_(countries),
          genders_(std::move(gender_codes)),
          countries_(std::move(country_codes)),
          providers_(self) {}

    /// False where single calls must make it.
    bool plan(bool produce_nans);

    /// The finished frame; empty, with every source where it was, where a method of Faker's that had to be called gave
    /// no text.
    Ref make(PyObject* ordered);

  private:
    [[nodiscard]] bool has(Attribute attribute) const { return labels_->has(attribute); }
    [[nodiscard]] std::size_t rows() const { return genders_.size(); }

    bool plan_values();
    bool plan_names();
    bool plan_accounts();
    bool plan_numbers();
    std::optional<CategoryValues> read_values(Attribute attribute, const person::Patterns& patterns);
    bool find_form(bool produce_nans);
    [[nodiscard]] std::string form_key(bool produce_nans) const;
    [[nodiscard]] std::optional<FrameForm> rehearse(bool produce_nans) const;

    bool draw_what_may_fail();
    void draw_values();
    void write_values(Attribute attribute, const CategoryValues& values);
    void write_countries();
    void write_full_names();
    void write_accounts();
    void write_numbers();

    TextColumn column(Attribute attribute) {
        const ColumnForm& form = form_->of(attribute);
        return {form.layout, genders_, form.cells};
    }
    void keep(Attribute attribute, TextColumn& column);
    template <class Write>
    void write(Attribute attribute, Write write_rows) {
        if (!has(attribute)) return;
        TextColumn made = column(attribute);
        write_rows(made);
        keep(attribute, made);
    }

    PyObject* self_;
    const Given& given_genders_;
    const Given& given_countries_;
    Codes genders_;
    Codes countries_;
    std::optional<Labels> labels_;
    Providers providers_;
    NumpyChoice choice_{global(names::np)};
    UsernameSources username_sources_;
    std::optional<CategoryValues> gender_values_;
    std::optional<CategoryValues> title_values_;
    Ref title_source_;  ///< where an ambiguous title may have to be drawn again
    std::optional<NameDraws> first_names_;
    std::optional<NameDraws> last_names_;
    std::optional<DomainDraws> domains_;
    std::optional<Passwords> passwords_;
    std::vector<std::pair<Attribute, PhoneNumbers>> numbers_;
    std::shared_ptr<const FrameForm> form_;  ///< shared: another thread may drop the kept ones meanwhile
    std::array<Ref, kAttributes> columns_;
};

// --- planning
// ---------------------------------------------------------------------------------------------------------------

bool Frame::plan(bool produce_nans) {
    labels_ = Labels::read(self_);
    return labels_ && rows() <= Clashes::kMostRows && plan_numbers() && plan_names() && plan_accounts() &&
           plan_values() && find_form(produce_nans);
}

bool Frame::plan_names() {
    first_names_ = plan_first_names(genders_, countries_, rows(), providers_);
    if (!first_names_) return false;
    last_names_ = plan_last_names(countries_, providers_);
    return last_names_ && !has_nul(*first_names_) && !has_nul(*last_names_);
}

bool Frame::plan_accounts() {
    if (!has(Attribute::email) && !has(Attribute::username)) return true;
    if (!username_sources_.apply()) return false;
    if (has(Attribute::email)) domains_ = plan_domains(countries_, providers_);
    return !has(Attribute::email) || domains_;
}

bool Frame::plan_numbers() {
    struct PhoneColumn {
        Attribute attribute;
        const Name& format;
    };
    if (has(Attribute::password)) {
        passwords_ = Passwords::read(self_);
        if (!passwords_) return false;
    }
    for (const auto& [attribute, format] : {PhoneColumn{Attribute::mobile_number, names::mobile_number_format},
                                            PhoneColumn{Attribute::home_number, names::home_number_format},
                                            PhoneColumn{Attribute::work_number, names::work_number_format}}) {
        if (!has(attribute)) continue;
        Ref text = plain_value(self_, format);
        auto drawn_from = text ? PhoneNumbers::read(text) : std::nullopt;
        if (!drawn_from) return false;
        numbers_.emplace_back(attribute, std::move(*drawn_from));
    }
    return true;
}

bool Frame::plan_values() {
    if ((has(Attribute::gender) || has(Attribute::title)) && !choice_.applies()) return false;
    if (has(Attribute::gender)) {
        gender_values_ = read_values(Attribute::gender, person::kGenderPatterns);
        if (!gender_values_) return false;
    }
    if (has(Attribute::title)) {
        title_values_ = read_values(Attribute::title, person::kTitlePatterns);
        if (!title_values_) return false;
        if (title_values_->may_give(names::ambiguous.text)) {
            title_source_ = module_random(global(names::random), {"choice"});
            if (!title_source_) return false;
        }
    }
    return true;
}

std::optional<CategoryValues> Frame::read_values(Attribute attribute, const person::Patterns& patterns) {
    Ref mapping = person::pattern_mapping(self_, {patterns.female, patterns.male, patterns.non_binary});
    Ref meta = attr(self_, names::meta);
    Ref categories = attr(item(meta, labels_->column(attribute)), names::categories);
    return CategoryValues::read(genders_, person::sorted_categories(categories, mapping));
}

/// What decides how pandas holds the columns, beside its options and its code.
std::string Frame::form_key(bool produce_nans) const {
    std::string key = produce_nans ? "1" : "0";
    for (std::size_t attribute = 0; attribute < kAttributes; ++attribute)
        key += labels_->has(static_cast<Attribute>(attribute)) ? '1' : '0';
    key += given_genders_.form() + given_countries_.form();
    for (std::size_t gender = 0; gender < genders_.values().size(); ++gender) {
        const auto number = static_cast<Codes::Number>(gender);
        key += genders_.values()[gender].data() == nullptr ? 'm' : 'p';
        for (const auto* values : {&gender_values_, &title_values_})
            key += *values && (*values)->has_values(number) ? '1' : '0';
    }
    return key;
}

bool Frame::find_form(bool produce_nans) {
    // Kept as long as nothing of pandas has changed, its options included.
    static auto* const forms = new std::map<std::string, std::shared_ptr<const FrameForm>, std::less<>>;
    static std::uint64_t made_after = 0;
    if (made_after != pandas_code().changes()) {
        forms->clear();
        made_after = pandas_code().changes();
    }
    const std::string key = form_key(produce_nans);
    auto found = forms->find(key);
    if (found == forms->end()) {
        auto rehearsed = rehearse(produce_nans);
        if (!rehearsed) return false;
        found = forms->insert_or_assign(key, std::make_shared<const FrameForm>(std::move(*rehearsed))).first;
    }
    form_ = found->second;
    return true;
}

/// The plain way, with a row for each gender.
std::optional<FrameForm> Frame::rehearse(bool produce_nans) const {
    const Rehearsal rehearsal;
    Ref genders = given_genders_.few(genders_.first_rows());
    Ref countries = given_countries_.few(std::vector<std::size_t>(genders_.values().size()));
    Ref model = rehearsing_model(self_, countries);
    Ref count = integer(static_cast<Py_ssize_t>(genders_.values().size()));
    Ref few = person::plain_frame(model, count, genders, countries, produce_nans ? Py_True : Py_False);

    FrameForm form;
    Ref columns = dict();
    for (std::size_t i = 0; i < kAttributes; ++i) {
        const auto attribute = static_cast<Attribute>(i);
        if (!has(attribute)) continue;
        Ref series = item(few, labels_->column(attribute));
        set_item(columns, labels_->column(attribute), series);
        auto layout = Layout::of(series);
        if (!layout) return std::nullopt;
        const auto& values = attribute == Attribute::gender ? gender_values_ : title_values_;
        const bool drawn = attribute == Attribute::gender || attribute == Attribute::title;
        form.columns[i].emplace(
            ColumnForm{std::move(*layout), drawn ? value_cells(series, *values) : cells_of(series)});
    }
    Ref in_one_piece = call(attr(global(names::pd), names::DataFrame), {columns});
    if (!equal(attr(attr(in_one_piece, names::columns), "dtype"), attr(attr(few, names::columns), "dtype")))
        return std::nullopt;
    form.keeps_objects = keeps_objects();
    return form;
}

// --- making
// -----------------------------------------------------------------------------------------------------------------

Ref Frame::make(PyObject* ordered) {
    // Names and domains before all else: sources do not depend on each other, and only here a call may fail.
    if (!draw_what_may_fail()) return {};
    draw_values();
    write_countries();
    write(Attribute::firstname, [this](TextColumn& column) { write_names(*first_names_, column); });
    write(Attribute::lastname, [this](TextColumn& column) { write_names(*last_names_, column); });
    write_full_names();
    write_accounts();
    write_numbers();

    Ref columns = dict();
    for (std::size_t i = 0; i < kAttributes; ++i) {
        if (columns_[i]) set_item(columns, labels_->column(static_cast<Attribute>(i)), columns_[i]);
    }
    if (ordered != nullptr) columns = in_order(columns, call(ordered, {list_of(columns)}));
    Ref index = call_method(global(names::pd), names::RangeIndex, {integer(static_cast<Py_ssize_t>(rows()))});
    return call(attr(global(names::pd), names::DataFrame), {columns}, {{names::index, index}, {names::copy, Py_False}});
}

bool Frame::draw_what_may_fail() {
    Sources& sources = providers_.sources();
    return domains_ ? draw_or_go_back(sources, *first_names_, *last_names_, *domains_)
                    : draw_or_go_back(sources, *first_names_, *last_names_);
}

void Frame::draw_values() {
    if (gender_values_) {
        gender_values_->draw(choice_);
        write_values(Attribute::gender, *gender_values_);
    }
    if (title_values_) {
        title_values_->draw(choice_);
        if (title_source_) {
            Sources alone;
            Source& source = alone.of(title_source_);
            title_values_->draw_again(names::ambiguous.text, {names::female, names::male, names::non_binary}, source);
        }
        write_values(Attribute::title, *title_values_);
    }
}

void Frame::write_values(Attribute attribute, const CategoryValues& values) {
    write(attribute, [&](TextColumn& column) { values.write(form_->of(attribute).cells, column); });
}

void Frame::write_countries() {
    std::vector<Ref> objects;
    for (const std::string_view country : countries_.values()) objects.push_back(string(country));
    write(Attribute::country, [&](TextColumn& column) {
        for (std::size_t row = 0; row < rows(); ++row) {
            let_signals_in(row);
            column.add(objects[countries_[row]], countries_.values()[countries_[row]]);
        }
    });
}

void Frame::write_full_names() {
    write(Attribute::fullname, [this](TextColumn& column) {
        const DrawnNames drawn{NameTexts(*first_names_), NameTexts(*last_names_)};
        std::string full_name;
        for (std::size_t row = 0; row < rows(); ++row) {
            let_signals_in(row);
            full_name.assign(drawn.first(row));
            full_name += ' ';
            full_name += drawn.last(row);
            column.add(full_name);
        }
    });
}

void Frame::write_accounts() {
    const DrawnNames drawn{NameTexts(*first_names_), NameTexts(*last_names_)};
    for (const Attribute attribute : {Attribute::email, Attribute::username}) {
        write(attribute, [&](TextColumn& column) {
            Usernames usernames(username_sources_);
            usernames.draw(drawn);
            usernames.lower(form_->of(attribute).layout);
            if (attribute == Attribute::email) return write_addresses(usernames, *domains_, column);
            for (std::size_t row = 0; row < rows(); ++row) {
                let_signals_in(row);
                column.add(usernames[row]);
            }
        });
    }
}

/// All from one source, which is taken over and handed back but once: for few rows that takes longer than the draws.
void Frame::write_numbers() {
    std::vector<std::pair<Attribute, TextColumn>> columns;
    if (passwords_) columns.emplace_back(Attribute::password, column(Attribute::password));
    for (const auto& [attribute, drawn_from] : numbers_) columns.emplace_back(attribute, column(attribute));
    if (columns.empty()) return;
    Sources alone;
    Source& source = alone.of(passwords_ ? passwords_->random() : numbers_.front().second.random());
    auto next = columns.begin();
    if (passwords_) passwords_->draw(source, rows(), next++->second);
    for (const auto& [attribute, drawn_from] : numbers_)
        drawn_from.draw(source, rows(), nullptr, nullptr, next++->second);
    source.hand_back();
    for (auto& [attribute, column] : columns) keep(attribute, column);
}

void Frame::keep(Attribute attribute, TextColumn& column) {
    const bool is_taken_for_texts = form_->of(attribute).layout.kind == Layout::Kind::objects && !form_->keeps_objects;
    columns_[index_of(attribute)] = is_taken_for_texts ? column.series() : column.array();
}

}  // namespace

Ref whole_frame(PyObject* self, PyObject* num_rows, const Given& genders, const Given& countries,
                PyObject* produce_nans, PyObject* ordered) {
    int overflow = 0;
    const long rows = PyLong_AsLongAndOverflow(num_rows, &overflow);
    if (overflow != 0 || rows <= 0 || !PyBool_Check(produce_nans)) return {};
    if (!namespace_is_untouched() || !has_our_methods(self)) return {};
    auto gender_codes = genders.codes(static_cast<std::size_t>(rows));
    auto country_codes = gender_codes ? countries.codes(static_cast<std::size_t>(rows)) : std::nullopt;
    if (!country_codes) return {};
    Frame frame(self, genders, countries, std::move(*gender_codes), std::move(*country_codes));
    return frame.plan(produce_nans == Py_True) ? frame.make(ordered) : Ref();
}

Ref sampled_frame(PyObject* self, PyObject* num_rows, const Given& genders, const Given& countries,
                  PyObject* produce_nans) {
    if (!has_our_method(self, names::_sample_conditional, entry<person::person_model::sample_conditional>)) return {};
    Ref ordered = quiet_attr(attr(self, names::_meta), "ordered_columns");
    return whole_frame(self, num_rows, genders, countries, produce_nans, ordered);
}

}  // namespace bulk
