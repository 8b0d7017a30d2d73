# Every target sets itself up: scripts/bootstrap.sh installs the Debian
# packages and builds log4cplus (and GoogleTest for mingw) on first use.
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CTEST_ARGS ?=

.PHONY: all deps deps-linux demo fuzz test test-native test-asan test-tsan test-windows windows bench format clean

all: demo

deps:
	scripts/bootstrap.sh linux mingw

deps-linux:
	scripts/bootstrap.sh linux

build/native/build.ninja: deps-linux
	cmake --preset native >/dev/null

demo: build/native/build.ninja
	cmake --build --preset native -j $(JOBS) --target connectkit_cli
	scripts/demo.sh build/native/connectkit

test: test-native test-asan test-tsan test-windows

# The suites whose outcome depends on how threads interleave run again under
# load: four processes per core at once, each test 50 times over (about half
# a minute). A test that fails once there is a broken test. The clock's stall
# test is left out: it waits out its limit in wall time by design.
TIMING_SUITES = VirtualClockTest|ErrorStatus|SimPorts|SimWiFiDirect|WifiDriver|LegacyAP|SoftAPManager|HotspotScenario
TIMING_JOBS ?= $(shell echo $$(( 4 * $(JOBS) )))
TIMING_REPEAT ?= 50

test-native: build/native/build.ninja
	cmake --build --preset native -j $(JOBS)
	ctest --preset native $(CTEST_ARGS)
	ctest --preset native -R '$(TIMING_SUITES)' -j $(TIMING_JOBS) --repeat until-fail:$(TIMING_REPEAT) $(CTEST_ARGS)

test-asan: deps-linux
	cmake --preset asan >/dev/null
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan $(CTEST_ARGS)

test-tsan: deps-linux
	cmake --preset tsan >/dev/null
	cmake --build --preset tsan -j $(JOBS)
	ctest --preset tsan $(CTEST_ARGS)

windows: deps
	cmake --preset mingw >/dev/null
	cmake --build --preset mingw -j $(JOBS)

test-windows: windows
	ctest --preset mingw $(CTEST_ARGS)

bench: build/native/build.ninja
	cmake --build --preset native -j $(JOBS) --target connectkit_bench
	build/native/bench/connectkit_bench

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build/native build/asan build/tsan build/mingw

fuzz: deps-linux
	CXX=clang++ CC=clang cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DCONNECTKIT_DEPS_DIR=$(CURDIR)/build/deps/linux -DCONNECTKIT_FUZZ=ON >/dev/null
	cmake --build build/fuzz -j $(JOBS) --target fuzz_scenario
	build/fuzz/fuzz/fuzz_scenario -max_total_time=30 examples/worlds
