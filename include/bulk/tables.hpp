#pragma once

// What Faker draws names from, as tables. They may be changed in place: what was read is kept only as long as the
// interpreter tells of no change.

#include <Python.h>

#include <cstddef>
#include <cstdint>
#include <memory>
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

    static bool calls_methods() { return false; }

    /// Keeps the keys with a weighted table that was drawn from, as Faker does at the first draw: it goes by them for
    /// as long as the table lives. A table that nothing was drawn from stays untouched.
    void leave_as_drawn();

    [[nodiscard]] PyObject* object(std::size_t position) const {
        return PyTuple_GET_ITEM(contents_->choices.get(), static_cast<Py_ssize_t>(position));
    }
    [[nodiscard]] std::string_view text(std::size_t position) const { return contents_->texts[position]; }
    [[nodiscard]] const std::vector<std::string_view>& texts() const { return contents_->texts; }
    [[nodiscard]] std::size_t size() const { return contents_->texts.size(); }

    /// Whether one of the texts has a NUL in it.
    [[nodiscard]] bool has_nul() const { return contents_->has_nul; }

  private:
    /// What was read; many tables may have it.
    struct Contents {
        python::Ref choices;
        std::vector<std::string_view> texts;
        std::vector<double> cumulative_weights;  ///< empty where every element has the same chance
        std::vector<Drawn> guide;                ///< where to look for a part of the way to the last of them
        bool has_nul = false;

        bool read_texts();
        bool read_weights(PyObject* elements);
        void make_guide();
    };

    class Kept;

    explicit Table(std::shared_ptr<const Contents> contents) : contents_(std::move(contents)) {}
    static std::shared_ptr<const Contents> read_contents(PyObject* elements, PyObject* keys, bool by_weight);

    std::shared_ptr<const Contents> contents_;
    python::Ref keyless_;  ///< the weighted table, as long as its keys are not kept with it
    bool drawn_ = false;
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

    /// The method, where it and all that it could call is Faker's own and draws from this instance's source; else
    /// empty. Then nobody can tell in what order the methods of several instances are called.
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
