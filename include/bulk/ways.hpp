#pragma once

// How a column comes from its countries' providers. Where what a method of Faker's draws from is known, the row is
// drawn here; where it is not, the method is called for the row. So one country out of many that is made in a way of
// its own does not make the others slow.

#include <Python.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <optional>
#include <string_view>
#include <vector>

#include "bulk/streams.hpp"
#include "python/ref.hpp"

namespace bulk {

/// One provider's way to the values of a column. `Known` is what is drawn from: it has a type `Drawn`, and
/// `draw(Source&)` that gives one, and `leave_as_drawn()` for when all is drawn.
template <class Known>
struct Way {
    Source* source = nullptr;
    std::optional<Known> known{};
    python::Ref method{};  ///< to be called where nothing is known
};

/// A row of the column: how it is made, and what came of it.
template <class Known>
struct Row {
    Way<Known>* way;
    typename Known::Drawn drawn{};
    std::size_t called = 0;  ///< its number among the called ones
};

/// What the calls gave.
class CalledTexts {
  public:
    /// Calls the method. False where it fails or gives no str of valid text.
    bool add(PyObject* method);

    [[nodiscard]] std::size_t size() const { return objects_.size(); }
    [[nodiscard]] PyObject* object(std::size_t number) const { return objects_[number]; }
    [[nodiscard]] std::string_view text(std::size_t number) const { return texts_[number]; }

  private:
    std::vector<python::Ref> objects_;
    std::vector<std::string_view> texts_;  ///< the UTF-8 of each, which it owns
};

/// The rows of one source, by their numbers.
struct RowsOfSource {
    Source* source;
    std::vector<std::size_t> numbers;
};

template <class Known>
std::deque<RowsOfSource> by_source(const std::vector<Row<Known>>& rows) {
    std::deque<RowsOfSource> groups;
    RowsOfSource* group = nullptr;
    for (std::size_t number = 0; number < rows.size(); ++number) {
        Source* source = rows[number].way->source;
        if (group == nullptr || group->source != source) {
            const auto found = std::ranges::find(groups, source, &RowsOfSource::source);
            group = found != groups.end() ? &*found : &groups.emplace_back(RowsOfSource{source, {}});
        }
        group->numbers.push_back(number);
    }
    return groups;
}

/// Draws all rows, or none: false where a call did not give a text, with every source back where it was.
///
/// Sources do not depend on each other, so each one's rows are drawn by themselves. No other source is taken over while
/// a method is called, which may let signals and other threads in.
template <class Known>
bool draw_rows(std::vector<Row<Known>>& rows, CalledTexts& called) {
    const auto groups = by_source(rows);
    std::vector<Mark> marks;
    marks.reserve(groups.size());
    for (const RowsOfSource& group : groups) marks.emplace_back(*group.source);

    for (const auto& [source, numbers] : groups) {
        for (const std::size_t number : numbers) {
            Row<Known>& row = rows[number];
            if (row.way->known) {
                source->take_over();
                row.drawn = row.way->known->draw(*source);
                source->breathe();
            } else {
                source->hand_back();
                row.called = called.size();
                if (called.add(row.way->method)) continue;
                for (const Mark& mark : marks) mark.go_back();
                return false;
            }
        }
        source->hand_back();
    }
    for (const Row<Known>& row : rows) {
        if (row.way->known) row.way->known->leave_as_drawn();
    }
    return true;
}

}  // namespace bulk
