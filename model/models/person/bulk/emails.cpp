#include "bulk/emails.hpp"

#include <string>
#include <string_view>

#include "bulk/originals.hpp"
#include "bulk/signals.hpp"
#include "person/names.hpp"
#include "person/units.hpp"

namespace bulk {

namespace names = person::names;

std::optional<DomainDraws> plan_domains(const Codes& countries, Providers& providers) {
    return DomainDraws::plan(nullptr, countries, countries.size(), [&](std::string_view, std::string_view country) {
        Providers::Provider* provider = providers.find(country);
        return provider == nullptr ? nullptr : provider->domain_names();
    });
}

bool addresses_pass(PyObject* self) {
    return has_our_method(self, names::generate_usernames, python::entry<person::person_model::generate_usernames>) &&
           has_our_method(self, names::check_email, python::entry<person::person_model::check_email>) &&
           has_our_property(self, names::default_locale, python::entry<person::person_model::default_locale>);
}

void write_addresses(const Usernames& usernames, DomainDraws& domains, TextColumn& column) {
    domains.for_each_known([](Domains& known) { known.finish_words(); });
    std::string address;
    for (std::size_t row = 0; row < usernames.size(); ++row) {
        let_signals_in(row);
        address.assign(usernames[row]);
        address += '@';
        if (const auto& known = domains.way(row).known) {
            known->append(domains.drawn(row), address);
        } else {
            address += domains.called_text(row);
        }
        column.add(address);
    }
}

}  // namespace bulk
