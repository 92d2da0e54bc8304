# The user's entry: `make test` and `make demo` set up a fresh Debian machine, build and run.
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
CLANG_BUILD ?= build-clang
JOBS ?= $(shell nproc)

.PHONY: all deps build test test-main test-sanitize test-clang demo bench clean windows windows-deps test-windows

all: build

deps:
	@tools/install-deps.sh

build: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD) -j$(JOBS)

# Then the Windows client's suite under wine, where the machine can build it: its packages are
# installed or can be (as root, with the archive in reach), and so can the sources of pugixml and
# zstd. Otherwise it is left out with a note; a failing Windows test still fails the run.
test: test-main test-sanitize
	@if tools/install-deps.sh windows && tools/windows-sources.sh $(WINDOWS_SOURCES); then \
	  $(MAKE) --no-print-directory test-windows; \
	else \
	  echo "The Windows build cannot be set up here (see above): make test ran without test-windows"; \
	fi

test-main: build
	ctest --test-dir $(BUILD) --output-on-failure -j$(JOBS)

# The same suite under AddressSanitizer and UndefinedBehaviorSanitizer. Where clang is present
# (install-deps installs it), this build is clang's, so that every run checks the tree with the
# second compiler too; it then also builds the fuzzers, and each runs briefly from its seeds.
with_clang = $(shell command -v clang++ >/dev/null 2>&1 && echo yes)
FUZZ_SMOKE_SECONDS ?= 10

test-sanitize: deps
	cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=Debug -DTAVI_SANITIZE=ON \
	  $(if $(with_clang),-DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DTAVI_FUZZ=ON)
	cmake --build $(SANITIZE_BUILD) -j$(JOBS)
	ctest --test-dir $(SANITIZE_BUILD) --output-on-failure -j$(JOBS)
	$(if $(with_clang),rm -rf $(SANITIZE_BUILD)/smoke-corpus && \
	  tools/run-fuzzers.sh $(SANITIZE_BUILD) $(FUZZ_SMOKE_SECONDS) $(SANITIZE_BUILD)/smoke-corpus 2, \
	  @echo "clang++ not found: the sanitized build is g++'s, without fuzzers")

# The same suite built by clang, whose warnings and optimiser differ from g++'s.
test-clang: deps
	cmake -S . -B $(CLANG_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
	cmake --build $(CLANG_BUILD) -j$(JOBS)
	ctest --test-dir $(CLANG_BUILD) --output-on-failure -j$(JOBS)

# The fuzz targets of tests/fuzz under libFuzzer, which comes with clang, built optimised with both
# sanitizers in a build of their own that holds the libraries and the fuzzers alone.
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 300
FUZZ_JOBS ?= 1
.PHONY: fuzz fuzz-build

fuzz-build: deps
	cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
	  -DCMAKE_CXX_COMPILER=clang++ -DTAVI_SANITIZE=ON -DTAVI_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j$(JOBS) --target fuzzers

# Each target for FUZZ_SECONDS, FUZZ_JOBS at a time, growing its corpus in $(FUZZ_BUILD)/corpus.
fuzz: fuzz-build
	tools/run-fuzzers.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_BUILD)/corpus $(FUZZ_JOBS)

demo: build
	@tools/run-demo.sh $(BUILD)

bench: build
	@for b in $(BUILD)/bench/*/*_bench; do echo "== $$b"; $$b; done

# TaviClient.exe and the engine modules of its tests for 64-bit Windows, cross-compiled by
# MinGW-w64 with pugixml and zstd built from Debian's sources (README: Windows).
WINDOWS_BUILD ?= build-windows
WINE ?= /usr/lib/wine/wine64
WINESERVER ?= /usr/lib/wine/wineserver64
WINDOWS_SOURCES = $(CURDIR)/$(WINDOWS_BUILD)/third-party

windows-deps:
	@tools/install-deps.sh windows

windows: windows-deps
	tools/windows-sources.sh $(WINDOWS_SOURCES)
	cmake -S . -B $(WINDOWS_BUILD) -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake \
	  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAVI_THIRD_PARTY_SOURCES=$(WINDOWS_SOURCES)
	cmake --build $(WINDOWS_BUILD) -j$(JOBS)

# The client's end-to-end tests, built for Linux, run the Windows client under wine in a wine
# prefix of the build's own. The first wine start makes the prefix, before tests run side by side.
# One wine server then stays for the whole run: left to itself, it leaves a few seconds after its
# last client, and a client that starts just as it leaves is cut off ("wine client error"). Wine's
# services, which live as long as the server, are started before the tests by a client without
# output: started by a test's client, they would hold that test's output open to the end. Should
# anything still outlive its test so, the timeout fails that test instead of stalling the run.
WINDOWS_TESTS ?= ^client\.(CommandLineRun|GeometryLoad|LargeScene|LoadSequence|RegistryLoad|RenderRun|HostileScene|WindowsMsvcEngine|WindowsSystemChannels)\.
wine_env = WINEPREFIX=$(CURDIR)/$(WINDOWS_BUILD)/wine-prefix WINEDEBUG=-all

test-windows: deps windows
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD) -j$(JOBS) --target client_tests
	$(wine_env) $(WINE) $(WINDOWS_BUILD)/bin/TaviClient.exe -version >/dev/null
	$(wine_env) $(WINESERVER) -w
	$(wine_env) $(WINESERVER) -p
	$(wine_env) $(WINE) $(WINDOWS_BUILD)/bin/TaviClient.exe -version </dev/null >/dev/null 2>&1
	$(wine_env) TAVI_TEST_WINDOWS_BUILD=$(CURDIR)/$(WINDOWS_BUILD) TAVI_TEST_WINE=$(WINE) \
	  ctest --test-dir $(BUILD) --output-on-failure -j$(JOBS) --timeout 300 -R '$(WINDOWS_TESTS)'; \
	  status=$$?; $(wine_env) $(WINESERVER) -k; exit $$status

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD) $(CLANG_BUILD) $(FUZZ_BUILD) $(WINDOWS_BUILD)
