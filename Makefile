# Wraps the CMake build. `make demo` and `make test` are all that a fresh Debian machine needs.
JOBS ?= $(shell nproc)
N ?= 100
SEED ?= 1
RELEASE := build/release
CHECKED := build/checked

.PHONY: all demo test fuzz exhaustive bench release checked setup format clean

all: release

setup:
	@scripts/setup

release: setup
	@cmake --preset release >/dev/null
	@cmake --build $(RELEASE) -j $(JOBS)

checked: setup
	@cmake --preset checked >/dev/null
	@cmake --build $(CHECKED) -j $(JOBS)

demo: release
	@scripts/demo $(RELEASE)/bin

test: release checked
	ctest --test-dir $(CHECKED) -j $(JOBS) --output-on-failure
	tests/exec/run.py --bin $(RELEASE)/bin --jobs $(JOBS) --modes all
	tests/exec/run.py --bin $(CHECKED)/bin --jobs $(JOBS) --modes quick
	tests/exec/run.py --bin $(RELEASE)/bin --jobs $(JOBS) --passes 2

# Random programs: make fuzz N=300 SEED=1
fuzz: release
	tests/fuzz/fuzz.py $(N) --start $(SEED) --bin $(RELEASE)/bin --jobs $(JOBS)

# All trees of two operators through the simplifier, before and after.
exhaustive: release
	seq 0 $$(($(JOBS) - 1)) | xargs -P $(JOBS) -I{} \
	  $(RELEASE)/bin/exhaustive_test --slice $(JOBS) --part {}

# Speed and memory of the tools, then the work that programs execute at each level.
bench: release
	bench/run $(RELEASE)/bin
	bench/executed $(RELEASE)/bin --jobs $(JOBS)

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf build
