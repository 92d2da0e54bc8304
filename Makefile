# The user's entry: `make test` and `make demo` set up a fresh Debian machine, build and run.
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
CLANG_BUILD ?= build-clang
JOBS ?= $(shell nproc)

.PHONY: all deps build test test-main test-sanitize test-clang demo bench clean

all: build

deps:
	@tools/install-deps.sh

build: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD) -j$(JOBS)

test: test-main test-sanitize

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

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD) $(CLANG_BUILD) $(FUZZ_BUILD)
