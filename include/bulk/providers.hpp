#pragma once

// A model's providers by country, as far as their ways of drawing are known.

#include <Python.h>

#include <array>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "bulk/domains.hpp"
#include "bulk/streams.hpp"
#include "bulk/tables.hpp"

namespace bulk {

class Providers {
  public:
    class Provider {
      public:
        Provider(KnownFaker faker, Mersenne& source) : faker_(std::move(faker)), source_(&source) {}

        [[nodiscard]] Mersenne& source() const { return *source_; }

        /// The table behind the method, read when it is first asked for; null where it is not known.
        const Table* table(std::string_view method);

        /// The ways to a domain name, read likewise.
        Domains* domains();

      private:
        struct NamedTable {
            std::string_view method;
            std::optional<Table> table;
        };

        KnownFaker faker_;
        Mersenne* source_;
        std::deque<NamedTable> tables_;
        std::optional<std::optional<Domains>> domains_;
    };

    /// Registers the sources of the providers that are found.
    Providers(PyObject* self, Sources& sources);

    /// The country's provider; null where there is none or it is not known. The view must outlive this object.
    Provider* find(std::string_view country);

  private:
    struct Found {
        std::string_view country;
        std::optional<Provider> provider;
    };

    Provider* look_up(std::string_view country);

    python::Ref map_;  ///< empty where it is not plain
    Sources& sources_;
    std::deque<Found> found_;
    Found* last_ = nullptr;
};

}  // namespace bulk
