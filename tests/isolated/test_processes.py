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


def test_child_of_a_parent_whose_other_thread_is_sampling_samples() -> None:
    code = """
    over = threading.Event()

    def sample_until_over():
        while not over.is_set():
            processes.MODEL.sample(200_000)

    thread = threading.Thread(target=sample_until_over)
    thread.start()
    print({processes.forked_sample_ends() for _ in range(5)})
    over.set()
    thread.join()
    """
    assert output_of(PRELUDE + code) == "{True}"
