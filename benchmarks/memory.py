"""Measures the memory that sampling needs, in a process of its own.

Run as ``python -m benchmarks.memory ROWS`` it prints two numbers of bytes as JSON. The kernel's
/proc tells them, so it works on Linux only.
"""

from __future__ import annotations

import json
import subprocess
import sys
from dataclasses import asdict, dataclass
from pathlib import Path

from vantrel.sampling.seeding import seed_everything

from .people import fitted_model
from .plain_way import SEED

ROOT = Path(__file__).resolve().parent.parent
STATUS = Path("/proc/self/status")


@dataclass(frozen=True)
class Memory:
    """What one sample needed, in bytes.

    Attributes:
        peak: The most that the process held at one time beyond what it held before sampling.
        frame: The size of the finished frame, its texts included.
    """

    peak: int
    frame: int


def in_new_process(rows: int) -> Memory:
    """Measures one sample of so many rows in a process that has sampled nothing before."""
    command = [sys.executable, "-m", "benchmarks.memory", str(rows)]
    done = subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.PIPE)
    return Memory(**json.loads(done.stdout))


def sampling(rows: int) -> Memory:
    """Measures one sample of so many rows in this process."""
    model = fitted_model()
    seed_everything(model, SEED)
    before = resident("VmRSS")
    frame = model.sample(rows)
    # The highest mark of this program alone; getrusage would count the one that started it, too.
    peak = resident("VmHWM") - before
    return Memory(peak, int(frame.memory_usage(deep=True).sum()))


def resident(field: str) -> int:
    """Reads a number of resident bytes from the kernel."""
    for line in STATUS.read_text().splitlines():
        if line.startswith(f"{field}:"):
            return int(line.split()[1]) * 1024
    raise RuntimeError(f"{STATUS} has no field {field}: memory cannot be measured here.")


if __name__ == "__main__":
    print(json.dumps(asdict(sampling(int(sys.argv[1])))))
