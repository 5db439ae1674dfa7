# Tarnwick: the two commands a new user runs are `make run` and `make test`.
BUILD ?= build
MAKEFLAGS += --no-print-directory
JOBS ?= 2
CMAKE_FLAGS ?=

.PHONY: all deps configure build run test bench clean

all: build

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j$(JOBS)

run: build
	bash scripts/run.sh ./$(BUILD)/tarnwick

test: build
	cd $(BUILD) && ctest --output-on-failure -j$(JOBS) --timeout 600

bench: build
	bash bench/run.sh $(BUILD)

clean:
	rm -rf $(BUILD)
