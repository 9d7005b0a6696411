"""Calls of every function of the module, working and failing, in the host that is nothing but Python."""

MODELS = """
    import vantrel.model.models.person as person
    from faker import Faker
    from pandas import DataFrame, Series
    from vantrel.config import PersonLabels, PersonModelConfig
    from vantrel.metadata import Nominal
    from vantrel.metadata.rules.association import Association
    from vantrel.metadata.value import Person, String
    from vantrel.model.models.person import CountryModel, GenderModel, PersonModel

    NAMES = PersonLabels(firstname="first", lastname="last")
    ALL = PersonLabels(**{field: field for field in vars(NAMES)})
    TITLES = ["Mrs", "Mr", "Mx", "Dr"]
    TABLE = {"title": Series(TITLES), "gender": Series(["f", "m"]), "country": Series(["GB", "US"])}
    COUNTRIES = Series(["GB", "US", "GB"])
    FIRST, LAST = Series(["Ada", "Li Wei", "Bo"]), Series(["Byron", "Li", "Ek"])
    MANY = Series(["Ada"] * 20)

    def gender_model(categories=TITLES):
        return GenderModel(String("title", categories))

    def person_model(labels=ALL):
        model = PersonModel(Person("person", labels))
        model.country_to_provider_map = {"GB": Faker(), "US": Faker()}
        return model

    unfitted, model, odd = PersonModel(Person("person", ALL)), person_model(), person_model()
    odd._country_to_provider_map = {"GB": object(), "US": object()}
    form = {"meta": {"name": "p", "labels": vars(NAMES)}, "config": {"dict_cache_size": 1}}
    rule = Association()
    rule.associations = ["email"]
"""

CALLS = {
    # what comes of it stays within the module
    "all_supported_country_names": "person.all_supported_country_names()",
    "all_supported_country_codes": "person.all_supported_country_codes()",
    "all_supported_locales": "person.all_supported_locales()",
    "too many arguments": "person.all_supported_locales(1)",
    "too few arguments": "PersonModel.check_email()",
    "unknown keyword": "PersonModel.check_email('', colour=1)",
    "argument given twice": "PersonModel.check_email('', s='')",
    "argument of a wrong type": "PersonModel.check_email(3)",
    "PersonModel.check_email": "PersonModel.check_email('a@b.org')",
    "PersonModel.check_email of no address": "PersonModel.check_email('a')",
    "PersonModel.check_email in other languages": "PersonModel.check_email('a', ['de', 'en'])",
    "PersonModel.check_email, broken off": "PersonModel.check_email('a', ['en', 3])",
    "subclass": "type('Made', (PersonModel,), {}).__name__",
    "function's attributes": "[str(getattr(PersonModel.sample, name)) for name in"
    " ('__doc__', '__annotations__', '__defaults__', '__closure__')]",
    # gender and country models
    "GenderModel()": "vars(GenderModel('meta')).keys()",
    "GenderModel.collections": "gender_model().collections",
    "GenderModel.collections, not known": "gender_model(None).collections",
    "GenderModel.categories": "gender_model().categories",
    "GenderModel.fit": "gender_model().fit(DataFrame(TABLE)).fitted",
    "GenderModel.fit, not known": "gender_model(None).fit(DataFrame(TABLE)).fitted",
    "GenderModel.fit, no column": "gender_model().fit(DataFrame({}))",
    "GenderModel.from_dict": "vars(GenderModel.from_dict({'meta': {'name': 'title'}})).keys()",
    "GenderModel.from_dict, no meta": "GenderModel.from_dict({})",
    "CountryModel()": "vars(CountryModel('meta')).keys()",
    "CountryModel.categories": "CountryModel(Nominal('country', ['GB'])).categories",
    "CountryModel.fit": "CountryModel(Nominal('country')).fit(DataFrame(TABLE)).countries",
    # person models
    "PersonModel()": "vars(PersonModel(Person('person', ALL))).keys()",
    "PersonModel() without columns": "vars(PersonModel(Person('person', NAMES))).keys()",
    "PersonModel() of nothing": "PersonModel(None)",
    "PersonModel.categories": "model.categories",
    "PersonModel.default_locale": "model.default_locale",
    "PersonModel.locales": "model.locales",
    "PersonModel.labels": "model.labels",
    "PersonModel.params": "model.params",
    "PersonModel.country_to_provider_map": "list(model.country_to_provider_map)",
    "PersonModel.country_to_provider_map, not fitted": "unfitted.country_to_provider_map",
    "PersonModel.country_to_provider_map = providers": "setattr(odd, 'country_to_provider_map', {})",
    "PersonModel.country_to_provider_map = None": "setattr(odd, 'country_to_provider_map', None)",
    "PersonModel.to_dict": "model.to_dict()",
    "PersonModel.from_dict": "PersonModel.from_dict(form).to_dict()",
    "PersonModel.from_dict, bad setting": "PersonModel.from_dict(form | {'config': {'size': 1}})",
    "PersonModel.from_dict, no settings": "PersonModel.from_dict(form | {'config': 3})",
    "PersonModel.fit": "person_model().fit(DataFrame(TABLE)).fitted",
    "PersonModel.fit, no column": "person_model().fit(DataFrame({}))",
    "PersonModel.check_associations": "model.check_associations([])",
    "PersonModel.check_associations of a column": "model.check_associations([rule])",
    # generators
    "PersonModel.generate_password": "PersonModel.generate_password()",
    "PersonModel.generate_password, bad bounds": "PersonModel.generate_password(9, 8)",
    "PersonModel.generate_passwords": "model.generate_passwords(FIRST)",
    "PersonModel.generate_passwords at once": "model.generate_passwords(MANY)",
    "PersonModel.generate_phone_numbers": "PersonModel.generate_phone_numbers(FIRST.isna())",
    "PersonModel.generate_first_names": "model.generate_first_names(Series(['F', 'M', None]), COUNTRIES)",
    "PersonModel.generate_first_names, gender X": "model.generate_first_names(Series(['X']), COUNTRIES)",
    "PersonModel.generate_first_names, half-way": "odd.generate_first_names(Series(['F']), COUNTRIES)",
    "PersonModel.generate_last_names": "model.generate_last_names(FIRST, COUNTRIES)",
    "PersonModel.generate_last_names, unknown country": "model.generate_last_names(FIRST, Series(['X']))",
    "PersonModel.generate_usernames": "PersonModel.generate_usernames(FIRST, LAST)",
    "PersonModel.generate_emails": "model.generate_emails(FIRST, LAST, COUNTRIES)",
    "PersonModel.generate_from_collections": "PersonModel.generate_from_collections('F', {'F': ['Mrs']})",
    "PersonModel.generate_values_from_collections": "model.generate_values_from_collections("
    "Series(['F', 'M']), {'F': ['Mrs']})",
    "PersonModel.map_to_gender_keys": "model.map_to_gender_keys(Series(TITLES), {'F': '^mrs', 'M': '^mr$'})",
    "PersonModel.generate_random_first_name": "model.generate_random_first_name('F', 'GB')",
    "PersonModel.generate_random_first_name, gender X": "model.generate_random_first_name('X', 'GB')",
    # rows
    "PersonModel.sample": "model.sample(2)",
    "PersonModel.sample of locales": "person_model(NAMES).sample(2)",
    "PersonModel.sample of nothing": "model.sample()",
    "PersonModel.sample with a bad number": "model.sample(True)",
    "PersonModel._sample_conditional without countries": "model._sample_conditional(1, Series(['F']), None)",
}
