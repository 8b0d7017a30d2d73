# Every target sets itself up: scripts/bootstrap.sh installs the Debian
# packages and builds log4cplus (and GoogleTest for mingw) on first use.
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CTEST_ARGS ?=

.PHONY: all deps deps-linux demo fuzz fuzz-build test test-native test-asan test-tsan test-windows test-fuzz test-package test-package-native test-package-mingw windows bench format clean

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

test: test-native test-asan test-tsan test-windows test-package test-fuzz

# The suites whose outcome depends on how threads interleave run again under
# load: four processes per core at once, each test 50 times over (about half
# a minute). A test that fails once there is a broken test. The clock's stall
# test is left out: it waits out its limit in wall time by design.
TIMING_SUITES = VirtualClockTest|ErrorStatus|SimPorts|SimWiFiDirect|WifiDriver|LegacyAP|SoftAPManager|HotspotScenario|BluetoothTest|SimBluetooth|EnableBluetooth|EnableWifi|RadioSearch|Setradio|FallbackTest|RadioObserver|SetBTName|WifiService|WifiWorld|WifiState|SimBle|SimHci|SimRealtek|BleScanner|BleAdvertiser
TIMING_JOBS ?= $(shell echo $$(( 4 * $(JOBS) )))
TIMING_REPEAT ?= 50

# The capture check decodes with tshark, which the bootstrap installs.
test-native: build/native/build.ninja
	command -v tshark >/dev/null || scripts/bootstrap.sh linux
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

# The installable package: each lane's build installs into build/package/<lane>
# and the example host builds against that alone, then runs (under Wine for
# Windows).
WINE_ENV = WINEPREFIX=$(CURDIR)/build/mingw/wineprefix WINEDEBUG=-all WINEDLLOVERRIDES=mscoree,mshtml=

test-package: test-package-native test-package-mingw

test-package-native: build/native/build.ninja
	cmake --build --preset native -j $(JOBS) --target connectkit
	cmake --install build/native --prefix build/package/native >/dev/null
	cmake -S examples/host -B build/example/native -G Ninja \
	  -DCMAKE_PREFIX_PATH=$(CURDIR)/build/package/native >/dev/null
	cmake --build build/example/native
	build/example/native/connectkit_example_host

test-package-mingw: windows
	cmake --install build/mingw --prefix build/package/mingw >/dev/null
	cmake -S examples/host -B build/example/mingw -G Ninja \
	  -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/mingw-w64-x86_64.cmake \
	  -Dconnectkit_DIR=$(CURDIR)/build/package/mingw/lib/cmake/connectkit >/dev/null
	cmake --build build/example/mingw
	$(WINE_ENV) wine build/example/mingw/connectkit_example_host.exe

bench: build/native/build.ninja
	cmake --build --preset native -j $(JOBS) --target connectkit_bench
	build/native/bench/connectkit_bench

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build/native build/asan build/tsan build/mingw build/package build/example build/fuzz

# One fuzzer per kind of untrusted input. The seeds in fuzz/corpus stay as
# committed: a run reads them and writes what it finds under build/fuzz.
FUZZERS = scenario adapter_list driver_channels registry_text manifest profile ble_scan ble_payload
FUZZ_SECONDS ?= 60

fuzz-build: deps-linux
	CXX=clang++ CC=clang cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DCONNECTKIT_DEPS_DIR=$(CURDIR)/build/deps/linux -DCONNECTKIT_FUZZ=ON >/dev/null
	cmake --build build/fuzz -j $(JOBS) --target $(addprefix fuzz_,$(FUZZERS))

fuzz: fuzz-build
	@for name in $(FUZZERS); do \
	  echo "== fuzz_$$name: $(FUZZ_SECONDS) s"; \
	  mkdir -p build/fuzz/corpus/$$name build/fuzz/artifacts || exit 1; \
	  build/fuzz/fuzz/fuzz_$$name -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 \
	    -artifact_prefix=build/fuzz/artifacts/$$name- \
	    build/fuzz/corpus/$$name fuzz/corpus/$$name 2>build/fuzz/$$name.log \
	    || { tail -n 60 build/fuzz/$$name.log; exit 1; }; \
	  grep -E '^(stat::number_of_executed_units|#[0-9]+ *DONE)' build/fuzz/$$name.log; \
	done

# A short run of every fuzzer, as part of `make test`.
test-fuzz:
	$(MAKE) fuzz FUZZ_SECONDS=10
