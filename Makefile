# SPDX-License-Identifier: MIT
# Front door for the build; every target first installs the packages it needs that are missing.
GEN      := -G Ninja
# Our own builds treat warnings as errors; consumers of the library do not get -Werror.
OWN      := -DKX_WERROR=ON
RELEASE  := build/release
LINUX    := build/linux
WIN64    := build/win64
WIN32    := build/win32
BENCH    := build/bench
TSAN     := build/tsan
FUZZ     := build/fuzz
FUZZ_SECONDS ?= 60
PREFIX   ?= /usr/local
DEPS     := scripts/install-deps.sh

.PHONY: all release run install consumer test test-linux test-windows test-tsan build-win32 bench \
        fuzz fuzz-smoke fuzz-build format format-check clean

# The Linux library and tools in Release, with only the Linux build dependencies.
all: release

release:
	@$(DEPS) build
	cmake -S . -B $(RELEASE) $(GEN) -DCMAKE_BUILD_TYPE=Release $(OWN) -DKX_BUILD_TESTS=OFF
	cmake --build $(RELEASE)

# Installs the Release library, its headers, the CMake package and kxcommon.pc under PREFIX.
install: release
	cmake --install $(RELEASE) --prefix $(PREFIX)

# Builds tests/consumer against installed kxcommon packages (shared, static), as a user would.
consumer: release
	scripts/check-consumer.sh $(RELEASE)

# The logging example: a logger tree from examples/logdemo.ini, several threads, real files.
run: release
	rm -rf $(RELEASE)/demo && mkdir -p $(RELEASE)/demo
	cd $(RELEASE)/demo && ../bin/LogDemo ../bin/logdemo.ini

test: test-linux test-windows test-tsan

test-linux:
	@$(DEPS) build test
	cmake -S . -B $(LINUX) $(GEN) -DCMAKE_BUILD_TYPE=Debug $(OWN) -DKX_SANITIZE=ON
	cmake --build $(LINUX)
	ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  scripts/run-tests.sh $(LINUX) linux-x86_64

test-windows:
	@$(DEPS) build test windows
	cmake -S . -B $(WIN64) $(GEN) -DCMAKE_BUILD_TYPE=Debug $(OWN) \
	  -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-x86_64.cmake
	cmake --build $(WIN64)
	scripts/run-tests.sh $(WIN64) windows-x86_64 wine
	$(MAKE) build-win32

# The thread tests and the lock stress programs under ThreadSanitizer, built with clang.
test-tsan:
	@$(DEPS) build test tsan
	CC=clang CXX=clang++ cmake -S . -B $(TSAN) $(GEN) -DCMAKE_BUILD_TYPE=Debug $(OWN) -DKX_TSAN=ON \
	  -DKX_TEST_AREAS="threads;stress"
	cmake --build $(TSAN)
	TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
	  scripts/run-tests.sh $(TSAN) linux-x86_64-tsan

build-win32:
	@$(DEPS) build test windows
	cmake -S . -B $(WIN32) $(GEN) -DCMAKE_BUILD_TYPE=Debug $(OWN) \
	  -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-i686.cmake
	cmake --build $(WIN32)
	@echo "i686 build linked (32-bit Wine is not installable here, so its tests are not run)"

# libFuzzer targets (clang, ASan and UBSan, the library linked statically): each runs for
# FUZZ_SECONDS in make fuzz, and for 10 s from its starting corpus in the CI's smoke run.
fuzz-build:
	@$(DEPS) build tsan
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ) $(GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(OWN) \
	  -DKX_FUZZ=ON -DBUILD_SHARED_LIBS=OFF -DKX_BUILD_TESTS=OFF -DKX_INSTALL=OFF
	cmake --build $(FUZZ)

fuzz: fuzz-build
	scripts/run-fuzz.sh $(FUZZ) $(FUZZ_SECONDS)

fuzz-smoke: fuzz-build
	scripts/run-fuzz.sh $(FUZZ) 10

bench:
	@$(DEPS) build bench
	cmake -S . -B $(BENCH) $(GEN) -DCMAKE_BUILD_TYPE=Release $(OWN) -DKX_BUILD_TESTS=OFF \
	  -DKX_BUILD_BENCH=ON
	cmake --build $(BENCH)
	$(BENCH)/bin/kx_bench

format:
	@$(DEPS) format
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

# Also fails on any source, header or script file without its licence line.
format-check:
	@$(DEPS) format
	git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
	scripts/spdx.sh

clean:
	rm -rf build
