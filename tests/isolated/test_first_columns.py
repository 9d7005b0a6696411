"""The first columns that a process makes, when the module has yet to learn what Faker's code is like."""

from pathlib import Path

from support.isolated import output_of


def test_thread_that_comes_while_another_one_is_learning() -> None:
    """The other one is stopped in the Python code that the module runs for it."""
    code = f"""
    import faulthandler, sys, threading, time
    sys.path.insert(0, {str(Path(__file__).parents[1])!r})
    from support.whole_columns import countries, model_with, names, new_fakers
    faulthandler.dump_traceback_later(50, exit=True)

    def make():
        made.append(len(model.generate_last_names(names(20), places)))

    def stop_in_a_module_body(frame, event, argument):
        if frame.f_code.co_name == "<module>" and not made:
            second.start()
            while not made:
                time.sleep(0.001)

    def make_and_stop():
        sys.setprofile(stop_in_a_module_body)
        make()

    model = model_with(new_fakers())
    places, made = countries(model, 20), []
    first, second = threading.Thread(target=make_and_stop), threading.Thread(target=make)
    first.start()
    first.join()
    second.join()
    print(made)
    """
    assert output_of(code) == "[20, 20]"
