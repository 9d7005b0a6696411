#pragma once

// A few rows made in the plain way, to see what pandas makes of them.

#include <Python.h>

#include <optional>
#include <utility>

#include "bulk/text_column.hpp"
#include "python/module.hpp"
#include "python/ref.hpp"

namespace bulk {

/// While it lives, the single calls of this thread draw from sources that nobody else draws from.
class Rehearsal {
  public:
    Rehearsal();

  private:
    python::Overlay overlay_;
};

/// What pandas makes of a few rows.
struct Rehearsed {
    python::Ref rows;
    python::Ref made;
    std::optional<Layout> layout;  ///< empty where the column is none of texts

    /// `pd.Series` of the column, with the index of the given Series as the few rows have it: some ways through pandas
    /// hand it on, others give the result one of its own.
    python::Ref series(TextColumn& column, PyObject* given) const;
};

template <class Make>
Rehearsed rehearsed(python::Ref rows, Make make) {
    const Rehearsal rehearsal;
    python::Ref made = make(rows.get());
    auto layout = Layout::of(made);
    return {std::move(rows), std::move(made), std::move(layout)};
}

/// A copy of the model whose countries have a provider that gives the same text for everything.
python::Ref rehearsing_model(PyObject* self, PyObject* countries);

}  // namespace bulk
