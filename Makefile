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
# AddressSanitizer and UndefinedBehaviorSanitizer; the work that runs on threads (the scanner,
# the listener, the history store, the task queue and the daily scans) under ThreadSanitizer.
ASAN_TESTS ?= -*WholeSystemScan*:ScanAtScale*
TSAN_TESTS ?= FileScanner*:ScanCoordinator*:AdaptiveWorkers*:PreviewMaker*:AgentListener*:LineConnection*:AgentChannel*:HistoryStore*:HistoryPlaces*:DailyScans*:DiskSnapshot*:CommandLineE2E*
sanitize:
	@cmake -S . -B build-asan -DTARNWICK_SANITIZE=address,undefined $(CMAKE_FLAGS) >/dev/null
	@cmake --build build-asan -j$(JOBS) --target tarnwick_tests
	cd build-asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1 \
	  ./tarnwick_tests --gtest_brief=1 --gtest_filter='$(ASAN_TESTS)'
	@cmake -S . -B build-tsan -DTARNWICK_SANITIZE=thread $(CMAKE_FLAGS) >/dev/null
	@cmake --build build-tsan -j$(JOBS) --target tarnwick_tests
	cd build-tsan && TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
	  ./tarnwick_tests --gtest_brief=1 --gtest_filter='$(TSAN_TESTS)'

# build/tarnwick_VERSION_ARCH.deb
package: build
	cd $(BUILD) && cpack -G DEB

bench: build
	bash bench/run.sh $(BUILD)

# The window rendered offscreen on a generated demo home folder, into docs/screenshots. The
# picture of a running scan needs a folder large enough to catch it filling in: the
# benchmarks' tree of 1,000,000 entries when it is there.
SCREENSHOT_SCAN ?= $(wildcard $(or $(TARNWICK_BENCH_DIR),/var/tmp/tarnwick-bench)/tree-1m)
screenshots: build
	QT_QPA_PLATFORM=offscreen ./$(BUILD)/tarnwick_screenshots docs/screenshots $(BUILD)/screenshot-demo $(SCREENSHOT_SCAN)
	@rm -rf $(BUILD)/screenshot-demo $(BUILD)/screenshot-demo.complete

clean:
	rm -rf $(BUILD)
