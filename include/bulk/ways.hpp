#pragma once

// How a column comes from its countries' providers. Where what a method of Faker's draws from is known, the row is
// drawn here; where it is not, the method is called for the row. So one country out of many that is made in a way of
// its own does not make the others slow.

#include <Python.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "bulk/codes.hpp"
#include "bulk/signals.hpp"
#include "bulk/streams.hpp"
#include "bulk/texts.hpp"
#include "python/ref.hpp"

namespace bulk {

/// One provider's way to the values of a column. `Known` is what is drawn from: it has a type `Drawn` that can be made
/// of a number, `draw(Source&)` that gives one, `calls_methods()` that tells whether that may throw NoText, and
/// `leave_as_drawn()` for when all is drawn.
template <class Known>
struct Way {
    Source* source = nullptr;
    std::optional<Known> known{};
    python::Ref method{};  ///< to be called where nothing is known
};

/// What the calls gave.
class CalledTexts {
  public:
    void add(python::Ref text) {
        texts_.push_back(*utf8(text));
        objects_.push_back(std::move(text));
    }

    [[nodiscard]] std::size_t size() const { return objects_.size(); }
    [[nodiscard]] PyObject* object(std::size_t number) const { return objects_[number]; }
    [[nodiscard]] std::string_view text(std::size_t number) const { return texts_[number]; }

  private:
    std::vector<python::Ref> objects_;
    std::vector<std::string_view> texts_;  ///< the UTF-8 of each, which it owns
};

/// The draws of a column: each row's way follows from its gender and its country.
template <class Known>
class Draws {
  public:
    /// `way_of(gender, country)` gives the way of such rows, or null; the genders may not matter. Empty where a row has
    /// none. The codes outlive this object.
    template <class WayOf>
    static std::optional<Draws> plan(const Codes* genders, const Codes& countries, std::size_t rows, WayOf way_of) {
        Draws draws(genders, countries, rows);
        for (std::size_t row = 0; row < rows; ++row) {
            let_signals_in(row);
            Way<Known>*& way = draws.ways_[draws.combination(row)];
            if (way != nullptr) continue;
            const std::string_view gender = genders == nullptr ? "" : genders->values()[(*genders)[row]];
            way = way_of(gender, countries.values()[countries[row]]);
            if (way == nullptr) return std::nullopt;
        }
        return draws;
    }

    /// Whether a method is called for a row, which may fail.
    [[nodiscard]] bool calls_methods() const {
        return std::ranges::any_of(ways_, [](const Way<Known>* way) {
            return way != nullptr && (!way->known || way->known->calls_methods());
        });
    }

    /// Draws all rows, whose sources may stay taken over. Throws NoText where a call did not give one.
    void draw(Sources& sources) {
        drawn_.resize(rows_);
        for (std::size_t row = 0; row < rows_; ++row) {
            Way<Known>& way = *ways_[combination(row)];
            if (way.known) {
                way.source->take_over();
                drawn_[row] = way.known->draw(*way.source);
                way.source->breathe();
            } else {
                // What is called may let signals and other threads in.
                sources.hand_back();
                drawn_[row] = typename Known::Drawn(static_cast<std::uint32_t>(called_.size()));
                called_.add(text_of_call(way.method));
            }
        }
    }

    [[nodiscard]] std::size_t rows() const { return rows_; }
    [[nodiscard]] const Way<Known>& way(std::size_t row) const { return *ways_[combination(row)]; }
    [[nodiscard]] const typename Known::Drawn& drawn(std::size_t row) const { return drawn_[row]; }

    /// What was called for the row, where its way is not known.
    [[nodiscard]] PyObject* called_object(std::size_t row) const { return called_.object(number(row)); }
    [[nodiscard]] std::string_view called_text(std::size_t row) const { return called_.text(number(row)); }

    /// The ways by combination of gender and country; null where no row has it.
    [[nodiscard]] const std::vector<Way<Known>*>& ways() const { return ways_; }
    [[nodiscard]] std::size_t combination(std::size_t row) const {
        const std::size_t country = (*countries_)[row];
        return genders_ == nullptr ? country : (*genders_)[row] * country_count_ + country;
    }

    /// The ways that are known.
    template <class Action>
    void for_each_known(Action action) {
        for (Way<Known>* way : ways_) {
            if (way != nullptr && way->known) action(*way->known);
        }
    }

  private:
    Draws(const Codes* genders, const Codes& countries, std::size_t rows)
        : genders_(genders),
          countries_(&countries),
          rows_(rows),
          country_count_(countries.values().size()),
          ways_((genders == nullptr ? 1 : genders->values().size()) * countries.values().size()) {}

    [[nodiscard]] std::size_t number(std::size_t row) const { return static_cast<std::uint32_t>(drawn_[row]); }

    const Codes* genders_;
    const Codes* countries_;
    std::size_t rows_;
    std::size_t country_count_;
    std::vector<Way<Known>*> ways_;  ///< by combination of gender and country
    std::vector<typename Known::Drawn> drawn_;
    CalledTexts called_;
};

/// Draws all rows of the columns, or none: false where a call did not give a text, with every source back where it was.
template <class... Columns>
bool draw_or_go_back(Sources& sources, Columns&... columns) {
    std::vector<Mark> marks;
    if ((columns.calls_methods() || ...)) {
        for (const Source& source : sources.all()) marks.emplace_back(source);
    }
    try {
        (columns.draw(sources), ...);
    } catch (const NoText&) {
        sources.hand_back();
        for (const Mark& mark : marks) mark.go_back();
        return false;
    }
    sources.hand_back();
    (columns.for_each_known([](auto& known) { known.leave_as_drawn(); }), ...);
    return true;
}

}  // namespace bulk
