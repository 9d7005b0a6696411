# Every target sets up all that it needs, from nothing but Python 3.12 and a C++20 compiler.
# `make help` lists the targets, CONTRIBUTING.md says when to use which.
#
#   make PYTHON=/path/to/python3.12     where the search of tools/find-python is not what is wanted
#   make CXX=clang++                    the same for tools/find-compiler
#   make test PYTEST_ARGS="-n 0 -x"     more arguments for pytest: one process, for example
#   make fuzz FUZZ_EXAMPLES=1000        fewer examples than the 10,000 of each test otherwise
#   make leaks LEAK_CALLS=1000          a tenth of the calls that are made otherwise
#   make bench BENCH_ARGS="--rounds 9"  more arguments for the benchmarks

.DEFAULT_GOAL := help
.DELETE_ON_ERROR:
.SECONDEXPANSION:
.PRECIOUS: %/.dependencies %/.installed
.PHONY: help venv wheel demo demo-database lint test test-slow test-pandas2 test-noarrow test-lowest test-py313 \
    test-all fuzz leaks asan interrupts bench docs clean

# What a caller's own Python and pip are told to do is not meant for the environments made here.
unexport PYTHONHOME PYTHONPATH
unexport PIP_CONSTRAINT PIP_NO_DEPS PIP_PREFIX PIP_REQUIRE_HASHES PIP_ROOT PIP_TARGET PIP_USER

# Each environment is a folder with the list of packages that makes it what it is.
environments := .venv .venv-pandas2 .venv-noarrow .venv-lowest .venv-py313 .venv-bench .venv-asan .venv-lint .venv-docs
packages_.venv := requirements/pandas3-pyarrow.txt
packages_.venv-pandas2 := requirements/pandas2.txt
packages_.venv-noarrow := requirements/pandas3.txt
packages_.venv-lowest := requirements/lowest.txt
packages_.venv-py313 := requirements/py313.txt
packages_.venv-bench := requirements/bench.txt
packages_.venv-asan := requirements/pandas3-pyarrow.txt
packages_.venv-lint := requirements/lint.txt
packages_.venv-docs := requirements/docs.txt
# The Python that it is made with, where that is not the one that the module is built for.
version_.venv-py313 := 3.13

# What fixes the versions of an environment, where the usual list does not.
constraints_.venv-lowest := requirements/lowest.txt

