// GenderModel: the hidden model of the gender, a histogram over gender keys.

#include <Python.h>

#include "person/names.hpp"
#include "person/typed.hpp"
#include "person/units.hpp"
#include "python/builtins.hpp"
#include "python/call.hpp"
#include "python/class_builder.hpp"
#include "python/iterate.hpp"
#include "python/module.hpp"
#include "python/traceback.hpp"

namespace person {

namespace {

using namespace python;

Ref init_body(Arguments arguments) {
    auto [self, meta, regex_female, regex_male, regex_non_binary] = arguments.take<5>();
    call_method(arguments.parent(self), names::dunder_init, {}, {{names::meta, meta}});
    set_attr(self, names::regex_female, regex_female);
    set_attr(self, names::regex_male, regex_male);
    set_attr(self, names::regex_non_binary, regex_non_binary);
    return none();
}

Ref collections_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    Ref mapping = dict({{attr(self, names::key_female), attr(self, names::regex_female)},
                        {attr(self, names::key_male), attr(self, names::regex_male)},
                        {attr(self, names::key_non_binary), attr(self, names::regex_non_binary)}});
    Ref sort = global(names::collections_from_mapping);
    Ref collections =
        call(sort, {attr(self, names::meta, names::categories), mapping, attr(self, names::key_ambiguous)});

