# The two set-up commands of the README: `make run` and `make test`.
BUILD      ?= build
BUILD_TYPE ?= RelWithDebInfo
CMAKE_ARGS ?=
JOBS       ?= 2
CTEST_ARGS ?=
BUILD_ARM  ?= build-arm

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

# The 32-bit ARM (armhf) build: cross-compiled against a sysroot of Debian's armhf packages,
# every test run under qemu-arm.
.PHONY: build-arm test-arm package-arm
build-arm:
	@bash scripts/install-deps.sh arm
	@sysroot=$$(bash scripts/arm-sysroot.sh --print) && \
	  cmake -S . -B $(BUILD_ARM) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) \
	    -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/armhf-toolchain.cmake -DIRC_ARM_SYSROOT=$$sysroot \
	    $(CMAKE_ARGS) >/dev/null
	@cmake --build $(BUILD_ARM) -j $(JOBS)

test-arm: build-arm
	@cd $(BUILD_ARM) && ctest --output-on-failure -j $(JOBS) $(CTEST_ARGS)

package-arm: build-arm
	@bash scripts/package-plugin.sh $(BUILD_ARM) arm-linux-gnueabihf-

clean:
	rm -rf $(BUILD) build-*
