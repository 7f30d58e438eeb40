# The two set-up commands of the README: `make run` and `make test`.
BUILD      ?= build
BUILD_TYPE ?= RelWithDebInfo
CMAKE_ARGS ?=
JOBS       ?= 2
CTEST_ARGS ?=

.PHONY: all deps configure build run test bench fuzz clean web

all: build

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_ARGS) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	@$(BUILD)/bin/ircontrol-host demo

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS) $(CTEST_ARGS)

web: build
	@$(BUILD)/bin/ircontrol-host web $(WEB_ARGS)

bench: build
	@$(BUILD)/bin/ircontrol-bench --benchmark_out=$(BUILD)/bench-results.json --benchmark_out_format=json

fuzz: deps
	@bash scripts/fuzz.sh long

clean:
	rm -rf $(BUILD) build-*
