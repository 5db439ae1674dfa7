# Tarnwick: the two commands a new user runs are `make run` and `make test`.
BUILD ?= build
MAKEFLAGS += --no-print-directory
JOBS ?= 2
CMAKE_FLAGS ?=

.PHONY: all deps configure build run test sanitize package bench screenshots clean

all: build

deps:
	@bash scripts/install-deps.sh

# `make` only builds; run and test first install what is missing.
configure:
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j$(JOBS)

run: deps
	@$(MAKE) build
	bash scripts/run.sh ./$(BUILD)/tarnwick

test: deps
	@$(MAKE) build
	cd $(BUILD) && ctest --output-on-failure -j$(JOBS) --timeout 600
	@$(MAKE) sanitize

# The tests again in builds that check themselves: the core and the command line under
# AddressSanitizer and UndefinedBehaviorSanitizer (without the two scans of the whole system,
# which take minutes there); under ThreadSanitizer, the tests of the work that runs on threads,
# which is all that build compiles (see CMakeLists.txt). Neither runs the month under faked
# dates: libfaketime is preloaded, and a sanitizer's runtime must come first.
ASAN_TESTS ?= -WholeSystemScan*:ScanAtScale*:*UnderFakedDates*
TSAN_TESTS ?= -*UnderFakedDates*
sanitize:
	@bash scripts/sanitizer-tests.sh address,undefined build-asan '$(ASAN_TESTS)'
	@bash scripts/sanitizer-tests.sh thread build-tsan '$(TSAN_TESTS)'

# build/tarnwick_VERSION_ARCH.deb
package: build
	cd $(BUILD) && cpack -G DEB

bench: build
	bash bench/run.sh $(BUILD)

# The window rendered offscreen on a generated demo home folder shown at /home/alex, into
# docs/screenshots (see scripts/screenshots.sh). The picture of a running scan needs a folder
# large enough to catch it filling in: the benchmarks' tree of 1,000,000 entries when it is there.
SCREENSHOT_SCAN ?= $(wildcard $(or $(TARNWICK_BENCH_DIR),/var/tmp/tarnwick-bench)/tree-1m)
screenshots: build
	bash scripts/screenshots.sh $(BUILD) docs/screenshots $(SCREENSHOT_SCAN)

clean:
	rm -rf $(BUILD)
