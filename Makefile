# The two commands of the README: `make demo` runs the main job on a sample
# drawing, `make test` builds everything and runs the whole test suite. Both
# install what is missing on a fresh Debian machine first.
BUILD ?= build
CORPUS ?= ../shared/corpus

.PHONY: all deps configure build fuzz-build test demo bench clean

all: build

deps:
	@scripts/install-deps.sh

$(BUILD)/build.ninja:
	cmake -S . -B $(BUILD) -G Ninja

configure: deps $(BUILD)/build.ninja

build: configure
	cmake --build $(BUILD)

# The fuzz target is built apart, with clang and its sanitizers.
$(BUILD)/fuzz/build.ninja:
	CC=clang CXX=clang++ cmake -S . -B $(BUILD)/fuzz -G Ninja -DKESTRIX_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo

fuzz-build: configure $(BUILD)/fuzz/build.ninja
	cmake --build $(BUILD)/fuzz --target dxf_reader_fuzz dwg_reader_fuzz

test: build fuzz-build
	ctest --test-dir $(BUILD) --output-on-failure -j2

demo: build
	scripts/demo.sh $(BUILD) $(CORPUS)

bench: build
	scripts/bench.sh $(BUILD)

clean:
	rm -rf $(BUILD)
