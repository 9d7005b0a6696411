#include "bulk/providers.hpp"

#include <algorithm>
#include <utility>

#include "bulk/surroundings.hpp"
#include "python/call.hpp"

namespace bulk {

using namespace python;

namespace {

template <class Known>
Way<Known>* usable(Way<Known>& way) {
    return way.known || way.method ? &way : nullptr;
}

}  // namespace

Providers::Providers(PyObject* self) : map_(plain_provider_map(self)) {}

Providers::Provider* Providers::find(std::string_view country) {
    if (country.data() == nullptr) return nullptr;
    if (last_ == nullptr || last_->country != country) {
        last_ = nullptr;
        for (Found& found : found_) {
            if (found.country == country) last_ = &found;
        }
        if (last_ == nullptr) return look_up(country);
    }
    return last_->provider ? &*last_->provider : nullptr;
}

Providers::Provider* Providers::look_up(std::string_view country) {
    Found& found = found_.emplace_back(Found{country, std::nullopt});
    last_ = &found;
    if (!map_) return nullptr;
    Ref key = string(country);
    Ref faker = Ref::share(python::find(map_, key));
    if (!faker) return nullptr;
    if (auto known = KnownFaker::recognise(faker)) {
        Source& source = sources_.of(known->source());
        found.provider.emplace(std::move(*known), source);
    }
    return found.provider ? &*found.provider : nullptr;
}

template <class Known>
Way<Known> Providers::Provider::way_to(const char* method, std::optional<Known> known) const {
    Ref called = known ? Ref() : faker_.own_method(method);
    return {.source = source_, .known = std::move(known), .method = std::move(called)};
}

Way<Table>* Providers::Provider::names(std::string_view method) {
    for (NamedWay& found : names_) {
        if (found.method == method) return usable(found.way);
    }
    const char* name = method.data();  // NOLINT(bugprone-suspicious-stringview-data-usage): named by literals
    return usable(names_.emplace_back(NamedWay{method, way_to(name, faker_.table(name))}).way);
}

Way<Domains>* Providers::Provider::domain_names() {
    if (!domain_names_) domain_names_.emplace(way_to("domain_name", Domains::read(faker_)));
    return usable(*domain_names_);
}

}  // namespace bulk