# What `make lint` runs, the quickest first, and the files that it names to them.
linters := shellcheck ruff ruff-format clang-format stubtest mypy clang-tidy
.PHONY: $(linters)
cpp_files := $(shell find $(wildcard include model checks tests tools) -name '*.[ch]pp')
shell_scripts := $(shell grep -lE '^.!.*[/ ](ba|da)?sh$$' .ci/* tools/*)

# Folders stand beside their files so that a deleted file counts as a change, too.
extension_sources := pyproject.toml README.md CMakeLists.txt $(wildcard CMakePresets.json) \
    $(shell find include model cmake 2>/dev/null)
host_sources := host/pyproject.toml \
    $(shell find host/vantrel -name __pycache__ -prune -o -print 2>/dev/null)

LEAK_CALLS ?= 10000
FUZZ_EXAMPLES ?= 10000

pip := python -m pip --disable-pip-version-check --no-input -qq
pytest := bin/python -m pytest -n auto $(PYTEST_ARGS)
packages := lib/python3.12/site-packages
py313_packages := .venv-py313/lib/python3.13/site-packages

help:  ## list the targets
	@sed -n 's/^\([a-z0-9-]*\):.*## /make \1	/p' Makefile | expand -t 20

venv: .venv/.installed  ## set up .venv: build tools, test tools and both distributions

wheel: dist/.extension  ## build the wheel of the extension module into dist/
	@ls dist/vantrel_person-*.whl

demo: .venv/.installed  ## replace the people of a table, learn from two others, sample, compare
	@.venv/bin/python examples/demo.py

shop := sqlite:///build/demo/shop.db
planned := --plan examples/shop.toml --secret build/demo/people.secret
demo-database: .venv/.installed  ## replace the people of a small database: first for show, then in earnest
	@mkdir -p build/demo
	@.venv/bin/python examples/shop.py build/demo/shop.db
	@.venv/bin/vantrel replace $(shop) $(planned) --dry-run
	@.venv/bin/vantrel replace $(shop) $(planned)

# Each in a make of its own that goes on where one has failed.
lint:  ## check style and types of all that is written, and look for mistakes
	@$(MAKE) --no-print-directory --keep-going $(linters)

ruff: .venv-lint/.dependencies
	@echo "==> Checking Python with ruff"
	@.venv-lint/bin/ruff check

ruff-format: .venv-lint/.dependencies
	@echo "==> Checking the layout of Python with ruff format"
	@.venv-lint/bin/ruff format --check

mypy: .venv-lint/.installed
	@echo "==> Checking the types of Python with mypy"
	@.venv-lint/bin/mypy

stubtest: .venv-lint/.installed
	@echo "==> Comparing the module with its stub with stubtest"
	@.venv-lint/bin/python -m mypy.stubtest vantrel.model.models.person

clang-format: .venv-lint/.dependencies
	@echo "==> Checking the layout of C++ with clang-format"
	@.venv-lint/bin/clang-format --dry-run -Werror $(cpp_files)

clang-tidy: .venv-lint/.dependencies
	@echo "==> Checking C++ with clang-tidy"
	@tools/run-clang-tidy .venv-lint build/tidy

shellcheck: .venv-lint/.dependencies
	@echo "==> Checking the shell scripts with shellcheck"
	@.venv-lint/bin/shellcheck $(shell_scripts)

test: .venv/.installed  ## run the tests but the slow ones, with pandas 3 and pyarrow
	@echo "==> Testing with pandas 3 and pyarrow"
	@.venv/$(pytest) -m "not slow"

test-slow: .venv/.installed  ## run the slow tests, of databases, clusters, documents and ending processes
	@echo "==> Running slow tests with pandas 3 and pyarrow"
	@.venv/$(pytest) -m slow

test-pandas2: .venv-pandas2/.installed  ## run the tests with pandas 2.3
	@echo "==> Testing with pandas 2.3"
	@.venv-pandas2/$(pytest)

test-noarrow: .venv-noarrow/.installed  ## run the tests with pandas 3 but without pyarrow
	@echo "==> Testing with pandas 3 without pyarrow"
	@.venv-noarrow/$(pytest)

test-lowest: .venv-lowest/.installed  ## run the tests with the lowest versions that are allowed
	@echo "==> Testing with the lowest versions"
	@.venv-lowest/$(pytest)

test-py313: .venv-py313/.installed  ## run the tests of the module with Python 3.13
	@echo "==> Testing the module with Python 3.13"
	@.venv-py313/$(pytest) tests/person tests/isolated

py313_if_found = $(if $(shell tools/find-python 3.13),test-py313,$(info ==> Not testing with Python 3.13))
test-all: test test-slow test-pandas2 test-noarrow test-lowest $$(py313_if_found)  ## run the tests in all environments

fuzz: .venv/.installed  ## call everything with whatever Hypothesis makes up: a result or a clear refusal?
	@echo "==> Fuzzing with $(FUZZ_EXAMPLES) examples a test"
	@FUZZ_EXAMPLES=$(FUZZ_EXAMPLES) .venv/$(pytest) tests/fuzz

leaks: .venv/.installed  ## make each call of the module again and again: does it lose memory?
	@PYTHONPATH=tests .venv/bin/python -m checks.leaks --calls $(LEAK_CALLS)

asan: .venv-asan/.sanitized  ## run the tests under the address and undefined behaviour sanitizers
	@echo "==> Testing with sanitizers"
	@CXX=$$(tools/find-compiler) tools/sanitized .venv-asan/$(packages)/vantrel/model/models/person.*.so \
	    .venv-asan/$(pytest)

interrupts: .venv/.installed  ## interrupt long calls: how soon does Ctrl-C end them?
	@.venv/bin/python -m checks.interrupts

bench: .venv-bench/.installed .venv-noarrow/.installed .venv-pandas2/.installed  ## measure speed and memory, write benchmarks/RESULTS.md
	@.venv-bench/bin/python -m benchmarks $(BENCH_ARGS)

docs: .venv-docs/.installed  ## make the site of all documents in build/site/, with every link checked
	@echo "==> Making the site"
	@PATH=".venv-docs/bin:$$PATH" NO_MKDOCS_2_WARNING=1 .venv-docs/bin/mkdocs --quiet build

clean:  ## remove everything that make made, environments included
	rm -rf build dist $(environments) .pytest_cache .hypothesis .mypy_cache .ruff_cache

# An environment is made anew when its list changes, so that it never holds a package too many. The
# compiler is looked for here as well: better to hear that it is missing before the long part.
%/.dependencies: $$(packages_$$*) requirements/constraints.txt requirements/build.txt requirements/test.txt
	@python=$$(tools/find-python $(version_$*)) && tools/find-compiler >/dev/null && \
	echo "Making $* with $$python and $<" && \
	rm -rf $* && "$$python" -m venv $* && $*/bin/$(pip) install -r $<
	@touch $@

# The wheel goes into the environments as it is: no editable installs, since the two distributions
# share the folder vantrel/ of site-packages.
dist/.extension: .venv/.dependencies $(extension_sources)
	@echo "Building the extension module"
	@rm -f dist/vantrel_person-*.whl
	@CXX=$$(tools/find-compiler) && export CXX && \
	.venv/bin/$(pip) wheel --no-build-isolation --no-deps --wheel-dir dist .
	@touch $@

dist/.host: .venv/.dependencies $(host_sources)
	@echo "Building the host package"
	@rm -f dist/vantrel-*.whl
	@.venv/bin/$(pip) wheel --no-build-isolation --no-deps --wheel-dir dist ./host
	@touch $@

# The library of the wheel gives way to one of the same sources.
.venv-asan/.sanitized: .venv-asan/.installed
	@echo "Building the extension module with sanitizers"
	@CXX=$$(tools/find-compiler) && export CXX && PATH="$(CURDIR)/.venv/bin:$$PATH" && \
	cmake --preset asan -DPython_EXECUTABLE="$(CURDIR)/.venv/bin/python" >/dev/null && \
	cmake --build --preset asan && \
	cmake --install build/asan --prefix .venv-asan/$(packages) >/dev/null
	@touch $@

# No other Python takes the wheel of the library, nor finds the library by a name that tells its version.
.venv-py313/.installed: .venv-py313/.dependencies dist/.extension dist/.host
	@echo "Installing both distributions into .venv-py313"
	@.venv-py313/bin/$(pip) install --no-deps --force-reinstall dist/vantrel-*.whl
	@.venv-py313/bin/python -m zipfile -e dist/vantrel_person-*.whl $(py313_packages)
	@cd $(py313_packages)/vantrel/model/models && mv person.cpython-*.so person.so
	@touch $@

# First the two wheels by force, for their version does not tell that they changed; then what they need.
%/.installed: %/.dependencies dist/.extension dist/.host
	@echo "Installing both distributions into $*"
	@$*/bin/$(pip) install --no-deps --force-reinstall dist/*.whl
	@$*/bin/$(pip) install -c $(or $(constraints_$*),requirements/constraints.txt) dist/*.whl
	@$*/bin/$(pip) check
	@touch $@
