"""How programs begin whose import of the module fails, and what a traceback says of the place."""

ENTRY = [r"vantrel\model\models\person", "init vantrel.model.models.person"]

# Says what the import raises, where, and whether anything of the module is left.
PRELUDE = """
    import builtins, importlib, importlib.util, json, sys, traceback
    NAME = "vantrel.model.models.person"
    FILE = r"vantrel\\model\\models\\person"

    def report(error):
        models = sys.modules.get("vantrel.model.models")
        return {
            "type": type(error).__name__,
            "text": str(error),
            "name": getattr(error, "name", None),
            "entries": [
                [frame.f_code.co_filename, frame.f_code.co_name, line]
                for frame, line in traceback.walk_tb(error.__traceback__)
                if frame.f_code.co_filename == FILE
            ],
            "left": NAME in sys.modules or hasattr(models, "person"),
        }

    def failure():
        try:
            importlib.import_module(NAME)
        except BaseException as error:
            return report(error)

    def works():
        person = importlib.import_module(NAME)
        return person.all_supported_locales() == ["person"] and person.__test__ == {}
"""
