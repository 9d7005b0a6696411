#include "bulk/providers.hpp"

#include "bulk/surroundings.hpp"
#include "python/call.hpp"

namespace bulk {

using namespace python;

Providers::Providers(PyObject* self, Sources& sources) : map_(plain_provider_map(self)), sources_(sources) {}

Providers::Provider* Providers::find(std::string_view country) {
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
    Ref key = owned(PyUnicode_DecodeUTF8(country.data(), static_cast<Py_ssize_t>(country.size()), nullptr));
    Ref faker = Ref::share(python::find(map_, key));
    if (!faker) return nullptr;
    if (auto known = KnownFaker::recognise(faker)) {
        Mersenne& source = sources_.add(known->source());
        found.provider.emplace(std::move(*known), source);
    }
    return found.provider ? &*found.provider : nullptr;
}

const Table* Providers::Provider::table(std::string_view method) {
    for (NamedTable& known : tables_) {
        if (known.method == method) return known.table ? &*known.table : nullptr;
    }
    // NOLINTNEXTLINE(bugprone-suspicious-stringview-data-usage): methods are named by literals
    NamedTable& read = tables_.emplace_back(NamedTable{method, faker_.table(method.data())});
    return read.table ? &*read.table : nullptr;
}

Domains* Providers::Provider::domains() {
    if (!domains_) domains_.emplace(Domains::read(faker_));
    return *domains_ ? &**domains_ : nullptr;
}

}  // namespace bulk
