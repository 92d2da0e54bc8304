# The user's entry: `make test` and `make demo` set up a fresh Debian machine, build and run.
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
JOBS ?= $(shell nproc)

.PHONY: all deps build test test-main test-sanitize demo bench clean

all: build

deps:
	@tools/install-deps.sh

build: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo
	cmake --build $(BUILD) -j$(JOBS)

test: test-main test-sanitize

test-main: build
	ctest --test-dir $(BUILD) --output-on-failure -j$(JOBS)

# The same suite under AddressSanitizer and UndefinedBehaviorSanitizer.
test-sanitize: deps
	cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=Debug -DTAVI_SANITIZE=ON
	cmake --build $(SANITIZE_BUILD) -j$(JOBS)
	ctest --test-dir $(SANITIZE_BUILD) --output-on-failure -j$(JOBS)

demo: build
	@tools/run-demo.sh $(BUILD)

bench: build
	@for b in $(BUILD)/bench/*/*_bench; do echo "== $$b"; $$b; done

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD)
