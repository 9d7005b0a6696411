#pragma once

// Whole columns at once. Each function gives what the single calls would have given, or is empty before the first draw
// where something stands in the way; the caller then makes the single calls.

#include <Python.h>

#include <cstddef>

#include "bulk/given.hpp"
#include "python/ref.hpp"

namespace bulk {

/// Shorter columns are not worth the look at what is in place.
constexpr bool is_worth_it(std::size_t rows) { return rows >= 16; }

/// `pd.Series` of a first name for each gender and country.
python::Ref first_names(PyObject* self, PyObject* genders, PyObject* countries);

/// `pd.Series(data=...)` of a last name for each country.
python::Ref last_names(PyObject* self, PyObject* countries);

/// The finished usernames of the rows.
python::Ref usernames(PyObject* firstnames, PyObject* lastnames);

/// The finished e-mail addresses of the rows, which the model's own check lets pass.
python::Ref emails(PyObject* self, PyObject* firstnames, PyObject* lastnames, PyObject* countries);

/// `conditions.astype(str).apply(self.generate_from_collections, collections=collections)`
python::Ref collection_values(PyObject* self, PyObject* conditions, PyObject* collections);

/// The key of each value that a collection holds, as a list.
python::Ref keys_of_values(PyObject* values, PyObject* collections);

/// `pd.Series(..., dtype="string")` of a password for each row.
python::Ref passwords(PyObject* self, std::size_t rows);

/// `pd.Series(...)` of a filled template for each row that is not missing.
python::Ref phone_numbers(PyObject* isna, PyObject* number_format);

/// The frame of all labelled columns, in the order that `ordered` gives their list, where it is given.
python::Ref whole_frame(PyObject* self, PyObject* num_rows, const Given& genders, const Given& countries,
                        PyObject* produce_nans, PyObject* ordered = nullptr);

/// The same as `sample` gets it from `self._sample_conditional`, with its columns in the order of the fitted table at
/// once where the host offers that.
python::Ref sampled_frame(PyObject* self, PyObject* num_rows, const Given& genders, const Given& countries,
                          PyObject* produce_nans);

}  // namespace bulk
