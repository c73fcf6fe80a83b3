# Front door for the build; every target installs what is missing first.
GEN      := -G Ninja
LINUX    := build/linux
WIN64    := build/win64
WIN32    := build/win32
BENCH    := build/bench
TSAN     := build/tsan

.PHONY: all deps test test-linux test-windows test-tsan build-win32 bench format format-check clean

all: deps
	cmake -S . -B build/release $(GEN) -DCMAKE_BUILD_TYPE=Release
	cmake --build build/release

deps:
	@scripts/install-deps.sh

test: test-linux test-windows test-tsan

test-linux: deps
	cmake -S . -B $(LINUX) $(GEN) -DCMAKE_BUILD_TYPE=Debug -DKX_SANITIZE=ON
	cmake --build $(LINUX)
	ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  scripts/run-tests.sh $(LINUX) linux-x86_64

test-windows: deps
	cmake -S . -B $(WIN64) $(GEN) -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-x86_64.cmake
	cmake --build $(WIN64)
	scripts/run-tests.sh $(WIN64) windows-x86_64 wine
	$(MAKE) build-win32

# The thread tests and the lock stress programs under ThreadSanitizer, built with clang.
test-tsan: deps
	CC=clang CXX=clang++ cmake -S . -B $(TSAN) $(GEN) -DCMAKE_BUILD_TYPE=Debug -DKX_TSAN=ON \
	  -DKX_TEST_AREAS="threads;stress"
	cmake --build $(TSAN)
	TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
	  scripts/run-tests.sh $(TSAN) linux-x86_64-tsan

build-win32: deps
	cmake -S . -B $(WIN32) $(GEN) -DCMAKE_BUILD_TYPE=Debug \
	  -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-i686.cmake
	cmake --build $(WIN32)
	@echo "i686 build linked (32-bit Wine is not installable here, so its tests are not run)"

bench: deps
	cmake -S . -B $(BENCH) $(GEN) -DCMAKE_BUILD_TYPE=Release -DKX_BUILD_TESTS=OFF -DKX_BUILD_BENCH=ON
	cmake --build $(BENCH)
	$(BENCH)/bin/kx_bench

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

format-check:
	git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror

clean:
	rm -rf build
