# The two commands of the quick start, and a few helpers around CMake.
#   make demo    set up, build, install into build/stage, run the examples
#   make test    set up, then the whole suite: plain, and under ASan + UBSan
#   make bench   set up, build with optimisation, run every benchmark
#                (BENCH=SString runs one program, BENCH_ARGS passes options)
#   make fuzz    set up, build the libFuzzer targets with clang and run each
#                for FUZZ_SECONDS (FUZZ=Name runs one)
#   make install PREFIX=/some/where

MAKEFLAGS += --no-print-directory

PREFIX ?= /usr/local
BENCH  ?= *
FUZZ_SECONDS ?= 60
FUZZ   ?=
JOBS   ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE  ?= cmake
STAGE  := $(CURDIR)/build/stage

.PHONY: all setup setup-test build demo test test-plain test-asan bench fuzz fuzz-build install clean

all: build

# Each target installs the Debian packages of its own group only.
setup:
	@scripts/setup-debian.sh build

build: setup
	@$(CMAKE) -S . -B build/release -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTARNWICK_TESTS=OFF >/dev/null
	@$(CMAKE) --build build/release -j $(JOBS)

install: build
	$(CMAKE) --install build/release --prefix $(PREFIX)

demo: build
	@scripts/setup-debian.sh demo
	@$(CMAKE) --install build/release --prefix $(STAGE) >/dev/null
	@scripts/demo.sh $(STAGE)

test: setup-test test-plain test-asan

setup-test:
	@scripts/setup-debian.sh test

test-plain:
	@$(CMAKE) -S . -B build/plain -DCMAKE_BUILD_TYPE=Debug >/dev/null
	@$(CMAKE) --build build/plain -j $(JOBS)
	cd build/plain && ctest --output-on-failure -j $(JOBS)

test-asan:
	@$(CMAKE) -S . -B build/asan -DCMAKE_BUILD_TYPE=Debug -DTARNWICK_SANITIZE=ON >/dev/null
	@$(CMAKE) --build build/asan -j $(JOBS)
	cd build/asan && ctest --output-on-failure -j $(JOBS)

bench:
	@scripts/setup-debian.sh bench
	@$(CMAKE) -S . -B build/bench -DCMAKE_BUILD_TYPE=Release -DTARNWICK_TESTS=OFF -DTARNWICK_BENCH=ON >/dev/null
	@$(CMAKE) --build build/bench -j $(JOBS)
	@set -e; for b in build/bench/bench/$(BENCH)_bench; do echo "== $$b"; $$b $(BENCH_ARGS); done

fuzz: fuzz-build
	@scripts/fuzz.sh build/fuzz/fuzz $(FUZZ_SECONDS) $(FUZZ)

fuzz-build:
	@scripts/setup-debian.sh fuzz
	@$(CMAKE) -S . -B build/fuzz -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DTARNWICK_TESTS=OFF -DTARNWICK_FUZZ=ON >/dev/null
	@$(CMAKE) --build build/fuzz -j $(JOBS)

clean:
	rm -rf build
