"""Processes that are started by one that samples."""

from pathlib import Path

import pytest

from support.isolated import output_of

PRELUDE = f"""
    import multiprocessing, sys, threading, warnings
    sys.path.insert(0, {str(Path(__file__).parents[1])!r})
    # Forking amid threads is what is tested here.
    warnings.filterwarnings("ignore", "This process .* is multi-threaded", DeprecationWarning)
    from support import processes
"""


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_child_samples_the_rows_of_its_parent(method: str) -> None:
    code = f"""
    if __name__ == "__main__":
        expected = processes.sample(5)
        with multiprocessing.get_context({method!r}).Pool(1) as pool:
            answers = pool.map(processes.sample, [5, 6, 5])
        print([answer == expected for answer in [*answers, processes.sample(5)]])
    """
    assert output_of(PRELUDE + code) == "[True, False, True, True]"


def test_child_of_a_parent_that_has_not_sampled_yet_samples() -> None:
    assert output_of(PRELUDE + "    print(processes.forked_sample_ends())") == "True"


@pytest.mark.parametrize("function", ["processes.MODEL.sample", "sample"])
def test_child_of_a_parent_whose_other_thread_is_sampling_samples(function: str) -> None:
    code = f"""
    from functools import partial
    import vantrel
    sample = partial(vantrel.sample, processes.MODEL)
    over = threading.Event()

    def sample_until_over():
        while not over.is_set():
            {function}(200_000)

    thread = threading.Thread(target=sample_until_over)
    thread.start()
    print({{processes.forked_ends(partial({function}, 100)) for _ in range(20)}})
    over.set()
    thread.join()
    """
    assert output_of(PRELUDE + code) == "{True}"


# What the rows are drawn from that show what pandas makes of a column is the library's own.
REHEARSED = """next(
        each for each in gc.get_objects()
        if isinstance(each, numpy.random.RandomState) and each is not numpy.random.mtrand._rand
    )._bit_generator"""


@pytest.mark.parametrize(
    "bits",
    [
        "processes.MODEL.hidden_model_gender._rng.bit_generator",
        "numpy.random.get_bit_generator()",
        REHEARSED,
    ],
)
def test_child_of_a_parent_whose_other_thread_is_drawing_draws(bits: str) -> None:
    code = f"""
    import gc, numpy, pandas
    processes.MODEL.sample(100)
    pandas.Series.noted = len  # a change: what pandas makes of a column is looked at anew
    with processes.held_by_another_thread({bits}.lock):
        print(processes.forked_ends(lambda: processes.MODEL.sample(100)))
    """
    assert output_of(PRELUDE + code) == "True"


def test_child_of_a_parent_that_reads_a_model_reads_it() -> None:
    code = """
    from vantrel import scale
    from vantrel.scale import partitions
    from vantrel.sampling import Plan
    part, = partitions.partitions(processes.MODEL, Plan(3, 7))
    with processes.held_by_another_thread(partitions._building):
        print(processes.forked_ends(lambda: list(partitions.make_blocks(part))))
    """
    assert output_of(PRELUDE + code) == "True"


def test_folder_is_free_though_a_child_of_its_owner_lives() -> None:
    code = """
    import os, pathlib, signal
    from vantrel.storage.files import owned
    folder = pathlib.Path()
    with owned(folder):
        child = os.fork()
        if child == 0:
            signal.pause()
    with owned(folder) as free:
        print(free)
    os.kill(child, signal.SIGKILL)
    os.waitpid(child, 0)
    """
    assert output_of(PRELUDE + code) == "True"


def test_a_signal_handler_samples_amid_a_sample() -> None:
    code = """
    import signal, vantrel
    expected = [vantrel.sample(processes.MODEL, rows, seed=7) for rows in (5, 150_000)]
    handled = []

    def handle(*_):
        handled.append(vantrel.sample(processes.MODEL, 5, seed=7).equals(expected[0]))
        if len(handled) < 3:
            signal.setitimer(signal.ITIMER_REAL, 0.01)

    signal.signal(signal.SIGALRM, handle)
    signal.setitimer(signal.ITIMER_REAL, 0.01)
    same = vantrel.sample(processes.MODEL, 150_000, seed=7).equals(expected[1])
    signal.setitimer(signal.ITIMER_REAL, 0)
    print(same, all(handled), len(handled) > 0)
    """
    assert output_of(PRELUDE + code) == "True True True"
