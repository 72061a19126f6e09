# The two commands of the README: `make demo` runs the main job on a sample
# drawing, `make test` builds everything and runs the whole test suite. Both
# install what is missing on a fresh Debian machine first.
BUILD ?= build
CORPUS ?= ../shared/corpus

.PHONY: all deps configure build test demo bench clean

all: build

deps:
	@scripts/install-deps.sh

$(BUILD)/build.ninja:
	cmake -S . -B $(BUILD) -G Ninja

configure: deps $(BUILD)/build.ninja

build: configure
	cmake --build $(BUILD)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j2

demo: build
	scripts/demo.sh $(BUILD) $(CORPUS)

bench: build
	scripts/bench.sh $(BUILD)

clean:
	rm -rf $(BUILD)
