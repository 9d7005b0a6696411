#pragma once

// What Faker draws names from, as tables: read anew for each column, for a table may be changed in place.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "bulk/mersenne.hpp"
#include "bulk/streams.hpp"
#include "python/ref.hpp"

namespace bulk {

/// The elements that `random_element` draws from, with their weights added up where it goes by weight.
class Table {
  public:
    using Drawn = std::uint32_t;  ///< a position

    /// Empty where the elements are of a kind that single draws must settle.
    static std::optional<Table> read(PyObject* elements, bool weighted);

    /// A position, drawn as `random_element` draws it.
    Drawn draw(Mersenne& engine);
    Drawn draw(Source& source) { return draw(source.engine()); }

    /// Keeps the keys with a weighted table that was drawn from, as Faker does at the first draw: it goes by them for as
    /// long as the table lives. A table that nothing was drawn from stays untouched.
    void leave_as_drawn();

    [[nodiscard]] PyObject* object(std::size_t position) const {
        return PyTuple_GET_ITEM(choices_.get(), static_cast<Py_ssize_t>(position));
    }
    [[nodiscard]] std::string_view text(std::size_t position) const { return texts_[position]; }
    [[nodiscard]] std::size_t size() const { return texts_.size(); }

    /// Whether one of the texts has a NUL in it.
    [[nodiscard]] bool has_nul() const { return has_nul_; }

  private:
    bool read_texts();
    bool read_weights(PyObject* elements);
    void make_guide();

    python::Ref choices_;
    python::Ref keyless_;  ///< the weighted table, as long as its keys are not kept with it
    bool drawn_ = false;
    bool has_nul_ = false;
    std::vector<std::string_view> texts_;
    std::vector<double> cumulative_weights_;  ///< empty where every element has the same chance
    std::vector<Drawn> guide_;                ///< where to look for a part of the way to the last of them
};

/// A Faker instance of one locale whose ways of drawing are all known.
class KnownFaker {
  public:
    /// Empty for anything but a plain `Faker` over one plain generator with a plain source.
    static std::optional<KnownFaker> recognise(PyObject* faker);

    [[nodiscard]] PyObject* source() const { return source_; }
    [[nodiscard]] PyObject* generator() const { return generator_; }

    /// The table behind a method such as `last_name`, where all that the method does is to draw from one.
    [[nodiscard]] std::optional<Table> table(const char* method) const;
    [[nodiscard]] std::optional<Table> table_behind(PyObject* method) const;

    /// The method, where it and all that it could call is Faker's own and draws from this instance's source; else empty.
    /// Then nobody can tell in what order the methods of several instances are called.
    [[nodiscard]] python::Ref own_method(const char* method) const;

    /// The provider behind the method, where it draws from this instance's source in the base provider's way; else
    /// empty.
    [[nodiscard]] python::Ref provider_of(PyObject* method) const;

    /// The table in the provider's attribute.
    [[nodiscard]] static std::optional<Table> table_of(PyObject* provider, PyObject* attribute);

  private:
    [[nodiscard]] bool has_own_methods_alone() const;
    [[nodiscard]] std::optional<Table> gendered_table(PyObject* bound, PyObject* provider) const;

    python::Ref generator_;
    python::Ref source_;
};

}  // namespace bulk