    Ref filled = dict();
    for (Ref entry : iterate(call_method(collections, names::items))) {
        auto [key, collection] = unpack_pair(entry);
        if (length(collection) > 0) set_item(filled, key, collection);
    }
    return filled;
}

Ref categories_body(Arguments arguments) {
    auto [self] = arguments.take<1>();
    return list_of(call_method(attr(self, names::collections), names::keys));
}

/// From category value to gender key.
Ref value_map(PyObject* self) {
    Ref map = dict();
    for (Ref entry : iterate(call_method(attr(self, names::collections), names::items))) {
        auto [key, collection] = unpack_pair(entry);
        for (Ref value : iterate(collection)) set_item(map, value, key);
    }
    return map;
}

/// The value map of a model whose meta may still have to read its categories from the frame.
Ref value_map_after_extraction(PyObject* self, PyObject* df, const Function& function) {
    try {
        return value_map(self);
    } catch (const PythonError&) {
        add_traceback(function.qualname, function.line);
        RaisedException raised;
        {
            const Handling handling(raised.get());
            if (raised.is_caught_by(global(names::MetaNotExtractedError))) {
                call_method(attr(self, names::meta), names::extract, {df});
                return value_map(self);
            }
        }
        raised.raise_again<TracedError>();
    }
}

Ref fit_body(Arguments arguments) {
    auto [self, df] = arguments.take<2>();
    Ref map = value_map_after_extraction(self, df, arguments.function());
    Ref df_gender = call_method(item(df, list({attr(self, names::name).get()})), names::copy);
    Ref texts = call_method(item(df_gender, attr(self, names::name)), names::astype, {str_type()});
    Ref keys = call_method(texts, names::map, {map});
    set_item(df_gender, attr(self, names::name), keys);
    return call_method(arguments.parent(self), names::fit, {df_gender});
}

Ref from_dict_body(Arguments arguments) {
    auto [cls, d] = arguments.take<2>();
    const auto stored = [d = d](PyObject* key) { return call_method(d, names::get, {key}); };
    Ref meta_dict =
        cast_to_dict_of([] { return Ref::share(builtins::object); }, [d = d] { return item(d, names::meta); });
    Ref meta = call_method(global(names::String), names::from_dict, {meta_dict});
    Ref model = call(cls, {}, {{names::meta, meta}});
    Ref probabilities =
        cast_to_dict_of([] { return Ref::share(float_type()); }, [&] { return stored(names::probabilities); });
    set_attr(model, names::_probabilities, probabilities);
    for (const Name& pattern : {names::regex_female, names::regex_male, names::regex_non_binary}) {
        set_attr(model, pattern, cast(str_type(), [&] { return stored(pattern); }));
    }
    return model;
}

Ref default_female() { return Ref::share(names::female_titles); }
Ref default_male() { return Ref::share(names::male_titles); }
Ref default_non_binary() { return Ref::share(names::non_binary_titles); }

constexpr Parameter kSelf[] = {{.name = names::self}};
constexpr Parameter kInit[] = {
    {.name = names::self},
    {.name = names::meta, .annotation = "String"},
    {.name = names::regex_female, .annotation = "str", .exact = &PyUnicode_Type, .default_ = default_female},
    {.name = names::regex_male, .annotation = "str", .exact = &PyUnicode_Type, .default_ = default_male},
    {.name = names::regex_non_binary, .annotation = "str", .exact = &PyUnicode_Type, .default_ = default_non_binary},
};
constexpr Parameter kFit[] = {{.name = names::self}, {.name = names::df}};
constexpr Parameter kFromDict[] = {
    {.name = names::cls},
    {.name = names::d, .annotation = "Dict[str, object]", .exact = &PyDict_Type},
};

constexpr Function init{
    .qualname = "GenderModel.__init__",
    .line = 57,
    .parameters = kInit,
    .free_variable = kClassCell,
    .body = init_body,
};
constexpr Function collections{
    .qualname = "GenderModel.collections",
    .line = 69,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "Dict[str, List[str]]",
    .doc = "The categories of the meta by gender key, without the keys that no category has.",
    .locals = {"mapping", "collections", "key", "collection"},
    .body = collections_body,
};
constexpr Function categories{
    .qualname = "GenderModel.categories",
    .line = 79,
    .kind = Kind::property,
    .parameters = kSelf,
    .returns = "Sequence[str]",
    .doc = "The gender keys that at least one category of the meta has.",
    .body = categories_body,
};
constexpr Function fit{
    .qualname = "GenderModel.fit",
    .line = 83,
    .parameters = kFit,
    .doc = R"(Learn how frequent each gender key is.

        Args:
            df: A data frame that holds the model's column. It is not changed.

        Returns:
            What the base class's fit returns.
)",
    .locals = {"value_map", "df_gender", "key", "collection", "v"},
    .free_variable = kClassCell,
    .body = fit_body,
};
constexpr Function from_dict{
    .qualname = "GenderModel.from_dict",
    .line = 95,
    .kind = Kind::class_method,
    .parameters = kFromDict,
    .returns = "'GenderModel'",
    .doc = R"(Rebuild a fitted model from its dictionary form.

        Args:
            d: The dictionary form; only its "meta" is required.

        Raises:
            KeyError: if "meta" is missing.
)",
    .locals = {"meta_dict", "meta", "model"},
    .body = from_dict_body,
};

constexpr ClassAttribute kAttributes[] = {
    {names::key_female, names::female},
    {names::key_male, names::male},
    {names::key_non_binary, names::non_binary},
    {names::key_ambiguous, names::ambiguous},
};

constexpr Entry kMembers[] = {entry<init>, entry<collections>, entry<categories>, entry<fit>, entry<from_dict>};

}  // namespace

const Class kGenderModel{
    .name = "GenderModel",
    .line = 30,
    .doc = R"(A Model of the gender attribute.

    Gender is modelled with 4(+1) possible categories:
        F: female
        M: male
        NB: non-binary
        A: ambiguous
        (a missing value)

    The four categories correspond to collections of values in `self.meta.categories`. They are calculated
    with three regular expressions, one each for F, M and NB. Values that are matched by more than one
    expression are placed in the ambiguous collection A, which can happen when gender is modelled from
    another attribute, such as the title.

    Examples:
        F: Mrs, Ms
        M: Mr
        NB: Ind, Mx
        A: Dr, Prof
    )",
    .attributes = kAttributes,
    .members = kMembers,
};

}  // namespace person
