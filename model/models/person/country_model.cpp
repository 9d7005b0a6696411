// CountryModel: the hidden model of the country, a histogram that also finds a name provider for each country.

#include <Python.h>

#include "person/model.hpp"
#include "person/names.hpp"
#include "person/units.hpp"
#include "python/call.hpp"
#include "python/class_builder.hpp"
#include "python/module.hpp"

namespace person {

namespace {

using namespace python;

Ref init_body(Arguments arguments) {
    auto [self, meta] = arguments.take<2>();
    call_method(arguments.parent(self), names::dunder_init, {}, {{names::meta, meta}});
    return none();
}

Ref categories_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    if (attr(self, names::_meta, names::categories).get() == Py_None) raise(global(names::ModelNotFittedError));
    return attr(self, names::_meta, names::categories);
}

Ref fit_body(Arguments arguments) {
    auto [self, df] = arguments.take<2>();
    Ref column = item(df, attr(self, names::meta, names::name));
    set_attr(self, names::countries, call_method(call_method(column, names::unique), names::tolist));
    Ref providers = providers_of([self = self] { return attr(self, names::countries); });
    set_attr(self, names::country_to_provider_map, providers);
    call_method(arguments.parent(self), names::fit, {df});
    return Ref::share(self);
}

constexpr Parameter kSelf[] = {{.name = names::self}};
constexpr Parameter kInit[] = {{.name = names::self}, {.name = names::meta, .annotation = "Nominal"}};
constexpr Parameter kFit[] = {{.name = names::self}, {.name = names::df, .annotation = "pd.DataFrame"}};

constexpr Function init{
    .qualname = "CountryModel.__init__",
    .line = 742,
    .parameters = kInit,
    .free_variable = kClassCell,
    .body = init_body,
};
constexpr Function categories{
    .qualname = "CountryModel.categories",
    .line = 745,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "Sequence[str]",
    .doc = R"(The countries that the model knows.

        Raises:
            ModelNotFittedError: if the model has not been fitted.
)",
    .body = categories_body,
};
constexpr Function fit{
    .qualname = "CountryModel.fit",
    .line = 752,
    .parameters = kFit,
    .returns = "'CountryModel'",
    .doc = R"(Learn how frequent each country is, and find a name provider for each.

        Args:
            df: A data frame that holds the model's column.

        Returns:
            The model itself.

        Raises:
            KeyError: if the column is missing; nothing is changed then.
)",
    .free_variable = kClassCell,
    .body = fit_body,
};

constexpr Entry kMembers[] = {entry<init>, entry<categories>, entry<fit>};

}  // namespace

const Class kCountryModel{
    .name = "CountryModel",
    .line = 739,
    .doc = "A model for countries.",
    .attributes = {},
    .members = kMembers,
};

}  // namespace person
