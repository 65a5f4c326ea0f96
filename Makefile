# The two commands a newcomer needs: `make run` and `make test`.
BUILD_DIR ?= build
TEST_DIR ?= build-sanitize
FUZZ_DIR ?= build-fuzz
WINDOWS_DIR ?= build-windows
FUZZ_SECONDS ?= 30
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all deps build run test windows package fuzz screenshots bench-scan bench-copy bench-undo bench-ini bench-confirm clean

all: build

deps:
	@scripts/install-deps.sh

build: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	@scripts/run-demo.sh $(BUILD_DIR)

# Tests run under AddressSanitizer and UndefinedBehaviorSanitizer, then a
# short run of every fuzz target.
test: deps
	cmake -S . -B $(TEST_DIR) -DCMAKE_BUILD_TYPE=Debug -DPAIRWELL_SANITIZE=ON
	cmake --build $(TEST_DIR) -j $(JOBS)
	cd $(TEST_DIR) && ctest --output-on-failure -j $(JOBS)
	@scripts/fuzz.sh $(FUZZ_DIR) $(FUZZ_SECONDS)
	@JOBS=$(JOBS) scripts/windows.sh $(WINDOWS_DIR)

# pairwell-cli.exe and the core tests for 64-bit Windows, cross-built with
# MinGW-w64 into $(WINDOWS_DIR) and run under Wine; the zip goes to
# $(WINDOWS_DIR)/packages.
windows: deps
	@JOBS=$(JOBS) scripts/windows.sh $(WINDOWS_DIR)

# The Debian package, in $(BUILD_DIR)/packages, checked with lintian (which
# fails on an error).
package:
	@scripts/install-deps.sh --package
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j $(JOBS)
	cd $(BUILD_DIR) && cpack
	lintian --fail-on error $(BUILD_DIR)/packages/pairwell_*.deb

# Every fuzz target for FUZZ_SECONDS (make fuzz FUZZ_SECONDS=600 for a long
# run), built with clang into $(FUZZ_DIR).
fuzz: deps
	@scripts/fuzz.sh $(FUZZ_DIR) $(FUZZ_SECONDS)

# Every window as a PNG in $(BUILD_DIR)/screenshots, rendered under Xvfb.
screenshots: build
	@scripts/screenshots.sh $(BUILD_DIR)

# Scan speed against rsync and a plain find walk (not part of the tests);
# make bench-scan FILES=1000000 for a million files a side.
FILES ?= 100000
bench-scan: build
	FILES=$(FILES) bench/scan/run.sh $(BUILD_DIR)

# Copy speed of a first sync against cp -a + sync and rsync -a. RUNS,
# WORKLOADS ("small files large") and PAIRWELL_COPY_THREADS pass through.
bench-copy: build
	bench/copy/run.sh $(BUILD_DIR)

# What keeping the replaced and deleted copies costs a run (VersionDays=0
# against the default), and an undo against the run it puts back. RUNS and
# WORKLOADS ("replace delete undo") pass through.
bench-undo: build
	bench/undo/run.sh $(BUILD_DIR)

# Loading a configuration of 10,000 and 100,000 sets (linear growth).
bench-ini: build
	bench/ini/run.sh $(BUILD_DIR)

# The confirm window's speed on a run of 100,000 files: opening, switching
# the show mode, applying an action to every file, sorting.
bench-confirm: deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=Release
	cmake --build $(BUILD_DIR) -j $(JOBS) --target pairwell_bench_confirm
	QT_QPA_PLATFORM=offscreen $(BUILD_DIR)/bench/confirm/pairwell_bench_confirm

clean:
	rm -rf $(BUILD_DIR) $(TEST_DIR) $(FUZZ_DIR) $(WINDOWS_DIR)
