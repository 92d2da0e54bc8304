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

test: test-main test-sanitize test-fuzz-smoke

test-main: build
	ctest --test-dir $(BUILD) --output-on-failure -j$(JOBS)

# The same suite under AddressSanitizer and UndefinedBehaviorSanitizer.
test-sanitize: deps
	cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=Debug -DTAVI_SANITIZE=ON
	cmake --build $(SANITIZE_BUILD) -j$(JOBS)
	ctest --test-dir $(SANITIZE_BUILD) --output-on-failure -j$(JOBS)

# The same suite built by clang, whose warnings and optimiser differ from g++'s.
test-clang: deps
	cmake -S . -B $(CLANG_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
	cmake --build $(CLANG_BUILD) -j$(JOBS)
	ctest --test-dir $(CLANG_BUILD) --output-on-failure -j$(JOBS)

# The fuzz targets of tests/fuzz under libFuzzer, which comes with clang, built with both sanitizers
# in a build of their own that holds the libraries and the fuzzers alone.
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 300
FUZZ_SMOKE_SECONDS ?= 10
.PHONY: fuzz fuzz-build test-fuzz-smoke

fuzz-build: deps
	cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
	  -DCMAKE_CXX_COMPILER=clang++ -DTAVI_SANITIZE=ON -DTAVI_FUZZ=ON
	cmake --build $(FUZZ_BUILD) -j$(JOBS) --target fuzzers

# Each target for FUZZ_SECONDS, one after another, growing its corpus in $(FUZZ_BUILD)/corpus.
fuzz: fuzz-build
	tools/run-fuzzers.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_BUILD)/corpus 1

# A short run of every target from its seeds alone, two at a time; skipped where clang is missing.
test-fuzz-smoke: deps
	@if command -v clang++ >/dev/null 2>&1; then \
	  $(MAKE) --no-print-directory fuzz-build && rm -rf $(FUZZ_BUILD)/smoke-corpus && \
	  tools/run-fuzzers.sh $(FUZZ_BUILD) $(FUZZ_SMOKE_SECONDS) $(FUZZ_BUILD)/smoke-corpus 2; \
	else \
	  echo "clang++ not found: the fuzz smoke run is skipped"; \
	fi

demo: build
	@tools/run-demo.sh $(BUILD)

bench: build
	@for b in $(BUILD)/bench/*/*_bench; do echo "== $$b"; $$b; done

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD) $(CLANG_BUILD) $(FUZZ_BUILD)
