#pragma once

// A model's providers by country, as far as their ways of drawing are known.

#include <Python.h>

#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "bulk/domains.hpp"
#include "bulk/streams.hpp"
#include "bulk/tables.hpp"
#include "bulk/ways.hpp"

namespace bulk {

class Providers {
  public:
    class Provider {
      public:
        Provider(KnownFaker faker, Source& source) : faker_(std::move(faker)), source_(&source) {}

        /// The way to the names that the method gives, found when it is first asked for; null where there is none.
        Way<Table>* names(std::string_view method);

        /// The way to domain names, likewise.
        Way<Domains>* domain_names();

      private:
        struct NamedWay {
            std::string_view method;
            Way<Table> way;
        };

        template <class Known>
        Way<Known> way_to(const char* method, std::optional<Known> known) const;

        KnownFaker faker_;
        Source* source_;
        std::deque<NamedWay> names_;
        std::optional<Way<Domains>> domain_names_;
    };

    explicit Providers(PyObject* self);

    /// The country's provider; null where there is none or it is not known, or no country. The view must outlive this
    /// object.
    Provider* find(std::string_view country);

    /// Those of all providers that were found.
    Sources& sources() { return sources_; }

  private:
    struct Found {
        std::string_view country;
        std::optional<Provider> provider;
    };

    Provider* look_up(std::string_view country);

    python::Ref map_;  ///< empty where it is not plain
    Sources sources_;  ///< instances without a seed share one
    std::deque<Found> found_;
    Found* last_ = nullptr;
};

}  // namespace bulk
