#pragma once

// Domains of e-mail addresses, drawn for codes of countries, and the addresses.

#include <Python.h>

#include <cstddef>
#include <optional>

#include "bulk/codes.hpp"
#include "bulk/domains.hpp"
#include "bulk/providers.hpp"
#include "bulk/text_column.hpp"
#include "bulk/usernames.hpp"
#include "bulk/ways.hpp"

namespace bulk {

using DomainDraws = Draws<Domains>;

/// How the domain of each row is made, where that is known of all.
std::optional<DomainDraws> plan_domains(const Codes& countries, Providers& providers);

/// Whether an address goes through nothing that could refuse it.
bool addresses_pass(PyObject* self);

void write_addresses(const Usernames& usernames, DomainDraws& domains, TextColumn& column);

}  // namespace bulk
