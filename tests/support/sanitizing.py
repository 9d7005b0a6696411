"""Whether the tests run under the address sanitizer, as `make asan` runs them."""

import os

SANITIZED = "asan" in os.environ.get("LD_PRELOAD", "")
