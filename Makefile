# The two commands of the README: `make run` and `make test`.
BUILD ?= build
CMAKE_FLAGS ?=
JOBS ?= $(shell nproc)

.PHONY: all deps configure build run test bench soak sanitize tsan format clean update-golden

all: build

deps:
	@./scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja -DQAFUI_WERROR=ON $(CMAKE_FLAGS) > /dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# With a display, the FFT filter editor live on the test signal; without one, every editor
# rendered into $(BUILD)/gallery with an index page.
run: build
	@if [ -n "$$DISPLAY" ]; then \
	  $(BUILD)/apps/qafui/qafui open FFTFilter; \
	else \
	  $(BUILD)/apps/qafui/qafui gallery -o $(BUILD)/gallery; \
	  echo "open $(BUILD)/gallery/index.html to see them (editors not yet ready are listed there)"; \
	fi

test: build
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

bench: build
	@for b in $(BUILD)/bench/bench_*; do echo "== $$b"; $$b; done

# Every editor under 10 000 seeded random events (the suite runs 1 000).
soak: build
	@QAFUI_SOAK_EVENTS=10000 $(BUILD)/tests/apps/apps_tests --gtest_filter='Editors/EditorSoak.*'

# The engine's tests under address and undefined-behaviour sanitizers.
sanitize: deps
	@cmake -S . -B build-asan -G Ninja -DQAFUI_CORE_ONLY=ON -DQAFUI_WERROR=ON \
	  -DQAFUI_SANITIZE=address,undefined -DCMAKE_BUILD_TYPE=Debug > /dev/null
	@cmake --build build-asan -j $(JOBS)
	@ctest --test-dir build-asan --output-on-failure -j $(JOBS)

# The tests that cross the audio process thread and the main thread, under the thread
# sanitizer.
tsan: deps
	@cmake -S . -B build-tsan -G Ninja -DQAFUI_SANITIZE=thread -DQAFUI_BUILD_BENCH=OFF \
	  -DQAFUI_WERROR=ON > /dev/null
	@cmake --build build-tsan -j $(JOBS) --target audio_tests
	@ctest --test-dir build-tsan --output-on-failure -j $(JOBS) -L audio_threads

# Rewrites the golden images in tests/golden/ from the current rendering. Run it by hand after
# a deliberate change and look at the images before committing them; CI never writes goldens.
update-golden: build
	@QAFUI_UPDATE_GOLDEN=1 ctest --test-dir $(BUILD) -R Golden --output-on-failure -j $(JOBS)

format:
	@find src apps tests bench -name '*.cpp' -o -name '*.hpp' | xargs clang-format -i

clean:
	@rm -rf build build-asan build-tsan
